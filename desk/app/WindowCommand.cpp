#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/Host.h"
#include "desk/app/window/DeskWindow.h"

#include "ViewDeckQt/ManagedMessageBox.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QStyle>

namespace desk::app
{

namespace
{
/// A user who started the desk from an icon sees no console.
void tellRefusal(const Error& error)
{
    console::error(error.sentence());
    if (QGuiApplication::platformName() != QLatin1String("offscreen"))
        ViewDeckQt::ManagedMessageBox::messageBox(nullptr, QMessageBox::Warning, QStringLiteral("Stratacut Desk"),
                                                  error.sentence(), QMessageBox::Ok, QMessageBox::Ok);
}
} // namespace

QCommandLineOption profileOption()
{
    return {"profile", "Where work, bin and settings are kept; your own place unless given.", "DIR"};
}

QList<QCommandLineOption> windowOptions()
{
    return {profileOption()};
}

int runWindow(const QCommandLineParser& parser, const QStringList& arguments)
{
    Host host(parser.value(QStringLiteral("profile")));
    const Status claimed = host.claim();
    if (!claimed) {
        tellRefusal(claimed.error());
        return exitCode::failure;
    }
    DeskWindow::prepareLook(host.profile());
    host.load();
    DeskWindow window(&host);
    window.show();
    window.addMedia(arguments);
    return QApplication::exec();
}

} // namespace desk::app

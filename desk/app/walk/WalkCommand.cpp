#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/Host.h"
#include "desk/app/walk/Walk.h"
#include "desk/app/window/DeskWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QProcess>
#include <QStyle>

namespace desk::app
{

namespace
{
int fail(const Error& error)
{
    console::error(error.sentence());
    return exitCode::failure;
}

QString absolute(const QString& path)
{
    return path.isEmpty() ? QString() : QDir::cleanPath(QDir(path).absolutePath());
}

/// The second half runs in a process of its own: nothing is left over from the first.
int continueInNewProcess(const QStringList& arguments)
{
    return QProcess::execute(QApplication::applicationFilePath(), QStringList{QStringLiteral("walk")} + arguments);
}
} // namespace

QList<QCommandLineOption> walkOptions()
{
    return {
        {"to", "The folder in which the delivery's folder is made.", "FOLDER"},
        {"shots", "Where pictures of every step go; none are taken unless given.", "FOLDER"},
        {"profile", "A profile that was never used; \"profile\" beside the delivery unless given.", "DIR"},
        {"continue", "Only the part after the restart; its pictures start with this number.", "NUMBER"},
    };
}

int runWalk(const QCommandLineParser& parser, const QStringList& media)
{
    WalkRequest request;
    request.media = absolute(media.value(0));
    request.folder = absolute(parser.value(QStringLiteral("to")));
    request.pictures = absolute(parser.value(QStringLiteral("shots")));
    request.profile = absolute(parser.value(QStringLiteral("profile")));
    if (request.profile.isEmpty())
        request.profile = request.folder + QStringLiteral("/profile");
    if (media.size() != 1 || request.folder.isEmpty()) {
        console::error(QStringLiteral("name one media file, and with --to where the delivery is to be made"));
        return exitCode::usage;
    }
    // Without a desktop nobody says which font to take, and the pictures are to be the same everywhere.
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    // The last window of the first half closes long before the program ends.
    QApplication::setQuitOnLastWindowClosed(false);
    if (parser.isSet(QStringLiteral("continue")))
        request.firstPicture = parser.value(QStringLiteral("continue")).toInt();
    Walk walk(request);
    if (parser.isSet(QStringLiteral("continue"))) {
        const auto folder = walk.comeBack();
        if (folder)
            console::out(*folder);
        return folder ? exitCode::success : fail(folder.error());
    }
    const Status worked = walk.work();
    if (!worked)
        return fail(worked.error());
    return continueInNewProcess({request.media, QStringLiteral("--to"), request.folder, QStringLiteral("--shots"),
                                 request.pictures, QStringLiteral("--profile"), request.profile,
                                 QStringLiteral("--continue"), QString::number(walk.nextPicture())});
}

} // namespace desk::app

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

/// The rest runs in processes of its own: nothing is left over from the first.
int goOn(const WalkRequest& request, const char* part, int firstPicture, const char* scale = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    if (scale) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QLatin1String(scale));
        process.setProcessEnvironment(environment);
    }
    process.start(QApplication::applicationFilePath(),
                  {QStringLiteral("walk"), request.media, QStringLiteral("--to"), request.folder,
                   QStringLiteral("--shots"), request.pictures, QStringLiteral("--profile"), request.profile,
                   QLatin1String(part), QString::number(firstPicture)});
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : exitCode::failure;
}

int comeBack(Walk& walk)
{
    const auto folder = walk.comeBack();
    if (folder)
        console::out(*folder);
    return folder ? exitCode::success : fail(folder.error());
}

int look(Walk& walk)
{
    const Status looked = walk.look();
    return looked ? exitCode::success : fail(looked.error());
}

int walkFromTheStart(Walk& walk, const WalkRequest& request)
{
    const Status worked = walk.work();
    if (!worked)
        return fail(worked.error());
    const int code = goOn(request, "--continue", walk.nextPicture());
    if (code != exitCode::success || request.pictures.isEmpty())
        return code;
    const int larger = goOn(request, "--look", walk.nextPicture() + 2, "1.5");
    return larger == exitCode::success ? goOn(request, "--look", walk.nextPicture() + 4, "2") : larger;
}
} // namespace

QList<QCommandLineOption> walkOptions()
{
    return {
        {"to", "The folder in which the delivery's folder is made.", "FOLDER"},
        {"shots", "Where pictures of every step go; none are taken unless given.", "FOLDER"},
        {"profile", "A profile that was never used; \"profile\" beside the delivery unless given.", "DIR"},
        {"continue", "Only the part after the restart; its pictures start with this number.", "NUMBER"},
        {"look", "Only pictures of one page in both skins, starting with this number.", "NUMBER"},
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
    const bool comesBack = parser.isSet(QStringLiteral("continue"));
    const bool looks = parser.isSet(QStringLiteral("look"));
    if (comesBack || looks)
        request.firstPicture = parser.value(comesBack ? QStringLiteral("continue") : QStringLiteral("look")).toInt();
    Walk walk(request);
    return comesBack ? comeBack(walk) : looks ? look(walk) : walkFromTheStart(walk, request);
}

} // namespace desk::app

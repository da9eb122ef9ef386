#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/ExportSession.h"
#include "desk/app/ItemSettings.h"

#include <QCommandLineParser>
#include <QDir>

namespace desk::app
{

namespace
{
int wrong(const QString& text)
{
    console::error(text);
    console::note(QStringLiteral("stratacut-desk export --help shows what there is."));
    return exitCode::usage;
}
} // namespace

QList<QCommandLineOption> exportOptions()
{
    return audioOptions() +
           QList<QCommandLineOption>{
               {"to", "The folder in which the delivery's folder is made.", "FOLDER"},
               {"name", "Name of the delivery and of its folder; the first file's name unless given.", "NAME"},
               {"imp", "Name of the IMP.", "NAME"},
               {"title", "Content title of the compositions; the file's name unless given.", "TEXT"},
               {"issuer", "Issuer of all that is written.", "TEXT"},
               {"set",
                "Sets a parameter or a text: \"Compression=JPEG 2000 reversible\", \"Audio Mix=5.1\", "
                "\"ContentKind=trailer\", "
                "\"Multiple Audio Mix={...}\". May be given several times.",
                "KEY=VALUE"},
               {"pad",
                "Adds black and silence where a composition must last a multiple of five frames (29.97, 59.94)."},
               {"profile", "Loads and keeps the package manager's state and the bin in this folder.", "FOLDER"},
           };
}

int runExport(const QCommandLineParser& parser, const QStringList& arguments)
{
    ExportRequest request;
    request.media = arguments;
    request.folder = parser.value(QStringLiteral("to"));
    if (!request.folder.isEmpty())
        request.folder = QDir::cleanPath(QDir(request.folder).absolutePath());
    request.deliveryName = parser.value(QStringLiteral("name"));
    request.impName = parser.value(QStringLiteral("imp"));
    request.title = parser.value(QStringLiteral("title"));
    request.issuer = parser.value(QStringLiteral("issuer"));
    request.profile = parser.value(QStringLiteral("profile"));
    request.audio = AudioSettings::from(parser);
    if (parser.isSet(QStringLiteral("pad")))
        request.padding = services::Padding::BlackAndSilence;
    if (request.media.isEmpty() || request.media.contains(QString()))
        return wrong(QStringLiteral("name at least one media file"));
    if (request.folder.isEmpty())
        return wrong(QStringLiteral("say with --to where the delivery is to be made"));
    const QStringList settings = parser.values(QStringLiteral("set"));
    for (const QString& text : settings) {
        const auto setting = parseSetting(text);
        if (!setting)
            return wrong(setting.error().sentence());
        request.settings += *setting;
    }
    return ExportSession(request).run();
}

} // namespace desk::app

#include "desk/app/Command.h"
#include "desk/app/Console.h"

#include "StratacutUI/ImfDict.h"
#include "desk/imf/package/Folder.h"
#include "desk/imf/package/Verifier.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/PackageOutput.h"

#include <QCommandLineParser>
#include <QDir>
#include <QJsonDocument>

namespace desk::app
{

namespace
{
QCommandLineOption withOption()
{
    return {"with", "A delivery that FOLDER completes; may be given several times.", "FOLDER"};
}

int oneFolderWanted()
{
    console::error(QStringLiteral("name one delivery folder"));
    return exitCode::usage;
}

QString text(const QJsonObject& object, const char* key)
{
    return object[QLatin1String(key)].toString();
}

/// "Key: value" for every text and every choice that is made in an object.
void printTexts(const QJsonObject& object, const QString& indent)
{
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry) {
        const QJsonObject parameter = entry->toObject();
        QString value = entry->toString();
        if (parameter.contains(QLatin1String(ImfDict::values)))
            value = parameter[QLatin1String(ImfDict::values)]
                        .toArray()
                        .at(parameter[QLatin1String(ImfDict::currentIndex)].toInt())
                        .toString();
        else if (parameter.contains(QLatin1String(ImfDict::Value)))
            value = text(parameter, ImfDict::Value);
        if (!value.isEmpty())
            console::out(QStringLiteral("%1%2: %3").arg(indent, entry.key(), value));
    }
}

void printSound(const QJsonObject& audio, const QString& indent)
{
    const QJsonArray mapping =
        audio[QLatin1String(ImfDict::MultipleAudioMix)].toObject()[QLatin1String(ImfDict::AudioMapping)].toArray();
    for (const QJsonValue& value : mapping) {
        const QJsonObject entry = value.toObject();
        const QJsonObject metadata = entry[QLatin1String(ImfDict::Metadata)].toObject();
        QStringList facts{text(entry, ImfDict::MixMode)};
        for (const char* key : {ImfDict::RFC5646SpokenLanguage, ImfDict::AudioContentKind}) {
            const QString fact = text(metadata, key);
            if (!fact.isEmpty() && fact != QLatin1String("None"))
                facts += fact;
        }
        console::out(indent + text(entry, ImfDict::TargetTrack) + QStringLiteral(": ") +
                     facts.join(QStringLiteral(", ")));
    }
}

void printItem(const QJsonObject& item, const QString& indent)
{
    const bool isDelivery = text(item, ImfDict::Type) == QLatin1String("Delivery");
    const bool original = item[QLatin1String(ImfDict::Original)].toBool();
    const QString kind =
        isDelivery ? QString::fromLatin1(original ? "IMF Original" : "IMF Supplemental") : text(item, ImfDict::Type);
    console::out(QStringLiteral("%1%2 \"%3\"").arg(indent, kind, text(item, ImfDict::Name)));
    const QString inner = indent + QStringLiteral("  ");
    if (isDelivery)
        console::out(inner + QStringLiteral("Path: ") + text(item, ImfDict::Path));
    printTexts(item[QLatin1String(ImfDict::DescriptiveMetadata)].toObject(), inner);
    printTexts(item[QLatin1String(ImfDict::Video)].toObject(), inner);
    const QJsonObject audio = item[QLatin1String(ImfDict::Audio)].toObject();
    printTexts(audio, inner);
    printSound(audio, inner);
    const QJsonArray missing = item[QStringLiteral("MissingAssets")].toArray();
    for (const QJsonValue& asset : missing)
        console::out(inner + QStringLiteral("missing: ") + asset.toString());
    const QJsonArray children = item[QLatin1String(ImfDict::Children)].toArray();
    for (const QJsonValue& child : children)
        printItem(child.toObject(), inner);
}

/// Reads a delivery into the output's registry; answers whether it could be read.
bool load(services::PackageOutput& output, const QString& folder, QJsonObject& document)
{
    IMFO_Bridge::Error error;
    std::pair<QByteArray, QJsonObject> read;
    output.readDelivery(error, folder, read);
    if (error.isError())
        console::error(error.message());
    document = read.second;
    return !error.isError();
}
} // namespace

QList<QCommandLineOption> showOptions()
{
    return {{"json", "Shows the package manager's document."}, withOption()};
}

int runShow(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 1 || arguments.first().isEmpty())
        return oneFolderWanted();
    services::MediaLibrary library;
    services::PackageOutput output(&library);
    QJsonObject document;
    const QStringList folders = parser.values(QStringLiteral("with"));
    for (const QString& folder : folders) {
        if (!load(output, folder, document))
            return exitCode::failure;
    }
    if (!load(output, arguments.first(), document))
        return exitCode::failure;
    if (parser.isSet(QStringLiteral("json")))
        console::out(QString::fromUtf8(QJsonDocument(document).toJson()).trimmed());
    else
        printItem(document, QString());
    return exitCode::success;
}

QList<QCommandLineOption> verifyOptions()
{
    return {withOption()};
}

namespace
{
const char* nameOf(imf::Severity severity)
{
    switch (severity) {
    case imf::Severity::Error:
        return "error";
    case imf::Severity::Warning:
        return "warning";
    case imf::Severity::Note:
        break;
    }
    return "note";
}

void printFinding(const imf::Finding& finding)
{
    QStringList parts{QLatin1String(nameOf(finding.severity))};
    if (!finding.file.isEmpty())
        parts += finding.file;
    if (!finding.asset.isNull())
        parts += finding.asset.toString(QUuid::WithoutBraces);
    console::out(QStringLiteral("%1: %2 [%3]").arg(parts.join(QStringLiteral(": ")), finding.reason, finding.code));
}

bool showHashing(qint64 done, qint64 total)
{
    if (console::isTerminal() && total > 0)
        console::statusLine(QStringLiteral("checking, %1 %").arg(100 * done / total));
    return true;
}
} // namespace

int runVerify(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 1 || arguments.first().isEmpty())
        return oneFolderWanted();
    QVector<imf::Delivery> others;
    const QStringList folders = parser.values(QStringLiteral("with"));
    for (const QString& folder : folders) {
        auto other = imf::openDelivery(folder);
        if (!other) {
            console::error(other.error().sentence());
            return exitCode::failure;
        }
        others += *other;
    }
    const Status there = imf::checkFolder(arguments.first());
    if (!there) {
        console::error(there.error().sentence());
        return exitCode::failure;
    }
    imf::VerifyOptions options;
    options.progress = showHashing;
    options.resolver = [&others](const QUuid& asset) {
        QString file;
        for (const imf::Delivery& other : qAsConst(others))
            file = file.isEmpty() ? other.existingFile(asset) : file;
        return file;
    };
    const QVector<imf::Finding> findings = imf::verifyDelivery(arguments.first(), options);
    for (const imf::Finding& finding : findings)
        printFinding(finding);
    const bool hasErrors = imf::hasErrors(findings);
    const char* const verdict = findings.isEmpty() ? "clean" : hasErrors ? "not clean" : "no errors";
    console::out(QDir(arguments.first()).absolutePath() + QStringLiteral(": ") + QLatin1String(verdict));
    return hasErrors ? exitCode::findings : exitCode::success;
}

} // namespace desk::app

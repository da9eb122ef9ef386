#include "desk/imf/package/Folder.h"
#include "desk/imf/package/VerifyScan.h"
#include "desk/imf/xml/CompositionNames.h"
#include "desk/imf/xml/DescriptorProperties.h"

#include <QRegularExpression>

#include <optional>

namespace desk::imf
{
namespace
{

using CompositionRule = void (*)(const ScannedComposition&, Report&);

QString rateText(Rational rate)
{
    return rate.den == 1 ? QString::number(rate.num) : QStringLiteral("%1/%2").arg(rate.num).arg(rate.den);
}

void checkHead(const ScannedComposition& one, Report& report)
{
    const Composition& composition = one.composition;
    if (composition.id != one.asset)
        report.error("id-mismatch", one.file, one.asset,
                     QStringLiteral("the document's identifier is not that of the asset map"));
    if (!composition.issueDate.isValid())
        report.warning("date-invalid", one.file, one.asset, QStringLiteral("the issue date is none"));
    if (composition.contentTitle.isEmpty())
        report.warning("title-none", one.file, one.asset, QStringLiteral("the composition has no title"));
    if (composition.segments.isEmpty())
        report.error("segment-none", one.file, one.asset, QStringLiteral("the composition has no segment"));
}

/// Which edition of the core constraints an application goes with.
struct Pairing {
    const char* application;
    const char* core;
};

constexpr Pairing pairings[] = {
    {"http://www.smpte-ra.org/schemas/2067-21/2014", "http://www.smpte-ra.org/schemas/2067-2/2013"},
    {"http://www.smpte-ra.org/schemas/2067-21/2016", "http://www.smpte-ra.org/schemas/2067-2/2016"},
    {"http://www.smpte-ra.org/ns/2067-50/2017", "http://www.smpte-ra.org/schemas/2067-2/2016"},
    {"http://www.smpte-ra.org/ns/2067-21/2020", "http://www.smpte-ra.org/ns/2067-2/2020"},
    {"http://www.smpte-ra.org/ns/2067-21/2021", "http://www.smpte-ra.org/ns/2067-2/2020"},
    {"http://www.smpte-ra.org/ns/2067-21/5ED", "http://www.smpte-ra.org/ns/2067-2/2020"},
};

void checkApplication(const ScannedComposition& one, Report& report)
{
    if (one.composition.applicationIds.isEmpty())
        report.warning("application-none", one.file, one.asset, QStringLiteral("the composition names no application"));
    for (const Pairing& pairing : pairings) {
        const bool isUsed = one.composition.applicationIds.contains(QLatin1String(pairing.application));
        if (isUsed && one.composition.coreNameSpace != QLatin1String(pairing.core))
            report.warning("application-edition", one.file, one.asset,
                           QStringLiteral("application and core constraints are of different editions"));
    }
}

void checkKinds(const ScannedComposition& one, Report& report)
{
    const bool needsSound = one.composition.coreNameSpace != QLatin1String(edition::coreConstraints);
    for (const Segment& segment : one.composition.segments) {
        const auto count = [&](SequenceKind kind) {
            return std::count_if(segment.sequences.cbegin(), segment.sequences.cend(),
                                 [&](const Sequence& sequence) { return sequence.kind == kind; });
        };
        if (count(SequenceKind::MainImage) != 1)
            report.error("image-count", one.file, segment.id,
                         QStringLiteral("the segment has %1 picture sequences instead of one")
                             .arg(count(SequenceKind::MainImage)));
        if (needsSound && count(SequenceKind::MainAudio) == 0)
            report.warning("sound-none", one.file, segment.id,
                           QStringLiteral("the segment has no sound, which its edition demands"));
    }
}

void checkTracks(const ScannedComposition& one, Report& report)
{
    std::optional<QSet<QUuid>> first;
    for (const Segment& segment : one.composition.segments) {
        QSet<QUuid> tracks;
        for (const Sequence& sequence : segment.sequences) {
            if (tracks.contains(sequence.trackId))
                report.error("track-duplicate", one.file, sequence.trackId,
                             QStringLiteral("the segment holds the track twice"));
            tracks.insert(sequence.trackId);
        }
        if (!first)
            first = tracks;
        if (*first != tracks)
            report.error("track-missing", one.file, segment.id,
                         QStringLiteral("the segment does not hold the tracks of the first one"));
    }
}

void checkSegmentDurations(const ScannedComposition& one, const Segment& segment, Report& report)
{
    std::optional<qint64> expected;
    for (const Sequence& sequence : segment.sequences) {
        const std::optional<qint64> duration = sequenceDuration(sequence, one.composition.editRate);
        if (!duration) {
            report.error("duration-fraction", one.file, sequence.trackId,
                         QStringLiteral("the sequence is no whole number of edit units long"));
            continue;
        }
        if (!expected)
            expected = duration;
        if (*expected != *duration)
            report.error("duration-unequal", one.file, sequence.trackId,
                         QStringLiteral("the sequence has %1 edit units, the first of its segment %2")
                             .arg(*duration)
                             .arg(*expected));
    }
}

void checkDurations(const ScannedComposition& one, Report& report)
{
    for (const Segment& segment : one.composition.segments)
        checkSegmentDurations(one, segment, report);
}

void checkResources(const ScannedComposition& one, Report& report)
{
    for (const Segment& segment : one.composition.segments) {
        for (const Sequence& sequence : segment.sequences) {
            if (sequence.resources.isEmpty())
                report.error("resource-none", one.file, sequence.trackId,
                             QStringLiteral("the sequence has no resource"));
        }
    }
}

/// What the timecode says of itself, and against the edit rate.
void checkTimecode(const ScannedComposition& one, Report& report)
{
    if (!one.composition.timecode)
        return;
    const CompositionTimecode& timecode = *one.composition.timecode;
    static const QRegularExpression form(
        QStringLiteral("\\A([01]\\d|2[0-3])[:;/.,+-][0-5]\\d[:;/.,+-][0-5]\\d[:;/.,+-](\\d\\d)\\z"));
    const QRegularExpressionMatch match = form.match(timecode.start);
    if (!match.hasMatch() || match.captured(2).toInt() >= qMax(timecode.rate, 1))
        report.error("timecode-invalid", one.file, one.asset,
                     QStringLiteral("the start timecode \"%1\" is none at %2 frames a second")
                         .arg(timecode.start.left(20))
                         .arg(timecode.rate));
    const qint64 nominal = qRound64(one.composition.editRate.toDouble());
    if (timecode.rate != nominal)
        report.warning("timecode-rate", one.file, one.asset,
                       QStringLiteral("the timecode counts %1 frames a second, the composition has %2")
                           .arg(timecode.rate)
                           .arg(nominal));
    if (timecode.dropFrame && timecode.rate % 30 != 0)
        report.warning("timecode-drop", one.file, one.asset,
                       QStringLiteral("the timecode drops frames, which only 29.97 and 59.94 frames a second do"));
}

/// Rounded either way; the standard does not say which.
void checkRunningTime(const ScannedComposition& one, Report& report)
{
    const QString& text = one.composition.totalRunningTime;
    const std::optional<qint64> frames = one.composition.duration();
    if (text.isEmpty() || !frames)
        return;
    static const QRegularExpression form(QStringLiteral("\\A(\\d\\d):([0-5]\\d):([0-5]\\d)\\z"));
    const QRegularExpressionMatch match = form.match(text);
    const int told = match.captured(1).toInt() * 3600 + match.captured(2).toInt() * 60 + match.captured(3).toInt();
    const double seconds = double(*frames) / one.composition.editRate.toDouble();
    if (!match.hasMatch() || qAbs(told - seconds) >= 1)
        report.warning(
            "running-time", one.file, one.asset,
            QStringLiteral("the running time \"%1\" is not that of %2 frames").arg(text.left(20)).arg(*frames));
}

void checkBounds(const ScannedComposition& one, Report& report)
{
    eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
        if (resource.entryPoint > resource.intrinsicDuration ||
            resource.duration() > resource.intrinsicDuration - resource.entryPoint)
            report.error("resource-bounds", one.file, resource.id,
                         QStringLiteral("the resource uses more than its source has"));
        else if (resource.duration() == 0 || resource.repeatCount == 0)
            report.warning("resource-empty", one.file, resource.id, QStringLiteral("the resource has no duration"));
        for (const Marker& marker : resource.markers) {
            if (marker.offset >= resource.intrinsicDuration)
                report.error("marker-bounds", one.file, sequence.trackId,
                             QStringLiteral("marker %1 lies behind the end").arg(marker.label.value));
        }
    });
}

void checkRates(const ScannedComposition& one, Report& report)
{
    QHash<QUuid, Rational> rates;
    eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
        const Rational rate = one.composition.rateOf(resource);
        if (sequence.kind == SequenceKind::MainImage && rate != one.composition.editRate)
            report.error("edit-rate-mismatch", one.file, resource.id,
                         QStringLiteral("the picture's edit rate is %1, the composition's %2")
                             .arg(rateText(rate), rateText(one.composition.editRate)));
        if (rates.value(sequence.trackId, rate) != rate)
            report.error("edit-rate-varies", one.file, sequence.trackId,
                         QStringLiteral("the edit rate changes within the track"));
        rates.insert(sequence.trackId, rate);
    });
}

void checkReferences(const ScannedComposition& one, Report& report)
{
    QSet<QUuid> present;
    for (const EssenceDescriptor& descriptor : one.composition.essenceDescriptors) {
        if (present.contains(descriptor.id))
            report.error("descriptor-duplicate", one.file, descriptor.id,
                         QStringLiteral("two descriptors have one identifier"));
        present.insert(descriptor.id);
    }
    QSet<QUuid> used;
    eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
        if (sequence.kind == SequenceKind::Marker)
            return;
        if (resource.trackFileId.isNull())
            report.error("reference-none", one.file, resource.id, QStringLiteral("the resource names no track file"));
        if (!present.contains(resource.sourceEncoding) && !used.contains(resource.sourceEncoding))
            report.error("descriptor-missing", one.file, resource.sourceEncoding,
                         QStringLiteral("the composition has no such descriptor"));
        used.insert(resource.sourceEncoding);
    });
    const QSet<QUuid> leftOver = present - used;
    for (const QUuid& unused : leftOver)
        report.warning("descriptor-unused", one.file, unused, QStringLiteral("no resource uses the descriptor"));
}

/// What all descriptors of a virtual track agree in (ST 2067-2:2020, 6.9.3, and ST 2067-21:2021, 6.2).
const QStringList& homogeneous()
{
    static const QStringList list{
        "StoredWidth",           "StoredHeight",           "FrameLayout",        "SampleRate",      "ColorPrimaries",
        "CodingEquations",       "TransferCharacteristic", "PictureCompression", "ComponentMinRef", "ComponentMaxRef",
        "BlackRefLevel",         "WhiteRefLevel",          "ColorRange",         "ColorSiting",     "ComponentDepth",
        "HorizontalSubsampling", "VerticalSubsampling",    "AudioSampleRate",    "QuantizationBits"};
    return list;
}

/// Whole subtrees: every property below.
const QStringList& homogeneousTrees()
{
    static const QStringList list{"PixelLayout/",
                                  "SubDescriptors/JPEG2000SubDescriptor/Xsiz",
                                  "SubDescriptors/JPEG2000SubDescriptor/Ysiz",
                                  "SubDescriptors/JPEG2000SubDescriptor/Csiz",
                                  "SubDescriptors/JPEG2000SubDescriptor/J2CLayout/",
                                  "SubDescriptors/JPEG2000SubDescriptor/PictureComponentSizing/"};
    return list;
}

QMap<QString, QString> character(const DescriptorProperties& all)
{
    QMap<QString, QString> result;
    for (auto it = all.values.cbegin(); it != all.values.cend(); ++it) {
        const bool isTree = std::any_of(homogeneousTrees().cbegin(), homogeneousTrees().cend(),
                                        [&](const QString& tree) { return it.key().startsWith(tree); });
        if (isTree || homogeneous().contains(it.key()))
            result.insert(it.key(), it.value());
    }
    result.insert(QStringLiteral("descriptor"), all.kind);
    return result;
}

QString firstDifference(const QMap<QString, QString>& a, const QMap<QString, QString>& b)
{
    for (auto it = a.cbegin(); it != a.cend(); ++it) {
        if (b.value(it.key()) != it.value())
            return it.key();
    }
    for (auto it = b.cbegin(); it != b.cend(); ++it) {
        if (!a.contains(it.key()))
            return it.key();
    }
    return {};
}

void checkHomogeneity(const ScannedComposition& one, Report& report)
{
    QHash<QUuid, QMap<QString, QString>> characters;
    for (const EssenceDescriptor& descriptor : one.composition.essenceDescriptors)
        characters.insert(descriptor.id, character(descriptorProperties(descriptor.regXml)));
    QHash<QUuid, QUuid> firstOfTrack;
    QSet<QPair<QUuid, QUuid>> compared;
    eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
        if (!characters.contains(resource.sourceEncoding) ||
            compared.contains({sequence.trackId, resource.sourceEncoding}))
            return;
        compared.insert({sequence.trackId, resource.sourceEncoding});
        if (!firstOfTrack.contains(sequence.trackId))
            firstOfTrack.insert(sequence.trackId, resource.sourceEncoding);
        const QString difference = firstDifference(characters.value(firstOfTrack.value(sequence.trackId)),
                                                   characters.value(resource.sourceEncoding));
        if (!difference.isEmpty())
            report.error("descriptor-varies", one.file, sequence.trackId,
                         QStringLiteral("%1 changes within the track").arg(difference));
    });
}

void checkSampleRates(const ScannedComposition& one, Report& report)
{
    QHash<QUuid, QString> rates;
    for (const EssenceDescriptor& descriptor : one.composition.essenceDescriptors)
        rates.insert(descriptor.id, descriptorProperties(descriptor.regXml).values.value(QStringLiteral("SampleRate")));
    eachResource(one.composition, [&](const Sequence& sequence, const Resource& resource) {
        const bool isMain = sequence.kind == SequenceKind::MainImage || sequence.kind == SequenceKind::MainAudio;
        const QString expected = rates.value(resource.sourceEncoding);
        const Rational rate = one.composition.rateOf(resource);
        if (isMain && !expected.isEmpty() && expected != QStringLiteral("%1/%2").arg(rate.num).arg(rate.den))
            report.error("sample-rate-mismatch", one.file, resource.id,
                         QStringLiteral("the resource's edit rate is %1, its descriptor's sample rate %2")
                             .arg(rateText(rate), expected));
    });
}

constexpr CompositionRule rules[] = {
    checkHead,  checkApplication, checkKinds,       checkTracks,      checkResources, checkDurations,  checkBounds,
    checkRates, checkReferences,  checkHomogeneity, checkSampleRates, checkTimecode,  checkRunningTime};

void checkCompositions(const Scan& scan, Report& report)
{
    const bool isComplete = std::none_of(report.findings().cbegin(), report.findings().cend(), [](const Finding& one) {
        return one.code == QLatin1String("composition-unreadable") ||
               one.code == QLatin1String("packing-list-unreadable") || one.code == QLatin1String("file-missing");
    });
    if (scan.compositions.isEmpty() && isComplete)
        report.warning("composition-none", QLatin1String(fileName::assetMap), {},
                       QStringLiteral("no packing list holds a composition"));
    for (const ScannedComposition& one : scan.compositions) {
        for (const CompositionRule rule : rules)
            rule(one, report);
    }
}

} // namespace

QVector<Rule> compositionRules()
{
    return {checkCompositions};
}

} // namespace desk::imf

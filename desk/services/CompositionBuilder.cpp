#include "desk/services/CompositionBuilder.h"

#include "StratacutUI/ImfDict.h"

#include <cmath>

namespace desk::services
{

namespace
{
imf::Sequence playWhole(imf::SequenceKind kind, const imf::TrackFileInfo& file, imf::Composition& composition)
{
    const imf::EssenceDescriptor descriptor{QUuid::createUuid(), file.descriptorXml};
    composition.essenceDescriptors += descriptor;
    imf::Resource resource;
    resource.id = QUuid::createUuid();
    resource.editRate = file.editRate;
    resource.intrinsicDuration = file.duration;
    resource.sourceDuration = file.duration;
    resource.sourceEncoding = descriptor.id;
    resource.trackFileId = file.id;
    resource.hash = file.sha1;
    imf::Sequence sequence;
    sequence.kind = kind;
    sequence.id = QUuid::createUuid();
    sequence.trackId = QUuid::createUuid();
    sequence.resources += resource;
    return sequence;
}

int nominal(Rational rate)
{
    return int(std::lround(rate.toDouble()));
}

/// At another rate the second stays and the frame within it is the one that starts there.
std::optional<imf::CompositionTimecode> timecodeFrom(const WrittenTracks& tracks)
{
    const QString& start = tracks.startTimecode;
    if (start.isEmpty())
        return std::nullopt;
    const Rational rate = tracks.picture.editRate;
    imf::CompositionTimecode timecode;
    timecode.rate = nominal(rate);
    timecode.dropFrame = start.contains(QLatin1Char(';')) && rate.den == 1001 && timecode.rate % 30 == 0;
    timecode.start = QString(start).replace(QLatin1Char(';'), QLatin1Char(':'));
    if (!tracks.sequenceRate.isValid() || tracks.sequenceRate == rate)
        return timecode;
    const int frame = start.rightRef(2).toInt() * timecode.rate / nominal(tracks.sequenceRate);
    timecode.start.replace(timecode.start.size() - 2, 2, QStringLiteral("%1").arg(frame, 2, 10, QLatin1Char('0')));
    return timecode;
}

QString runningTime(qint64 frames, Rational rate)
{
    const qint64 seconds = frames * rate.den / rate.num;
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600, 2, 10, QLatin1Char('0'))
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void setTexts(imf::Composition& composition, const QJsonObject& document)
{
    const QJsonObject metadata = document[QLatin1String(ImfDict::DescriptiveMetadata)].toObject();
    const auto text = [&metadata](const char* key) { return metadata[QLatin1String(key)].toString(); };
    composition.annotation = text(ImfDict::Annotation);
    composition.issuer = text(ImfDict::Issuer);
    composition.creator = text(ImfDict::Creator);
    composition.contentOriginator = text(ImfDict::ContentOriginator);
    composition.contentTitle = contentTitleOf(document);
    const QJsonObject kind = metadata[QLatin1String(ImfDict::ContentKind)].toObject();
    composition.contentKind = {kind[QLatin1String(ImfDict::Scope)].toString(),
                               kind[QLatin1String(ImfDict::Value)].toString()};
    imf::ContentVersion version;
    version.id = composition.id.toString(QUuid::WithoutBraces).prepend(QStringLiteral("urn:uuid:"));
    version.label = composition.contentTitle;
    composition.contentVersions += version;
}

/// One locale that lists what is spoken: the composition is made for no other.
void setLanguages(imf::Composition& composition, QStringList languages)
{
    for (const char* nothing : {"", "und", "zxx"})
        languages.removeAll(QLatin1String(nothing));
    languages.removeDuplicates();
    imf::Locale locale;
    locale.languages = languages;
    if (!languages.isEmpty())
        composition.locales += locale;
}
} // namespace

QString contentTitleOf(const QJsonObject& document)
{
    const QJsonObject metadata = document[QLatin1String(ImfDict::DescriptiveMetadata)].toObject();
    const QString title = metadata[QLatin1String(ImfDict::ContentTitle)].toString();
    return title.isEmpty() ? document[QLatin1String(ImfDict::Name)].toString() : title;
}

imf::Composition buildComposition(const WrittenTracks& tracks, const QJsonObject& document)
{
    imf::Composition composition;
    composition.id = QUuid::createUuid();
    composition.issueDate = QDateTime::currentDateTimeUtc();
    setTexts(composition, document);
    composition.editRate = tracks.picture.editRate;
    setLanguages(composition, tracks.languages);
    composition.timecode = timecodeFrom(tracks);
    composition.totalRunningTime = runningTime(tracks.picture.duration, composition.editRate);
    imf::Segment segment;
    segment.id = QUuid::createUuid();
    segment.sequences += playWhole(imf::SequenceKind::MainImage, tracks.picture, composition);
    for (const imf::TrackFileInfo& sound : tracks.sounds)
        segment.sequences += playWhole(imf::SequenceKind::MainAudio, sound, composition);
    composition.segments += segment;
    return composition;
}

} // namespace desk::services

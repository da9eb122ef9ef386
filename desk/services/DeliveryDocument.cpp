#include "desk/services/DeliveryDocument.h"

#include "StratacutUI/ImfDict.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "desk/imf/xml/XmlElement.h"
#include "desk/services/DescriptorFacts.h"
#include "desk/services/OutputFormat.h"

#include <QJsonArray>

#include <algorithm>

namespace desk::services
{

namespace
{
constexpr char missingAssets[] = "MissingAssets";

QJsonObject itemDocument(const char* type, const QString& name)
{
    return {{ImfDict::Name, name}, {ImfDict::Type, QLatin1String(type)}, {ImfDict::Mutable, false}};
}

/// The three texts that every item has; works for deliveries, packing lists and compositions.
template <class Item>
QJsonObject metadataOf(const Item& item)
{
    return {{ImfDict::Issuer, item.issuer.text},
            {ImfDict::Creator, item.creator.text},
            {ImfDict::Annotation, item.annotation.text}};
}

QJsonObject choice(const QString& value)
{
    return {{ImfDict::values, QJsonArray{value}}, {ImfDict::currentIndex, 0}};
}

struct TrackFacts {
    DescriptorFacts picture;
    QVector<DescriptorFacts> sounds;
};

const imf::EssenceDescriptor* descriptorOf(const imf::Composition& composition, const imf::Sequence& sequence)
{
    for (const imf::EssenceDescriptor& descriptor : composition.essenceDescriptors) {
        if (!sequence.resources.isEmpty() && descriptor.id == sequence.resources.first().sourceEncoding)
            return &descriptor;
    }
    return nullptr;
}

/// What the file of a sound track says of itself; what the composition says of it where the file cannot be read.
DescriptorFacts soundOf(const imf::Delivery& delivery, const imf::Sequence& sequence, const DescriptorFacts& said)
{
    const QString path = delivery.existingFile(sequence.resources.first().trackFileId);
    const auto descriptor = path.isEmpty() ? Result<QByteArray>(QByteArray()) : imf::readTrackDescriptor(path);
    const DescriptorFacts own = descriptor ? readDescriptor(*descriptor) : DescriptorFacts();
    return own.kind == DescriptorFacts::Kind::Sound ? own : said;
}

TrackFacts factsOf(const imf::Delivery& delivery, const imf::Composition& composition)
{
    TrackFacts facts;
    if (composition.segments.isEmpty())
        return facts;
    for (const imf::Sequence& sequence : composition.segments.first().sequences) {
        const imf::EssenceDescriptor* descriptor = descriptorOf(composition, sequence);
        if (!descriptor)
            continue;
        const DescriptorFacts track = readDescriptor(descriptor->regXml);
        if (sequence.kind == imf::SequenceKind::MainImage && track.kind == DescriptorFacts::Kind::Picture)
            facts.picture = track;
        else if (sequence.kind == imf::SequenceKind::MainAudio && track.kind == DescriptorFacts::Kind::Sound)
            facts.sounds += soundOf(delivery, sequence, track);
    }
    return facts;
}

QString applicationOf(const imf::Composition& composition)
{
    struct Application {
        const char* part;
        const char* name;
    };

    static const Application applications[] = {{"2067-21/", "App #2E"},
                                               {"2067-20/", "App #2"},
                                               {"2067-30", "App #3"},
                                               {"2067-40/", "App #4"},
                                               {"2067-50/", "App #5"}};
    for (const QString& id : composition.applicationIds) {
        for (const Application& application : applications) {
            if (id.contains(QLatin1String(application.part)))
                return QLatin1String(application.name);
        }
    }
    return QLatin1String(words::unknown);
}

struct Parameter {
    const char* key;
    QString DescriptorFacts::*fact;
};

constexpr Parameter pictureParameters[] = {
    {ImfDict::Compression, &DescriptorFacts::compression}, {ImfDict::CompressionProfile, &DescriptorFacts::profile},
    {ImfDict::Resolution, &DescriptorFacts::resolution},   {ImfDict::FrameRate, &DescriptorFacts::frameRate},
    {ImfDict::Colorimetry, &DescriptorFacts::colour},      {ImfDict::ColorDepth, &DescriptorFacts::depth},
};

constexpr Parameter soundParameters[] = {
    {ImfDict::Format, &DescriptorFacts::format},
    {ImfDict::SampleRate, &DescriptorFacts::sampleRate},
    {ImfDict::BitDepth, &DescriptorFacts::bits},
    {ImfDict::AudioMix, &DescriptorFacts::mix},
};

QString wordWithoutFacts(const imf::Composition& composition, imf::SequenceKind kind)
{
    if (composition.segments.isEmpty())
        return QLatin1String(words::none);
    const QVector<imf::Sequence>& sequences = composition.segments.first().sequences;
    const bool hasTrack = std::any_of(sequences.begin(), sequences.end(),
                                      [kind](const imf::Sequence& sequence) { return sequence.kind == kind; });
    return QLatin1String(hasTrack ? words::unknown : words::none);
}

/// States every parameter: one that is left open would be shown with what a new composition gets.
template <std::size_t Count>
void state(QJsonObject& section, const Parameter (&parameters)[Count], const DescriptorFacts& facts,
           const QString& otherwise)
{
    for (const Parameter& parameter : parameters) {
        const QString& fact = facts.*parameter.fact;
        section[QLatin1String(parameter.key)] = choice(fact.isEmpty() ? otherwise : fact);
    }
}

QJsonObject videoOf(const imf::Composition& composition, const DescriptorFacts& picture)
{
    QJsonObject video{{ImfDict::ApplicationPattern, choice(applicationOf(composition))},
                      {ImfDict::StereoscopicSettings, choice(QLatin1String(words::monoscopic))}};
    state(video, pictureParameters, picture, wordWithoutFacts(composition, imf::SequenceKind::MainImage));
    return video;
}

QJsonObject mappingEntry(const DescriptorFacts& sound, int number)
{
    const QString kind = sound.contentKind.isEmpty() ? QStringLiteral("None") : sound.contentKind;
    return {{ImfDict::TargetTrack, QStringLiteral("A%1").arg(number)},
            {ImfDict::MixMode, sound.mix},
            {ImfDict::Metadata,
             QJsonObject{{ImfDict::AudioContentKind, kind}, {ImfDict::RFC5646SpokenLanguage, sound.language}}}};
}

QJsonObject audioOf(const imf::Composition& composition, const QVector<DescriptorFacts>& sounds)
{
    QJsonArray mapping;
    for (const DescriptorFacts& sound : sounds)
        mapping += mappingEntry(sound, mapping.size() + 1);
    QJsonObject audio{{ImfDict::MultipleAudioMix, QJsonObject{{ImfDict::AudioMapping, mapping}}}};
    state(audio, soundParameters, sounds.value(0), wordWithoutFacts(composition, imf::SequenceKind::MainAudio));
    return audio;
}

QJsonObject compositionMetadata(const imf::Composition& composition)
{
    QJsonObject metadata = metadataOf(composition);
    metadata[QLatin1String(ImfDict::ContentOriginator)] = composition.contentOriginator.text;
    metadata[QLatin1String(ImfDict::ContentTitle)] = composition.contentTitle.text;
    metadata[QLatin1String(ImfDict::ContentKind)] =
        QJsonObject{{ImfDict::Scope, composition.contentKind.scope}, {ImfDict::Value, composition.contentKind.value}};
    return metadata;
}

QJsonObject documentOf(const imf::Delivery& delivery, const imf::DeliveredComposition& delivered)
{
    const imf::Composition& composition = delivered.composition;
    const TrackFacts facts = factsOf(delivery, composition);
    QJsonObject document = itemDocument("CPL", delivered.name);
    document[QLatin1String(ImfDict::Video)] = videoOf(composition, facts.picture);
    document[QLatin1String(ImfDict::Audio)] = audioOf(composition, facts.sounds);
    document[QLatin1String(ImfDict::DescriptiveMetadata)] = compositionMetadata(composition);
    if (!delivered.missingAssets.isEmpty()) {
        QJsonArray missing;
        for (const QUuid& asset : delivered.missingAssets)
            missing += imf::toUrn(asset);
        document[QLatin1String(missingAssets)] = missing;
    }
    return document;
}

QJsonObject documentOf(const imf::Delivery& delivery, const imf::DeliveredPackage& package)
{
    QJsonObject document = itemDocument("IMP", package.name);
    QJsonObject metadata = metadataOf(package.packingList);
    // A packing list without an annotation of its own carries its name there.
    if (package.packingList.annotation.text == package.name)
        metadata[QLatin1String(ImfDict::Annotation)] = QString();
    document[QLatin1String(ImfDict::DescriptiveMetadata)] = metadata;
    QJsonArray children;
    for (const imf::DeliveredComposition& composition : package.compositions)
        children += documentOf(delivery, composition);
    document[QLatin1String(ImfDict::Children)] = children;
    return document;
}
} // namespace

QJsonObject documentOf(const imf::Delivery& delivery)
{
    QJsonObject document = itemDocument("Delivery", delivery.name);
    document[QLatin1String(ImfDict::Original)] = delivery.version == imf::DeliveryVersion::Original;
    document[QLatin1String(ImfDict::Path)] = delivery.folder;
    document[QLatin1String(ImfDict::DescriptiveMetadata)] = metadataOf(delivery);
    QJsonArray children;
    for (const imf::DeliveredPackage& package : delivery.packages)
        children += documentOf(delivery, package);
    document[QLatin1String(ImfDict::Children)] = children;
    return document;
}

} // namespace desk::services

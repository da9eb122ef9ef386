#include "desk/imf/mxf/TrackFacts.h"

#include "desk/imf/j2k/J2kProfile.h"
#include "desk/imf/mxf/Labels.h"

#include <algorithm>

namespace desk::imf
{

namespace
{

Error missing(const MetadataSet& set, const QString& what)
{
    const QString item = set.info != nullptr ? QString::fromLatin1(set.info->name) : QStringLiteral("header metadata");
    return {{}, item, QStringLiteral("offset %1").arg(set.offset), what, QStringLiteral("have the file made again")};
}

const MetadataSet* findFilePackage(const MetadataSets& sets)
{
    if (const MetadataSet* preface = sets.first("Preface")) {
        const MetadataSet* primary = sets.find(preface->uuid("PrimaryPackage"));
        if (primary != nullptr && isA(primary->info, "SourcePackage") && primary->has("EssenceDescription"))
            return primary;
    }
    for (const MetadataSet& set : sets.all()) {
        if (isA(set.info, "SourcePackage") && set.has("EssenceDescription"))
            return &set;
    }
    return nullptr;
}

/// The track that the descriptor is linked to, or else the first one with a place in the essence.
const MetadataSet* findEssenceTrack(const MetadataSets& sets, const MetadataSet& package, const MetadataSet& descriptor)
{
    const auto tracks = sets.referenced(package, "PackageTracks");
    const auto linked = std::find_if(tracks.begin(), tracks.end(), [&](const MetadataSet* track) {
        return descriptor.has("LinkedTrackID") && track->number("TrackID") == descriptor.number("LinkedTrackID");
    });
    if (linked != tracks.end())
        return *linked;
    const auto numbered = std::find_if(tracks.begin(), tracks.end(), [](const MetadataSet* track) {
        return track->number("EssenceTrackNumber") != 0;
    });
    return numbered == tracks.end() ? nullptr : *numbered;
}

quint32 findBodySid(const MetadataSets& sets, const QByteArray& packageId)
{
    for (const MetadataSet& set : sets.all()) {
        if (isA(set.info, "EssenceData") && set.bytes("LinkedPackageID") == packageId)
            return quint32(set.number("EssenceStreamID"));
    }
    return 0;
}

J2kFacts readJ2k(const MetadataSet& descriptor, const MetadataSet* codestream)
{
    J2kFacts facts;
    facts.pictureCoding = descriptor.bytes("PictureCompression");
    facts.frameLayout = int(descriptor.number("FrameLayout"));
    facts.rsiz = codestream != nullptr ? quint16(codestream->number("Rsiz")) : quint16(0);
    static const Ul highThroughput(0x060e2b340401010d, 0x0401020203010801);
    if (facts.pictureCoding.size() == 16 && Ul::from(facts.pictureCoding.constData()).matches(highThroughput))
        facts.coding = J2kFacts::Coding::HighThroughput;
    if (const auto profile = profileOfLabel(facts.pictureCoding)) {
        const bool lossy = profile->mode == J2kSettings::Mode::Lossy;
        facts.coding = lossy ? J2kFacts::Coding::Lossy : J2kFacts::Coding::Reversible;
        facts.mainLevel = profile->mainLevel;
        facts.subLevel = profile->subLevel;
    }
    return facts;
}

/// Bits of the first component: the layout tells best, the descriptor's own depth may be that of a container.
int componentDepth(const MetadataSet& descriptor, const MetadataSet* codestream)
{
    const QByteArray layout = codestream != nullptr ? codestream->bytes("J2CLayout") : QByteArray();
    if (layout.size() >= 2 && layout[1] != 0)
        return quint8(layout[1]);
    const QByteArray sizing = codestream != nullptr ? codestream->bytes("PictureComponentSizing") : QByteArray();
    if (sizing.size() >= 9)
        return (quint8(sizing[8]) & 0x7f) + 1;
    const QByteArray pixels = descriptor.bytes("PixelLayout");
    return pixels.size() >= 2 ? quint8(pixels[1]) : int(descriptor.number("ComponentDepth"));
}

Status readSampling(const MetadataSet& descriptor, PictureFormat& format)
{
    if (isA(descriptor.info, "RGBADescriptor")) {
        format.sampling = Sampling::Rgb444;
        format.range = descriptor.number("ComponentMinRef") == 0 ? Range::Full : Range::Narrow;
        return {};
    }
    const quint64 horizontal = descriptor.number("HorizontalSubsampling");
    if (horizontal < 1 || horizontal > 2 || descriptor.number("VerticalSubsampling") > 1)
        return missing(descriptor, QStringLiteral("the picture is neither 4:2:2 nor 4:4:4"));
    format.sampling = horizontal == 2 ? Sampling::YCbCr422 : Sampling::YCbCr444;
    return {};
}

Status readPicture(const MetadataSets& sets, const MetadataSet& descriptor, TrackFileFacts& facts)
{
    const MetadataSet* codestream = nullptr;
    const auto subDescriptors = sets.referenced(descriptor, "SubDescriptors");
    for (const MetadataSet* sub : subDescriptors) {
        if (isA(sub->info, "JPEG2000SubDescriptor"))
            codestream = sub;
    }
    facts.kind = TrackKind::Picture;
    facts.j2k = readJ2k(descriptor, codestream);
    const quint64 width = descriptor.number("StoredWidth");
    const quint64 height = descriptor.number("StoredHeight");
    if (width < 1 || width > 16384 || height < 1 || height > 16384)
        return missing(descriptor, QStringLiteral("a picture of %1x%2 is not possible").arg(width).arg(height));
    facts.picture.width = int(width);
    facts.picture.height = int(height);
    facts.picture.bitDepth = componentDepth(descriptor, codestream);
    facts.picture.frameRate = descriptor.ratio("SampleRate");
    facts.picture.colour =
        colourOfLabels(descriptor.label("ColorPrimaries"), descriptor.label("TransferCharacteristic"),
                       descriptor.label("CodingEquations"));
    if (facts.picture.bitDepth < 1 || facts.picture.bitDepth > 16)
        return missing(descriptor, QStringLiteral("%1 bits a component are not possible").arg(facts.picture.bitDepth));
    return readSampling(descriptor, facts.picture);
}

/// The symbol the file has, or else the one that its label stands for.
template <class Row>
QString labelSymbol(const MetadataSet& set, const Row* row)
{
    const QString symbol = set.text("MCATagSymbol");
    return symbol.isEmpty() && row != nullptr ? QString::fromLatin1(row->symbol) : symbol;
}

void readLabels(const MetadataSets& sets, const MetadataSet& descriptor, SoundFormat& sound)
{
    const auto subDescriptors = sets.referenced(descriptor, "SubDescriptors");
    for (const MetadataSet* sub : subDescriptors) {
        const Ul label = sub->label("MCALabelDictionaryID");
        if (isA(sub->info, "SoundfieldGroupLabelSubDescriptor")) {
            sound.soundfield = labelSymbol(*sub, findSoundfield(label));
            sound.language = sub->text("RFC5646SpokenLanguage");
            sound.contentKind = sub->text("MCAAudioContentKind");
            sound.title = sub->text("MCATitle");
        }
        const quint64 channel = sub->number("MCAChannelID");
        if (isA(sub->info, "AudioChannelLabelSubDescriptor") && channel >= 1 &&
            channel <= quint64(sound.channels.size()))
            sound.channels[int(channel) - 1].symbol = labelSymbol(*sub, findChannel(label));
    }
}

Status readSound(const MetadataSets& sets, const MetadataSet& descriptor, HeaderFacts& header)
{
    header.facts.kind = TrackKind::Sound;
    SoundFormat& sound = header.facts.sound;
    const quint64 channels = descriptor.number("ChannelCount");
    const quint64 bits = descriptor.number("QuantizationBits");
    header.blockAlign = int(descriptor.number("BlockAlign"));
    const Rational rate = descriptor.ratio("AudioSampleRate");
    if (channels < 1 || channels > 1024 || bits < 8 || bits > 32 ||
        quint64(header.blockAlign) != channels * ((bits + 7) / 8))
        return missing(descriptor, QStringLiteral("%1 channels of %2 bits in blocks of %3 bytes are not possible")
                                       .arg(channels)
                                       .arg(bits)
                                       .arg(header.blockAlign));
    if (rate.den != 1 || rate.num < 1 || rate.num > 1000000)
        return missing(descriptor,
                       QStringLiteral("a sample rate of %1/%2 is not possible").arg(rate.num).arg(rate.den));
    sound.sampleRate = int(rate.num);
    sound.bitsPerSample = int(bits);
    sound.channels.resize(int(channels));
    readLabels(sets, descriptor, sound);
    return {};
}

Status readTiming(const MetadataSets& sets, const MetadataSet& package, const MetadataSet& descriptor,
                  TrackFileFacts& facts)
{
    const MetadataSet* track = findEssenceTrack(sets, package, descriptor);
    if (track == nullptr)
        return missing(package, QStringLiteral("the file package has no essence track"));
    facts.editRate = track->ratio("EditRate");
    if (!facts.editRate.isValid())
        return missing(*track, QStringLiteral("the track has no usable edit rate"));
    const MetadataSet* sequence = sets.find(track->uuid("TrackSegment"));
    const bool described = descriptor.has("EssenceLength") && qint64(descriptor.number("EssenceLength")) >= 0;
    if (!described && sequence == nullptr)
        return missing(*track, QStringLiteral("the track has no duration"));
    facts.duration = qint64(described ? descriptor.number("EssenceLength") : sequence->number("ComponentLength"));
    if (facts.duration < 0)
        return missing(*track, QStringLiteral("a duration of %1 is not possible").arg(facts.duration));
    return {};
}

} // namespace

Result<HeaderFacts> interpretHeader(const MetadataSets& sets)
{
    const MetadataSet* package = findFilePackage(sets);
    if (package == nullptr)
        return missing({}, QStringLiteral("the file has no file package"));
    const MetadataSet* descriptor = sets.find(package->uuid("EssenceDescription"));
    const QByteArray umid = package->bytes("PackageID");
    if (descriptor == nullptr || umid.size() != 32)
        return missing(*package, QStringLiteral("the file package has no descriptor or no identifier"));
    HeaderFacts header;
    header.facts.id = QUuid::fromRfc4122(umid.mid(16));
    header.descriptor = descriptor->instanceId();
    header.bodySid = findBodySid(sets, umid);
    Status status = readTiming(sets, *package, *descriptor, header.facts);
    if (status && isA(descriptor->info, "PictureDescriptor"))
        status = readPicture(sets, *descriptor, header.facts);
    else if (status && isA(descriptor->info, "SoundDescriptor"))
        status = readSound(sets, *descriptor, header);
    if (!status)
        return status.error();
    return header;
}

} // namespace desk::imf

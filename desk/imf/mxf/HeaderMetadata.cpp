#include "desk/imf/mxf/HeaderMetadata.h"

#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/Labels.h"

#include <QtEndian>

#include <algorithm>

namespace desk::imf
{

namespace
{

constexpr quint32 trackId = 1;
constexpr qint64 headerBlock = 8192;
constexpr qint64 smallestHeader = 2 * headerBlock;
constexpr Ul productId{0x8f1d7a52c60e4b39, 0xa4e35b9d02c718f6};

/// 'Y' 10 'U' 10 'V' 10 and five empty components: the layout of a codestream or of an RGBA picture.
QByteArray layout(const PictureFormat& format)
{
    const char* codes = format.sampling == Sampling::Rgb444 ? "RGB" : "YUV";
    QByteArray bytes;
    for (int i = 0; i < 3; ++i)
        bytes += codes[i] + value::u8(quint8(format.bitDepth));
    return bytes.leftJustified(16, '\0');
}

quint32 scaled(quint32 eightBits, int depth)
{
    return eightBits << (depth - 8);
}

void addPictureItems(MetadataSet& set, const PictureFormat& format)
{
    const ColourLabels* labels = findColour(format.colour);
    set.set("StoredWidth", value::u32(quint32(format.width)));
    set.set("StoredHeight", value::u32(quint32(format.height)));
    set.set("FrameLayout", value::u8(0));
    set.set("VideoLineMap", value::batch({value::u32(0), value::u32(0)}, 4));
    set.set("ImageAspectRatio", value::rational(Rational(format.width, format.height)));
    if (labels != nullptr) {
        set.set("TransferCharacteristic", value::ul(labels->transfer));
        set.set("ColorPrimaries", value::ul(labels->primaries));
    }
    if (labels != nullptr && !labels->codingEquations.isNull() && format.sampling != Sampling::Rgb444)
        set.set("CodingEquations", value::ul(labels->codingEquations));
}

void addColourDifferenceItems(MetadataSet& set, const PictureFormat& format)
{
    const int depth = format.bitDepth;
    set.set("ComponentDepth", value::u32(quint32(depth)));
    set.set("HorizontalSubsampling", value::u32(format.sampling == Sampling::YCbCr422 ? 2 : 1));
    set.set("VerticalSubsampling", value::u32(1));
    set.set("ColorSiting", value::u8(0));
    set.set("BlackRefLevel", value::u32(scaled(16, depth)));
    set.set("WhiteRefLevel", value::u32(scaled(235, depth)));
    set.set("ColorRange", value::u32(scaled(224, depth) + 1));
}

void addRgbItems(MetadataSet& set, const PictureFormat& format)
{
    const bool full = format.range == Range::Full;
    const quint32 top = (1U << format.bitDepth) - 1;
    set.set("ComponentMaxRef", value::u32(full ? top : scaled(235, format.bitDepth)));
    set.set("ComponentMinRef", value::u32(full ? 0 : scaled(16, format.bitDepth)));
    set.set("ScanningDirection", value::u8(0));
    set.set("PixelLayout", layout(format));
}

MetadataSet describeCodestream(const PictureFormat& format, const CodestreamHeader& header)
{
    MetadataSet set("JPEG2000SubDescriptor");
    QVector<QByteArray> components;
    for (const CodestreamHeader::Component& component : header.components)
        components.append(value::u8(component.ssiz) + value::u8(component.xRsiz) + value::u8(component.yRsiz));
    set.set("Rsiz", value::u16(header.rsiz));
    set.set("Xsiz", value::u32(header.xsiz)).set("Ysiz", value::u32(header.ysiz));
    set.set("XOsiz", value::u32(header.xOsiz)).set("YOsiz", value::u32(header.yOsiz));
    set.set("XTsiz", value::u32(header.xTsiz)).set("YTsiz", value::u32(header.yTsiz));
    set.set("XTOsiz", value::u32(header.xTOsiz)).set("YTOsiz", value::u32(header.yTOsiz));
    set.set("Csiz", value::u16(quint16(components.size())));
    set.set("PictureComponentSizing", value::batch(components, 3));
    set.set("CodingStyleDefault", header.codingStyle);
    set.set("QuantizationDefault", header.quantization);
    set.set("J2CLayout", layout(format));
    return set;
}

void addLabelItems(MetadataSet& set, const Ul& label, const char* symbol, const char* name)
{
    set.set("MCALabelDictionaryID", value::ul(label));
    set.set("MCALinkID", value::uuid(QUuid::createUuid()));
    set.set("MCATagSymbol", value::text(QString::fromLatin1(symbol)));
    set.set("MCATagName", value::text(QString::fromLatin1(name)));
}

QString orElse(const QString& text, const char* fallback)
{
    return text.isEmpty() ? QString::fromLatin1(fallback) : text;
}

MetadataSet describeSoundfield(const SoundFormat& format)
{
    const McaSoundfield* soundfield = findSoundfield(format.soundfield);
    MetadataSet set("SoundfieldGroupLabelSubDescriptor");
    addLabelItems(set, soundfield->label, soundfield->symbol, soundfield->name);
    set.set("RFC5646SpokenLanguage", orElse(format.language, "und").toLatin1());
    set.set("MCATitle", value::text(orElse(format.title, "n/a")));
    set.set("MCATitleVersion", value::text(QStringLiteral("n/a")));
    set.set("MCAAudioContentKind", value::text(orElse(format.contentKind, "PRM")));
    set.set("MCAAudioElementKind", value::text(QStringLiteral("FCMP")));
    return set;
}

MetadataSet describeChannel(const SoundFormat& format, int channel, const QByteArray& soundfieldLink)
{
    const McaChannel* row = findChannel(format.channels[channel].symbol);
    MetadataSet set("AudioChannelLabelSubDescriptor");
    addLabelItems(set, row->label, row->symbol, row->name);
    set.set("MCAChannelID", value::u32(quint32(channel + 1)));
    set.set("RFC5646SpokenLanguage", orElse(format.language, "und").toLatin1());
    set.set("SoundfieldGroupLinkID", soundfieldLink);
    return set;
}

/// A track with its sequence and the one clip in it, for either package.
struct TrackSets {
    MetadataSet clip{"SourceClip"};
    MetadataSet sequence{"Sequence"};
    MetadataSet track{"TimelineTrack"};
};

TrackSets buildTrack(const EssenceTrack& essence, const QByteArray& sourcePackage, quint32 sourceTrack, quint32 number)
{
    TrackSets sets;
    for (MetadataSet* set : {&sets.clip, &sets.sequence}) {
        set->set("ComponentDataDefinition", value::ul(essence.dataDefinition));
        set->set("ComponentLength", value::i64(essence.duration));
    }
    sets.clip.set("StartPosition", value::i64(0));
    sets.clip.set("SourcePackageID", sourcePackage).set("SourceTrackID", value::u32(sourceTrack));
    sets.sequence.set("ComponentObjects", value::batch({sets.clip.bytes("InstanceID")}));
    sets.track.set("TrackID", value::u32(trackId)).set("EssenceTrackNumber", value::u32(number));
    sets.track.set("TrackSegment", sets.sequence.bytes("InstanceID"));
    sets.track.set("EditRate", value::rational(essence.editRate)).set("Origin", value::i64(0));
    return sets;
}

MetadataSet buildPackage(const char* group, const QUuid& id, const TrackSets& track)
{
    MetadataSet set(group);
    set.set("PackageID", value::umid(id));
    set.set("CreationTime", value::timeStamp()).set("PackageLastModified", value::timeStamp());
    set.set("PackageTracks", value::batch({track.track.bytes("InstanceID")}));
    return set;
}

MetadataSet buildIdentification()
{
    MetadataSet set("Identification");
    set.set("GenerationID", value::uuid(QUuid::createUuid()));
    set.set("ApplicationSupplierName", value::text(QStringLiteral("Stratacut")));
    set.set("ApplicationName", value::text(QStringLiteral("Stratacut Desk")));
    set.set("ApplicationVersionString", value::text(QStringLiteral(STRATACUT_VERSION)));
    set.set("ApplicationProductID", value::ul(productId));
    set.set("FileModificationDate", value::timeStamp());
    return set;
}

MetadataSet buildPreface(const EssenceTrack& essence, const QByteArray& primaryPackage)
{
    MetadataSet set("Preface");
    set.set("FileLastModified", value::timeStamp()).set("FormatVersion", value::u16(0x0103));
    set.set("ObjectModelVersion", value::u32(1)).set("PrimaryPackage", primaryPackage);
    set.set("OperationalPattern", value::ul(keys::op1a));
    set.set("EssenceContainers", value::batch({value::ul(essence.container)}));
    set.set("DescriptiveSchemes", value::batch({}));
    return set;
}

} // namespace

Description describePicture(const PictureFormat& format, const CodestreamHeader& header,
                            const QByteArray& pictureCoding)
{
    const bool rgb = format.sampling == Sampling::Rgb444;
    Description description{MetadataSet(rgb ? "RGBADescriptor" : "CDCIDescriptor"),
                            {describeCodestream(format, header)}};
    MetadataSet& set = description.descriptor;
    set.set("PictureCompression", pictureCoding);
    addPictureItems(set, format);
    if (rgb)
        addRgbItems(set, format);
    else
        addColourDifferenceItems(set, format);
    return description;
}

Description describeSound(const SoundFormat& format)
{
    const int channels = format.channels.size();
    const int blockAlign = channels * format.bitsPerSample / 8;
    Description description{MetadataSet("WAVEPCMDescriptor"), {describeSoundfield(format)}};
    const QByteArray link = description.subDescriptors[0].bytes("MCALinkID");
    for (int channel = 0; channel < channels; ++channel)
        description.subDescriptors.append(describeChannel(format, channel, link));
    MetadataSet& set = description.descriptor;
    set.set("AudioSampleRate", value::rational({format.sampleRate, 1})).set("Locked", value::u8(1));
    set.set("ChannelCount", value::u32(quint32(channels)));
    set.set("QuantizationBits", value::u32(quint32(format.bitsPerSample)));
    set.set("BlockAlign", value::u16(quint16(blockAlign)));
    set.set("AverageBytesPerSecond", value::u32(quint32(blockAlign * format.sampleRate)));
    set.set("ChannelAssignment", value::ul(keys::imfChannelAssignment));
    return description;
}

MetadataSets buildHeader(const EssenceTrack& essence, Description description)
{
    const quint32 number = qFromBigEndian<quint32>(essence.essenceKey.bytes.data() + 12);
    const TrackSets material = buildTrack(essence, value::umid(essence.assetId), trackId, 0);
    const TrackSets file = buildTrack(essence, QByteArray(32, '\0'), 0, number);
    MetadataSet& descriptor = description.descriptor;
    QVector<QByteArray> subDescriptors;
    for (const MetadataSet& sub : qAsConst(description.subDescriptors))
        subDescriptors.append(sub.bytes("InstanceID"));
    descriptor.set("SubDescriptors", value::batch(subDescriptors)).set("LinkedTrackID", value::u32(trackId));
    descriptor.set("SampleRate", value::rational(essence.editRate)).set("EssenceLength", value::i64(essence.duration));
    descriptor.set("ContainerFormat", value::ul(essence.container));

    const MetadataSet materialPackage = buildPackage("MaterialPackage", QUuid::createUuid(), material);
    MetadataSet sourcePackage = buildPackage("SourcePackage", essence.assetId, file);
    sourcePackage.set("EssenceDescription", descriptor.bytes("InstanceID"));
    MetadataSet data("EssenceData");
    data.set("LinkedPackageID", value::umid(essence.assetId));
    data.set("IndexStreamID", value::u32(indexSid)).set("EssenceStreamID", value::u32(bodySid));
    MetadataSet storage("ContentStorage");
    storage.set("Packages", value::batch({materialPackage.bytes("InstanceID"), sourcePackage.bytes("InstanceID")}));
    storage.set("EssenceDataObjects", value::batch({data.bytes("InstanceID")}));
    const MetadataSet identification = buildIdentification();
    MetadataSet preface = buildPreface(essence, sourcePackage.bytes("InstanceID"));
    preface.set("ContentStorageObject", storage.bytes("InstanceID"));
    preface.set("IdentificationList", value::batch({identification.bytes("InstanceID")}));

    MetadataSets sets;
    for (const MetadataSet& set :
         {preface, identification, storage, data, materialPackage, material.track, material.sequence, material.clip,
          sourcePackage, file.track, file.sequence, file.clip, descriptor})
        sets.append(set);
    for (const MetadataSet& set : qAsConst(description.subDescriptors))
        sets.append(set);
    return sets;
}

QByteArray serialiseHeader(const MetadataSets& sets)
{
    const QByteArray bytes = sets.serialise();
    const qint64 least = std::max(smallestHeader, bytes.size() + klvHeadSize(0));
    const qint64 whole = (least + headerBlock - 1) / headerBlock * headerBlock;
    return bytes + fillItem(whole - bytes.size());
}

} // namespace desk::imf

#include "desk/services/DescriptorFacts.h"

#include "desk/imf/mxf/Labels.h"
#include "desk/imf/xml/XmlElement.h"
#include "desk/services/MixMode.h"
#include "desk/services/OutputFormat.h"

namespace desk::services
{

namespace
{
using imf::XmlElement;

const XmlElement* findBelow(const XmlElement& element, const QString& name)
{
    for (const XmlElement& child : element.children) {
        if (child.name == name)
            return &child;
        if (const XmlElement* found = findBelow(child, name))
            return found;
    }
    return nullptr;
}

QString textBelow(const XmlElement& element, const char* name)
{
    const XmlElement* found = findBelow(element, QLatin1String(name));
    return found ? found->content() : QString();
}

imf::Ul labelBelow(const XmlElement& element, const char* name)
{
    QString hex = textBelow(element, name).section(QLatin1Char(':'), -1);
    const QByteArray bytes = QByteArray::fromHex(hex.remove(QLatin1Char('.')).toLatin1());
    return bytes.size() == 16 ? imf::Ul::from(bytes.constData()) : imf::Ul();
}

QString known(const QString& text)
{
    return text.isEmpty() ? QString::fromLatin1(words::unknown) : text;
}

QString rateName(const QString& text)
{
    const Rational rate(text.section(QLatin1Char('/'), 0, 0).toLongLong(),
                        text.contains(QLatin1Char('/')) ? text.section(QLatin1Char('/'), 1, 1).toLongLong() : 1);
    if (!rate.isValid())
        return QLatin1String(words::unknown);
    const QString name = words::frameRate(rate);
    return name.isEmpty() ? QString::number(rate.toDouble(), 'g', 6) : name;
}

void readCompression(const XmlElement& descriptor, DescriptorFacts& facts)
{
    facts.compression = facts.profile = QLatin1String(words::unknown);
    const imf::Ul label = labelBelow(descriptor, "PictureCompression");
    const auto profile = imf::profileOfLabel(label.toBytes());
    if (profile) {
        facts.compression = words::compression(profile->mode);
        facts.profile = words::profile(*profile);
    } else if (findBelow(descriptor, QStringLiteral("JPEG2000SubDescriptor"))) {
        facts.compression = QStringLiteral("JPEG 2000");
    }
}

void readPicture(const XmlElement& descriptor, DescriptorFacts& facts)
{
    facts.resolution =
        words::resolution(textBelow(descriptor, "StoredWidth").toInt(), textBelow(descriptor, "StoredHeight").toInt());
    facts.frameRate = rateName(textBelow(descriptor, "SampleRate"));
    readCompression(descriptor, facts);
    facts.colour = words::colour(imf::colourOfLabels(labelBelow(descriptor, "ColorPrimaries"),
                                                     labelBelow(descriptor, "TransferCharacteristic"),
                                                     labelBelow(descriptor, "CodingEquations")));
    const XmlElement* layout = findBelow(descriptor, QStringLiteral("J2CLayout"));
    facts.depth = layout ? textBelow(*layout, "ComponentSize") : textBelow(descriptor, "ComponentDepth");
    facts.depth = known(facts.depth);
}

QString mixName(const XmlElement& descriptor)
{
    const XmlElement* group = findBelow(descriptor, QStringLiteral("SoundfieldGroupLabelSubDescriptor"));
    if (!group)
        return QStringLiteral("%1 channels").arg(textBelow(descriptor, "ChannelCount"));
    const QString symbol = textBelow(*group, "MCATagSymbol");
    for (const MixMode& mode : mixModes()) {
        if (symbol == QLatin1String(mode.soundfield))
            return QLatin1String(mode.name);
    }
    const QString name = textBelow(*group, "MCATagName");
    return name.isEmpty() ? symbol : name;
}

void readSound(const XmlElement& descriptor, DescriptorFacts& facts)
{
    facts.format = QLatin1String(words::pcm);
    const int hertz = textBelow(descriptor, "AudioSampleRate").section(QLatin1Char('/'), 0, 0).toInt();
    facts.sampleRate = hertz > 0 ? words::sampleRate(hertz) : QString::fromLatin1(words::unknown);
    facts.bits = known(textBelow(descriptor, "QuantizationBits"));
    facts.mix = mixName(descriptor);
    // The group speaks for the whole track; channels may carry labels of their own.
    const XmlElement* group = findBelow(descriptor, QStringLiteral("SoundfieldGroupLabelSubDescriptor"));
    const XmlElement& labels = group ? *group : descriptor;
    facts.language = textBelow(labels, "RFC5646SpokenLanguage");
    facts.contentKind = textBelow(labels, "MCAAudioContentKind");
}
} // namespace

DescriptorFacts readDescriptor(const QByteArray& regXml)
{
    DescriptorFacts facts;
    const auto parsed = imf::parseXml(regXml, QStringLiteral("EssenceDescriptor"));
    if (!parsed)
        return facts;
    const QString name = parsed->name;
    if (name == QLatin1String("CDCIDescriptor") || name == QLatin1String("RGBADescriptor")) {
        facts.kind = DescriptorFacts::Kind::Picture;
        readPicture(*parsed, facts);
    } else if (name == QLatin1String("WAVEPCMDescriptor")) {
        facts.kind = DescriptorFacts::Kind::Sound;
        readSound(*parsed, facts);
    }
    return facts;
}

} // namespace desk::services

#include "desk/imf/mxf/RegXml.h"

#include "desk/imf/mxf/ByteOrder.h"
#include "desk/imf/mxf/MetadataSets.h"

#include <QHash>
#include <QSet>
#include <QXmlStreamWriter>

#include <algorithm>
#include <iterator>

namespace desk::imf
{

namespace
{

QString groups()
{
    return QStringLiteral("http://www.smpte-ra.org/reg/395/2014/13/1/aaf");
}

QString properties()
{
    return QStringLiteral("http://www.smpte-ra.org/reg/335/2012");
}

QString members()
{
    return QStringLiteral("http://www.smpte-ra.org/reg/2003/2012");
}

struct EnumName {
    ItemType type;
    int number;
    const char* name;
};

const EnumName enumNames[] = {
    {ItemType::FrameLayout, 0, "FullFrame"},
    {ItemType::FrameLayout, 1, "SeparateFields"},
    {ItemType::FrameLayout, 2, "OneField"},
    {ItemType::FrameLayout, 3, "MixedFields"},
    {ItemType::FrameLayout, 4, "SegmentedFrame"},
    {ItemType::FieldNumber, 0, "UnspecifiedField"},
    {ItemType::FieldNumber, 1, "FieldOne"},
    {ItemType::FieldNumber, 2, "FieldTwo"},
    {ItemType::ColorSiting, 0, "CoSiting"},
    {ItemType::ColorSiting, 1, "Averaging"},
    {ItemType::ColorSiting, 2, "ThreeTap"},
    {ItemType::ColorSiting, 3, "Quincunx"},
    {ItemType::ColorSiting, 4, "Rec601"},
    {ItemType::ColorSiting, 255, "UnknownSiting"},
    {ItemType::ScanningDirection, 0, "ScanningDirection_LeftToRightTopToBottom"},
    {ItemType::SignalStandard, 0, "SignalStandard_None"},
    {ItemType::SignalStandard, 1, "SignalStandard_ITU601"},
    {ItemType::SignalStandard, 2, "SignalStandard_ITU1358"},
    {ItemType::SignalStandard, 3, "SignalStandard_SMPTE347M"},
    {ItemType::SignalStandard, 4, "SignalStandard_SMPTE274M"},
    {ItemType::SignalStandard, 5, "SignalStandard_SMPTE296M"},
    {ItemType::SignalStandard, 6, "SignalStandard_SMPTE349M"},
    {ItemType::SignalStandard, 7, "SignalStandard_SMPTE428_1"},
    {ItemType::AlphaTransparency, 0, "MinValueTransparent"},
    {ItemType::AlphaTransparency, 1, "MaxValueTransparent"},
    {ItemType::Boolean, 0, "False"},
    {ItemType::Boolean, 1, "True"},
    // Component codes of an RGBA layout.
    {ItemType::RgbaLayout, 0, "CompNull"},
    {ItemType::RgbaLayout, 'A', "CompAlpha"},
    {ItemType::RgbaLayout, 'B', "CompBlue"},
    {ItemType::RgbaLayout, 'F', "CompFill"},
    {ItemType::RgbaLayout, 'G', "CompGreen"},
    {ItemType::RgbaLayout, 'P', "CompPalette"},
    {ItemType::RgbaLayout, 'R', "CompRed"},
    {ItemType::RgbaLayout, 'U', "CompColorDifferenceU"},
    {ItemType::RgbaLayout, 'V', "CompColorDifferenceV"},
    {ItemType::RgbaLayout, 'X', "CompColorDifferenceX"},
    {ItemType::RgbaLayout, 'Y', "CompLuma"},
    {ItemType::RgbaLayout, 'Z', "CompColorDifferenceZ"},
};

QString enumName(ItemType type, int number)
{
    for (const EnumName& row : enumNames) {
        if (row.type == type && row.number == number)
            return QString::fromLatin1(row.name);
    }
    return QString::number(number);
}

template <class T>
QString number(const QByteArray& bytes)
{
    return QString::number(BigReader(bytes).get<T>());
}

QString auid(const QByteArray& bytes)
{
    if (bytes.startsWith("\x06\x0e\x2b\x34"))
        return QString::fromLatin1(BigReader(bytes).ul().urn());
    // A UUID in an AUID's place has its halves swapped (ST 377-1, annex on AUIDs).
    return QStringLiteral("urn:uuid:") +
           QUuid::fromRfc4122(bytes.mid(8, 8) + bytes.left(8)).toString(QUuid::WithoutBraces);
}

QString uuid(const QByteArray& bytes)
{
    return QStringLiteral("urn:uuid:") + QUuid::fromRfc4122(bytes.left(16)).toString(QUuid::WithoutBraces);
}

QString rational(const QByteArray& bytes)
{
    BigReader reader(bytes);
    const auto numerator = reader.get<qint32>();
    return QStringLiteral("%1/%2").arg(numerator).arg(reader.get<qint32>());
}

QString timeStamp(const QByteArray& bytes)
{
    BigReader reader(bytes);
    const int year = reader.get<qint16>();
    QString text = QStringLiteral("%1").arg(year, 4, 10, QLatin1Char('0'));
    for (const char* before : {"-", "-", "T", ":", ":"})
        text += QLatin1String(before) + QStringLiteral("%1").arg(reader.get<quint8>(), 2, 10, QLatin1Char('0'));
    return text + QStringLiteral(".%1Z").arg(reader.get<quint8>() * 4, 3, 10, QLatin1Char('0'));
}

/// XML has no place for control characters and halves of surrogate pairs, which a damaged text may hold.
QString printable(QString text)
{
    text.truncate(text.indexOf(QChar(0)) < 0 ? text.size() : text.indexOf(QChar(0)));
    for (QChar& unit : text) {
        if ((unit < QLatin1Char(' ') && !unit.isSpace()) || unit.unicode() >= 0xfffe)
            unit = QChar::ReplacementCharacter;
    }
    return QString::fromUtf8(text.toUtf8());
}

QString wideText(const QByteArray& bytes)
{
    QString text;
    for (BigReader reader(bytes); reader.left() >= 2;)
        text += QChar(reader.get<quint16>());
    return printable(text);
}

QString umid(const QByteArray& bytes)
{
    QByteArray text = "urn:smpte:umid:";
    for (int i = 0; i + 4 <= bytes.size(); i += 4)
        text += (i == 0 ? "" : ".") + bytes.mid(i, 4).toHex();
    return QString::fromLatin1(text);
}

QString latinText(const QByteArray& bytes)
{
    return printable(QString::fromLatin1(bytes));
}

QString version(const QByteArray& bytes)
{
    BigReader reader(bytes);
    const int major = reader.get<quint8>();
    return QStringLiteral("%1.%2").arg(major).arg(reader.get<quint8>());
}

QString hex(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

/// Bytes of a value of one type, 0 where it varies, and how it reads as text.
struct Scalar {
    int size;
    QString (*text)(const QByteArray&);
};

const QHash<int, Scalar>& scalars()
{
    static const QHash<int, Scalar> table = {
        {int(ItemType::UInt8), {1, number<quint8>}},
        {int(ItemType::UInt16), {2, number<quint16>}},
        {int(ItemType::UInt32), {4, number<quint32>}},
        {int(ItemType::UInt64), {8, number<quint64>}},
        {int(ItemType::Int8), {1, number<qint8>}},
        {int(ItemType::Int16), {2, number<qint16>}},
        {int(ItemType::Int32), {4, number<qint32>}},
        {int(ItemType::Int64), {8, number<qint64>}},
        {int(ItemType::Rational), {8, rational}},
        {int(ItemType::TimeStamp), {8, timeStamp}},
        {int(ItemType::Version), {2, version}},
        {int(ItemType::Uuid), {16, uuid}},
        {int(ItemType::Auid), {16, auid}},
        {int(ItemType::Umid), {32, umid}},
        {int(ItemType::Utf16), {0, wideText}},
        {int(ItemType::Iso7), {0, latinText}},
        {int(ItemType::DataValue), {0, hex}},
    };
    return table;
}

/// An array of equal records: bytes of the count and size before them, the record's element, its members in order.
struct RecordMember {
    const char* name;
    ItemType type;
    int size;
};

struct Record {
    int headSize;
    const char* element;
    QVector<RecordMember> members;
};

const QHash<int, Record>& records()
{
    static const RecordMember x{"X", ItemType::UInt16, 2};
    static const RecordMember y{"Y", ItemType::UInt16, 2};
    static const QHash<int, Record> table = {
        {int(ItemType::AuidBatch), {8, "AUID", {{"", ItemType::Auid, 16}}}},
        {int(ItemType::UuidBatch), {8, "UUID", {{"", ItemType::Uuid, 16}}}},
        {int(ItemType::UInt16Batch), {8, "UInt16", {{"", ItemType::UInt16, 2}}}},
        {int(ItemType::UInt32Batch), {8, "UInt32", {{"", ItemType::UInt32, 4}}}},
        {int(ItemType::Int32Batch), {8, "Int32", {{"", ItemType::Int32, 4}}}},
        {int(ItemType::RgbaLayout),
         {0, "RGBAComponent", {{"Code", ItemType::RgbaLayout, 1}, {"ComponentSize", ItemType::UInt8, 1}}}},
        {int(ItemType::ComponentSizing),
         {8,
          "J2KComponentSizing",
          {{"Ssiz", ItemType::UInt8, 1}, {"XRSiz", ItemType::UInt8, 1}, {"YRSiz", ItemType::UInt8, 1}}}},
        {int(ItemType::ThreeColorPrimaries), {0, "ColorPrimary", {x, y}}},
        {int(ItemType::ColorPrimary), {0, "", {x, y}}},
    };
    return table;
}

bool isEnum(ItemType type)
{
    return std::any_of(std::begin(enumNames), std::end(enumNames),
                       [type](const EnumName& row) { return row.type == type; });
}

QString scalarText(ItemType type, const QByteArray& bytes)
{
    return isEnum(type) ? enumName(type, BigReader(bytes).get<quint8>()) : scalars().value(int(type)).text(bytes);
}

constexpr int deepestReference = 8;

class Writer
{
public:
    explicit Writer(const MetadataSets& sets) : m_sets(sets), m_xml(&m_bytes) {}

    QByteArray write(const MetadataSet& set)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(2);
        m_xml.writeNamespace(groups(), QStringLiteral("r0"));
        m_xml.writeNamespace(properties(), QStringLiteral("r1"));
        m_xml.writeNamespace(members(), QStringLiteral("r2"));
        writeSet(set, 0);
        return m_bytes.trimmed();
    }

private:
    void writeSet(const MetadataSet& set, int depth)
    {
        if (set.info == nullptr || depth > deepestReference)
            return;
        m_xml.writeStartElement(groups(), QString::fromLatin1(set.info->name));
        for (const MetadataItem& item : set.items) {
            if (item.info != nullptr)
                writeItem(set, item, depth);
        }
        m_xml.writeEndElement();
    }

    void writeItem(const MetadataSet& set, const MetadataItem& item, int depth)
    {
        const ItemType type = item.info->type;
        const QString name = QString::fromLatin1(item.info->symbol);
        if (type == ItemType::StrongRef || type == ItemType::StrongRefBatch) {
            m_xml.writeStartElement(properties(), name);
            writeReferenced(set, item.info->symbol, depth);
            m_xml.writeEndElement();
        } else if (records().contains(int(type))) {
            m_xml.writeStartElement(properties(), name);
            writeRecords(records()[int(type)], item.bytes);
            m_xml.writeEndElement();
        } else if (isEnum(type) || (scalars().contains(int(type)) && item.bytes.size() >= scalars()[int(type)].size)) {
            m_xml.writeTextElement(properties(), name, scalarText(type, item.bytes));
        }
    }

    void writeReferenced(const MetadataSet& set, const char* symbol, int depth)
    {
        const auto children = m_sets.referenced(set, symbol);
        for (const MetadataSet* child : children) {
            // A set has one owner; in a damaged file it may have many, and the text would grow without end.
            if (m_written.contains(child))
                continue;
            m_written.insert(child);
            writeSet(*child, depth + 1);
        }
    }

    void writeRecords(const Record& record, const QByteArray& bytes)
    {
        BigReader reader(bytes);
        reader.take(record.headSize);
        int size = 0;
        for (const RecordMember& member : record.members)
            size += member.size;
        while (reader.left() >= size && reader.ok())
            writeRecord(record, reader);
    }

    void writeRecord(const Record& record, BigReader& reader)
    {
        const QString element = QString::fromLatin1(record.element);
        if (record.members.size() == 1) {
            m_xml.writeTextElement(members(), element,
                                   scalarText(record.members[0].type, reader.take(record.members[0].size)));
            return;
        }
        if (!element.isEmpty())
            m_xml.writeStartElement(members(), element);
        for (const RecordMember& member : record.members)
            m_xml.writeTextElement(members(), QString::fromLatin1(member.name),
                                   scalarText(member.type, reader.take(member.size)));
        if (!element.isEmpty())
            m_xml.writeEndElement();
    }

    const MetadataSets& m_sets;
    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
    QSet<const MetadataSet*> m_written;
};

} // namespace

QByteArray toRegXml(const MetadataSet& set, const MetadataSets& sets)
{
    return Writer(sets).write(set);
}

} // namespace desk::imf

#include "desk/imf/xml/XmlFields.h"

#include <QRegularExpression>

namespace desk::imf
{
namespace
{

/// A signature does not outlive a change, so it is not carried into what is written again.
bool isSignature(const XmlElement& element)
{
    return element.is(QStringLiteral("http://www.w3.org/2000/09/xmldsig#"), QStringLiteral("Signature"));
}

} // namespace

FieldReader::FieldReader(QString file, QString nameSpace) : m_file(std::move(file)), m_space(std::move(nameSpace)) {}

const XmlElement* FieldReader::child(const XmlElement& parent, const char* name) const
{
    return parent.child(m_space, QLatin1String(name));
}

const XmlElement* FieldReader::needed(const XmlElement& parent, const char* name, Need need)
{
    const XmlElement* found = child(parent, name);
    if (!found && need == Need::Required)
        fail(parent, QStringLiteral("%1 has no %2").arg(parent.name, QLatin1String(name)));
    // Which of them counts would be left to each program.
    if (found && parent.elements(m_space, QLatin1String(name)).size() > 1)
        fail(parent, QStringLiteral("%1 has more than one %2").arg(parent.name, QLatin1String(name)));
    return found;
}

void FieldReader::fail(const XmlElement& at, const QString& what)
{
    if (!m_error)
        m_error = Error{m_file,
                        {},
                        QStringLiteral("line %1").arg(at.line),
                        what,
                        QStringLiteral("ask for a sound copy of the file")};
}

QUuid FieldReader::uuid(const XmlElement& parent, const char* name, Need need)
{
    const XmlElement* found = needed(parent, name, need);
    if (!found)
        return {};
    const QUuid id = uuidFromUrn(found->content());
    if (id.isNull())
        fail(*found, QStringLiteral("%1 \"%2\" is no UUID").arg(found->name, found->content().left(80)));
    return id;
}

std::optional<qint64> FieldReader::number(const XmlElement& parent, const char* name, Need need)
{
    const XmlElement* found = needed(parent, name, need);
    if (!found)
        return {};
    bool isNumber = false;
    const qint64 value = found->content().toLongLong(&isNumber);
    if (!isNumber || value < 0) {
        fail(*found, QStringLiteral("%1 \"%2\" is no whole number").arg(found->name, found->content().left(40)));
        return {};
    }
    return value;
}

Rational FieldReader::rational(const XmlElement& parent, const char* name, Need need)
{
    const XmlElement* found = needed(parent, name, need);
    if (!found)
        return {};
    static const QRegularExpression form(QStringLiteral("\\A(\\d{1,9})\\s+(\\d{1,9})\\z"));
    const QRegularExpressionMatch match = form.match(found->content());
    if (match.hasMatch() && match.captured(1).toLongLong() > 0 && match.captured(2).toLongLong() > 0)
        return {match.captured(1).toLongLong(), match.captured(2).toLongLong()};
    fail(*found, QStringLiteral("%1 \"%2\" is no rate").arg(found->name, found->content().left(40)));
    return {};
}

QDateTime FieldReader::date(const XmlElement& parent, const char* name) const
{
    return QDateTime::fromString(text(parent, name), Qt::ISODate);
}

UserText FieldReader::userText(const XmlElement& parent, const char* name) const
{
    const XmlElement* found = child(parent, name);
    return found ? UserText{found->content(), found->attribute(QStringLiteral("language"))} : UserText();
}

QString FieldReader::text(const XmlElement& parent, const char* name) const
{
    const XmlElement* found = child(parent, name);
    return found ? found->content() : QString();
}

QByteArray FieldReader::base64(const XmlElement& parent, const char* name)
{
    const XmlElement* found = child(parent, name);
    if (!found)
        return {};
    QByteArray digits = found->content().toLatin1();
    digits.replace(' ', "").replace('\n', "").replace('\t', "");
    const auto decoded = QByteArray::fromBase64Encoding(digits, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        fail(*found, QStringLiteral("%1 is not in base 64").arg(found->name));
    return *decoded;
}

QVector<const XmlElement*> FieldReader::list(const XmlElement& parent, const char* list, const char* item, Need need)
{
    const XmlElement* found = needed(parent, list, need);
    return found ? found->elements(m_space, QLatin1String(item)) : QVector<const XmlElement*>();
}

QVector<QByteArray> FieldReader::unknown(const XmlElement& parent, const QStringList& known) const
{
    QVector<QByteArray> result;
    const auto children = parent.elements();
    for (const XmlElement* one : children) {
        const bool isKnown = one->nameSpace == m_space && known.contains(one->name);
        if (!isKnown && !isSignature(*one))
            result.append(toXml(*one));
    }
    return result;
}

Result<XmlElement> parseDocument(const QByteArray& xml, const QString& fileName, const QString& rootName,
                                 const QStringList& nameSpaces)
{
    Result<XmlElement> root = parseXml(xml, fileName);
    if (!root || (root->name == rootName && nameSpaces.contains(root->nameSpace)))
        return root;
    return Error{fileName,
                 {},
                 QStringLiteral("line %1").arg(root->line),
                 QStringLiteral("the document is a \"%1\" of namespace \"%2\", not a %3 of a known edition")
                     .arg(root->name.left(80), root->nameSpace.left(120), rootName),
                 QStringLiteral("choose a file of an IMF delivery")};
}

FieldWriter::FieldWriter(const QString& nameSpace) : m_space(nameSpace)
{
    m_buffer.open(QIODevice::WriteOnly);
    m_writer.setDevice(&m_buffer);
    m_writer.setAutoFormatting(true);
    m_writer.setAutoFormattingIndent(2);
    m_writer.writeStartDocument();
}

void FieldWriter::start(const char* name)
{
    if (!m_started) {
        m_started = true;
        m_writer.writeDefaultNamespace(m_space);
        for (const auto& one : qAsConst(m_prefixes))
            m_writer.writeNamespace(one.first, one.second);
    }
    m_writer.writeStartElement(m_space, QLatin1String(name));
}

void FieldWriter::start(const QString& nameSpace, const QString& name)
{
    m_writer.writeStartElement(nameSpace, name);
}

void FieldWriter::attribute(const char* name, const QString& value)
{
    m_writer.writeAttribute(QLatin1String(name), xmlText(value));
}

void FieldWriter::attribute(const QString& nameSpace, const char* name, const QString& value)
{
    m_writer.writeAttribute(nameSpace, QLatin1String(name), xmlText(value));
}

void FieldWriter::characters(const QString& text)
{
    m_writer.writeCharacters(xmlText(text));
}

void FieldWriter::text(const char* name, const QString& value)
{
    m_writer.writeTextElement(m_space, QLatin1String(name), xmlText(value));
}

void FieldWriter::optionalText(const char* name, const QString& value)
{
    if (!value.isEmpty())
        text(name, value);
}

void FieldWriter::userText(const char* name, const UserText& value)
{
    start(name);
    if (!value.language.isEmpty())
        attribute("language", value.language);
    characters(value.text);
    end();
}

void FieldWriter::optionalUserText(const char* name, const UserText& value)
{
    if (!value.isEmpty())
        userText(name, value);
}

void FieldWriter::date(const char* name, const QDateTime& date)
{
    const QDateTime moment = date.isValid() ? date : QDateTime::currentDateTimeUtc();
    text(name, moment.toUTC().toString(Qt::ISODate));
}

void FieldWriter::rational(const char* name, Rational value)
{
    text(name, QStringLiteral("%1 %2").arg(value.num).arg(value.den));
}

void FieldWriter::raw(const QVector<QByteArray>& fragments)
{
    for (const QByteArray& one : fragments)
        raw(one);
}

void FieldWriter::raw(const QByteArray& fragment)
{
    m_writer.writeCharacters(QStringLiteral("\n")); // ends the start tag that the fragment stands in
    const int declaration = fragment.startsWith("<?xml") ? fragment.indexOf("?>") + 2 : 0;
    m_buffer.write(fragment.mid(declaration).trimmed());
}

QByteArray FieldWriter::finish()
{
    m_writer.writeEndDocument();
    return m_buffer.data();
}

} // namespace desk::imf

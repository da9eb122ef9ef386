#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/imf/xml/UserText.h"
#include "desk/imf/xml/XmlElement.h"

#include <QBuffer>
#include <QDateTime>
#include <QStringList>
#include <QXmlStreamWriter>

#include <optional>

namespace desk::imf
{

enum class Need { Required, Optional };

/// Reads typed child elements of one document namespace and keeps the first failure.
class FieldReader
{
public:
    FieldReader(QString file, QString nameSpace);

    const QString& nameSpace() const { return m_space; }

    QUuid uuid(const XmlElement& parent, const char* name, Need need = Need::Required);
    /// Not negative.
    std::optional<qint64> number(const XmlElement& parent, const char* name, Need need = Need::Optional);
    /// "24000 1001".
    Rational rational(const XmlElement& parent, const char* name, Need need = Need::Optional);
    /// Invalid where there is none or it is no date: the verifier says so.
    QDateTime date(const XmlElement& parent, const char* name) const;
    UserText userText(const XmlElement& parent, const char* name) const;
    QString text(const XmlElement& parent, const char* name) const;
    QByteArray base64(const XmlElement& parent, const char* name);
    /// The `item` elements of the child `list`.
    QVector<const XmlElement*> list(const XmlElement& parent, const char* list, const char* item,
                                    Need need = Need::Optional);
    /// Child elements that are not among the known names of the document's namespace, as XML text.
    QVector<QByteArray> unknown(const XmlElement& parent, const QStringList& known) const;

    void fail(const XmlElement& at, const QString& what);

    bool failed() const { return m_error.has_value(); }

    const Error& error() const { return *m_error; }

private:
    const XmlElement* child(const XmlElement& parent, const char* name) const;
    const XmlElement* needed(const XmlElement& parent, const char* name, Need need);

    QString m_file;
    QString m_space;
    std::optional<Error> m_error;
};

/// The root element of a document when it has that name and one of these namespaces; else an error that says what kind
/// of document was expected.
Result<XmlElement> parseDocument(const QByteArray& xml, const QString& fileName, const QString& rootName,
                                 const QStringList& nameSpaces);

/// Writes documents of one default namespace, indented by two blanks.
class FieldWriter
{
public:
    explicit FieldWriter(const QString& nameSpace);

    /// For prefixes that elements or attribute values use; before the first start().
    void declare(const QString& nameSpace, const QString& prefix) { m_prefixes.append({nameSpace, prefix}); }

    void start(const char* name);
    void start(const QString& nameSpace, const QString& name);

    void end() { m_writer.writeEndElement(); }

    void attribute(const char* name, const QString& value);
    void attribute(const QString& nameSpace, const char* name, const QString& value);
    void characters(const QString& text);

    void text(const char* name, const QString& value);
    void optionalText(const char* name, const QString& value);
    void userText(const char* name, const UserText& value);
    void optionalUserText(const char* name, const UserText& value);

    void number(const char* name, qint64 value) { text(name, QString::number(value)); }

    void uuid(const char* name, const QUuid& id) { text(name, toUrn(id)); }

    void date(const char* name, const QDateTime& date);
    void rational(const char* name, Rational value);
    void raw(const QVector<QByteArray>& fragments);
    void raw(const QByteArray& fragment);

    QByteArray finish();

private:
    QBuffer m_buffer;
    QXmlStreamWriter m_writer;
    QString m_space;
    QVector<QPair<QString, QString>> m_prefixes;
    bool m_started = false;
};

} // namespace desk::imf

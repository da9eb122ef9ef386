#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <QVector>

namespace desk::imf
{

struct XmlAttribute {
    QString nameSpace;
    QString prefix;
    QString name;
    QString value;
    /// Of xsi:type: the namespace that the prefix in the value stands for.
    QString valueNameSpace;
};

/// An element of a parsed document, or a run of text between elements (empty `name`, the characters in `text`).
/// Comments and processing instructions are not kept.
struct XmlElement {
    QString nameSpace;
    QString prefix;
    QString name;
    QString text;
    QVector<XmlAttribute> attributes;
    QVector<XmlElement> children;
    /// 1-based line of the end of the start tag.
    qint64 line = 0;

    bool isText() const { return name.isEmpty(); }

    bool is(const QString& space, const QString& local) const { return name == local && nameSpace == space; }

    /// First child element of that namespace and local name; nullptr when there is none.
    const XmlElement* child(const QString& space, const QString& local) const;
    /// The children that are elements.
    QVector<const XmlElement*> elements() const;
    QVector<const XmlElement*> elements(const QString& space, const QString& local) const;
    /// The text directly inside, trimmed.
    QString content() const;
    /// Value of the attribute with that local name; empty when there is none.
    QString attribute(const QString& local) const;
};

/// What a document from a stranger may cost.
struct XmlLimits {
    qint64 bytes = 64LL << 20;
    /// Elements, some 200 bytes of memory each.
    int nodes = 1000000;
    int depth = 100;
    int attributes = 200;
    int attributeLength = 1 << 20;
};

/// Parses a whole document in the encoding that it declares. Refused, with file and line: what is not well-formed, any
/// document type declaration (and with it every entity), and what exceeds the limits.
Result<XmlElement> parseXml(const QByteArray& xml, const QString& fileName, const XmlLimits& limits = {});

/// Local name of the root element; reads no further than its start tag. Refuses as parseXml() does.
Result<QString> rootName(const QByteArray& xml, const QString& fileName);

/// The element as UTF-8 text that stands alone: every namespace that it uses is declared inside it. Prefixes are kept.
QByteArray toXml(const XmlElement& element);

/// Text that XML can hold: line ends become line feeds, characters that XML 1.0 (2.2) has no place for are dropped.
QString xmlText(const QString& text);

/// "urn:uuid:..." in lower case.
QString toUrn(const QUuid& id);
/// Null when the text is not "urn:uuid:" and a UUID.
QUuid uuidFromUrn(const QString& urn);

} // namespace desk::imf

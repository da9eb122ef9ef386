#include "desk/imf/xml/XmlElement.h"

#include "desk/imf/xml/XmlInput.h"

#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QXmlStreamReader>

namespace desk::imf
{
namespace
{

const QLatin1String schemaInstance("http://www.w3.org/2001/XMLSchema-instance");

using Scope = QHash<QString, QString>;

/// Builds the tree without recursion; `open` holds the elements whose end has not come yet.
class TreeBuilder
{
public:
    TreeBuilder(const QString& xml, const QString& file, const XmlLimits& limits)
        : m_reader(xml), m_file(file), m_limits(limits)
    {
    }

    Result<XmlElement> build()
    {
        while (!m_reader.atEnd()) {
            const QString wrong = take(m_reader.readNext());
            if (!wrong.isEmpty())
                return xmlRefusal(m_file, m_reader.lineNumber(), wrong);
        }
        if (m_reader.hasError())
            return xmlRefusal(m_file, m_reader.lineNumber(), complaint());
        return std::move(m_root);
    }

private:
    /// Answers what is wrong with the token, or nothing.
    QString take(QXmlStreamReader::TokenType token)
    {
        switch (token) {
        case QXmlStreamReader::EntityReference:
            return QStringLiteral("the document refers to an entity, which is not accepted");
        case QXmlStreamReader::StartElement:
            return start();
        case QXmlStreamReader::EndElement:
            end();
            return {};
        case QXmlStreamReader::Characters:
            text();
            return {};
        default:
            return {};
        }
    }

    QString start()
    {
        if (m_open.size() >= m_limits.depth)
            return QStringLiteral("elements are nested more than %1 deep").arg(m_limits.depth);
        if (++m_nodes > m_limits.nodes)
            return QStringLiteral("the document has more than %1 elements").arg(m_limits.nodes);
        XmlElement element;
        element.nameSpace = m_reader.namespaceUri().toString();
        element.prefix = m_reader.prefix().toString();
        element.name = m_reader.name().toString();
        element.line = m_reader.lineNumber();
        Scope scope = m_scopes.isEmpty() ? Scope() : m_scopes.last();
        const QXmlStreamNamespaceDeclarations declarations = m_reader.namespaceDeclarations();
        for (const QXmlStreamNamespaceDeclaration& one : declarations)
            scope.insert(one.prefix().toString(), one.namespaceUri().toString());
        const QXmlStreamAttributes attributes = m_reader.attributes();
        for (const QXmlStreamAttribute& one : attributes) {
            if (one.value().size() > m_limits.attributeLength)
                return QStringLiteral("an attribute is longer than %1 characters").arg(m_limits.attributeLength);
            element.attributes.append(attribute(one, scope));
        }
        m_open.append(std::move(element));
        m_scopes.append(std::move(scope));
        return {};
    }

    static XmlAttribute attribute(const QXmlStreamAttribute& one, const Scope& scope)
    {
        XmlAttribute result{
            one.namespaceUri().toString(), one.prefix().toString(), one.name().toString(), one.value().toString(), {}};
        if (result.name == QLatin1String("type") && result.nameSpace == schemaInstance)
            result.valueNameSpace = scope.value(result.value.section(QLatin1Char(':'), 0, -2));
        return result;
    }

    void text()
    {
        if (m_open.isEmpty())
            return;
        QVector<XmlElement>& siblings = m_open.last().children;
        if (siblings.isEmpty() || !siblings.last().isText())
            siblings.append(XmlElement());
        siblings.last().text += m_reader.text();
    }

    void end()
    {
        XmlElement done = m_open.takeLast();
        m_scopes.removeLast();
        dropIndentation(done.children);
        if (m_open.isEmpty())
            m_root = std::move(done);
        else
            m_open.last().children.append(std::move(done));
    }

    static void dropIndentation(QVector<XmlElement>& children)
    {
        const auto isElement = [](const XmlElement& one) { return !one.isText(); };
        const auto isBlank = [](const XmlElement& one) { return one.isText() && one.text.trimmed().isEmpty(); };
        if (std::any_of(children.cbegin(), children.cend(), isElement))
            children.erase(std::remove_if(children.begin(), children.end(), isBlank), children.end());
    }

    QString complaint() const
    {
        QString reason = m_reader.errorString();
        while (reason.endsWith(QLatin1Char('.')))
            reason.chop(1);
        return QStringLiteral("this is not well-formed XML (%1)").arg(reason);
    }

    QXmlStreamReader m_reader;
    QString m_file;
    XmlLimits m_limits;
    int m_nodes = 0;
    QVector<XmlElement> m_open;
    QVector<Scope> m_scopes; // a copy only where an element declares
    XmlElement m_root;
};

QString escaped(const QString& text)
{
    return xmlText(text).toHtmlEscaped();
}

QString escapedAttribute(const QString& text)
{
    return escaped(text)
        .replace(QLatin1Char('\n'), QLatin1String("&#10;"))
        .replace(QLatin1Char('\t'), QLatin1String("&#9;"));
}

void declare(const QString& prefix, const QString& space, Scope& scope, QString& out)
{
    if (prefix == QLatin1String("xml") || scope.value(prefix) == space)
        return;
    scope.insert(prefix, space);
    out += prefix.isEmpty() ? QStringLiteral(" xmlns=\"") : QStringLiteral(" xmlns:%1=\"").arg(prefix);
    out += escapedAttribute(space) + QLatin1Char('"');
}

QString qualified(const QString& prefix, const QString& name)
{
    return prefix.isEmpty() ? name : prefix + QLatin1Char(':') + name;
}

/// The first meaning of every prefix in the tree, to be declared once at its root.
void collect(const XmlElement& element, QMap<QString, QString>& meanings)
{
    const auto note = [&](const QString& prefix, const QString& space) {
        if (!prefix.isEmpty() && !meanings.contains(prefix))
            meanings.insert(prefix, space);
    };
    note(element.prefix, element.nameSpace);
    for (const XmlAttribute& one : element.attributes)
        note(one.prefix, one.nameSpace);
    for (const XmlElement& child : element.children)
        collect(child, meanings);
}

void write(const XmlElement& element, Scope scope, const QMap<QString, QString>& declarations, QString& out)
{
    const QString tag = qualified(element.prefix, element.name);
    out += QLatin1Char('<') + tag;
    for (auto it = declarations.cbegin(); it != declarations.cend(); ++it)
        declare(it.key(), it.value(), scope, out);
    declare(element.prefix, element.nameSpace, scope, out);
    for (const XmlAttribute& one : element.attributes) {
        if (!one.prefix.isEmpty())
            declare(one.prefix, one.nameSpace, scope, out);
        if (!one.valueNameSpace.isEmpty())
            declare(one.value.section(QLatin1Char(':'), 0, -2), one.valueNameSpace, scope, out);
        out += QStringLiteral(" %1=\"%2\"").arg(qualified(one.prefix, one.name), escapedAttribute(one.value));
    }
    if (element.children.isEmpty()) {
        out += QLatin1String("/>");
        return;
    }
    out += QLatin1Char('>');
    for (const XmlElement& child : element.children) {
        if (child.isText())
            out += escaped(child.text);
        else
            write(child, scope, {}, out);
    }
    out += QStringLiteral("</%1>").arg(tag);
}

} // namespace

const XmlElement* XmlElement::child(const QString& space, const QString& local) const
{
    const auto found =
        std::find_if(children.cbegin(), children.cend(), [&](const XmlElement& one) { return one.is(space, local); });
    return found == children.cend() ? nullptr : &*found;
}

QVector<const XmlElement*> XmlElement::elements() const
{
    QVector<const XmlElement*> result;
    for (const XmlElement& one : children) {
        if (!one.isText())
            result.append(&one);
    }
    return result;
}

QVector<const XmlElement*> XmlElement::elements(const QString& space, const QString& local) const
{
    QVector<const XmlElement*> result;
    for (const XmlElement& one : children) {
        if (one.is(space, local))
            result.append(&one);
    }
    return result;
}

QString XmlElement::content() const
{
    QString result;
    for (const XmlElement& one : children) {
        if (one.isText())
            result += one.text;
    }
    return result.trimmed();
}

QString XmlElement::attribute(const QString& local) const
{
    for (const XmlAttribute& one : attributes) {
        if (one.name == local)
            return one.value;
    }
    return {};
}

Result<XmlElement> parseXml(const QByteArray& xml, const QString& fileName, const XmlLimits& limits)
{
    const Result<QString> text = xmlInput(xml, fileName, limits);
    return text ? TreeBuilder(*text, fileName, limits).build() : Result<XmlElement>(text.error());
}

Result<QString> rootName(const QByteArray& xml, const QString& fileName)
{
    const Result<QString> text = xmlInput(xml, fileName, {});
    QXmlStreamReader reader(text ? *text : QString());
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement)
            return reader.name().toString();
    }
    const Result<XmlElement> whole = parseXml(xml, fileName);
    return whole ? Result<QString>(whole->name) : Result<QString>(whole.error());
}

QByteArray toXml(const XmlElement& element)
{
    QMap<QString, QString> declarations;
    collect(element, declarations);
    QString out;
    write(element, {}, declarations, out);
    return out.toUtf8();
}

QString xmlText(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            result.append(c).append(text.at(++i));
        } else if (c == QLatin1Char('\r')) {
            if (i + 1 == text.size() || text.at(i + 1) != QLatin1Char('\n'))
                result.append(QLatin1Char('\n'));
        } else if (c == QLatin1Char('\n') || c == QLatin1Char('\t') ||
                   (c >= QLatin1Char(' ') && !c.isSurrogate() && c.unicode() < 0xfffe)) {
            result.append(c);
        }
    }
    return result;
}

QString toUrn(const QUuid& id)
{
    return QLatin1String("urn:uuid:") + id.toString(QUuid::WithoutBraces);
}

QUuid uuidFromUrn(const QString& urn)
{
    static const QRegularExpression form(
        QStringLiteral("\\Aurn:uuid:([0-9a-fA-F]{8}(?:-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12})\\z"));
    const QRegularExpressionMatch match = form.match(urn);
    return match.hasMatch() ? QUuid::fromString(match.captured(1)) : QUuid();
}

} // namespace desk::imf

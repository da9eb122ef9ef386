#include "desk/imf/xml/XmlInput.h"

#include <QRegularExpression>
#include <QTextCodec>

namespace desk::imf
{
namespace
{

/// What is no element, with its end; nothing inside counts.
struct Passage {
    QLatin1String begin;
    QLatin1String end;
};

const Passage passages[] = {{QLatin1String("<!--"), QLatin1String("-->")},
                            {QLatin1String("<![CDATA["), QLatin1String("]]>")},
                            {QLatin1String("<?"), QLatin1String("?>")}};

QByteArray declaredEncoding(const QByteArray& xml)
{
    constexpr int longestDeclaration = 256;
    static const QRegularExpression form(
        QStringLiteral("\\A<\\?xml\\s[^>]*?\\sencoding\\s*=\\s*[\"']([A-Za-z][A-Za-z0-9._-]*)[\"']"));
    const QString start = QString::fromLatin1(xml.left(longestDeclaration));
    const QRegularExpressionMatch match = form.match(start);
    return match.hasMatch() ? match.captured(1).toLatin1() : QByteArray("UTF-8");
}

/// Walks over the tags of a text.
class TagWalk
{
public:
    TagWalk(const QString& text, int mostAttributes) : m_text(text), m_most(mostAttributes) {}

    /// What is wrong, or nothing.
    QString run()
    {
        for (m_at = m_text.indexOf(QLatin1Char('<')); m_at >= 0; m_at = m_text.indexOf(QLatin1Char('<'), m_at)) {
            if (skipPassage())
                continue;
            if (m_at + 1 < m_text.size() && m_text.at(m_at + 1) == QLatin1Char('!'))
                return QStringLiteral("the document has a document type declaration, which is not accepted");
            if (countAttributes() > m_most)
                return QStringLiteral("an element has more than %1 attributes").arg(m_most);
        }
        return {};
    }

    qint64 line() const { return 1 + m_text.leftRef(m_at).count(QLatin1Char('\n')); }

private:
    bool skipPassage()
    {
        for (const Passage& one : passages) {
            if (!m_text.midRef(m_at).startsWith(one.begin))
                continue;
            const int end = m_text.indexOf(one.end, m_at + one.begin.size());
            m_at = end < 0 ? m_text.size() : end + one.end.size();
            return true;
        }
        return false;
    }

    int countAttributes()
    {
        int values = 0;
        for (++m_at; m_at < m_text.size() && values <= m_most; ++m_at) {
            const QChar c = m_text.at(m_at);
            if (c == QLatin1Char('>'))
                break;
            if (c != QLatin1Char('"') && c != QLatin1Char('\''))
                continue;
            const int end = m_text.indexOf(c, m_at + 1);
            m_at = end < 0 ? m_text.size() : end;
            ++values;
        }
        return values;
    }

    const QString& m_text;
    int m_most;
    int m_at = 0;
};

} // namespace

Error xmlRefusal(const QString& fileName, qint64 line, const QString& what)
{
    const QString where = line > 0 ? QStringLiteral("line %1").arg(line) : QString();
    return {fileName, {}, where, what, QStringLiteral("ask for a sound copy of the file")};
}

Result<QString> xmlInput(const QByteArray& xml, const QString& fileName, const XmlLimits& limits)
{
    if (xml.trimmed().isEmpty())
        return xmlRefusal(fileName, 0, QStringLiteral("the file is empty"));
    if (xml.size() > limits.bytes)
        return xmlRefusal(fileName, 0, QStringLiteral("the file is larger than %1 bytes").arg(limits.bytes));
    const QByteArray name = declaredEncoding(xml);
    const QTextCodec* codec = QTextCodec::codecForUtfText(xml, QTextCodec::codecForName(name));
    if (!codec)
        return xmlRefusal(fileName, 1,
                          QStringLiteral("the encoding \"%1\" is not known").arg(QString::fromLatin1(name)));
    QTextCodec::ConverterState state;
    QString text = codec->toUnicode(xml.constData(), xml.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return xmlRefusal(fileName, 0,
                          QStringLiteral("this is not well-formed XML (it holds bytes that %1 has not)")
                              .arg(QString::fromLatin1(codec->name())));
    TagWalk walk(text, limits.attributes);
    const QString wrong = walk.run();
    if (!wrong.isEmpty())
        return xmlRefusal(fileName, walk.line(), wrong);
    return text;
}

} // namespace desk::imf

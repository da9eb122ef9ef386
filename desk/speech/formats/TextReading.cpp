#include "desk/speech/formats/TextReading.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <limits>

namespace desk::speech
{

QString unicodeText(const QByteArray& bytes)
{
    QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    return QTextCodec::codecForUtfText(bytes, utf8)->toUnicode(bytes);
}

QString decodedText(const QByteArray& bytes)
{
    if (QTextCodec* marked = QTextCodec::codecForUtfText(bytes, nullptr))
        return marked->toUnicode(bytes);
    QTextCodec::ConverterState state;
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    QTextCodec* old = QTextCodec::codecForName("Windows-1252");
    return state.invalidChars > 0 && old != nullptr ? old->toUnicode(bytes) : text;
}

QStringList linesOf(const QString& text)
{
    QString even = text;
    even.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    even.remove(QChar::Null);
    return even.split(QLatin1Char('\n'));
}

std::optional<int> parsedTime(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("^\\s*(?:(?:(\\d{1,4}):)?(\\d{1,2}):)?(\\d{1,2})(?:[.,](\\d{1,3}))?\\s*$"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 minutes = match.captured(1).toLongLong() * 60 + match.captured(2).toLongLong();
    const int seconds = match.captured(3).toInt();
    const bool hasMinutes = match.capturedLength(2) > 0;
    if ((match.capturedLength(1) > 0 && match.captured(2).toInt() > 59) || (hasMinutes && seconds > 59))
        return std::nullopt;
    const qint64 ms = (minutes * 60 + seconds) * 1000 + match.captured(4).leftJustified(3, QLatin1Char('0')).toInt();
    return ms <= std::numeric_limits<int>::max() ? std::optional<int>(int(ms)) : std::nullopt;
}

QString withoutMarkup(const QString& text)
{
    // Only what looks like a tag: "a < b" and "<3" stay.
    static const QRegularExpression tags(QStringLiteral("</?[A-Za-z][^<>]*>|<[\\d:.,]+>|\\{\\\\[^{}]*\\}"));

    static const struct {
        QLatin1String entity;
        ushort character;
    } entities[] = {{QLatin1String("&lt;"), '<'},    {QLatin1String("&gt;"), '>'},     {QLatin1String("&quot;"), '"'},
                    {QLatin1String("&nbsp;"), 0xa0}, {QLatin1String("&lrm;"), 0x200e}, {QLatin1String("&rlm;"), 0x200f},
                    {QLatin1String("&#39;"), '\''},  {QLatin1String("&amp;"), '&'}};

    QString plain = text;
    plain.remove(tags);
    for (const auto& known : entities)
        plain.replace(known.entity, QString(QChar(known.character)));
    return plain;
}

Error errorAtLine(const QString& file, int line, const QString& what, const QString& next)
{
    return {file, QString(), QStringLiteral("line %1").arg(line), what,
            next.isEmpty() ? QStringLiteral("correct the line and import the file again") : next};
}

} // namespace desk::speech

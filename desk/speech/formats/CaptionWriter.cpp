#include "desk/speech/formats/Writers.h"

#include <QRegularExpression>
#include <QXmlStreamWriter>

namespace desk::speech
{

namespace
{

/// "00:00:01,000"; the millisecond nearest to the start of a frame.
QString clockTime(qint64 frame, Rational rate, QChar separator)
{
    const qint64 ms = (frame * 1000 * rate.den + rate.num / 2) / rate.num;
    return QStringLiteral("%1:%2:%3%4%5")
        .arg(ms / 3600000, 2, 10, QLatin1Char('0'))
        .arg(ms / 60000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(separator)
        .arg(ms % 1000, 3, 10, QLatin1Char('0'));
}

QString timing(const Caption& caption, Rational rate, QChar separator)
{
    return clockTime(caption.startFrame, rate, separator) + QLatin1String(" --> ") +
           clockTime(caption.endFrame, rate, separator);
}

/// SubRip has no way to say that "-->" is no time and "<i>" no tag: a mark without width keeps them from being taken
/// so.
QString srtText(const QString& text)
{
    static const QRegularExpression marks(QStringLiteral("(--(?=>)|<(?=[/A-Za-z\\d:.,])|\\{(?=\\\\))"));
    return QString(text).replace(marks, QStringLiteral("\\1\u200b"));
}

QString vttText(const QString& text)
{
    return text.toHtmlEscaped().replace(QLatin1String("&quot;"), QLatin1String("\""));
}

// Namespaces of TTML2 (W3C, 8 November 2018), 5.1, and of IMSC 1.1, 6.
const QLatin1String tt("http://www.w3.org/ns/ttml");
const QLatin1String ttm("http://www.w3.org/ns/ttml#metadata");
const QLatin1String ttp("http://www.w3.org/ns/ttml#parameter");
const QLatin1String tts("http://www.w3.org/ns/ttml#styling");
const QLatin1String xmlSpace("http://www.w3.org/XML/1998/namespace");

struct Attribute {
    QLatin1String space;
    const char* name;
    const char* value;
};

/// White on black at the lower edge. Lengths are parts of the picture's height and width, so that 42 characters fit
/// whatever its shape.
const Attribute textStyle[] = {{tts, "fontFamily", "proportionalSansSerif"},
                               {tts, "fontSize", "4.5rh"},
                               {tts, "lineHeight", "125%"},
                               {tts, "textAlign", "center"},
                               {tts, "color", "#ffffffff"}};
const Attribute spanStyle[] = {{tts, "backgroundColor", "#000000c0"}};
const Attribute regionStyle[] = {{tts, "origin", "5% 75%"},
                                 {tts, "extent", "90% 20%"},
                                 {tts, "displayAlign", "after"},
                                 {tts, "overflow", "visible"}};

template <std::size_t count>
void writeAttributes(QXmlStreamWriter& xml, const Attribute (&attributes)[count])
{
    for (const Attribute& attribute : attributes)
        xml.writeAttribute(attribute.space, QLatin1String(attribute.name), QLatin1String(attribute.value));
}

/// Characters that XML 1.0 (2.2) has no place for are dropped.
QString xmlText(const QString& text)
{
    QString clean;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool isPair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (isPair)
            clean += text.midRef(i++, 2);
        else if (!c.isSurrogate() && (c.unicode() >= 0x20 || c == QLatin1Char('\t')) && c.unicode() < 0xfffe)
            clean += c;
    }
    return clean;
}

class ImscWriter
{
public:
    ImscWriter(const Transcript& transcript, const ExportSettings& settings)
        : m_transcript(transcript),
          m_settings(settings),
          m_captions(makeCaptions(transcript, settings.captions)),
          m_xml(&m_bytes)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(1);
    }

    QByteArray write()
    {
        m_xml.writeStartDocument();
        m_xml.writeDefaultNamespace(tt);
        for (const auto& [space, prefix] : {std::pair(ttm, "ttm"), {ttp, "ttp"}, {tts, "tts"}})
            m_xml.writeNamespace(space, QLatin1String(prefix));
        m_xml.writeStartElement(tt, QStringLiteral("tt"));
        writeParameters();
        writeHead();
        writeBody();
        m_xml.writeEndDocument();
        return m_bytes;
    }

private:
    void writeParameters()
    {
        const Rational rate = m_settings.captions.frameRate;
        const qint64 base = (rate.num + rate.den - 1) / rate.den;
        const Rational multiplier(rate.num, rate.den * base);
        m_xml.writeAttribute(xmlSpace, QStringLiteral("lang"), m_settings.language);
        m_xml.writeAttribute(ttp, QStringLiteral("contentProfiles"),
                             QStringLiteral("http://www.w3.org/ns/ttml/profile/imsc1.1/text"));
        m_xml.writeAttribute(ttp, QStringLiteral("timeBase"), QStringLiteral("media"));
        m_xml.writeAttribute(ttp, QStringLiteral("frameRate"), QString::number(base));
        m_xml.writeAttribute(ttp, QStringLiteral("frameRateMultiplier"),
                             QStringLiteral("%1 %2").arg(multiplier.num).arg(multiplier.den));
    }

    void writeHead()
    {
        m_xml.writeStartElement(tt, QStringLiteral("head"));
        m_xml.writeStartElement(tt, QStringLiteral("metadata"));
        if (!m_settings.title.isEmpty())
            m_xml.writeTextElement(ttm, QStringLiteral("title"), xmlText(m_settings.title));
        const QString note = noteOfBreaches(m_captions, m_settings.captions);
        if (!note.isEmpty())
            m_xml.writeTextElement(ttm, QStringLiteral("desc"), note);
        for (const Speaker& speaker : m_transcript.speakers)
            writeAgent(speaker);
        m_xml.writeEndElement();
        m_xml.writeStartElement(tt, QStringLiteral("styling"));
        writeStyle(QStringLiteral("text"), textStyle);
        writeStyle(QStringLiteral("band"), spanStyle);
        m_xml.writeEndElement();
        m_xml.writeStartElement(tt, QStringLiteral("layout"));
        m_xml.writeEmptyElement(tt, QStringLiteral("region"));
        m_xml.writeAttribute(xmlSpace, QStringLiteral("id"), QStringLiteral("bottom"));
        writeAttributes(m_xml, regionStyle);
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void writeAgent(const Speaker& speaker)
    {
        m_xml.writeStartElement(ttm, QStringLiteral("agent"));
        m_xml.writeAttribute(xmlSpace, QStringLiteral("id"), agentId(speaker.id));
        m_xml.writeAttribute(QStringLiteral("type"), QStringLiteral("person"));
        m_xml.writeStartElement(ttm, QStringLiteral("name"));
        m_xml.writeAttribute(QStringLiteral("type"), QStringLiteral("full"));
        m_xml.writeCharacters(xmlText(displayName(m_transcript, speaker.id)));
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    template <std::size_t count>
    void writeStyle(const QString& id, const Attribute (&attributes)[count])
    {
        m_xml.writeEmptyElement(tt, QStringLiteral("style"));
        m_xml.writeAttribute(xmlSpace, QStringLiteral("id"), id);
        writeAttributes(m_xml, attributes);
    }

    void writeBody()
    {
        m_xml.writeStartElement(tt, QStringLiteral("body"));
        m_xml.writeAttribute(QStringLiteral("style"), QStringLiteral("text"));
        m_xml.writeAttribute(QStringLiteral("region"), QStringLiteral("bottom"));
        m_xml.writeStartElement(tt, QStringLiteral("div"));
        for (const Caption& caption : m_captions)
            writeCaption(caption);
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void writeCaption(const Caption& caption)
    {
        m_xml.writeStartElement(tt, QStringLiteral("p"));
        m_xml.writeAttribute(xmlSpace, QStringLiteral("id"), QStringLiteral("c%1").arg(++m_count));
        m_xml.writeAttribute(QStringLiteral("begin"), QStringLiteral("%1f").arg(caption.startFrame));
        m_xml.writeAttribute(QStringLiteral("end"), QStringLiteral("%1f").arg(caption.endFrame));
        if (!displayName(m_transcript, caption.speaker).isEmpty())
            m_xml.writeAttribute(ttm, QStringLiteral("agent"), agentId(caption.speaker));
        // Blanks between the elements inside would show.
        m_xml.setAutoFormatting(false);
        m_xml.writeStartElement(tt, QStringLiteral("span"));
        m_xml.writeAttribute(QStringLiteral("style"), QStringLiteral("band"));
        for (int i = 0; i < caption.lines.size(); ++i) {
            if (i > 0)
                m_xml.writeEmptyElement(tt, QStringLiteral("br"));
            m_xml.writeCharacters(xmlText(caption.lines[i]));
        }
        m_xml.writeEndElement();
        m_xml.writeEndElement();
        m_xml.setAutoFormatting(true);
    }

    static QString agentId(int speaker) { return QStringLiteral("speaker%1").arg(speaker); }

    const Transcript& m_transcript;
    const ExportSettings& m_settings;
    const QVector<Caption> m_captions;
    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
    int m_count = 0;
};

} // namespace

QString noteOfBreaches(const QVector<Caption>& captions, const CaptionRules& rules)
{
    const int count = countOfBreaches(captions, rules);
    if (count == 0)
        return {};
    return QStringLiteral(
               "%1 of %2 captions exceed %3 characters a second: more is said than the clip has time to read")
        .arg(count)
        .arg(captions.size())
        .arg(rules.charactersPerSecond);
}

QByteArray writeSubRip(const Transcript& transcript, const ExportSettings& settings)
{
    QString text;
    int number = 0;
    const QVector<Caption> captions = makeCaptions(transcript, settings.captions);
    for (const Caption& caption : captions) {
        text += QStringLiteral("%1\r\n").arg(++number) +
                timing(caption, settings.captions.frameRate, QLatin1Char(',')) + QLatin1String("\r\n") +
                srtText(caption.lines.join(QLatin1String("\r\n"))) + QLatin1String("\r\n\r\n");
    }
    return text.toUtf8();
}

QByteArray writeWebVtt(const Transcript& transcript, const ExportSettings& settings)
{
    QString text = QStringLiteral("WEBVTT\n\n");
    const QVector<Caption> captions = makeCaptions(transcript, settings.captions);
    const QString note = noteOfBreaches(captions, settings.captions);
    if (!note.isEmpty())
        text += QLatin1String("NOTE ") + note + QLatin1String("\n\n");
    for (const Caption& caption : captions) {
        const QString name = vttText(displayName(transcript, caption.speaker).simplified());
        text += timing(caption, settings.captions.frameRate, QLatin1Char('.')) + QLatin1Char('\n');
        if (!name.isEmpty())
            text += QLatin1String("<v ") + name + QLatin1Char('>');
        text += vttText(caption.lines.join(QLatin1Char('\n'))) + QLatin1String("\n\n");
    }
    return text.toUtf8();
}

QByteArray writeImsc(const Transcript& transcript, const ExportSettings& settings)
{
    return ImscWriter(transcript, settings).write();
}

} // namespace desk::speech

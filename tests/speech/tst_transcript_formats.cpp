#include "desk/speech/formats/Export.h"
#include "desk/speech/formats/Import.h"
#include "imf/support/Programs.h"
#include "speech/Texts.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace desk;
using namespace desk::speech;

namespace
{

/// What was said, without white space and without the mark that keeps arrows apart.
QString characters(QString text)
{
    static const QRegularExpression blank(QStringLiteral("[\\s\u200b]"));
    return text.remove(blank);
}

QString saidBy(const Transcript& transcript, int segment)
{
    return characters(blockText(transcript.segments[segment].words).text);
}

QString saidIn(const QVector<Caption>& captions)
{
    QString text;
    for (const Caption& caption : captions)
        text += characters(caption.lines.join(' '));
    return text;
}

/// What all captions and the gaps between them take where nothing limits them.
qint64 neededFrames(const Transcript& transcript, const CaptionRules& rules)
{
    qint64 sum = -rules.gapFrames;
    const QVector<Caption> captions = makeCaptions(transcript, rules);
    for (const Caption& caption : captions) {
        const qint64 characters = countOfCharacters(caption.lines.join(' '));
        const qint64 divisor = 17 * rules.frameRate.den;
        sum += (characters * rules.frameRate.num + divisor - 1) / divisor + rules.gapFrames;
    }
    return sum;
}

int msOf(qint64 frames, Rational rate)
{
    return int(frames * 1000 * rate.den / rate.num);
}

/// All characters, sorted: what must be the same where only the order of speakers may differ.
QString sorted(QString text)
{
    std::sort(text.begin(), text.end());
    return text;
}

QByteArray utf16(const QString& text)
{
    return QByteArray("\xff\xfe", 2) + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

constexpr char goodSrt[] =
    "1\n00:00:01,000 --> 00:00:03,000\nHello <i>big</i> world\n\n2\n00:00:02,500 --> 00:00:04,000\nYes\n";
constexpr char goodVtt[] = "WEBVTT\n\nNOTE nothing\n\n00:01.000 --> 00:03.000 align:start\n<v Anna>one "
                           "<00:02.000>two\n\n00:03.000 --> 00:04.000\nthree\n";
constexpr char goodWhisper[] =
    R"({"transcription":[{"offsets":{"from":0,"to":2000},"text":" Hello, world","tokens":[)"
    R"({"text":"[_BEG_]","offsets":{"from":0,"to":0},"p":0.9},{"text":" Hel","offsets":{"from":100,"to":400},"p":0.9},)"
    R"({"text":"lo","offsets":{"from":400,"to":600},"p":0.5},{"text":",","offsets":{"from":600,"to":700},"p":0.8},)"
    R"({"text":" world","offsets":{"from":900,"to":1500},"p":0.7}]},{"offsets":{"from":2000,"to":3000},"text":" you there"}]})";
constexpr char goodOwn[] =
    R"({"format":"stratacut-transcript","version":1,"speakers":[{"id":4,"name":"Anna"}],)"
    R"("segments":[{"speaker":4,"words":[{"start":0,"end":400,"text":"Hi","confidence":0.5}]}]})";

} // namespace

class TestTranscriptFormats : public QObject
{
    Q_OBJECT

private slots:

    void wordsGetOffsetsInTheBlock_data()
    {
        const support::Rows<QString, QString> row;
        row("blanks", "one|two", "one two 0-3 4-7");
        row("no blanks between ideographs", "\u4f60|\u597d\u3002|ok", "\u4f60\u597d\u3002 ok 0-1 1-3 4-6");
        row("emoji and combining marks", "\U0001F600|e\u0301|x", "\U0001F600 e\u0301 x 0-2 3-5 6-7");
        row("line breaks are none", "a\nb|c", "a b c 0-3 4-5");
    }

    void wordsGetOffsetsInTheBlock()
    {
        const auto [words, expected] = support::fetched<QString, QString>();
        const BlockText block = blockText(spreadWords(words.split('|'), 0, 1000));
        QString found = block.text;
        for (std::size_t i = 0; i < block.starts.size(); ++i)
            found += QStringLiteral(" %1-%2").arg(block.starts[i]).arg(block.ends[i]);
        QCOMPARE(found, expected);
    }

    void impossibleTimesAreRepairedAndCounted_data()
    {
        const support::Rows<QString, QString, QString> row;
        row("good", "0-10 a|10-30 b|40-50 c", "0-10 a|10-30 b|40-50 c", "0 0 0 0");
        row("ends before it starts", "100-50 a|200-300 b", "100-100 a|200-300 b", "1 0 0 0");
        row("one far ahead of the others", "0-100 a|5000-5100 b|300-400 c", "0-100 a|100-300 b|300-400 c", "1 0 0 0");
        row("one back", "0-100 a|500-600 b|200-250 c|700-800 d", "0-100 a|100-200 b|200-250 c|700-800 d", "1 0 0 0");
        row("overlap", "0-500 a|200-300 b", "0-200 a|200-300 b", "0 1 0 0");
        row("past the end", "0-100 a|9900-12000 b|15000-16000 c", "0-100 a|9900-9950 b|9950-10000 c", "0 0 2 0");
        row("before the start", "-500--100 a|200-300 b", "0-200 a|200-300 b", "0 0 1 0");
        row("no text", "0-100 a|100-200  |200-300 b", "0-100 a|200-300 b", "0 0 0 1");
        row("all the same", "50-50 a|50-50 b", "50-50 a|50-50 b", "0 0 0 0");
    }

    void impossibleTimesAreRepairedAndCounted()
    {
        const auto [words, expected, counts] = support::fetched<QString, QString, QString>();
        QVector<Word> repaired = texts::wordsOf(words);
        const RepairReport report = repairWords(repaired, {0, 10000});
        QCOMPARE(texts::textOf({{{-1, repaired}}, {}}), expected);
        QCOMPARE(QStringLiteral("%1 %2 %3 %4")
                     .arg(report.backwards)
                     .arg(report.overlapping)
                     .arg(report.outside)
                     .arg(report.withoutText),
                 counts);
    }

    void whateverTimesComeWordsEndInOrder()
    {
        QRandomGenerator random(support::seed());
        for (int round = 0; round < 2000; ++round) {
            QVector<Word> words;
            for (int i = random.bounded(20); i > 0; --i)
                words.append({random.bounded(-200, 1500), random.bounded(-200, 1500), QString::number(i), -1});
            QVector<Word> repaired = words;
            repairWords(repaired, {100, 1000});
            QCOMPARE(repaired.size(), words.size());
            int last = 100;
            for (int i = 0; i < words.size(); ++i) {
                QCOMPARE(repaired[i].text, words[i].text);
                QVERIFY2(repaired[i].startMs >= last && repaired[i].endMs >= repaired[i].startMs &&
                             repaired[i].endMs <= 1000,
                         qPrintable(texts::textOf({{{-1, words}}, {}})));
                last = repaired[i].endMs;
            }
        }
    }

    void strangersFilesAreRead_data()
    {
        const support::Rows<QByteArray, QString> row;
        const QString plain = "1000-1750 Hello|1750-2250 big|2250-3000 world / 2500-4000 Yes";
        row("SRT", goodSrt, plain);
        row("byte order mark, CRLF", "\xef\xbb\xbf" + QByteArray(goodSrt).replace("\n", "\r\n"), plain);
        row("no counters, no hours, full stops",
            QByteArray(goodSrt)
                .replace("1\n00:", "")
                .replace("2\n00:", "")
                .replace(",", ".")
                .replace("--> 00:", "--> "),
            plain);
        row("order of cues",
            "2\n00:00:02,500 --> 00:00:04,000\nYes\n\n1\n00:00:01,000 --> 00:00:03,000\nHello big world\n", plain);
        row("forgotten blank line", QByteArray(goodSrt).replace("world\n\n", "world\n"), plain);
        row("Windows-1252", "1\n00:00:00,000 --> 00:00:01,000\ncaf\xe9\n", QString("0-1000 caf\u00e9"));
        row("UTF-16", utf16("1\n0:01-->0:02\na"), "1000-2000 a");
        row("override tags", "1\n00:00:00,000 --> 00:00:01,000\n{\\an8}a < b &amp; c\n",
            "0-200 a|200-400 <|400-600 b|600-800 &|800-1000 c");
        row("WebVTT", goodVtt, "Anna: 1000-2000 one|2000-3000 two / 3000-4000 three");
        row("two voices in a cue", "WEBVTT\n\n00:00.000 --> 00:02.000\n<v.loud A>one</v>\n<v B>two\n",
            "A: 0-1000 one / B: 1000-2000 two");
        row("whisper", goodWhisper, "100-700 Hello,|900-1500 world / 2000-2400 you|2400-3000 there");
        row("whisper, a character cut in two",
            R"({"transcription":[{"offsets":{"from":0,"to":1000},"text":" é","tokens":[{"text":" )"
            "\xc3"
            R"(","offsets":{"from":0,"to":5}},{"text":")"
            "\xa9"
            R"(","offsets":{"from":5,"to":9}}]}]})",
            QString("0-1000 \u00e9"));
        row("own", goodOwn, "Anna: 0-400 Hi");
    }

    void strangersFilesAreRead()
    {
        const auto [bytes, expected] = support::fetched<QByteArray, QString>();
        const auto imported = support::valueOf(importTranscript(bytes, "in.srt", 0));
        QCOMPARE(texts::textOf(imported.transcript), expected);
    }

    void damageIsNamedWithItsPlace_data()
    {
        const support::Rows<QByteArray, QByteArray, QByteArray, QString> row;
        row("minutes past 59", goodSrt, "00:00:02,500", "00:77:02,500",
            "in (line 6): the times cannot be read; write them as 00:00:01,000 --> 00:00:02,000 and import the file "
            "again.");
        row("no time", goodSrt, "00:00:03,000", "soon",
            "in (line 2): the times cannot be read; write them as 00:00:01,000 --> 00:00:02,000 and import the file "
            "again.");
        row("ends first", goodSrt, "00:00:04,000", "00:00:02,000",
            "in (line 6): the cue ends before it starts; correct the line and import the file again.");
        row("text without times", goodSrt, "2\n00:00:02,500 --> 00:00:04,000\n", "",
            "in (line 5): there is text outside of any cue; give it a line with times and import the file again.");
        row("no words", goodVtt, QByteArray(goodVtt).mid(8), "",
            "in: the file has no words; choose the file that holds the transcript.");
        row("JSON cut", goodWhisper, ",\"text\":\" you there\"}]}", "",
            "in (line 1): the JSON is not valid: unterminated object; write the file again with the program that made "
            "it.");
        row("no times in a segment", goodWhisper, "\"from\":2000", "\"from\":\"x\"",
            "in, \"transcription\", entry 2: the times are missing; write the file again with the program that made "
            "it.");
        row("a word without text", goodOwn, "Hi", "",
            "in, \"segments\", entry 1: a word lacks text or times; write the file again with the program that made "
            "it.");
        row("another version", goodOwn, "\"version\":1", "\"version\":2",
            "in, version: the transcript was written by another version of the desk; export it there as WebVTT and "
            "import that.");
        row("anything else", goodSrt, goodSrt, "hello",
            "in: the file is no transcript that the desk can read; save it as SRT, WebVTT, or the JSON of "
            "whisper.cpp.");
    }

    void damageIsNamedWithItsPlace()
    {
        auto [bytes, from, to, sentence] = support::fetched<QByteArray, QByteArray, QByteArray, QString>();
        const QByteArray good = bytes;
        QVERIFY(bytes.replace(from, to) != good);
        const auto imported = importTranscript(bytes, "in", 0);
        QVERIFY(!imported);
        QCOMPARE(imported.error().sentence(), sentence);
    }

    void damagedFilesNeverDoHarm()
    {
        QRandomGenerator random(support::seed());
        for (int round = 0; round < 3000; ++round) {
            QByteArray bytes = QList<QByteArray>{goodSrt, goodVtt, goodWhisper, goodOwn}[round % 4];
            for (int i = random.bounded(1, 6); i > 0; --i) {
                const int at = random.bounded(bytes.size());
                bytes.replace(at, random.bounded(3), bytes.mid(random.bounded(bytes.size()), random.bounded(4)));
                bytes[random.bounded(bytes.size())] = char(random.bounded(256));
            }
            const auto imported = importTranscript(bytes, "in", 5000);
            QVERIFY2(imported || !imported.error().next.isEmpty(), bytes);
            if (!imported)
                continue;
            for (const Segment& segment : imported->transcript.segments)
                QVERIFY2(!segment.words.isEmpty() && segment.startMs() >= 0 && segment.endMs() <= 5000, bytes);
        }
    }

    void captionsKeepTheLimitsAndEveryWord()
    {
        QRandomGenerator random(support::seed());
        const QVector<Rational> rates{{24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {60, 1}};
        for (int round = 0; round < 300; ++round) {
            const Transcript transcript = texts::randomTranscript(random);
            CaptionRules rules;
            rules.frameRate = rates[round % rates.size()];
            // Enough for what is said, but not always where it is said.
            const qint64 needed = neededFrames(transcript, rules);
            rules.clipMs = round % 2 == 0 ? 0 : msOf(needed, rules.frameRate);
            const QVector<Caption> captions = makeCaptions(transcript, rules);
            QCOMPARE(countOfBreaches(captions, rules), 0);
            QVERIFY(rules.clipMs == 0 || captions.last().endFrame <= needed);
            qint64 last = -rules.gapFrames;
            for (const Caption& caption : captions) {
                const double seconds = double(caption.endFrame - caption.startFrame) / rules.frameRate.toDouble();
                QVERIFY(caption.startFrame >= last + rules.gapFrames);
                QVERIFY(caption.lines.size() <= 2);
                QVERIFY(countOfCharacters(caption.lines.join(' ')) <= 17 * seconds + 1e-6);
                for (const QString& line : caption.lines)
                    QVERIFY2(countOfCharacters(line) <= 42, qPrintable(line));
                last = caption.endFrame;
            }
            QString said;
            for (int i = 0; i < transcript.segments.size(); ++i)
                said += saidBy(transcript, i);
            QCOMPARE(sorted(saidIn(captions)), sorted(said));
            for (const Segment& segment : transcript.segments) {
                const Transcript alone{{segment}, {}};
                QCOMPARE(saidIn(makeCaptions(alone, rules)), saidBy(alone, 0));
            }
        }
    }

    /// From a clip that is a little too short for its words down to one of a single frame.
    void captionsNeverPassTheClip()
    {
        QRandomGenerator random(44);
        for (const Rational rate : {Rational(24000, 1001), Rational(25, 1), Rational(30000, 1001), Rational(60, 1)}) {
            const Transcript transcript = texts::randomTranscript(random);
            CaptionRules rules;
            rules.frameRate = rate;
            for (qint64 frames = neededFrames(transcript, rules) - 1; frames >= 1; frames = frames * 4 / 5) {
                rules.clipMs = msOf(frames, rate);
                const QVector<Caption> captions = makeCaptions(transcript, rules);
                qint64 last = 0;
                for (const Caption& caption : captions) {
                    QVERIFY(caption.startFrame >= last && caption.endFrame > caption.startFrame);
                    last = caption.endFrame;
                }
                QVERIFY2(last <= frames, qPrintable(QStringLiteral("%1 > %2").arg(last).arg(frames)));
                QCOMPARE(sorted(saidIn(captions)), sorted(saidIn(makeCaptions(transcript, {rate}))));
                QVERIFY(countOfBreaches(captions, rules) > 0);
                ExportSettings settings;
                settings.captions = rules;
                const QString note = exportNote(transcript, ExportFormat::WebVtt, settings);
                QVERIFY(!note.isEmpty());
                for (const auto format : {ExportFormat::WebVtt, ExportFormat::Imsc})
                    QVERIFY(exportTranscript(transcript, format, settings).contains(note.toUtf8()));
            }
        }
    }

    void peopleWhoTalkAtOnceAlternate()
    {
        const Transcript transcript = texts::transcriptOf(
            {{1, "0-900 This|1000-2900 goes|3000-4900 on.|6500-7000 And|7000-8000 on."}, {2, "5000-5400 Yes!"}}, 2);
        QStringList found;
        const auto captions = makeCaptions(transcript, {});
        for (const Caption& caption : captions)
            found << QStringLiteral("%1: %2").arg(caption.speaker).arg(caption.lines.join('/'));
        QCOMPARE(found, QStringList({"1: This goes on.", "2: Yes!", "1: And on."}));
    }

    void exportsAreReadByOthersAndByUs_data()
    {
        const support::Rows<ExportFormat, QString> row;
        row("SRT", ExportFormat::SubRip, "subrip");
        row("WebVTT", ExportFormat::WebVtt, "webvtt");
        row("IMSC", ExportFormat::Imsc, "");
    }

    /// Times and texts of every caption, as another program finds them.
    void exportsAreReadByOthersAndByUs()
    {
        const auto [format, codec] = support::fetched<ExportFormat, QString>();
        QRandomGenerator random(42);
        const Transcript transcript = texts::randomTranscript(random);
        ExportSettings settings;
        settings.captions.frameRate = {30000, 1001};
        settings.language = "en";
        settings.title = "A & B\x01";
        const QTemporaryDir folder;
        const QString path = folder.filePath("out." + codec);
        QVERIFY(exportTranscriptFile(path, transcript, format, settings).ok());
        const QVector<Caption> captions = makeCaptions(transcript, settings.captions);
        if (format == ExportFormat::Imsc) {
            const QByteArray text = programs::run("xmllint", {"--xpath", "string(/*)", path});
            QVERIFY2(characters(QString::fromUtf8(text)).endsWith(saidIn(captions)), text);
            const auto times =
                programs::run("xmllint", {"--xpath", "//*[local-name()='p']/@*[name()='begin' or name()='end']", path});
            QByteArray expected;
            for (const Caption& caption : captions)
                expected += QStringLiteral(" begin=\"%1f\"\n end=\"%2f\"\n")
                                .arg(caption.startFrame)
                                .arg(caption.endFrame)
                                .toLatin1();
            QCOMPARE(times, expected);
            return;
        }
        const auto packets = QJsonDocument::fromJson(programs::run("ffprobe", {"-v", "error", "-show_packets",
                                                                               "-show_streams", "-of", "json", path}))
                                 .object();
        QCOMPARE(packets["streams"][0]["codec_name"].toString(), codec);
        const QJsonArray list = packets["packets"].toArray();
        QCOMPARE(list.size(), captions.size());
        for (int i = 0; i < captions.size(); ++i) {
            const double start = list[i]["pts_time"].toString().toDouble() * 30000 / 1001;
            const double length = list[i]["duration_time"].toString().toDouble() * 30000 / 1001;
            QCOMPARE(qRound64(start), captions[i].startFrame);
            QCOMPARE(qRound64(start + length), captions[i].endFrame);
        }
        const auto back = support::valueOf(importTranscriptFile(path, 0));
        QString said;
        for (int i = 0; i < back.transcript.segments.size(); ++i)
            said += saidBy(back.transcript, i);
        // SubRip has no entities, but readers take what looks like one for it.
        QCOMPARE(said, format == ExportFormat::WebVtt ? saidIn(captions) : saidIn(captions).replace("&amp;", "&"));
    }

    void theOwnFormatKeepsEverything()
    {
        QRandomGenerator random(43);
        Transcript transcript = texts::randomTranscript(random);
        transcript.speakers = {{1, "Anna"}, {2, QString()}};
        repairTranscript(transcript, {0, 10000000});
        const QByteArray bytes = exportTranscript(transcript, ExportFormat::TranscriptJson, {});
        const auto back = support::valueOf(importTranscript(bytes, "in", 0));
        QVERIFY(back.transcript.segments == transcript.segments);
        QVERIFY(back.transcript.speakers == transcript.speakers);
        QCOMPARE(back.repairs.total(), 0);
    }

    void textAndTablesNameTimesAndSpeakers()
    {
        Transcript transcript = texts::transcriptOf({{1, "1000-1500 Say|1500-2000 \"hi\""}, {-1, "60060-61000 No"}}, 1);
        transcript.speakers[0].name = "Anna, B";
        ExportSettings settings;
        settings.captions.frameRate = {30000, 1001};
        settings.timecode = TimecodeCount::Drop;
        settings.firstFrame = 107892;
        QCOMPARE(exportTranscript(transcript, ExportFormat::PlainText, settings),
                 QByteArray("01:00:00;29  Anna, B: Say \"hi\"\n01:01:00;02  No\n"));
        QCOMPARE(exportTranscript(transcript, ExportFormat::Csv, settings),
                 QByteArray(
                     "\xef\xbb\xbfStart,End,Speaker,Text\r\n01:00:00;29,01:00:01;29,\"Anna, B\",\"Say \"\"hi\"\"\"\r\n"
                     "01:01:00;02,01:01:01;00,\"\",\"No\"\r\n"));
    }
};

STRATACUT_TEST_MAIN(TestTranscriptFormats)
#include "tst_transcript_formats.moc"

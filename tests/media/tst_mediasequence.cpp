#include "desk/media/PictureIndex.h"
#include "desk/media/PictureReader.h"
#include "desk/media/Sequence.h"
#include "desk/media/SoundReader.h"
#include "media/MediaMaker.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>

using namespace desk;
using namespace desk::media;

class TestMediaSequence : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        QVERIFY(m_maker.numberedPicture(60, QStringLiteral("25"), QStringLiteral("numbers.nut")));
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-i @numbers.nut -f lavfi -i sine=duration=2.4:sample_rate=48000 -c:v libx264 -g 12 -bf 2 "
                           "-pix_fmt yuv420p -c:a pcm_s16le -movflags +faststart @good.mov")));
    }

    void aSequenceTellsWhatTheFileHolds()
    {
        QVERIFY(m_maker.ffmpeg(QStringLiteral(
            "-f lavfi -i color=s=128x72:r=30000/1001 -f lavfi -i sine=sample_rate=44100 -t 2.002 -vf setsar=4/3 "
            "-c:v ffv1 -pix_fmt yuv420p12le -colorspace bt709 -color_primaries bt709 -color_trc bt709 "
            "-color_range tv -c:a pcm_s24le -metadata:s:a:0 language=ger -timecode 10:00:00;00 @facts.mov")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("facts.mov"))));
        QCOMPARE(sequence.name, QStringLiteral("facts"));
        QCOMPARE(sequence.frames, qint64(60));
        QCOMPARE(sequence.soundSamples, qint64(96096));
        QCOMPARE(sequence.startTimecode, QStringLiteral("10:00:00;00"));
        const PictureTrackInfo& picture = *sequence.picture;
        const QStringList facts{QString::number(picture.width),
                                QString::number(picture.height),
                                QString::number(picture.bitDepth),
                                picture.sampling,
                                picture.codec,
                                picture.primaries,
                                picture.transfer,
                                picture.matrix};
        QCOMPARE(facts.join(QLatin1Char(' ')), QStringLiteral("128 72 12 4:2:0 ffv1 bt709 bt709 bt709"));
        QCOMPARE(picture.pixelAspect, Rational(4, 3));
        QVERIFY(!picture.interlaced);
        QCOMPARE(sequence.audio.size(), 1);
        QCOMPARE(sequence.audio[0].sampleRate, 44100);
        QCOMPARE(sequence.audio[0].language, QStringLiteral("ger"));
    }

    void whatOneOpeningLearnedSparesTheNextDecoding_data()
    {
        const support::Rows<bool> row;
        row("prores_ks", true);
        row("libx264", false);
    }

    /// Told something wrong, an opening that does not decode does not notice.
    void whatOneOpeningLearnedSparesTheNextDecoding()
    {
        const QString codec = QString::fromLatin1(QTest::currentDataTag());
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-i @numbers.nut -t 0.2 -pix_fmt yuv422p10le -c:v %1 @known.mov").arg(codec)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("known.mov"))));
        KnownPicture known = sequence.index->known;
        known.pixelFormat = AV_PIX_FMT_GBRP16LE;
        const auto file = openMediaFile(sequence.path, known);
        QVERIFY(file);
        QCOMPARE((*file)->streams[0]->codecpar->format == known.pixelFormat, std::get<0>(support::fetched<bool>()));
    }

    void streamsOfOneChannelNameThePlacesOfTheirSurround()
    {
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-f lavfi -i anullsrc=cl=7.1 -filter_complex "
                                              "channelsplit=channel_layout=7.1 -t 0.1 -c:a pcm_s24le @apart.mov")));
        QStringList labels;
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("apart.mov"))));
        for (const AudioTrackInfo& track : sequence.audio)
            labels += track.label;
        QCOMPARE(labels.join(QLatin1Char(' ')), QStringLiteral("L R C LFE Lrs Rrs Ls Rs"));
    }

    void identifiersSurviveRewritingAndTellFilesApart()
    {
        const QByteArray good = m_maker.bytes(QStringLiteral("good.mov"));
        m_maker.write(QStringLiteral("copy.mov"), good);
        QVERIFY(QFile::link(m_maker.path(QStringLiteral("good.mov")), m_maker.path(QStringLiteral("link.mov"))));
        const auto id = [&](const char* name) { return openSequence(m_maker.path(QString::fromLatin1(name)))->id; };
        const QString first = id("copy.mov");
        QVERIFY(!first.isEmpty());
        QVERIFY(first != id("good.mov"));
        QCOMPARE(id("link.mov"), id("good.mov"));
        m_maker.write(QStringLiteral("copy.mov"), good + QByteArray(8, '\0'));
        QCOMPARE(id("copy.mov"), first);
    }

    void soundOrPictureMayBeMissing()
    {
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -an -c copy @silent.mov")));
        const auto silent = support::valueOf(openSequence(m_maker.path(QStringLiteral("silent.mov"))));
        QVERIFY(silent.audio.isEmpty());
        QCOMPARE(silent.frames, qint64(60));

        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -vn -c copy @sound.wav")));
        const auto sound = support::valueOf(openSequence(m_maker.path(QStringLiteral("sound.wav"))));
        QVERIFY(!sound.picture.has_value());
        QCOMPARE(sound.frames, qint64(0));
        QVERIFY(!sound.frameRate.isValid());
        QCOMPARE(sound.soundSamples, qint64(115200));
        const auto reader = PictureReader::open(sound, {});
        QVERIFY(!reader.ok());
        QVERIFY(reader.error().sentence().contains(QStringLiteral("has no picture")));
    }

    void interlacedTurnedAndBrightPicturesAreNamed()
    {
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-f lavfi -i testsrc=s=160x96:r=25:d=1 -vf interlace -c:v mpeg2video "
                                              "-flags +ildct+ilme -top 1 @fields.mpg")));
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -c copy -metadata:s:v:0 rotate=90 @turned.mov")));
        QVERIFY(m_maker.ffmpeg(QStringLiteral(
            "-i @numbers.nut -c:v libx265 -x265-params log-level=none -pix_fmt yuv420p10le -colorspace bt2020nc "
            "-color_primaries bt2020 -color_trc smpte2084 @bright.mp4")));
        const auto picture = [&](const char* name) {
            return *openSequence(m_maker.path(QString::fromLatin1(name)))->picture;
        };
        QVERIFY(picture("fields.mpg").interlaced);
        QCOMPARE(picture("bright.mp4").range, QStringLiteral("tv"));
        QVERIFY(picture("bright.mp4").isHighDynamicRange());
        // ffmpeg's tag counts the other way round: its own player turns this file 270 degrees clockwise.
        QCOMPARE(picture("turned.mov").rotation, 270);
        QCOMPARE(picture("good.mov").rotation, 0);
        QVERIFY(!picture("good.mov").interlaced);
    }

    void whatIsNoMediaIsRefused_data()
    {
        const support::Rows<QString, QString> row;
        m_maker.write(QStringLiteral("notes.txt"), "Dear all,\nthis is a letter.\n");
        m_maker.write(QStringLiteral("liar.mov"), "Dear all,\nthis is a letter.\n");
        m_maker.write(QStringLiteral("noise.bin"), QByteArray(70000, '\x9d'));
        m_maker.write(QStringLiteral("empty.mov"), {});
        mkfifo(QFile::encodeName(m_maker.path(QStringLiteral("pipe.mov"))).constData(), 0600);
        row("text", m_maker.path(QStringLiteral("notes.txt")), "no media");
        row("text that says it is a film", m_maker.path(QStringLiteral("liar.mov")), "no media");
        row("bytes", m_maker.path(QStringLiteral("noise.bin")), "no media");
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -c copy @unfinished.mov")));
        const QByteArray whole = m_maker.bytes(QStringLiteral("unfinished.mov"));
        m_maker.write(QStringLiteral("unfinished.mov"), whole.left(whole.size() * 7 / 10));
        row("film without its index", m_maker.path(QStringLiteral("unfinished.mov")), "never finished");
        row("nothing", m_maker.path(QStringLiteral("empty.mov")), "empty");
        row("missing", m_maker.path(QStringLiteral("missing.mov")), "no such file");
        row("folder", m_maker.path(QString()), "folder");
        row("pipe", m_maker.path(QStringLiteral("pipe.mov")), "device");
        row("address", "http://127.0.0.1:9/film.mov", "only files of this machine");
        row("protocol in the name", "concat:/etc/passwd|/etc/passwd", "no such file");
    }

    void whatIsNoMediaIsRefused()
    {
        const auto [path, what] = support::fetched<QString, QString>();
        const Error error = refusal(path);
        QVERIFY2(error.what.contains(what), qPrintable(error.sentence()));
        QCOMPARE(error.file, path);
    }

    void playlistsAreRefused_data()
    {
        const support::Rows<QByteArray> row;
        row("concat", QByteArray("ffconcat version 1.0\nfile good.mov\n"));
        row("HLS", QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:3\n#EXTINF:2.4,\ngood.mov\n#EXT-X-ENDLIST\n"));
        row("SDP", QByteArray("v=0\no=- 0 0 IN IP4 127.0.0.1\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 9 RTP/AVP 96\n"));
        row("DASH", QByteArray("<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                               "profiles=\"urn:mpeg:dash:profile:isoff-live:2011\"></MPD>\n"));
    }

    void playlistsAreRefused()
    {
        const auto [text] = support::fetched<QByteArray>();
        for (const char* name : {"list.mov", "list.m3u8"}) {
            m_maker.write(QString::fromLatin1(name), text);
            const Error error = refusal(m_maker.path(QString::fromLatin1(name)));
            QVERIFY2(error.what.contains(QStringLiteral("playlist")) || error.what.contains(QStringLiteral("no media")),
                     qPrintable(error.sentence()));
        }
    }

    void aVariableRateIsRefusedAtTheFrameWhereItVaries()
    {
        // Frame 30 stays twice as long as the others.
        for (const char* file : {"vary.mov", "vary.mkv", "vary.avi"}) {
            QVERIFY(m_maker.ffmpeg(
                QStringLiteral(
                    "-i @numbers.nut -vf setpts=PTS+gte(N\\,31)/25/TB -vsync passthrough -enc_time_base 1/25 "
                    "-c:v mpeg4 -g 10 @") +
                QString::fromLatin1(file)));
            const Error error = refusal(m_maker.path(QString::fromLatin1(file)));
            QCOMPARE(error.item + QStringLiteral(", ") + error.where + QStringLiteral(": ") + error.what,
                     QStringLiteral("picture, frame 31: the frame rate varies"));
        }
    }

    void aHoleBeforeTheLastPictureOfATrimmedFileIsRefused()
    {
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-i @numbers.nut -c:v libx264 -bf 2 -b_strategy 0 -x264opts b-pyramid=none @whole.mp4")));
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @whole.mp4 -frames:v 6 -c copy @trimmed.mp4")));
        const Error error = refusal(m_maker.path(QStringLiteral("trimmed.mp4")));
        QCOMPARE(error.what + QStringLiteral(" ") + error.where, QStringLiteral("the frame rate varies frame 5"));
    }

    void aCutFileNamesItsLastGoodFrame_data()
    {
        const support::Rows<QString, QString> row;
        row("MOV, index first", "-i @good.mov -c copy -movflags +faststart", "cut.mov");
        row("Matroska", "-i @good.mov -c copy", "cut.mkv");
        row("MXF", "-i @numbers.nut -c:v mpeg2video -g 12 -bf 2", "cut.mxf");
        row("AVI", "-i @numbers.nut -c:v ffv1", "cut.avi");
    }

    /// Cut in the middle of the pictures: the number named is that of a frame that an intact reader finds whole, and
    /// the next one is beyond the cut.
    void aCutFileNamesItsLastGoodFrame()
    {
        const auto [arguments, file] = support::fetched<QString, QString>();
        QVERIFY(m_maker.ffmpeg(arguments + QStringLiteral(" @") + file));
        QVERIFY(openSequence(m_maker.path(file)).ok());
        const QByteArray whole = m_maker.bytes(file);
        m_maker.write(file, whole.left(whole.size() * 7 / 10));
        const Error error = refusal(m_maker.path(file));
        const QRegularExpression form(
            QStringLiteral("^the file is cut: of (\\d+) frames it holds (\\d+), the last good one is frame (\\d+)$"));
        const QRegularExpressionMatch match = form.match(error.what);
        QVERIFY2(match.hasMatch(), qPrintable(error.sentence()));
        QCOMPARE(match.captured(1).toInt(), 60);
        QVERIFY(match.captured(2).toInt() > 20 && match.captured(2).toInt() < 55);
        QCOMPARE(match.captured(3).toInt(), match.captured(2).toInt() - 1);
    }

    /// A stream does not tell how long it was, and in front of a cut it lacks frames between those that it has.
    void aCutStreamHasNoVariableRate()
    {
        const QString file = QStringLiteral("cut.ts");
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @numbers.nut -c:v mpeg2video -g 12 -bf 2 @") + file));
        const QByteArray whole = m_maker.bytes(file);
        int cuts = 0;
        for (int percent = 40; percent < 80; percent += 4) {
            m_maker.write(file, whole.left(whole.size() * percent / 100));
            const Result<Sequence> opened = openSequence(m_maker.path(file));
            if (opened)
                continue;
            QVERIFY2(opened.error().what.startsWith(QLatin1String("the file is cut: ")),
                     qPrintable(opened.error().sentence()));
            ++cuts;
        }
        QVERIFY(cuts > 0);
    }

    /// Random damage anywhere: the file opens or is refused with a whole sentence; frames and samples come or are
    /// refused.
    void damagedBytesNeverCrash()
    {
        QRandomGenerator random(support::seed());
        const QByteArray good = m_maker.bytes(QStringLiteral("good.mov"));
        const QString path = m_maker.path(QStringLiteral("damaged.mov"));
        for (int round = 0; round < 60; ++round) {
            QByteArray bytes = good;
            const int span = round % 2 == 0 ? 3000 : bytes.size(); // every other time in the index alone
            for (int i = 0; i < 8; ++i)
                bytes[random.bounded(span)] = char(random.bounded(256));
            m_maker.write(QStringLiteral("damaged.mov"), bytes);
            const Result<Sequence> sequence = openSequence(path);
            if (!sequence) {
                QVERIFY(!sequence.error().file.isEmpty() && !sequence.error().next.isEmpty());
                continue;
            }
            if (auto pictures = PictureReader::open(*sequence, {160, 90, 10, Sampling::YCbCr422}, {1}); pictures.ok()) {
                for (const qint64 frame : {sequence->frames - 1, qint64(0), sequence->frames / 2})
                    (void)(*pictures)->read(frame).ok();
            }
            if (auto sound = SoundReader::open(*sequence, {0}); sound.ok())
                (void)(*sound)->read(0, 200000).ok();
        }
    }

private:
    /// The refusal of a file that must not open; it always names the file and what to do next.
    Error refusal(const QString& path)
    {
        const Result<Sequence> sequence = openSequence(path);
        if (sequence.ok())
            return {{}, {}, {}, QStringLiteral("opened"), {}};
        const Error& error = sequence.error();
        return error.file.isEmpty() || error.next.isEmpty() ? Error{{}, {}, {}, QStringLiteral("half an error"), {}}
                                                            : error;
    }

    MediaMaker m_maker;
};

STRATACUT_TEST_MAIN(TestMediaSequence)
#include "tst_mediasequence.moc"

#include "desk/media/PictureReader.h"
#include "desk/media/Sequence.h"
#include "desk/media/SoundReader.h"
#include "media/MediaMaker.h"
#include "support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <sys/stat.h>

using namespace desk;
using namespace desk::media;

class TestMediaSequence : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aSequenceTellsWhatTheFileHolds();
    void identifiersSurviveRewritingAndTellFilesApart();
    void soundOrPictureMayBeMissing();
    void interlacedTurnedAndBrightPicturesAreNamed();
    void whatIsNoMediaIsRefused_data();
    void whatIsNoMediaIsRefused();
    void playlistsAreRefused_data();
    void playlistsAreRefused();
    void aVariableRateIsRefusedAtTheFrameWhereItVaries();
    void aCutFileNamesItsLastGoodFrame_data();
    void aCutFileNamesItsLastGoodFrame();
    void damagedBytesNeverCrash();

private:
    Error refusal(const QString& path);

    MediaMaker m_maker;
};

void TestMediaSequence::initTestCase()
{
    QVERIFY(m_maker.numberedPicture(60, QStringLiteral("25"), QStringLiteral("numbers.nut")));
    QVERIFY(m_maker.ffmpeg(
        QStringLiteral("-i @numbers.nut -f lavfi -i sine=duration=2.4:sample_rate=48000 -c:v libx264 -g 12 -bf 2 "
                       "-pix_fmt yuv420p -c:a pcm_s16le -movflags +faststart @good.mov")));
}

/// The refusal of a file that must not open; it always names the file and what to do next.
Error TestMediaSequence::refusal(const QString& path)
{
    const Result<Sequence> sequence = openSequence(path);
    if (sequence.ok())
        return {{}, {}, {}, QStringLiteral("opened"), {}};
    const Error error = sequence.error();
    return error.file.isEmpty() || error.next.isEmpty() ? Error{{}, {}, {}, QStringLiteral("half an error"), {}}
                                                        : error;
}

void TestMediaSequence::aSequenceTellsWhatTheFileHolds()
{
    QVERIFY(m_maker.ffmpeg(QStringLiteral(
        "-f lavfi -i color=s=128x72:r=30000/1001 -f lavfi -i sine=sample_rate=44100 -t 2.002 -vf setsar=4/3 "
        "-c:v ffv1 -pix_fmt yuv420p12le -colorspace bt709 -color_primaries bt709 -color_trc bt709 "
        "-color_range tv -c:a pcm_s24le -metadata:s:a:0 language=ger -timecode 10:00:00;00 @facts.mov")));
    const Result<Sequence> sequence = openSequence(m_maker.path(QStringLiteral("facts.mov")));
    QVERIFY2(sequence.ok(), sequence.ok() ? "" : qPrintable(sequence.error().sentence()));
    QCOMPARE(sequence->name, QStringLiteral("facts"));
    QCOMPARE(sequence->frames, qint64(60));
    QCOMPARE(sequence->soundSamples, qint64(96096));
    QCOMPARE(sequence->startTimecode, QStringLiteral("10:00:00;00"));
    const PictureTrackInfo& picture = *sequence->picture;
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
    QCOMPARE(sequence->audio.size(), 1);
    QCOMPARE(sequence->audio[0].sampleRate, 44100);
    QCOMPARE(sequence->audio[0].language, QStringLiteral("ger"));
}

void TestMediaSequence::identifiersSurviveRewritingAndTellFilesApart()
{
    const QByteArray good = m_maker.bytes(QStringLiteral("good.mov"));
    QVERIFY(m_maker.write(QStringLiteral("copy.mov"), good));
    QVERIFY(QFile::link(m_maker.path(QStringLiteral("good.mov")), m_maker.path(QStringLiteral("link.mov"))));
    const auto id = [&](const char* name) { return openSequence(m_maker.path(QString::fromLatin1(name)))->id; };
    const QString first = id("copy.mov");
    QVERIFY(!first.isEmpty());
    QVERIFY(first != id("good.mov"));
    QCOMPARE(id("link.mov"), id("good.mov"));
    QVERIFY(m_maker.write(QStringLiteral("copy.mov"), good + QByteArray(8, '\0')));
    QCOMPARE(id("copy.mov"), first);
}

void TestMediaSequence::soundOrPictureMayBeMissing()
{
    QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -an -c copy @silent.mov")));
    const Result<Sequence> silent = openSequence(m_maker.path(QStringLiteral("silent.mov")));
    QVERIFY(silent.ok());
    QVERIFY(silent->audio.isEmpty());
    QCOMPARE(silent->frames, qint64(60));

    QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -vn -c copy @sound.wav")));
    const Result<Sequence> sound = openSequence(m_maker.path(QStringLiteral("sound.wav")));
    QVERIFY(sound.ok());
    QVERIFY(!sound->picture.has_value());
    QCOMPARE(sound->frames, qint64(0));
    QVERIFY(!sound->frameRate.isValid());
    QCOMPARE(sound->soundSamples, qint64(115200));
    const auto reader = PictureReader::open(*sound, {});
    QVERIFY(!reader.ok());
    QVERIFY(reader.error().sentence().contains(QStringLiteral("has no picture")));
}

void TestMediaSequence::interlacedTurnedAndBrightPicturesAreNamed()
{
    QVERIFY(m_maker.ffmpeg(QStringLiteral(
        "-f lavfi -i testsrc=s=160x96:r=25:d=1 -vf interlace -c:v mpeg2video -flags +ildct+ilme -top 1 @fields.mpg")));
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

void TestMediaSequence::whatIsNoMediaIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("what");
    QVERIFY(m_maker.write(QStringLiteral("notes.txt"), "Dear all,\nthis is a letter.\n"));
    QVERIFY(m_maker.write(QStringLiteral("liar.mov"), "Dear all,\nthis is a letter.\n"));
    QVERIFY(m_maker.write(QStringLiteral("noise.bin"), QByteArray(70000, '\x9d')));
    QVERIFY(m_maker.write(QStringLiteral("empty.mov"), {}));
    mkfifo(QFile::encodeName(m_maker.path(QStringLiteral("pipe.mov"))).constData(), 0600);
    QTest::newRow("text") << m_maker.path(QStringLiteral("notes.txt")) << "no media";
    QTest::newRow("text that says it is a film") << m_maker.path(QStringLiteral("liar.mov")) << "no media";
    QTest::newRow("bytes") << m_maker.path(QStringLiteral("noise.bin")) << "no media";
    QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @good.mov -c copy @unfinished.mov")));
    const QByteArray whole = m_maker.bytes(QStringLiteral("unfinished.mov"));
    QVERIFY(m_maker.write(QStringLiteral("unfinished.mov"), whole.left(whole.size() * 7 / 10)));
    QTest::newRow("film without its index") << m_maker.path(QStringLiteral("unfinished.mov")) << "never finished";
    QTest::newRow("nothing") << m_maker.path(QStringLiteral("empty.mov")) << "empty";
    QTest::newRow("missing") << m_maker.path(QStringLiteral("missing.mov")) << "no such file";
    QTest::newRow("folder") << m_maker.path(QString()) << "folder";
    QTest::newRow("pipe") << m_maker.path(QStringLiteral("pipe.mov")) << "device";
    QTest::newRow("address") << "http://127.0.0.1:9/film.mov"
                             << "only files of this machine";
    QTest::newRow("protocol in the name") << "concat:/etc/passwd|/etc/passwd"
                                          << "no such file";
}

void TestMediaSequence::whatIsNoMediaIsRefused()
{
    QFETCH(QString, path);
    QFETCH(QString, what);
    const Error error = refusal(path);
    QVERIFY2(error.what.contains(what), qPrintable(error.sentence()));
    QCOMPARE(error.file, path);
}

void TestMediaSequence::playlistsAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("concat") << QByteArray("ffconcat version 1.0\nfile good.mov\n");
    QTest::newRow("HLS") << QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:3\n#EXTINF:2.4,\ngood.mov\n#EXT-X-ENDLIST\n");
    QTest::newRow("SDP") << QByteArray(
        "v=0\no=- 0 0 IN IP4 127.0.0.1\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 9 RTP/AVP 96\n");
    QTest::newRow("DASH") << QByteArray("<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                                        "profiles=\"urn:mpeg:dash:profile:isoff-live:2011\"></MPD>\n");
}

void TestMediaSequence::playlistsAreRefused()
{
    QFETCH(QByteArray, text);
    for (const char* name : {"list.mov", "list.m3u8"}) {
        QVERIFY(m_maker.write(QString::fromLatin1(name), text));
        const Error error = refusal(m_maker.path(QString::fromLatin1(name)));
        QVERIFY2(error.what.contains(QStringLiteral("playlist")) || error.what.contains(QStringLiteral("no media")),
                 qPrintable(error.sentence()));
    }
}

void TestMediaSequence::aVariableRateIsRefusedAtTheFrameWhereItVaries()
{
    // Frame 30 stays twice as long as the others.
    for (const char* file : {"vary.mov", "vary.mkv"}) {
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-i @numbers.nut -vf setpts=PTS+gte(N\\,31)/25/TB -vsync passthrough -enc_time_base 1/25 "
                           "-c:v mpeg4 -g 10 @") +
            QString::fromLatin1(file)));
        const Error error = refusal(m_maker.path(QString::fromLatin1(file)));
        QCOMPARE(error.item + QStringLiteral(", ") + error.where + QStringLiteral(": ") + error.what,
                 QStringLiteral("picture, frame 31: the frame rate varies"));
    }
}

void TestMediaSequence::aCutFileNamesItsLastGoodFrame_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("file");
    QTest::newRow("MOV, index first") << "-i @good.mov -c copy -movflags +faststart"
                                      << "cut.mov";
    QTest::newRow("Matroska") << "-i @good.mov -c copy"
                              << "cut.mkv";
    QTest::newRow("MXF") << "-i @numbers.nut -c:v mpeg2video -g 12 -bf 2"
                         << "cut.mxf";
    QTest::newRow("AVI") << "-i @numbers.nut -c:v ffv1"
                         << "cut.avi";
}

/// Cut in the middle of the pictures: the number named is that of a frame that an intact reader finds whole, and the
/// next one is beyond the cut.
void TestMediaSequence::aCutFileNamesItsLastGoodFrame()
{
    QFETCH(QString, arguments);
    QFETCH(QString, file);
    QVERIFY(m_maker.ffmpeg(arguments + QStringLiteral(" @") + file));
    QVERIFY(openSequence(m_maker.path(file)).ok());
    const QByteArray whole = m_maker.bytes(file);
    QVERIFY(m_maker.write(file, whole.left(whole.size() * 7 / 10)));
    const Error error = refusal(m_maker.path(file));
    const QRegularExpression form(
        QStringLiteral("^the file is cut: of (\\d+) frames it holds (\\d+), the last good one is frame (\\d+)$"));
    const QRegularExpressionMatch match = form.match(error.what);
    QVERIFY2(match.hasMatch(), qPrintable(error.sentence()));
    QCOMPARE(match.captured(1).toInt(), 60);
    QVERIFY(match.captured(2).toInt() > 20 && match.captured(2).toInt() < 55);
    QCOMPARE(match.captured(3).toInt(), match.captured(2).toInt() - 1);
}

/// Random damage anywhere: the file opens or is refused with a whole sentence; frames and samples come or are refused.
void TestMediaSequence::damagedBytesNeverCrash()
{
    const unsigned seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const QByteArray good = m_maker.bytes(QStringLiteral("good.mov"));
    const QString path = m_maker.path(QStringLiteral("damaged.mov"));
    for (int round = 0; round < 60; ++round) {
        QByteArray bytes = good;
        const int span = round % 2 == 0 ? 3000 : bytes.size(); // every other time in the index alone
        for (int i = 0; i < 8; ++i)
            bytes[random.bounded(span)] = char(random.bounded(256));
        QVERIFY(m_maker.write(QStringLiteral("damaged.mov"), bytes));
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

STRATACUT_TEST_MAIN(TestMediaSequence)
#include "tst_mediasequence.moc"

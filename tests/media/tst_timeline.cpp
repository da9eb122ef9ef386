#include "desk/media/PictureReader.h"
#include "desk/media/SoundReader.h"
#include "desk/media/Timecode.h"
#include "media/MediaMaker.h"
#include "media/Otio.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QRandomGenerator>

using namespace desk;
using namespace desk::media;

class TestTimeline : public QObject
{
    Q_OBJECT

    MediaMaker m_maker;
    std::vector<std::int32_t> m_noise = noise(48000 * 4, 24, 3);

    Result<Sequence> open(const QJsonArray& tracks, const QJsonObject& start = {}) const
    {
        m_maker.write(QStringLiteral("cut.otio"), otio::timeline(tracks, start));
        return openSequence(m_maker.path(QStringLiteral("cut.otio")));
    }

private slots:

    void initTestCase()
    {
        m_maker.writeWav(QStringLiteral("noise.wav"), m_noise, 24);
        for (const char* rate : {"24", "30000/1001", "48"}) {
            const QString name = QString::fromLatin1(rate).section('/', 0, 0);
            QVERIFY(m_maker.numberedPicture(60, QString::fromLatin1(rate), name + QStringLiteral(".nut")));
            QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @%1.nut -i @noise.wav -c:v libx264 -g 25 -bf 2 -pix_fmt yuv420p "
                                                  "-qp 10 -c:a pcm_s24le @%1.mov")
                                       .arg(name)));
        }
    }

    void picturesAndSamplesAreThoseOfTheSources_data()
    {
        const support::Rows<double, Rational, QString, int, QString> row;
        row("24", 24, {24, 1}, "24.mov", 1, "01:00:00:00");
        row("29.97", 29.97, {30000, 1001}, "30000.mov", 1, "00:48:00:00");
        row("24, of 48 frames a second", 24, {24, 1}, "48.mov", 2, "01:00:00:00");
    }

    /// Two clips round a gap, a third on an upper track over both, and two audio tracks cut elsewhere.
    void picturesAndSamplesAreThoseOfTheSources()
    {
        const auto [written, rate, file, step, timecode] = support::fetched<double, Rational, QString, int, QString>();
        const auto available = otio::range(86400, 60.0 / step, written);
        const QJsonArray tracks{
            otio::track("Video", {otio::clip(file, otio::range(86405, 8, written), available), otio::gap(4, written),
                                  otio::clip(file, otio::range(86410, 10, written), available)}),
            otio::track("Video", {otio::gap(6, written), otio::clip(file, otio::range(20, 8, written))}),
            otio::track("Audio", {otio::gap(3, written), otio::clip("noise.wav", otio::range(1234, 20001, 48000))}),
            otio::track("Audio", {otio::clip(file, otio::range(7, 11, written))})};
        const auto sequence = support::valueOf(open(tracks, otio::time(86400, written)));
        QCOMPARE(sequence.frameRate, rate);
        QCOMPARE(sequence.frames, 22);
        QCOMPARE(sequence.startTimecode, timecode);
        QCOMPARE(sequence.notices, QStringList());

        std::vector<int> shown;
        for (int n = 0; n < 22; ++n)
            shown.push_back(step * (n < 6 ? 5 + n : n < 14 ? 20 + n - 6 : 10 + n - 12));
        auto pictures = support::valueOf(PictureReader::open(sequence, {160, 90, 8, Sampling::YCbCr422}));
        QRandomGenerator random(support::seed());
        for (int i = 0; i < 40; ++i) {
            const int n = i < 22 ? i : random.bounded(22);
            QCOMPARE(spelledNumber(support::valueOf(pictures->read(n))), shown[std::size_t(n)]);
        }

        std::vector<std::int32_t> first(40000, 0);
        std::vector<std::int32_t> second(40000, 0);
        const auto start = [rate = rate](int frame) { return std::ptrdiff_t(firstSampleOfFrame(frame, rate, 48000)); };
        std::copy_n(m_noise.begin() + 1234, 20001, first.begin() + start(3));
        std::copy_n(m_noise.begin() + start(7), start(11), second.begin());
        auto sound = support::valueOf(SoundReader::open(sequence, {1, 0}));
        for (qint64 at = 0; at + 1000 < 40000; at += 1 + random.bounded(1500)) {
            const auto block = support::valueOf(sound->read(at, 1000));
            QVERIFY(std::equal(block.tracks[0].begin(), block.tracks[0].end(), second.begin() + std::ptrdiff_t(at)));
            QVERIFY(std::equal(block.tracks[1].begin(), block.tracks[1].end(), first.begin() + std::ptrdiff_t(at)));
        }
    }

    void gapsAreBlackAndOlderClipsAreRead()
    {
        QJsonObject old{{"OTIO_SCHEMA", "Clip.1"},
                        {"name", "old"},
                        {"source_range", otio::range(9, 2, 24)},
                        {"media_reference", QJsonObject{{"OTIO_SCHEMA", "ExternalReference.1"},
                                                        {"target_url", "file://" + m_maker.path("24.mov")}}}};
        const auto sequence = support::valueOf(open({otio::track("Video", {otio::gap(2, 24), old})}));
        auto reader = support::valueOf(PictureReader::open(sequence, {160, 90, 10, Sampling::YCbCr422}));
        const Frame black = support::valueOf(reader->read(1));
        QCOMPARE(black.number, 1);
        QVERIFY(std::count(black.planes[0].begin(), black.planes[0].end(), 64) == 160 * 90);
        QVERIFY(std::count(black.planes[2].begin(), black.planes[2].end(), 512) == 80 * 90);
        QCOMPARE(spelledNumber(support::valueOf(reader->read(2))), 9);
    }

    void whatIsLeftOutIsNoticed()
    {
        QJsonObject clip = otio::clip("24.mov", otio::range(0, 5, 24));
        clip["effects"] = QJsonArray{QJsonObject{{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"name", "slow"}}};
        const QJsonObject nested{{"OTIO_SCHEMA", "Stack.1"},
                                 {"name", "inner"},
                                 {"children", QJsonArray{otio::track("Video", {clip, clip})}}};
        const QJsonObject dissolve{{"OTIO_SCHEMA", "Transition.1"}, {"name", "mix"}};
        QJsonObject off = clip;
        off["enabled"] = false;
        off["effects"] = QJsonArray();
        const auto sequence = support::valueOf(open({otio::track("Video", {clip, dissolve, off, nested, clip})}));
        QCOMPARE(sequence.frames, 25);
        QStringList told;
        for (const QString& notice : sequence.notices)
            told += notice.section(QStringLiteral(".otio, "), 1);
        QCOMPARE(told, (QStringList{"clip \"24.mov\" in track V1: the effect slow is left out.",
                                    "transition \"mix\" in track V1: it is left out; a cut stands in its place.",
                                    "stack \"inner\" in track V1: it is left out; a gap stands in its place.",
                                    "clip \"24.mov\" in track V1: the effect slow is left out."}));
    }

    void badTimelinesAreRefusedByName_data()
    {
        const support::Rows<QByteArray, QString> row;
        const auto video = [](const QJsonObject& clip) { return otio::timeline({otio::track("Video", {clip})}); };
        const auto part = otio::range(0, 5, 24);
        row("no JSON", "{\"a\":", "no JSON");
        row("a million deep", QByteArray(1000000, '['), "no JSON");
        row("other JSON", "[1, 2]", "no OpenTimelineIO timeline");
        row("empty timeline", otio::timeline({}), "no clip with picture or sound");
        row("missing media", video(otio::clip("gone/a.mov", part)), "a media file that it names is not there");
        row("offline media", video({{"OTIO_SCHEMA", "Clip.1"}, {"name", "x"}, {"source_range", part}}),
            "clip \"x\" in track V1");
        row("remote media", video(otio::clip("https://example.org/a.mov", part)), "only files of this machine");
        row("a device", video(otio::clip("file:///dev/zero", part)), "a device and not a file");
        row("itself", video(otio::clip("cut.otio", part)), "a timeline cannot stand inside a timeline");
        row("no picture", video(otio::clip("noise.wav", part)), "noise.wav has no picture");
        row("another rate", video(otio::clip("30000.mov", part)),
            "clip \"30000.mov\" in track V1: 30000.mov has 29.97 frames a second and the timeline 24; convert the "
            "clip");
        row("no rate", video(otio::clip("24.mov", otio::range(0, 5, 0))), "0 frames a second");
        row("between frames", video(otio::clip("24.mov", otio::range(0.5, 5, 24))),
            "does not start and end with a frame");
        row("past the end", video(otio::clip("24.mov", otio::range(56, 5, 24))), "it shows frame 60 of 24.mov");
        row("before the start", video(otio::clip("24.mov", part, otio::range(3, 9, 24))), "starts before its media");
        row("negative length", video(otio::clip("24.mov", otio::range(3, -9, 24))), "lasts less than nothing");
        row("endless", video(otio::gap(1e300, 24)), "more than ten days");
    }

    void badTimelinesAreRefusedByName()
    {
        const auto [bytes, what] = support::fetched<QByteArray, QString>();
        m_maker.write(QStringLiteral("cut.otio"), bytes);
        const auto opened = openSequence(m_maker.path(QStringLiteral("cut.otio")));
        QVERIFY(!opened);
        QVERIFY2(opened.error().sentence().contains(what), qPrintable(opened.error().sentence()));
        QVERIFY(!opened.error().file.isEmpty() && !opened.error().next.isEmpty());
    }

    void aChangedSourceIsNoticed()
    {
        QVERIFY(QFile::copy(m_maker.path("24.mov"), m_maker.path("changing.mov")));
        const QJsonObject clip = otio::clip("changing.mov", otio::range(0, 5, 24));
        const auto sequence = support::valueOf(open({otio::track("Video", {clip}), otio::track("Audio", {clip})}));
        m_maker.write(QStringLiteral("changing.mov"), "other bytes");
        const auto reader = PictureReader::open(sequence, {});
        QVERIFY(!reader && reader.error().file.endsWith(QStringLiteral("changing.mov")));
        QVERIFY(!SoundReader::open(sequence, {0}));
    }

    void timecodeCountsAsClocksDo_data()
    {
        const support::Rows<QString, Rational, qint64, QString> row;
        row("24", "01:00:00:00", {24, 1}, 49, "01:00:02:01");
        row("past midnight", "23:59:59:24", {25, 1}, 1, "00:00:00:00");
        row("23.976", "10:00:00:00", {24000, 1001}, 86400, "11:00:00:00");
        row("29.97 drop, first minute", "00:00:00;00", {30000, 1001}, 1799, "00:00:59;29");
        row("29.97 drop, dropped", "00:00:00;00", {30000, 1001}, 1800, "00:01:00;02");
        row("29.97 drop, tenth minute", "00:09:59;29", {30000, 1001}, 1, "00:10:00;00");
        row("29.97 drop, an hour", "01:00:00;00", {30000, 1001}, 107892, "02:00:00;00");
        row("59.94 drop", "00:00:59;59", {60000, 1001}, 1, "00:01:00;04");
        row("no timecode", "", {24, 1}, 24, "00:00:01:00");
    }

    void timecodeCountsAsClocksDo()
    {
        const auto [start, rate, frame, text] = support::fetched<QString, Rational, qint64, QString>();
        QCOMPARE(Timecode::startingAt(start, rate).text(frame), text);
    }
};

STRATACUT_TEST_MAIN(TestTimeline)
#include "tst_timeline.moc"

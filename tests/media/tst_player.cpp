#include "desk/media/Player.h"

#include "desk/media/PreviewMaker.h"
#include "media/MediaMaker.h"
#include "media/Otio.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QRandomGenerator>
#include <QSignalSpy>

#include <atomic>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <thread>

using namespace desk;
using namespace desk::media;

namespace
{

int spelledNumber(const Preview& picture)
{
    int number = 0;
    const std::uint8_t* row = picture.pixels.data() + std::ptrdiff_t(picture.stride) * (picture.size.height() / 2);
    for (int bit = 0; bit < 8; ++bit)
        number |= row[(bit * 2 + 1) * picture.size.width() / 16 * 4 + 1] > 125 ? 1 << bit : 0;
    return number;
}

/// A sound device that plays steadily and remembers what.
class SteadyDevice : public SoundOutput
{
public:
    ~SteadyDevice() override { stop(); }

    void start(Pull pull) override
    {
        stop();
        played.clear();
        m_count = 0;
        m_runs = true;
        m_thread = std::thread([this, pull = std::move(pull)] {
            auto next = std::chrono::steady_clock::now();
            std::unique_lock lock(m_mutex);
            while (!m_wake.wait_until(lock, next, [this] { return !m_runs; })) {
                next += std::chrono::milliseconds(10);
                std::vector<float> pairs(960, 0.0F);
                const int got = pull(pairs.data(), 480);
                played.insert(played.end(), pairs.begin(), pairs.begin() + got * 2);
                m_count += got;
            }
        });
    }

    void stop() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_runs = false;
        }
        m_wake.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }

    double position() const override { return double(m_count) / 48000; }

    std::vector<float> played;

private:
    std::atomic<qint64> m_count{0};
    bool m_runs = false;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::thread m_thread;
};

} // namespace

class TestPlayer : public QObject
{
    Q_OBJECT

    MediaMaker m_maker;

    Sequence open(const QString& name) const { return support::valueOf(openSequence(m_maker.path(name))); }

    static bool shows(const Player& player, qint64 frame)
    {
        return player.picture() && player.picture()->frame == frame && player.position() == frame &&
               !player.picture()->isStandIn;
    }

private slots:

    void initTestCase()
    {
        m_maker.writeWav(QStringLiteral("noise.wav"), noise(48000 * 10, 24, 5), 24);
        QVERIFY(m_maker.numberedPicture(200, QStringLiteral("25"), QStringLiteral("numbers.nut")));
        const QString make = QStringLiteral("-i @numbers.nut -i @noise.wav -pix_fmt %1 -c:v %2 -c:a pcm_s24le @%3");
        QVERIFY(m_maker.ffmpeg(make.arg("yuv420p", "libx264 -qp 10 -g 60 -bf 3", "h264.mov")));
        QVERIFY(m_maker.ffmpeg(make.arg("yuv422p10le", "prores -profile:v 3", "prores.mov")));
        QVERIFY(m_maker.ffmpeg(make.arg("yuv420p", "mpeg2video -q:v 2 -g 12 -bf 2", "mpeg2.mxf")));
        m_maker.write(QStringLiteral("cut.otio"),
                      otio::timeline({otio::track("Video", {otio::clip("h264.mov", otio::range(30, 60, 25)),
                                                            otio::clip("prores.mov", otio::range(90, 60, 25))}),
                                      otio::track("Audio", {otio::clip("noise.wav", otio::range(0, 120, 25))})}));
    }

    void everySeekShowsItsFrame_data()
    {
        const support::Rows<QString, int> row;
        row("H.264 with long groups", "h264.mov", 0);
        row("ProRes", "prores.mov", 0);
        row("MPEG-2 in MXF", "mpeg2.mxf", 0);
        row("a timeline of two", "cut.otio", 30);
    }

    void everySeekShowsItsFrame()
    {
        const auto [file, offset] = support::fetched<QString, int>();
        Player player(std::make_shared<SteadyDevice>());
        player.setBox({320, 200});
        player.load(open(file));
        QTRY_VERIFY(shows(player, 0));
        QCOMPARE(player.picture()->size, QSize(320, 180));
        QRandomGenerator random(support::seed());
        for (int i = 0; i < 25; ++i) {
            // The last of some seeks in a row counts.
            for (int hasty = random.bounded(3); hasty >= 0; --hasty)
                random.bounded(2) > 0 ? player.seek(random.bounded(int(player.frames())))
                                      : player.scrub(random.bounded(int(player.frames())));
            QTRY_VERIFY(shows(player, player.position()));
            QCOMPARE(spelledNumber(*player.picture()), int(player.position()) + offset);
        }
        player.seek(5000);
        QCOMPARE(player.position(), player.frames() - 1);
        player.step(-1);
        QTRY_VERIFY(shows(player, player.frames() - 2));
    }

    /// However far into a group of pictures a cut goes, its first picture has been decoded before it is due.
    void cutsAreReadyBeforeTheyCome()
    {
        const int starts[] = {50, 110, 20, 26, 170, 115, 59, 3, 119, 90};
        QJsonArray clips;
        for (const int start : starts)
            clips.append(otio::clip(start % 3 == 0 ? "prores.mov" : "h264.mov", otio::range(start, 6, 25)));
        m_maker.write(QStringLiteral("short.otio"), otio::timeline({otio::track("Video", clips)}));
        FrameSource source(open(QStringLiteral("short.otio")), {FF_THREAD_FRAME | FF_THREAD_SLICE, 0});
        QVERIFY(source.open());
        PreviewMaker maker;
        for (qint64 n = 0; n < 60; ++n) {
            QCOMPARE(n == 0 ? 0 : support::valueOf(source.approach(n)).left, 0);
            const auto picture = support::valueOf(maker.make(support::valueOf(source.frame(n)), n, {320, 180}));
            QCOMPARE(spelledNumber(*picture), starts[n / 6] + int(n % 6));
            while (source.prepare(n)) {
            }
        }
    }

    /// On the way to a frame the source shows where it has come to.
    void theWayToAFrameShowsPictures()
    {
        FrameSource source(open(QStringLiteral("h264.mov")), {FF_THREAD_FRAME | FF_THREAD_SLICE, 0});
        QVERIFY(source.open());
        PreviewMaker maker;
        qint64 left = 50;
        for (auto step = support::valueOf(source.approach(110)); step.left > 0;
             step = support::valueOf(source.approach(110))) {
            const auto picture = support::valueOf(maker.make(step.reached, 110, {320, 180}));
            QCOMPARE(spelledNumber(*picture) + step.left, 110);
            QVERIFY2(step.left <= std::exchange(left, step.left), "never back to the key frame");
        }
        QVERIFY(left < 50);
        QCOMPARE(spelledNumber(*support::valueOf(maker.make(support::valueOf(source.frame(110)), 110, {320, 180}))),
                 110);
    }

    /// Every picture comes with the sound of its own frame, and what sounds is the file's sound from there on.
    void pictureAndSoundKeepTogether()
    {
        const auto device = std::make_shared<SteadyDevice>();
        Player player(device);
        player.setBox({320, 200});
        player.load(open(QStringLiteral("h264.mov")));
        player.seek(40);
        QTRY_VERIFY(shows(player, 40));
        int wrong = 0;
        std::vector<double> apart;
        connect(&player, &Player::pictureChanged, this, [&] {
            if (player.isPlaying())
                apart.push_back(std::abs(40 + device->position() * 25 - 0.5 - double(player.picture()->frame)));
            wrong += spelledNumber(*player.picture()) == int(player.picture()->frame) ? 0 : 1;
        });
        QSignalSpy about(&player, &Player::aboutToPlay);
        QSignalSpy now(&player, &Player::nowPlaying);
        QSignalSpy done(&player, &Player::donePlaying);
        player.play();
        QCOMPARE(about.value(0).value(0).toLongLong(), 40);
        QVERIFY(now.isEmpty());
        QVERIFY(Playing::isGoingOn());
        QTRY_VERIFY(player.position() >= 90);
        player.stop();
        QVERIFY(!Playing::isGoingOn());
        QCOMPARE(now.value(0).value(0).toLongLong(), 40);
        QCOMPARE(done.value(0).value(0).toLongLong(), player.position());
        QTRY_VERIFY(shows(player, player.position()));
        QCOMPARE(wrong, 0);
        // A busy machine may show some late.
        std::sort(apart.begin(), apart.end());
        QVERIFY2(apart[apart.size() / 2] < 1, qPrintable(QString::number(apart[apart.size() / 2])));
        QVERIFY(player.statistics().shown + player.statistics().dropped >= 45);
        const auto samples = noise(48000 * 10, 24, 5);
        QVERIFY(device->played.size() > 90000);
        for (std::size_t i = 0; i < 90000; ++i)
            QCOMPARE(device->played[i], float(samples[40 * 1920 + i / 2]) / 8388608.0F);
    }

    void withoutADeviceTheClockIsSteady()
    {
        Player player(systemSoundOutput());
        player.load(open(QStringLiteral("prores.mov")));
        QElapsedTimer clock;
        connect(&player, &Player::nowPlaying, this, [&] { clock.start(); });
        player.play();
        QTRY_VERIFY(player.position() >= 30);
        QVERIFY2(std::abs(double(clock.elapsed()) / 40 - double(player.position())) < 3, "30 frames last 1.2 s");
        // At the end it stops on the last frame, and starts over from there.
        player.seek(player.frames() - 5);
        QTRY_COMPARE(player.state(), Player::State::Stopped);
        QTRY_VERIFY(shows(player, player.frames() - 1));
        player.play();
        QVERIFY(player.position() < 5);
    }

    void shuttlingGoesBothWays()
    {
        Player player(std::make_shared<SteadyDevice>());
        player.setBox({320, 200});
        player.load(open(QStringLiteral("h264.mov")));
        player.seek(150);
        QVector<int> speeds;
        for (const int direction : {1, 1, 1, 1, 1, -1, -1, -1, -1, -1}) {
            player.shuttle(direction);
            speeds += player.speed();
        }
        QCOMPARE(speeds, (QVector<int>{1, 2, 4, 8, 8, 4, 2, 1, -1, -2}));
        qint64 last = 1000;
        int wrong = 0;
        connect(&player, &Player::pictureChanged, this, [&] {
            wrong += spelledNumber(*player.picture()) == int(player.picture()->frame) ? 0 : 1;
            wrong += player.picture()->frame < last ? 0 : 1;
            last = player.picture()->frame;
        });
        QTRY_VERIFY(player.position() < 60);
        QTRY_COMPARE(player.state(), Player::State::Stopped);
        QTRY_VERIFY(shows(player, 0));
        QCOMPARE(wrong, 0);
    }

    void marksStayInOrder()
    {
        Player player(std::make_shared<SteadyDevice>());
        player.load(open(QStringLiteral("prores.mov")));
        const auto marks = [&] { return QVector<qint64>{player.markIn(), player.markOut()}; };
        player.setMarks(20, 30);
        player.goToMarkOut();
        QCOMPARE(player.position(), 30);
        player.seek(40);
        player.markInHere();
        QCOMPARE(marks(), (QVector<qint64>{40, -1}));
        player.seek(10);
        player.markOutHere();
        QCOMPARE(marks(), (QVector<qint64>{-1, 10}));
        player.setMarks(50, 4000);
        QCOMPARE(marks(), (QVector<qint64>{50, player.frames() - 1}));
        player.load(open(QStringLiteral("h264.mov")));
        QCOMPARE(marks(), (QVector<qint64>{-1, -1}));
    }

    void mediaThatWentAwaySayWhy()
    {
        QVERIFY(QFile::copy(m_maker.path("mpeg2.mxf"), m_maker.path("gone.mxf")));
        const Sequence sequence = open(QStringLiteral("gone.mxf"));
        QVERIFY(QFile::remove(m_maker.path("gone.mxf")));
        Player player(std::make_shared<SteadyDevice>());
        QSignalSpy failed(&player, &Player::failed);
        player.load(sequence);
        QTRY_VERIFY(player.picture());
        QVERIFY(player.picture()->problem.contains(QStringLiteral("gone.mxf")));
        player.play();
        QTRY_VERIFY(player.position() > 3);
        QCOMPARE(failed.size(), 1);
    }

    void aFileThatIsReplacedWhileItPlaysSaysSo()
    {
        const QString file = m_maker.path("replaced.mov");
        QVERIFY(QFile::copy(m_maker.path("h264.mov"), file));
        Player player(std::make_shared<SteadyDevice>());
        QSignalSpy failed(&player, &Player::failed);
        player.load(open(QStringLiteral("replaced.mov")));
        player.play();
        QTRY_VERIFY(player.position() > 10);
        // One without sound, so that the stream that sounded is not there.
        QVERIFY(QFile::remove(file) && QFile::copy(m_maker.path("numbers.nut"), file));
        player.seek(0);
        QTRY_COMPARE(failed.size(), 1);
        QTRY_VERIFY(player.position() > 10);
    }

    void soundAlonePlays()
    {
        Player player(std::make_shared<SteadyDevice>());
        player.load(open(QStringLiteral("noise.wav")));
        QCOMPARE(player.frames(), 250);
        player.play();
        QTRY_VERIFY(player.position() > 5);
        // Going away while it plays ends all of it.
    }
};

STRATACUT_TEST_MAIN(TestPlayer)
#include "tst_player.moc"

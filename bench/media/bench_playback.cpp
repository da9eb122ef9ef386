#include "desk/media/Player.h"

#include "desk/media/PictureDecoder.h"
#include "desk/media/PictureIndex.h"
#include "desk/services/CommitQueue.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <thread>

// Does playback keep up, and what does it cost? 1080p 10-bit ProRes with six tracks of sound plays for eight seconds
// into a monitor of 960 x 540 whose picture is painted, alone and while the same clip is exported. And how long does a
// seek take against the bare decoder's?

namespace
{

using namespace desk::media;

constexpr QSize monitor(960, 540);

bool ffmpeg(const QStringList& words)
{
    return QProcess::execute(QStringLiteral("ffmpeg"), QStringList{"-nostdin", "-v", "error", "-y"} + words) == 0;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

Sequence makeClip(const QString& path, const QStringList& codec)
{
    QStringList words{"-f", "lavfi", "-i", "testsrc2=s=1920x1080:r=24:d=10",
                      "-f", "lavfi", "-i", "sine=f=440:r=48000:d=10"};
    words += {"-filter_complex", "[1:a]asplit=6[a][b][c][d][e][f]", "-map", "0:v"};
    for (const char* pad : {"[a]", "[b]", "[c]", "[d]", "[e]", "[f]"})
        words += {"-map", pad};
    if (!ffmpeg(words + codec + QStringList{"-c:a", "pcm_s24le", path}))
        std::abort();
    const auto opened = openSequence(path);
    if (!opened)
        std::abort();
    return *opened;
}

/// Exports a clip, over and over, as long as it lives.
class Export
{
public:
    Export(const Sequence& sequence, const QString& folder)
    {
        desk::services::CompositionOrder order;
        order.mediaPath = sequence.path;
        m_plan.folder = folder;
        m_plan.packages.push_back({{}, {order, order}});
        m_plan.packages.front().package.id = QUuid::createUuid();
        m_plan.totalFrames = 2 * sequence.frames;
        m_queue.yieldToPlayback();
        m_queue.add(m_plan, [](const IMFO_Bridge::Error&) {});
    }

    qint64 frames() const { return m_frames; }

private:
    desk::services::CommitPlan m_plan;
    std::atomic<qint64> m_frames{0};
    desk::services::CommitQueue m_queue{
        [this](const QByteArray&, const desk::services::ExportProgress& progress) { m_frames = progress.frames; },
        [](const QByteArray&, const QString&) {}};
};

/// Answers how many frames a second are exported meanwhile.
double play(const char* name, const Sequence& sequence, const Export* beside = nullptr)
{
    Player player(systemSoundOutput());
    player.setBox(monitor);
    player.load(sequence);
    QImage screen(monitor, QImage::Format_RGB32);
    std::vector<double> paints;
    QObject::connect(&player, &Player::pictureChanged, &player, [&] {
        const auto& picture = *player.picture();
        if (picture.pixels.empty())
            return;
        QElapsedTimer clock;
        clock.start();
        const QImage image(picture.pixels.data(), picture.size.width(), picture.size.height(), picture.stride,
                           QImage::Format_RGB32);
        QPainter(&screen).drawImage(0, 0, image);
        paints.push_back(double(clock.nsecsElapsed()) / 1e6);
    });
    QEventLoop loop;
    const qint64 frames = 192;
    QObject::connect(&player, &Player::positionChanged, &loop, [&](qint64 frame) {
        if (frame >= frames)
            loop.quit();
    });
    player.play();
    const double before = processorSeconds();
    const qint64 exported = beside ? beside->frames() : 0;
    QElapsedTimer clock;
    clock.start();
    loop.exec();
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    const Player::Statistics counts = player.statistics();
    std::printf("%s, frames dropped of %lld | %lld | 0\n", name, frames, counts.dropped);
    std::printf("%s, mean and longest lateness in frames | %.2f, %.2f | below 1\n", name,
                counts.lateness / double(counts.shown) * 24, counts.latest * 24);
    if (beside)
        return double(beside->frames() - exported) / seconds;
    std::printf("%s, painting a picture, of a frame's time | %.4f | none\n", name, median(paints) * 24 / 1000);
    std::printf("%s, share of one core | %.2f | none\n", name, (processorSeconds() - before) / seconds);
    return 0;
}

void playBesideAnExport(const Sequence& sequence, const QString& folder)
{
    const Export beside(sequence, folder);
    const auto exportFrames = [&beside](qint64 wanted) {
        QElapsedTimer clock;
        clock.start();
        const qint64 from = beside.frames();
        while (beside.frames() < from + wanted && clock.elapsed() < 60000)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return double(beside.frames() - from) * 1000 / double(clock.elapsed());
    };
    exportFrames(4);
    const double alone = exportFrames(12);
    const char* name = "playback of 1080p ProRes beside an export";
    const double meanwhile = play(name, sequence, &beside);
    std::printf("%s, exported frames, of those without playback | %.2f (%.2f a second) | >= 0.3\n", name,
                meanwhile / alone, meanwhile);
}

/// The same frames through the player, from the call to the picture, and through a decoder alone, in turn.
void seek(const char* name, const Sequence& sequence)
{
    Player player(systemSoundOutput());
    player.setBox(monitor);
    player.load(sequence);
    PictureDecoder decoder(sequence.path, *sequence.index, {FF_THREAD_FRAME | FF_THREAD_SLICE, 0});
    if (!decoder.open())
        std::abort();
    std::vector<double> ours;
    std::vector<double> bare;
    QRandomGenerator random(1);
    for (int i = 0; i < 60; ++i) {
        const qint64 frame = random.bounded(int(sequence.frames));
        QElapsedTimer clock;
        clock.start();
        player.seek(frame);
        QEventLoop loop;
        QObject::connect(&player, &Player::pictureChanged, &loop, [&] {
            if (player.picture()->frame == frame)
                loop.quit();
        });
        if (!player.picture() || player.picture()->frame != frame)
            loop.exec();
        ours.push_back(double(clock.nsecsElapsed()));
        clock.start();
        if (!decoder.frame(frame))
            std::abort();
        bare.push_back(double(clock.nsecsElapsed()));
    }
    std::printf("seek, %s, against the bare decoder | %.2fx (%.1f ms) | none\n", name, median(ours) / median(bare),
                median(ours) / 1e6);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QTemporaryDir folder;
    const Sequence prores = makeClip(folder.filePath(QStringLiteral("prores.mov")),
                                     {"-c:v", "prores", "-profile:v", "3", "-pix_fmt", "yuv422p10le"});
    const Sequence h264 = makeClip(folder.filePath(QStringLiteral("h264.mov")),
                                   {"-c:v", "libx264", "-preset", "veryfast", "-g", "48", "-pix_fmt", "yuv420p"});
    play("playback of 1080p ProRes", prores);
    playBesideAnExport(prores, folder.filePath(QStringLiteral("package")));
    seek("ProRes", prores);
    seek("H.264 with groups of 48", h264);
    return 0;
}

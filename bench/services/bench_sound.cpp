#include "desk/media/SoundReader.h"
#include "desk/services/SoundExport.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

// Mixing 128 tracks into 16 sound track files of eight channels, two tracks into each channel, labelled and hashed,
// against ffmpeg writing the 128 channels as 16 WAV files as they are, without and with sha1sum after it. Both read the
// same file from the page cache, write 24 bits into the same folder and end with the data on the disk; ffmpeg and
// sha1sum are each started once. On a machine that others use as well the ratio tends to that of the processor time,
// where two threads are worth no more than one.

namespace
{

using namespace desk;

constexpr int streams = 16;
constexpr int channels = 8;
constexpr int seconds = 20;
constexpr int rounds = 3;

void need(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(1);
    }
}

double since(const QElapsedTimer& clock)
{
    return double(clock.nsecsElapsed()) / 1e9;
}

void ffmpeg(const QStringList& arguments)
{
    need(QProcess::execute(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-nostdin", "-y"} + arguments) == 0,
         "ffmpeg failed");
}

QString makeSource(const QTemporaryDir& folder)
{
    const QString file = folder.filePath(QStringLiteral("source.mov"));
    QStringList arguments{
        "-f", "lavfi", "-i",
        QStringLiteral("anoisesrc=r=48000:a=0.3:seed=1:d=%1,aformat=channel_layouts=7.1").arg(seconds)};
    for (int stream = 0; stream < streams; ++stream)
        arguments += {"-map", "0"};
    ffmpeg(arguments + QStringList{"-c:a", "pcm_s24le", file});
    return file;
}

/// Each file takes the eight tracks of its own stream and those of the next one.
services::OutputFormat mapping()
{
    services::OutputFormat format;
    for (int stream = 0; stream < streams; ++stream) {
        QJsonArray in;
        for (int track = 0; track < 2 * channels; ++track)
            in += (stream * channels + track) % (streams * channels) + 1;
        format.mapping += QJsonObject{{"Out", stream + 1}, {"In", in}, {"AudioMixdownSettings", "7.1"}};
    }
    return format;
}

double ours(const media::Sequence& sequence, const QTemporaryDir& folder)
{
    QStringList paths;
    for (int stream = 0; stream < streams; ++stream) {
        paths += folder.filePath(QStringLiteral("ours-%1.mxf").arg(stream));
        QFile::remove(paths.last());
    }
    QElapsedTimer clock;
    clock.start();
    const auto plans = services::planSound(services::binItem(sequence), mapping());
    need(plans.ok(), "no plan");
    const qint64 samples = qint64(seconds) * media::soundRate;
    const auto written = services::writeSound({sequence, *plans, paths, samples, samples}, [] { return false; });
    need(written.ok(), written.ok() ? "" : qPrintable(written.error().sentence()));
    return since(clock);
}

struct Peer {
    double writing = 1e9;
    /// With the sums that a package needs, which ours are taken on the way.
    double hashing = 1e9;
};

Peer theirs(const QString& source, const QTemporaryDir& folder)
{
    QStringList arguments{"-i", source};
    QStringList paths;
    for (int stream = 0; stream < streams; ++stream) {
        paths += folder.filePath(QStringLiteral("theirs-%1.wav").arg(stream));
        QFile::remove(paths.last());
        arguments += {"-map", QStringLiteral("0:a:%1").arg(stream), "-c:a", "pcm_s24le", paths.last()};
    }
    QElapsedTimer clock;
    clock.start();
    ffmpeg(arguments);
    need(QProcess::execute(QStringLiteral("sync"), paths) == 0, "sync failed");
    Peer peer{since(clock), 0};
    QProcess sum;
    sum.start(QStringLiteral("sha1sum"), paths);
    need(sum.waitForFinished(-1) && sum.exitCode() == 0, "sha1sum failed");
    peer.hashing = since(clock);
    return peer;
}

} // namespace

int main()
{
    const QString name = QStringLiteral("Mixing and wrapping 128 channels against ffmpeg writing them as WAV");
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty()) {
        std::printf("%s | not measured, ffmpeg is not installed | >= 1\n", qPrintable(name));
        return 0;
    }
    const QTemporaryDir folder;
    const QString source = makeSource(folder);
    const auto sequence = media::openSequence(source);
    need(sequence.ok() && sequence->audio.size() == streams * channels, "the source cannot be opened");
    double best = 1e9;
    Peer peer;
    for (int round = 0; round < rounds; ++round) {
        const Peer now = theirs(source, folder);
        peer = {std::min(peer.writing, now.writing), std::min(peer.hashing, now.hashing)};
        best = std::min(best, ours(*sequence, folder));
    }
    std::printf("%s | %.2f | >= 1\n", qPrintable(name), peer.writing / best);
    std::printf("%s and sha1sum | %.2f | >= 1\n", qPrintable(name), peer.hashing / best);
    return 0;
}

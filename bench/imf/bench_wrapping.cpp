#include "bench/imf/BenchPictures.h"
#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/TrackFileWriter.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

// Wrapping and hashing ready codestreams in one pass, against a copy into MXF by ffmpeg and the sum by sha1sum. Both
// read the same track file from the page cache and end with the data on the disk.

namespace
{

using namespace desk::imf;

constexpr int frames = 500;
constexpr int rounds = 3;

double seconds(const QElapsedTimer& clock)
{
    return double(clock.nsecsElapsed()) / 1e9;
}

void need(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(1);
    }
}

double ours(const QString& path, const PictureFormat& format, const J2kProfile& profile,
            const QVector<QByteArray>& codestreams, const QVector<qint64>& sizes)
{
    QFile::remove(path);
    QElapsedTimer clock;
    clock.start();
    auto writer = PictureTrackWriter::create({path, {}, sizes.size()}, format, profile, sizes);
    need(writer.ok(), "cannot create the track file");
    for (int n = 0; n < frames; ++n)
        need((*writer)->append(codestreams[n % codestreams.size()]).ok(), "cannot write a frame");
    need((*writer)->finish().ok(), "cannot finish the track file");
    return seconds(clock);
}

double theirs(const QString& source, const QString& path)
{
    QFile::remove(path);
    QElapsedTimer clock;
    clock.start();
    need(QProcess::execute("ffmpeg", {"-v", "error", "-nostdin", "-i", source, "-c", "copy", "-f", "mxf", path}) == 0,
         "ffmpeg failed");
    need(QProcess::execute("sync", {path}) == 0, "sync failed");
    QProcess sum;
    sum.start("sha1sum", {path});
    need(sum.waitForFinished(-1) && sum.exitCode() == 0, "sha1sum failed");
    return seconds(clock);
}

} // namespace

int main()
{
    const QString name = QStringLiteral("Wrapping and hashing against ffmpeg -c copy and sha1sum");
    if (QStandardPaths::findExecutable("ffmpeg").isEmpty()) {
        std::printf("%s | not measured, ffmpeg is not installed | >= 2\n", qPrintable(name));
        return 0;
    }
    const QTemporaryDir folder;
    const PictureFormat format = bench::hd();
    const auto profile = chooseProfile(format, {J2kSettings::Mode::Lossy, 150});
    QVector<QByteArray> codestreams;
    for (int n = 0; n < 4; ++n)
        codestreams.append(*encodeFrame(bench::picture(format, n), format, *profile));
    QVector<qint64> sizes;
    for (int n = 0; n < frames; ++n)
        sizes.append(codestreams[n % codestreams.size()].size());
    const QString track = folder.filePath("track.mxf");
    double best = 1e9;
    double peer = 1e9;
    for (int round = 0; round < rounds; ++round) {
        best = std::min(best, ours(track, format, *profile, codestreams, sizes));
        peer = std::min(peer, theirs(track, folder.filePath("copy.mxf")));
    }
    std::printf("%s | %.2f | >= 2\n", qPrintable(name), peer / best);
}

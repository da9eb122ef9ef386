#include "desk/imf/j2k/J2kEncoderPool.h"
#include "desk/media/PictureReader.h"
#include "desk/services/ExportJob.h"
#include "support/Turns.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <thread>

// Does anything but the encoder cost time in an export, and does its memory stay flat over the length?

namespace
{

using namespace desk;

constexpr int shortFrames = 24;
constexpr int longFrames = 120;
constexpr int rounds = 5;

QString makeClip(const QTemporaryDir& folder, int frames)
{
    const QString file = folder.filePath(QStringLiteral("clip-%1.mov").arg(frames));
    const QString picture =
        QStringLiteral("testsrc2=size=1920x1080:rate=24:d=%1,noise=alls=6:allf=t").arg((frames - 0.5) / 24);
    const QString sound = QStringLiteral("anoisesrc=r=48000:a=0.2:d=%1").arg(frames / 24.0);
    const int failed = QProcess::execute(
        QStringLiteral("ffmpeg"),
        {"-v",  "error", "-nostdin", "-y",         "-f", "lavfi",    "-i",          picture, "-f",        "lavfi", "-i",
         sound, "-c:v",  "prores",   "-profile:v", "3",  "-pix_fmt", "yuv422p10le", "-c:a",  "pcm_s24le", file});
    return failed ? QString() : file;
}

template <class T>
T orFail(Result<T> result)
{
    if (!result) {
        std::fprintf(stderr, "%s\n", qPrintable(result.error().sentence()));
        std::exit(1);
    }
    return std::move(*result);
}

void orFail(const Status& status)
{
    if (!status)
        orFail(Result<int>(status.error()));
}

struct Seconds {
    double passed;
    /// Of all threads together: other programs lengthen it less, but it does not tell of waiting.
    double computed;

    static Seconds now()
    {
        const auto of = [](clockid_t clock) {
            timespec time{};
            clock_gettime(clock, &time);
            return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
        };
        return {of(CLOCK_MONOTONIC), of(CLOCK_PROCESS_CPUTIME_ID)};
    }

    Seconds operator-(const Seconds& start) const { return {passed - start.passed, computed - start.computed}; }
};

Seconds secondsOfExport(const QString& clip, const QString& folder)
{
    services::CompositionOrder order;
    order.mediaPath = clip;
    const std::atomic<bool> cancelled{false};
    const Seconds start = Seconds::now();
    imf::PackageTransaction transaction = orFail(imf::PackageTransaction::begin(folder, {}));
    imf::NewPackage package;
    package.id = QUuid::createUuid();
    transaction.setPackage(package);
    orFail(services::ExportJob(order, cancelled, [](qint64) {}).run(transaction));
    orFail(transaction.commit());
    return Seconds::now() - start;
}

std::vector<imf::Picture> framesOf(const QString& clip)
{
    const media::Sequence sequence = orFail(media::openSequence(clip));
    const auto reader = orFail(media::PictureReader::open(sequence, {}));
    std::vector<imf::Picture> pictures;
    for (qint64 n = 0; n < sequence.frames; ++n)
        pictures.push_back({orFail(reader->read(n)).planes});
    return pictures;
}

/// The same frames through the same pool, nothing else.
Seconds secondsOfEncoding(std::vector<imf::Picture> pictures)
{
    const services::OutputFormat format;
    const imf::J2kProfile profile = orFail(imf::chooseProfile(format.picture(), format.j2k()));
    const Seconds start = Seconds::now();
    imf::J2kEncoderPool pool(format.picture(), profile);
    std::thread producer([&] {
        for (imf::Picture& picture : pictures)
            orFail(pool.push(std::move(picture)));
        pool.endOfInput();
    });
    while (orFail(pool.take())) {
    }
    producer.join();
    return Seconds::now() - start;
}

/// The largest resident memory of this process so far, in MB.
double peakMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() * 1024 / 1e6;
    }
    return 0;
}

/// An export in a process of its own, which tells its peak.
double peakOfExport(const QString& clip, const QString& folder)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {clip, folder});
    process.waitForFinished(-1);
    return process.readAllStandardOutput().trimmed().toDouble();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    if (argc == 3) {
        secondsOfExport(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
        std::printf("%f\n", peakMegabytes());
        return 0;
    }
    const QTemporaryDir folder;
    const QString brief = makeClip(folder, shortFrames);
    const QString lengthy = makeClip(folder, longFrames);
    if (brief.isEmpty() || lengthy.isEmpty())
        return 1;
    // Neighbours in time meet the machine at the same speed, which varies more over all rounds than the ratio does.
    std::vector<double> passed;
    std::vector<double> computed;
    for (int round = 0; round < rounds; ++round) {
        const Seconds encoding = secondsOfEncoding(framesOf(brief));
        const Seconds exporting = secondsOfExport(brief, folder.filePath(QString::number(round)));
        passed.push_back(encoding.passed / exporting.passed);
        computed.push_back(encoding.computed / exporting.computed);
        std::fprintf(stderr, "round %d: %.3f, processors %.3f\n", round, passed.back(), computed.back());
    }
    std::printf("whole export against encoding alone | %.2f | >= 0.9\n", turns::medianOf(passed));
    std::printf("whole export against encoding alone, time of all processors | %.2f | >= 0.9\n",
                turns::medianOf(computed));
    const double peak = peakOfExport(brief, folder.filePath(QStringLiteral("short")));
    const double longPeak = peakOfExport(lengthy, folder.filePath(QStringLiteral("long")));
    const double limit = 300 + 150.0 * std::max(1U, std::thread::hardware_concurrency());
    std::printf("memory of a five times longer export against a short one | %.2f | <= 1.05\n", longPeak / peak);
    std::printf("memory of an export against 300 MB and 150 MB a core | %.2f | <= 1\n", longPeak / limit);
    return 0;
}

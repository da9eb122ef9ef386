#include "desk/media/PictureReader.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

// How much of the decoder's speed is left when frames arrive as planes in memory? The same file, decoded through by our
// reader and by the ffmpeg program into nothing, in turn, best of three each. Encoding is no part of the figure.

namespace
{

using namespace desk;
using namespace desk::media;

struct Case {
    const char* name;
    const char* codec;
    PictureTarget target;
};

bool ffmpeg(const QStringList& words)
{
    return QProcess::execute(QStringLiteral("ffmpeg"), QStringList{"-nostdin", "-v", "error", "-y"} + words) == 0;
}

double secondsOf(const std::function<bool()>& work)
{
    double best = 1e9;
    for (int round = 0; round < 3; ++round) {
        QElapsedTimer clock;
        clock.start();
        if (!work())
            std::abort();
        best = std::min(best, double(clock.nsecsElapsed()) / 1e9);
    }
    return best;
}

bool readThrough(const Sequence& sequence, const PictureTarget& target)
{
    auto reader = PictureReader::open(sequence, target);
    for (qint64 n = 0; reader && n < sequence.frames; ++n) {
        if (!(*reader)->read(n))
            return false;
    }
    return reader.ok();
}

void measure(const Case& item, const QString& path)
{
    const QStringList words = QString::fromLatin1(item.codec).split(QLatin1Char(' '));
    if (!ffmpeg(QStringList{"-f", "lavfi", "-i", "testsrc2=s=1920x1080:r=24:d=3", "-colorspace", "bt709"} + words +
                QStringList{path}))
        std::abort();
    const Result<Sequence> sequence = openSequence(path);
    if (!sequence)
        std::abort();
    const double peer = secondsOf([&] { return ffmpeg({"-i", path, "-map", "0:v", "-f", "null", "-"}); });
    const double ours = secondsOf([&] { return readThrough(*sequence, item.target); });
    std::printf("decode, %s, against ffmpeg -f null | %.2fx (%.0f frames/s) | none\n", item.name, peer / ours,
                double(sequence->frames) / ours);
}

} // namespace

int main()
{
    const PictureTarget hd{1920, 1080, 10, Sampling::YCbCr422};
    const Case cases[] = {
        {"ProRes 4:2:2 as it is", "-c:v prores -profile:v 3 -pix_fmt yuv422p10le -movflags write_colr", hd},
        {"H.264 4:2:0 to 4:2:2", "-c:v libx264 -preset veryfast -pix_fmt yuv420p", hd},
        {"ProRes to 2K",
         "-c:v prores -profile:v 3 -pix_fmt yuv422p10le -movflags write_colr",
         {2048, 1080, 10, Sampling::YCbCr422}},
        {"FFV1 RGB to 4:2:2", "-c:v ffv1 -pix_fmt gbrp -slices 4", hd},
    };
    QTemporaryDir folder;
    for (const Case& item : cases)
        measure(item, folder.filePath(QStringLiteral("clip.mov")));
    return 0;
}

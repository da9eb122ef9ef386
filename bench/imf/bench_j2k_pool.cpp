#include "bench/imf/BenchPictures.h"
#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/j2k/J2kEncoderPool.h"

#include <QElapsedTimer>

#include <cstdio>
#include <thread>
#include <vector>

// Does the pool use all cores? Frames in memory, the same call on one thread in the same run.

namespace
{

using namespace desk::imf;

constexpr int framesPerCore = 6;
constexpr int rounds = 3;

double secondsOfOneThread(const std::vector<Picture>& pictures, const PictureFormat& format, const J2kProfile& profile)
{
    QElapsedTimer clock;
    clock.start();
    for (int n = 0; n < framesPerCore; ++n) {
        if (!encodeFrame(pictures[std::size_t(n)], format, profile))
            std::abort();
    }
    return double(clock.nsecsElapsed()) / 1e9 / framesPerCore;
}

double secondsOfPool(std::vector<Picture> pictures, const PictureFormat& format, const J2kProfile& profile)
{
    const int count = int(pictures.size());
    QElapsedTimer clock;
    clock.start();
    J2kEncoderPool pool(format, profile);
    std::thread producer([&] {
        for (Picture& picture : pictures) {
            if (!pool.push(std::move(picture)))
                std::abort();
        }
        pool.endOfInput();
    });
    for (auto next = pool.take(); next && *next; next = pool.take()) {
    }
    producer.join();
    return double(clock.nsecsElapsed()) / 1e9 / count;
}

} // namespace

int main()
{
    const PictureFormat format = bench::hd();
    const auto profile = chooseProfile(format, {J2kSettings::Mode::Lossy, 150});
    const int cores = std::max(1, int(std::thread::hardware_concurrency()));
    std::vector<Picture> pictures;
    for (int n = 0; n < framesPerCore * cores; ++n)
        pictures.push_back(bench::picture(format, n));
    double one = 0;
    double pool = 0;
    for (int round = 0; round < rounds; ++round) {
        one += secondsOfOneThread(pictures, format, *profile);
        pool += secondsOfPool(pictures, format, *profile);
    }
    std::printf("JPEG 2000 1080p on %d cores, against one thread times cores | %.3f | >= 0.95\n", cores,
                one / (pool * cores));
}

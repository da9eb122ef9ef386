#include "desk/imf/j2k/Codestream.h"
#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/j2k/J2kEncoderPool.h"
#include "imf/support/TinyTracks.h"
#include "support/Rows.h"
#include "support/ValueOf.h"

#include <QTest>

#include <random>
#include <thread>

using namespace desk;
using namespace desk::imf;

namespace
{

using Mode = J2kSettings::Mode;

/// The hardest picture there is.
Picture noise(const PictureFormat& format, unsigned seed)
{
    std::mt19937 random(seed);
    Picture picture = tinytracks::picture(format, 0);
    for (auto& plane : picture.planes) {
        for (auto& sample : plane)
            sample = std::uint16_t(random() & ((1U << format.bitDepth) - 1));
    }
    return picture;
}

PictureFormat format(int width, int height, Sampling sampling, int depth, Rational rate)
{
    PictureFormat format;
    format.width = width;
    format.height = height;
    format.sampling = sampling;
    format.bitDepth = depth;
    format.frameRate = rate;
    return format;
}

} // namespace

class TestJ2k : public QObject
{
    Q_OBJECT

private slots:

    void profilesFollowFromSizeRateAndBitRate_data()
    {
        const support::Rows<PictureFormat, double, int, QByteArray> row;
        const auto hd = [](Rational rate) { return format(1920, 1080, Sampling::YCbCr422, 10, rate); };
        const auto uhd = [](Rational rate) { return format(3840, 2160, Sampling::YCbCr422, 10, rate); };
        row("1080p24", hd({24, 1}), 150.0, 0x0412, QByteArray("03010205"));
        row("1080p24, 200 is still level 1", hd({24, 1}), 200.0, 0x0412, QByteArray("03010205"));
        row("1080p24, 201 needs level 4", hd({24, 1}), 201.0, 0x0424, QByteArray("0301020a"));
        row("1080p50", hd({50, 1}), 150.0, 0x0414, QByteArray("03010209"));
        row("1080p59.94", hd({60000, 1001}), 400.0, 0x0424, QByteArray("0301020a"));
        row("1080p24 reversible", hd({24, 1}), 0.0, 0x0702, QByteArray("03010504"));
        row("2K RGB", format(2048, 1080, Sampling::Rgb444, 12, {24, 1}), 150.0, 0x0413, QByteArray("03010207"));
        row("UHD", uhd({24, 1}), 400.0, 0x0525, QByteArray("0301030d"));
        row("UHD reversible", uhd({50, 1}), 0.0, 0x0806, QByteArray("0301060f"));
    }

    void profilesFollowFromSizeRateAndBitRate()
    {
        const auto [picture, megabits, rsiz, label] = support::fetched<PictureFormat, double, int, QByteArray>();
        const auto profile =
            support::valueOf(chooseProfile(picture, {megabits > 0 ? Mode::Lossy : Mode::Reversible, megabits}));
        QCOMPARE(int(profile.rsiz), rsiz);
        QCOMPARE(profile.pictureCoding.toHex(), "060e2b340401010d04010202" + label);
        const auto named = support::valueOf(profileOfLabel(profile.pictureCoding));
        QCOMPARE(named.rsiz, profile.rsiz);
    }

    void picturesOutsideTheApplicationAreRefused_data()
    {
        const support::Rows<PictureFormat, double, QString> row;
        const Rational film(24, 1);
        row("depth", format(1920, 1080, Sampling::YCbCr422, 9, film), 150.0, "9 bits");
        row("rate", format(1920, 1080, Sampling::YCbCr422, 10, {12, 1}), 150.0, "12/1 frames");
        row("4:4:4 at 24", format(1920, 1080, Sampling::YCbCr444, 10, film), 150.0, "24/1 frames");
        row("size", format(4096, 2160, Sampling::YCbCr422, 10, film), 150.0, "4096x2160 is larger");
        row("tall and narrow", format(2048, 1600, Sampling::YCbCr422, 10, film), 150.0, "too high for the 2K");
        row("bit rate", format(1920, 1080, Sampling::YCbCr422, 10, film), 1601.0, "no level");
        row("no bit rate", format(1920, 1080, Sampling::YCbCr422, 10, film), 0.5, "below 1 Mbit");
        PictureFormat unknown = format(1920, 1080, Sampling::YCbCr422, 10, film);
        unknown.colour = Colour::Unknown;
        row("colour", unknown, 150.0, "colour system");
        PictureFormat full = format(1920, 1080, Sampling::YCbCr422, 10, film);
        full.range = Range::Full;
        row("full range YCbCr", full, 150.0, "range");
    }

    void picturesOutsideTheApplicationAreRefused()
    {
        const auto [picture, megabits, complaint] = support::fetched<PictureFormat, double, QString>();
        const auto profile = chooseProfile(picture, {Mode::Lossy, megabits});
        QVERIFY(!profile);
        QVERIFY2(profile.error().what.contains(complaint), qPrintable(profile.error().sentence()));
    }

    void noiseStaysBelowTheCap_data()
    {
        const support::Rows<PictureFormat, double> row;
        row("4:2:2", format(640, 360, Sampling::YCbCr422, 10, {24, 1}), 30.0);
        row("RGB 12 bits", format(640, 360, Sampling::Rgb444, 12, {24, 1}), 30.0);
        row("starved", format(640, 360, Sampling::YCbCr422, 10, {60, 1}), 2.0);
    }

    void noiseStaysBelowTheCap()
    {
        const auto [picture, megabits] = support::fetched<PictureFormat, double>();
        const auto profile = support::valueOf(chooseProfile(picture, {Mode::Lossy, megabits}));
        QCOMPARE(profile.maxFrameBytes, qint64(megabits * 125000 / picture.frameRate.toDouble()));
        const auto codestream = support::valueOf(encodeFrame(noise(picture, 1), picture, profile));
        QVERIFY(codestream.size() <= profile.maxFrameBytes);
        QVERIFY(codestream.size() > profile.maxFrameBytes * 8 / 10);
        const auto header = parseCodestreamHeader(codestream);
        QCOMPARE(header->rsiz, profile.rsiz);
        // Progression CPRL, one layer, 32x32 blocks; colour transform for RGB alone.
        QCOMPARE(header->codingStyle.mid(1, 3).toHex(), QByteArray("040001"));
        QCOMPARE(int(header->codingStyle[4]), picture.sampling == Sampling::Rgb444 ? 1 : 0);
        QCOMPARE(header->codingStyle.mid(6, 2).toHex(), QByteArray("0303"));
    }

    void reversibleFramesComeBackExactly_data()
    {
        const support::Rows<PictureFormat> row;
        row("4:2:2 10 bits", format(640, 360, Sampling::YCbCr422, 10, {24, 1}));
        row("4:2:2 odd size", format(333, 77, Sampling::YCbCr422, 10, {24, 1}));
        row("4:2:2 8 bits", format(320, 180, Sampling::YCbCr422, 8, {24, 1}));
        row("4:4:4 10 bits", format(320, 180, Sampling::YCbCr444, 10, {25, 1}));
        row("RGB 16 bits", format(320, 180, Sampling::Rgb444, 16, {24, 1}));
        row("2K", format(2048, 1080, Sampling::YCbCr422, 10, {24, 1}));
    }

    void reversibleFramesComeBackExactly()
    {
        const auto [picture] = support::fetched<PictureFormat>();
        const auto profile = support::valueOf(chooseProfile(picture, {Mode::Reversible, 0}));
        const Picture original = noise(picture, 7);
        const auto codestream = support::valueOf(encodeFrame(original, picture, profile));
        const auto decoded = support::valueOf(decodeFrame(codestream));
        QVERIFY(decoded.planes == original.planes);
        const auto half = decodeFrame(codestream, 1);
        QCOMPARE(half->planes[0].size(), std::size_t((picture.width + 1) / 2) * std::size_t((picture.height + 1) / 2));
    }

    void damagedCodestreamsAreRefused()
    {
        const PictureFormat picture = tinytracks::format();
        const J2kProfile profile = *chooseProfile(picture, {Mode::Reversible, 0});
        const QByteArray good = *encodeFrame(tinytracks::picture(picture, 0), picture, profile);
        QByteArray huge = good;
        huge[8] = char(0x7f);
        const QVector<QPair<QByteArray, QString>> damages{{huge, "size"},
                                                          {good.left(good.size() / 2), "cut"},
                                                          {good.left(30), "main header"},
                                                          {{}, "does not start"}};
        for (const auto& [codestream, complaint] : damages)
            QVERIFY(decodeFrame(codestream).error().what.contains(complaint));
        Picture narrow = tinytracks::picture(picture, 0);
        narrow.planes[1].pop_back();
        QVERIFY(!encodeFrame(narrow, picture, profile));
    }

    void thePoolKeepsTheOrder_data()
    {
        QTest::addColumn<bool>("changes");
        QTest::newRow("all at work") << false;
        QTest::newRow("now at full pace, now on spare time, now not at all") << true;
    }

    void thePoolKeepsTheOrder()
    {
        QFETCH(bool, changes);
        const PictureFormat picture = tinytracks::format();
        const auto profile = chooseProfile(picture, {Mode::Reversible, 0});
        std::atomic<int> asked{0};
        using Pace = J2kEncoderPool::Pace;
        const auto pace = [&] { return Pace(changes ? ++asked / 4 % 3 : 0); };
        J2kEncoderPool pool(picture, *profile, 3, pace);
        std::thread producer([&] {
            for (int n = 0; n < 20; ++n) {
                const Status status = pool.push(tinytracks::picture(picture, n));
                Q_ASSERT(status.ok());
            }
            pool.endOfInput();
        });
        int n = 0;
        for (auto next = pool.take(); next && *next; next = pool.take(), ++n)
            QVERIFY(decodeFrame(**next)->planes == tinytracks::picture(picture, n).planes);
        producer.join();
        QCOMPARE(n, 20);
    }

    void thePoolHoldsNoMoreThanItsCapacity()
    {
        const PictureFormat picture = tinytracks::format();
        J2kEncoderPool pool(picture, *chooseProfile(picture, {Mode::Reversible, 0}), 2);
        int pushed = 0;
        for (; pool.hasRoom(); ++pushed)
            QVERIFY(pool.push(tinytracks::picture(picture, pushed)));
        QCOMPARE(pushed, pool.capacity());
        QVERIFY(pool.take());
        QVERIFY(pool.hasRoom());
    }

    void theFirstFailureStopsThePool()
    {
        const PictureFormat picture = tinytracks::format();
        J2kEncoderPool pool(picture, *chooseProfile(picture, {Mode::Reversible, 0}), 2);
        QVERIFY(pool.push(tinytracks::picture(picture, 0)));
        QVERIFY(pool.push(Picture()));
        QVERIFY(pool.take());
        const auto failed = pool.take();
        QVERIFY(!failed);
        QVERIFY(failed.error().what.contains(QStringLiteral("plane 0")));
        QVERIFY(!pool.push(tinytracks::picture(picture, 2)));
        QCOMPARE(pool.take().error().what, failed.error().what);
    }

    void cancellingWakesTheWaiting()
    {
        const PictureFormat picture = tinytracks::format();
        J2kEncoderPool pool(picture, *chooseProfile(picture, {Mode::Reversible, 0}), 1);
        std::thread canceller([&pool] { pool.cancel(); });
        QVERIFY(!pool.take());
        canceller.join();
        QVERIFY(!pool.push(tinytracks::picture(picture, 0)));
    }
};

QTEST_GUILESS_MAIN(TestJ2k)
#include "tst_j2k.moc"

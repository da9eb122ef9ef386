#include "desk/media/PictureReader.h"
#include "media/MediaMaker.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace desk;
using namespace desk::media;

namespace
{

const PictureTarget small{160, 90, 10, Sampling::YCbCr422};
constexpr int total = 120;

} // namespace

class TestMediaPicture : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        QVERIFY(m_maker.numberedPicture(total, QStringLiteral("24"), QStringLiteral("numbers.nut")));
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @numbers.nut -c:v libx264 -g 24 -bf 3 -qp 10 @source.mp4")));
    }

    void frameNIsFrameN_data()
    {
        const support::Rows<QString, QString, int> row;
        row("H.264, one long group", "-i @numbers.nut -c:v libx264 -g 250 -bf 3 -qp 10", "long.mp4", 0);
        row("H.264, open groups, late start",
            "-i @numbers.nut -c:v libx264 -qp 10 -x264-params open-gop=1:keyint=20:bframes=3", "open.ts", 0);
        row("H.264, groups of 24", "-i @source.mp4 -c copy", "groups.mkv", 0);
        row("H.264, edit list inside a group", "-ss 0.75 -i @source.mp4 -c copy", "edited.mov", 18);
        row("H.264, negative offsets", "-i @source.mp4 -c copy -movflags negative_cts_offsets", "negative.mp4", 0);
        row("H.264, fragments", "-i @source.mp4 -c copy -movflags frag_keyframe+empty_moov", "fragments.mp4", 0);
        row("H.264, no times at all", "-i @source.mp4 -c copy -bsf:v h264_mp4toannexb", "bare.h264", 0);
        row("H.265", "-i @numbers.nut -c:v libx265 -x265-params log-level=none:keyint=30:qp=12", "hevc.mp4", 0);
        row("MPEG-2, programme stream", "-i @numbers.nut -c:v mpeg2video -g 12 -bf 2 -q:v 2", "mpeg2.mpg", 0);
        row("MPEG-2, transport stream", "-i @numbers.nut -c:v mpeg2video -g 12 -bf 2 -q:v 2", "mpeg2.ts", 0);
        row("MPEG-2, MXF", "-i @numbers.nut -c:v mpeg2video -g 12 -bf 2 -q:v 2", "mpeg2.mxf", 0);
        row("MPEG-4, AVI with B pictures", "-i @numbers.nut -c:v mpeg4 -g 30 -bf 2 -q:v 2", "mpeg4.avi", 0);
        row("VP8 with hidden pictures", "-i @numbers.nut -c:v libvpx -auto-alt-ref 1 -lag-in-frames 16 -g 40 -b:v 1M",
            "vp8.webm", 0);
        row("VP9", "-i @numbers.nut -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 40 -b:v 1M", "vp9.webm", 0);
        row("ProRes", "-i @numbers.nut -c:v prores -profile:v 3 -pix_fmt yuv422p10le", "prores.mov", 0);
        row("FFV1, AVI", "-i @numbers.nut -c:v ffv1", "ffv1.avi", 0);
        row("Motion JPEG", "-i @numbers.nut -c:v mjpeg -q:v 2 -pix_fmt yuvj420p", "mjpeg.mov", 0);
    }

    void frameNIsFrameN()
    {
        const auto [arguments, file, firstNumber] = support::fetched<QString, QString, int>();
        QVERIFY(m_maker.ffmpeg(arguments + QStringLiteral(" @") + file));
        const auto sequence = support::valueOf(openSequence(m_maker.path(file)));
        QCOMPARE(sequence.frames, qint64(total - firstNumber));
        QCOMPARE(sequence.frameRate, Rational(24, 1));
        readAll(sequence, {2, PictureReaderOptions::Access::Through}, firstNumber);
        if (!QTest::currentTestFailed())
            readAll(sequence, {1, PictureReaderOptions::Access::Jump}, firstNumber);
    }

    void ratesAreExact_data()
    {
        const support::Rows<QString, QString> row;
        for (const char* rate : {"24000/1001", "24", "25", "30000/1001", "30", "50", "60000/1001", "60"}) {
            for (const char* file : {"rate.mov", "rate.mkv", "rate.ts", "rate.mxf"})
                row(qPrintable(QString::asprintf("%s %s", rate, file)), QString::fromLatin1(rate),
                    QString::fromLatin1(file));
        }
    }

    /// Containers round times, to milliseconds or to 1/90000 s; the rate is exact all the same.
    void ratesAreExact()
    {
        const auto [rate, file] = support::fetched<QString, QString>();
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=s=160x96:r=%1 -frames:v 61 -c:v mpeg2video -g 10 @%2").arg(rate, file)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(file)));
        const QStringList parts = rate.split(QLatin1Char('/'));
        QCOMPARE(sequence.frameRate, Rational(parts[0].toInt(), parts.value(1, QStringLiteral("1")).toInt()));
        QCOMPARE(sequence.frames, qint64(61));
    }

    void deepPicturesKeepEverySample_data()
    {
        const support::Rows<QString, QString, int, int> row;
        row("v210", "yuv422p10le", "v210", 10, 10);
        row("FFV1, 10 bits", "yuv422p10le", "ffv1", 10, 10);
        row("FFV1, 12 bits", "yuv422p12le", "ffv1", 12, 12);
        row("10 bits in 12", "yuv422p10le", "ffv1", 10, 12);
        row("12 bits in 10", "yuv422p12le", "ffv1", 12, 10);
        row("8 bits in 10", "yuv422p", "ffv1", 8, 10);
    }

    /// Every code value that may stand in a file, also beyond black and white, in all three components.
    void deepPicturesKeepEverySample()
    {
        const auto [format, codec, depth, targetDepth] = support::fetched<QString, QString, int, int>();
        const PictureTarget target{192, 108, targetDepth, Sampling::YCbCr422};
        const int guard = 1 << (depth - 8); // the serial interface keeps the outermost codes for itself
        const int codes = (1 << depth) - 2 * guard;
        std::vector<int> values;
        for (int i = 0; i < 192 * 108 * 2; ++i)
            values.push_back(guard + i * 7 % codes);
        QByteArray raw;
        for (const int value : values) {
            raw += char(value & 255);
            raw += depth > 8 ? QByteArray(1, char(value >> 8)) : QByteArray();
        }
        m_maker.write(QStringLiteral("ramp.raw"), raw);
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f rawvideo -pix_fmt %1 -s 192x108 -r 25 -i @ramp.raw -c:v %2 -color_range tv "
                           "-colorspace bt709 -color_primaries bt709 -color_trc bt709 @ramp.mov")
                .arg(format, codec)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("ramp.mov"))));
        QCOMPARE(sequence.picture->bitDepth, depth);
        QCOMPARE(sequence.picture->sampling, QStringLiteral("4:2:2"));
        auto reader = support::valueOf(PictureReader::open(sequence, target));
        const auto frame = support::valueOf(reader->read(0));
        std::size_t at = 0;
        for (const auto& plane : frame.planes) {
            for (const std::uint16_t sample : plane) {
                const double exact = values[at++] * std::pow(2.0, targetDepth - depth);
                QCOMPARE(int(sample), std::min(int(std::floor(exact + 0.5)), (1 << targetDepth) - 1));
            }
        }
        QCOMPARE(at, values.size());
    }

    /// Neighbours in the chroma are not mixed where the sampling stays.
    void fullRangeIsNarrowedSampleBySample()
    {
        QByteArray raw;
        std::vector<int> values;
        for (int i = 0; i < 64 * 36 * 2; ++i) {
            values.push_back(i * 397 % 1024);
            raw += QByteArray(1, char(values.back() & 255)) + char(values.back() >> 8);
        }
        m_maker.write(QStringLiteral("full.raw"), raw);
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-f rawvideo -pix_fmt yuv422p10le -s 64x36 -r 25 -i @full.raw -c:v ffv1 "
                                              "-color_range pc -colorspace bt709 @full.mkv")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("full.mkv"))));
        auto reader = support::valueOf(PictureReader::open(sequence, {64, 36, 10, Sampling::YCbCr422}));
        const auto frame = support::valueOf(reader->read(0));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t luma = frame.planes[0].size();
            const std::size_t chroma = frame.planes[1].size();
            const int sample =
                i < luma ? frame.planes[0][i] : frame.planes[1 + (i - luma) / chroma][(i - luma) % chroma];
            const double exact = i < luma ? 64 + values[i] * 876 / 1023.0 : 512 + (values[i] - 511.5) * 896 / 1023.0;
            QVERIFY2(std::abs(sample - exact) <= 1.5, qPrintable(QStringLiteral("%1: %2").arg(i).arg(sample)));
        }
    }

    /// One field is white and one is black: none takes light from the other.
    void fieldsAreScaledApart()
    {
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=s=64x64:r=25,format=yuv420p,geq=lum='if(mod(Y,2),16,235)':cb=128:cr=128 "
                           "-frames:v 1 -c:v mpeg2video -flags +ildct+ilme -q:v 1 @fields.mpg")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("fields.mpg"))));
        auto reader = support::valueOf(PictureReader::open(sequence, {96, 96, 10, Sampling::YCbCr422}));
        const auto frame = support::valueOf(reader->read(0));
        for (std::size_t i = 0; i < frame.planes[0].size(); ++i)
            QVERIFY(std::abs(frame.planes[0][i] - (i / 96 % 2 == 0 ? 940 : 64)) < 100);
    }

    void coloursArriveInNarrowBt709_data()
    {
        const support::Rows<QString, QString, int> row;
        row("RGB", "format=gbrp", "-c:v ffv1", 160);
        row("RGB, other size", "format=gbrp", "-c:v ffv1", 240);
        row("packed RGB", "format=bgra", "-c:v ffv1", 160);
        row("RGB, 12 bits", "format=gbrp12le", "-c:v ffv1", 160);
        row("BT.601", "scale=out_color_matrix=bt601:out_range=tv,format=yuv422p10le", "-c:v ffv1 -colorspace smpte170m",
            160);
        row("BT.601, unnamed", "scale=out_color_matrix=bt601:out_range=tv,format=yuv420p", "-c:v ffv1", 160);
        row("BT.2020", "scale=out_color_matrix=bt2020:out_range=tv,format=yuv422p10le",
            "-c:v ffv1 -colorspace bt2020nc", 160);
        row("full range", "scale=out_color_matrix=bt709:out_range=pc,format=yuv444p10le",
            "-c:v ffv1 -colorspace bt709 -color_range pc", 160);
        row("full range, other size", "scale=out_color_matrix=bt709:out_range=pc,format=yuv420p",
            "-c:v ffv1 -colorspace bt709 -color_range pc", 240);
        row("JPEG", "scale=out_color_matrix=bt601:out_range=pc,format=yuvj422p", "-c:v mjpeg -q:v 1", 160);
        row("BT.709 4:2:0", "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p10le",
            "-c:v ffv1 -colorspace bt709", 160);
    }

    /// A flat colour whose BT.709 values were computed from the standard's equations, within two codes of ten bits (the
    /// eight-bit sources within their own rounding).
    void coloursArriveInNarrowBt709()
    {
        const auto [conversion, codec, width] = support::fetched<QString, QString, int>();
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=c=0xC04020:s=160x90:r=25,format=gbrp,%1 -frames:v 2 %2 @colour.mkv")
                .arg(conversion, codec)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("colour.mkv"))));
        auto reader = support::valueOf(PictureReader::open(sequence, {width, width * 9 / 16, 10, Sampling::YCbCr422}));
        const auto frame = support::valueOf(reader->read(1));
        const double r = 0xC0 / 255.0;
        const double g = 0x40 / 255.0;
        const double b = 0x20 / 255.0;
        const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
        const double expected[3] = {64 + 876 * y, 512 + 896 * (b - y) / 1.8556, 512 + 896 * (r - y) / 1.5748};
        const double allowed =
            sequence.picture->bitDepth > 8 || sequence.picture->sampling == QLatin1String("RGB") ? 2.0 : 7.0;
        for (std::size_t plane = 0; plane < 3; ++plane) {
            for (const std::uint16_t sample : frame.planes[plane])
                QVERIFY2(std::abs(sample - expected[plane]) <= allowed,
                         qPrintable(QStringLiteral("plane %1: %2 for %3").arg(plane).arg(sample).arg(expected[plane])));
        }
    }

    void theShapeOfThePictureIsKept_data()
    {
        const support::Rows<QString, QRect> row;
        row("same shape", "160x90,setsar=1", QRect(0, 0, 320, 180));
        row("narrower", "120x90,setsar=1", QRect(40, 0, 240, 180));
        row("wider", "240x90,setsar=1", QRect(0, 30, 320, 120));
        row("wide pixels", "120x90,setsar=4/3", QRect(0, 0, 320, 180));
        row("odd size", "161x91,setsar=1", QRect(0, 0, 318, 180));
    }

    /// White on black: the rectangle that is white is the one that the picture's shape asks for.
    void theShapeOfThePictureIsKept()
    {
        const auto [source, covered] = support::fetched<QString, QRect>();
        const PictureTarget target{320, 180, 10, Sampling::YCbCr422};
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=c=white:r=25:s=%1,format=yuv444p -frames:v 1 -c:v ffv1 @shape.mkv")
                .arg(source)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("shape.mkv"))));
        auto reader = support::valueOf(PictureReader::open(sequence, target));
        const auto frame = support::valueOf(reader->read(0));
        QRect white;
        for (int y = 0; y < target.height; ++y) {
            for (int x = 0; x < target.width; ++x) {
                const int luma = frame.planes[0][std::size_t(y * target.width + x)];
                QVERIFY(luma == 64 || luma > 930);
                white = luma > 64 ? white.united(QRect(x, y, 1, 1)) : white;
            }
        }
        QCOMPARE(white, covered);
    }

    void aTurnThatTheFileAsksForIsMade_data()
    {
        const support::Rows<int, QString, PictureTarget> row;
        row("upside down", 180, "hflip,vflip", PictureTarget{64, 36, 10, Sampling::YCbCr422});
        row("to the left", 90, "transpose=cclock", PictureTarget{36, 64, 10, Sampling::YCbCr422});
        row("to the right", 270, "transpose=clock", PictureTarget{36, 64, 12, Sampling::YCbCr444});
    }

    void aTurnThatTheFileAsksForIsMade()
    {
        const auto [rotate, filter, target] = support::fetched<int, QString, PictureTarget>();
        QVERIFY(
            m_maker.ffmpeg(QStringLiteral("-f lavfi -i testsrc2=size=64x36:rate=24:d=0.1 -pix_fmt yuv444p10le "
                                          "-color_primaries bt709 -color_trc bt709 -colorspace bt709 -color_range tv "
                                          "-c:v ffv1 @lying.mov")));
        QVERIFY(
            m_maker.ffmpeg(QStringLiteral("-i @lying.mov -c copy -metadata:s:v:0 rotate=%1 @turned.mov").arg(rotate)));
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @lying.mov -vf %1 -c:v ffv1 @standing.mov").arg(filter)));
        std::array<Frame, 2> frames;
        const char* const names[] = {"turned.mov", "standing.mov"};
        for (std::size_t i = 0; i < 2; ++i) {
            const auto sequence = support::valueOf(openSequence(m_maker.path(QString::fromLatin1(names[i]))));
            auto reader = support::valueOf(PictureReader::open(sequence, target));
            auto frame = support::valueOf(reader->read(1));
            frames[i] = std::move(frame);
        }
        QCOMPARE(frames[0].number, qint64(1));
        for (std::size_t plane = 0; plane < 3; ++plane)
            QVERIFY2(frames[0].planes[plane] == frames[1].planes[plane], qPrintable(QString::number(plane)));
    }

    void aFrameOutsideTheSequenceIsRefused()
    {
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("source.mp4"))));
        auto reader = support::valueOf(PictureReader::open(sequence, small));
        QVERIFY(!reader->read(-1).ok());
        const Result<Frame> after = reader->read(total);
        QVERIFY(!after.ok());
        QCOMPARE(after.error().where, QStringLiteral("frame 120"));
        const auto good = support::valueOf(reader->read(total - 1));
        QCOMPARE(spelledNumber(good), total - 1);
    }

    /// One packet is noise: its frame alone is lost.
    void aDamagedFrameIsToldAndTheOthersAreRead_data()
    {
        const support::Rows<QString, int> row;
        row("ProRes", "-c:v prores -profile:v 3 -pix_fmt yuv422p10le", 60);
        row("H.264", "-c:v libx264 -g 12 -bf 0 -qp 10", 71);
    }

    void aDamagedFrameIsToldAndTheOthersAreRead()
    {
        const auto [codec, damaged] = support::fetched<QString, int>();
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i @numbers.nut %1 @damaged.mov").arg(codec)));
        const QStringList packets = m_maker.packets(QStringLiteral("damaged.mov"));
        const QStringList place = packets.value(damaged).split(QLatin1Char(','));
        QByteArray bytes = m_maker.bytes(QStringLiteral("damaged.mov"));
        bytes.replace(place.value(1).toInt(), place.value(0).toInt(), QByteArray(place.value(0).toInt(), '\x7f'));
        m_maker.write(QStringLiteral("damaged.mov"), bytes);
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("damaged.mov"))));
        auto reader = support::valueOf(PictureReader::open(sequence, small));
        for (const int n : {damaged - 2, damaged, damaged + 1, damaged, damaged - 1}) {
            const Result<Frame> frame = reader->read(n);
            QCOMPARE(frame.ok(), n != damaged);
            if (n == damaged)
                QCOMPARE(frame.error().where, QStringLiteral("frame %1").arg(n));
            else
                QCOMPARE(spelledNumber(*frame), n);
        }
    }

    void aFileThatChangedIsNotRead()
    {
        m_maker.write(QStringLiteral("changing.mp4"), m_maker.bytes(QStringLiteral("source.mp4")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("changing.mp4"))));
        m_maker.write(QStringLiteral("changing.mp4"), m_maker.bytes(QStringLiteral("source.mp4")) + "more");
        const auto reader = PictureReader::open(sequence, small);
        QVERIFY(!reader.ok());
        QVERIFY(reader.error().sentence().contains(QStringLiteral("has changed")));
    }

private:
    void readAll(const Sequence& sequence, PictureReaderOptions options, int firstNumber)
    {
        auto reader = support::valueOf(PictureReader::open(sequence, small, options));
        QRandomGenerator random(support::seed());
        std::vector<int> order;
        for (int n = 0; n < sequence.frames; ++n)
            order.push_back(n);
        for (int n = 0, stride = 2; n < sequence.frames; n += stride++)
            order.push_back(n);
        for (int n = 0; n < 25; ++n)
            order.push_back(random.bounded(int(sequence.frames)));
        for (int n = int(sequence.frames) - 1; n > int(sequence.frames) - 6; --n)
            order.push_back(n);
        for (const int n : order) {
            const auto frame = support::valueOf(reader->read(n));
            QCOMPARE(spelledNumber(frame), n + firstNumber);
        }
    }

    MediaMaker m_maker;
};

STRATACUT_TEST_MAIN(TestMediaPicture)
#include "tst_mediapicture.moc"

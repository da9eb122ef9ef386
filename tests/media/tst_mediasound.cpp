#include "desk/media/PictureReader.h"
#include "desk/media/SoundReader.h"
#include "desk/media/SoundStream.h"
#include "media/MediaMaker.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace desk;
using namespace desk::media;

class TestMediaSound : public QObject
{
    Q_OBJECT

private slots:

    void samplesAreCutExactlyAtEveryRate_data()
    {
        const support::Rows<QString, int, QString> row;
        for (const char* rate : {"24000/1001", "24", "25", "30000/1001", "30", "50", "60000/1001", "60"}) {
            for (const int bits : {16, 24})
                row(qPrintable(QString::asprintf("%s, %d bits", rate, bits)), QString::fromLatin1(rate), bits,
                    "exact.mov");
        }
        row("MXF, cadence of five frames", "30000/1001", 24, "exact.mxf");
        row("Matroska, times in milliseconds", "24000/1001", 24, "exact.mkv");
        row("AVI", "25", 16, "exact.avi");
    }

    /// Frame for frame from the start, then frames in any order: always the samples that went in.
    void samplesAreCutExactlyAtEveryRate()
    {
        const auto [rate, bits, file] = support::fetched<QString, int, QString>();
        const auto samples = noise(48000 * 5 / 2, bits, 7);
        m_maker.writeWav(QStringLiteral("noise.wav"), samples, bits);
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=s=160x96:r=%1:d=2.4 -i @noise.wav -c:v mpeg2video -c:a pcm_s%2le @%3")
                .arg(rate)
                .arg(bits)
                .arg(file)));
        const auto sequence = support::valueOf(openSequence(m_maker.path(file)));
        auto reader = support::valueOf(SoundReader::open(sequence, {0}));
        QRandomGenerator random(support::seed());
        for (qint64 n = 0; n < sequence.frames + 20; ++n) {
            const qint64 frame = n < sequence.frames ? n : random.bounded(int(sequence.frames));
            const qint64 first = firstSampleOfFrame(frame, sequence.frameRate, soundRate);
            const qint64 count = firstSampleOfFrame(frame + 1, sequence.frameRate, soundRate) - first;
            const auto block = support::valueOf(reader->read(first, count));
            QCOMPARE(qint64(block.tracks[0].size()), count);
            QCOMPARE(block.padded[0], 0);
            for (qint64 i = 0; i < count; ++i)
                QCOMPARE(block.tracks[0][std::size_t(i)], samples[std::size_t(first + i)] * (1 << (24 - bits)));
        }
    }

    void everyChannelIsATrackOfItsOwn()
    {
        QVector<std::vector<std::int32_t>> channels;
        QString inputs = QStringLiteral("-f lavfi -i color=s=160x96:r=25:d=1");
        for (int i = 0; i < 9; ++i) {
            channels.append(noise(48000, 24, unsigned(100 + i)));
            const QString name = QStringLiteral("channel%1.wav").arg(i);
            m_maker.writeWav(name, channels.last(), 24);
            inputs += QStringLiteral(" -i @") + name;
        }
        QVERIFY(m_maker.ffmpeg(
            inputs +
            QStringLiteral(" -filter_complex [1:a][2:a]join=inputs=2:channel_layout=stereo:map=0.0-FL|1.0-FR[s];"
                           "[3:a][4:a][5:a][6:a][7:a][8:a]join=inputs=6:channel_layout=5.1(side):"
                           "map=0.0-FL|1.0-FR|2.0-FC|3.0-LFE|4.0-SL|5.0-SR[x] "
                           "-map 0:v -map [s] -map [x] -map 9:a -c:v mpeg2video -c:a pcm_s24le "
                           "-metadata:s:a:2 language=fra @channels.mov")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("channels.mov"))));
        QStringList labels;
        for (const AudioTrackInfo& track : sequence.audio)
            labels << track.name + QLatin1Char(' ') + track.label;
        QCOMPARE(labels.join(QStringLiteral(", ")),
                 QStringLiteral("A1 L, A2 R, A3 L, A4 R, A5 C, A6 LFE, A7 Ls, A8 Rs, A9 Mono"));
        QCOMPARE(sequence.audio[8].language, QStringLiteral("fra"));
        const QVector<int> order{8, 3, 0, 7, 1};
        const SoundBlock block = read(QStringLiteral("channels.mov"), order, 12345, 30000);
        QCOMPARE(int(block.tracks.size()), order.size());
        for (int i = 0; i < order.size(); ++i) {
            const auto from = channels[order[i]].begin() + 12345;
            QVERIFY(block.tracks[std::size_t(i)] == std::vector<std::int32_t>(from, from + 30000));
        }
    }

    void streamsThatAreReadTogetherKeepTheirSamples_data()
    {
        const support::Rows<QString, qint64> row;
        const QString mov = QStringLiteral("-c:a pcm_s24le @together.mov");
        row("MOV", mov, SoundPackets::plenty);
        row("MOV, no memory for others' packets", mov, 1);
        row("MOV, fragments of each stream",
            "-c:a pcm_s24le -movflags empty_moov+delay_moov+separate_moof -frag_duration 700000 @fragments.mov",
            SoundPackets::plenty);
        row("Matroska", "-c:a flac @together.mkv", SoundPackets::plenty);
        row("Matroska, no memory for others' packets", "-c:a flac @together.mkv", 1);
    }

    /// Two that last, one that ends early and one that begins late: from the start, then in jumps of all lengths.
    void streamsThatAreReadTogetherKeepTheirSamples()
    {
        const auto [made, memory] = support::fetched<QString, qint64>();
        constexpr qint64 end = 48000 * 8;
        const qint64 lengths[] = {end, 100000, end, end};
        const qint64 delays[] = {0, 0, 0, 72000};
        std::vector<std::vector<std::int32_t>> samples;
        QString inputs = QStringLiteral("-f lavfi -i color=s=160x96:r=25:d=8");
        QString maps = QStringLiteral(" -map 0:v");
        for (unsigned i = 0; i < 4; ++i) {
            samples.emplace_back(end + 48000, 0);
            const auto written = noise(std::size_t(lengths[i] - delays[i]), 24, 40 + i);
            std::copy(written.begin(), written.end(), samples[i].begin() + std::ptrdiff_t(delays[i]));
            const QString name = QStringLiteral("together%1.wav").arg(i);
            m_maker.writeWav(name, written, 24);
            inputs += QStringLiteral(" -itsoffset %1 -i @%2").arg(double(delays[i]) / 48000).arg(name);
            maps += QStringLiteral(" -map %1:a").arg(i + 1);
        }
        QVERIFY(m_maker.ffmpeg(inputs + maps + QStringLiteral(" -c:v mpeg2video -sample_fmt s32 ") + made));
        const QString path = m_maker.path(made.section('@', -1));
        const auto packets = std::make_shared<SoundPackets>(path, memory);
        std::vector<std::unique_ptr<SoundStream>> streams;
        for (int i = 0; i < 4; ++i) {
            streams.push_back(std::make_unique<SoundStream>(packets, i + 1, 0.0));
            QVERIFY(streams.back()->open());
        }
        const unsigned seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        qint64 at = 0;
        for (int round = 0; round < 120; ++round) {
            const qint64 count = random.bounded(12000);
            for (std::size_t i = 0; i < 4; ++i) {
                std::vector<std::int32_t> read(std::size_t(count), 1);
                const Status status = streams[i]->read(at, count, Planes<std::int32_t>{read.data()});
                QVERIFY2(status, status ? "" : qPrintable(status.error().sentence()));
                const auto from = samples[i].begin() + std::ptrdiff_t(at);
                QVERIFY2(std::equal(read.begin(), read.end(), from), qPrintable(QString("%1 at %2").arg(i).arg(at)));
            }
            at = round < 40 || random.bounded(3) > 0 ? at + count : random.bounded(int(end));
            at = at < end ? at : random.bounded(int(end));
        }
    }

    void soundThatStartsElsewhereIsMovedIntoPlace_data()
    {
        const support::Rows<QString, QString, int> row;
        const QString late = QStringLiteral("-i @picture.mov -itsoffset 0.5 -i @noise.wav -map 0:v -map 1:a -c copy");
        const QString early = QStringLiteral("-itsoffset 0.4 -i @picture.mov -i @noise.wav -map 0:v -map 1:a -c copy");
        row("late, MOV", late, "late.mov", 24000);
        row("late, Matroska", late, "late.mkv", 24000);
        row("early, MOV", early, "early.mov", -19200);
        row("early, Matroska", early, "early.mkv", -19200);
    }

    void soundThatStartsElsewhereIsMovedIntoPlace()
    {
        const auto [arguments, file, delay] = support::fetched<QString, QString, int>();
        const auto samples = noise(96000, 24, 11);
        m_maker.writeWav(QStringLiteral("noise.wav"), samples, 24);
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-f lavfi -i color=s=160x96:r=25:d=2 -c:v mjpeg @picture.mov")));
        QVERIFY(m_maker.ffmpeg(arguments + QStringLiteral(" @") + file));
        const SoundBlock block = read(file, {0}, 0, 72000);
        QCOMPARE(int(block.tracks.size()), 1);
        for (int i = 0; i < 72000; ++i)
            QCOMPARE(block.tracks[0][std::size_t(i)], i < delay ? 0 : samples[std::size_t(i - delay)]);
        QCOMPARE(block.padded[0], qint64(std::max(0, delay)));
        const SoundBlock inside = read(file, {0}, 60000, 100);
        QCOMPARE(int(inside.tracks.size()), 1);
        QCOMPARE(inside.tracks[0][0], samples[std::size_t(60000 - delay)]);
    }

    void compressedSoundStaysWhereItWas_data()
    {
        const support::Rows<QString, QString, int> row;
        row("AAC, MP4", "aac -b:a 192k", "clicks.mp4", 0);
        row("AAC, transport stream", "aac -b:a 192k", "clicks.ts", 1);
        row("AAC, Matroska", "aac -b:a 192k", "clicks.mkv", 48);
        row("AC-3", "ac3 -b:a 192k", "clicks3.mp4", 0);
        row("FLAC", "flac", "clicksf.mkv", 48);
        row("MP2, programme stream", "mp2 -b:a 192k", "clicks.mpg", 1);
    }

    /// The loudest sample of every click is where it went in, within what the codec itself smears, also after jumps;
    /// and jumps yield what reading through yields.
    void compressedSoundStaysWhereItWas()
    {
        const auto [codec, file, precision] = support::fetched<QString, QString, int>();
        makeClicks();
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i color=s=160x96:r=25:d=6 -i @clicks.wav -c:v mpeg2video -c:a %1 @%2")
                .arg(codec, file)));
        const SoundBlock whole = read(file, {0}, 0, 48000 * 5);
        QCOMPARE(int(whole.tracks.size()), 1);
        const auto loudest = [](const std::vector<std::int32_t>& samples, qint64 from, qint64 to) {
            const auto louder = [](std::int32_t a, std::int32_t b) { return std::abs(a) < std::abs(b); };
            return std::max_element(samples.begin() + from, samples.begin() + to, louder) - samples.begin();
        };
        for (qint64 at = 24000; at < 48000 * 4; at += 24000) {
            const qint64 found = loudest(whole.tracks[0], at - 9600, at + 9600);
            QVERIFY2(found >= at - 8 - precision && found < at + 56 + precision,
                     qPrintable(QStringLiteral("click of %1 at %2").arg(at).arg(found)));
        }
        const auto sequence = support::valueOf(openSequence(m_maker.path(file)));
        auto reader = support::valueOf(SoundReader::open(sequence, {0}));
        for (const qint64 first : {200000, 3000, 150001, 96000}) {
            const auto part = support::valueOf(reader->read(first, 4000));
            for (qint64 i = 0; i < 4000; ++i) // codecs add noise of their own that depends on where they began
                QVERIFY(std::abs(part.tracks[0][std::size_t(i)] - whole.tracks[0][std::size_t(first + i)]) < 1 << 15);
        }
    }

    void resampledSoundDoesNotDependOnWhereReadingBegan()
    {
        QVERIFY(m_maker.ffmpeg(
            QStringLiteral("-f lavfi -i sine=frequency=1000:sample_rate=44100:duration=4 -c:a pcm_s24le @tone.wav")));
        const SoundBlock whole = read(QStringLiteral("tone.wav"), {0}, 0, 48000 * 4);
        QCOMPARE(int(whole.tracks.size()), 1);
        for (qint64 i = 480; i < 48000 * 4 - 480; ++i) {
            // The source's sine has an amplitude of one eighth of full scale and 48 samples a period after resampling.
            const double exact = 1048576.0 * std::sin(2.0 * 3.14159265358979 * double(i) / 48.0);
            QVERIFY2(std::abs(whole.tracks[0][std::size_t(i)] - exact) < 2000.0, qPrintable(QString::number(i)));
        }
        const Result<Sequence> sequence = openSequence(m_maker.path(QStringLiteral("tone.wav")));
        auto reader = support::valueOf(SoundReader::open(*sequence, {0}));
        for (const qint64 first : {100001, 50, 77777, 160000}) {
            const auto part = support::valueOf(reader->read(first, 3000));
            const auto from = whole.tracks[0].begin() + first;
            QVERIFY(part.tracks[0] == std::vector<std::int32_t>(from, from + 3000));
        }
    }

    void shortSoundEndsInSilenceThatIsCounted()
    {
        const auto samples = noise(30000, 24, 3);
        m_maker.writeWav(QStringLiteral("short.wav"), samples, 24);
        QVERIFY(m_maker.ffmpeg(QStringLiteral(
            "-f lavfi -i color=s=160x96:r=25:d=2 -i @short.wav -c:v mpeg2video -c:a pcm_s24le @short.mov")));
        const auto sequence = support::valueOf(openSequence(m_maker.path(QStringLiteral("short.mov"))));
        QCOMPARE(sequence.soundSamples, qint64(30000));
        const SoundBlock block = read(QStringLiteral("short.mov"), {0}, 20000, 50000);
        QCOMPARE(int(block.tracks.size()), 1);
        QCOMPARE(block.padded[0], qint64(40000));
        QCOMPARE(block.tracks[0][9999], samples[29999]);
        QVERIFY(
            std::all_of(block.tracks[0].begin() + 10000, block.tracks[0].end(), [](std::int32_t v) { return v == 0; }));
    }

private:
    /// An empty block, which no expectation matches, where anything fails.
    SoundBlock read(const QString& file, const QVector<int>& tracks, qint64 first, qint64 count)
    {
        const Result<Sequence> sequence = openSequence(m_maker.path(file));
        if (!sequence) {
            qWarning("%s", qPrintable(sequence.error().sentence()));
            return {};
        }
        auto reader = SoundReader::open(*sequence, tracks);
        Result<SoundBlock> block = reader ? (*reader)->read(first, count) : Result<SoundBlock>(reader.error());
        if (!block)
            qWarning("%s", qPrintable(block.error().sentence()));
        return block ? *block : SoundBlock();
    }

    /// Silence with a click every half second.
    void makeClicks()
    {
        std::vector<std::int32_t> samples(48000 * 6);
        for (std::size_t at = 24000; at < samples.size(); at += 24000) {
            for (std::size_t i = 0; i < 48; ++i)
                samples[at + i] = std::int32_t(24000.0 * std::sin(double(i) * 3.14159265 / 8.0));
        }
        m_maker.writeWav(QStringLiteral("clicks.wav"), samples, 16);
    }

    MediaMaker m_maker;
};

STRATACUT_TEST_MAIN(TestMediaSound)
#include "tst_mediasound.moc"

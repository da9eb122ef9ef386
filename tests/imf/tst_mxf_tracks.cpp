#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/Labels.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "desk/imf/mxf/TrackFileWriter.h"
#include "imf/support/Programs.h"
#include "imf/support/TinyTracks.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/ValueOf.h"

#include <QCryptographicHash>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace desk;
using namespace desk::imf;

namespace
{

QByteArray sha1(const QString& path)
{
    return QCryptographicHash::hash(support::fileBytes(path), QCryptographicHash::Sha1);
}

/// A picture small enough for tracks of thousands of frames.
PictureFormat speck(Rational rate, Sampling sampling)
{
    PictureFormat format;
    format.width = format.height = 64;
    format.frameRate = rate;
    format.sampling = sampling;
    return format;
}

/// Limits the size of the files that this process may write, for one scope.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

} // namespace

class TestMxfTracks : public QObject
{
    Q_OBJECT

private slots:

    void everySoundfieldComesBackToTheSample_data()
    {
        const support::Rows<QString> row;
        for (const McaSoundfield& one : soundfields()) {
            if (!one.channelSymbols().isEmpty())
                row(one.symbol, QString::fromLatin1(one.symbol));
        }
    }

    void everySoundfieldComesBackToTheSample()
    {
        const auto [soundfield] = support::fetched<QString>();
        const QString file = path("sound.mxf");
        QFile::remove(file);
        const qint64 count = 70007;
        const auto info = support::valueOf(tinytracks::writeSound(file, count, soundfield));
        QCOMPARE(info.sha1, sha1(file));
        const SoundFormat written = tinytracks::sound(soundfield);
        const auto expected = tinytracks::samples(written.channels.size(), 0, count);

        auto track = support::valueOf(readTrackFile(file));
        const SoundFormat& read = track.facts().sound;
        QCOMPARE(read.soundfield, soundfield);
        QCOMPARE(read.language, written.language);
        QCOMPARE(read.title, written.title);
        QCOMPARE(read.contentKind, QStringLiteral("PRM"));
        QCOMPARE(read.channels.size(), written.channels.size());
        for (int i = 0; i < read.channels.size(); ++i)
            QCOMPARE(read.channels[i].symbol, written.channels[i].symbol);
        QVERIFY(*track.readSamples(0, count) == expected);
        QVERIFY(*track.readSamples(count - 1, 1) == tinytracks::samples(read.channels.size(), count - 1, 1));
        QVERIFY(!track.readSamples(count - 1, 2));
    }

    void descriptorsAreTheSameFromWriterAndReader()
    {
        const auto picture = tinytracks::writePicture(path("p.mxf"), 1);
        const auto sound = tinytracks::writeSound(path("s.mxf"), 4800, QStringLiteral("sg51"));
        QVERIFY(picture && sound);
        QCOMPARE(readTrackFile(path("p.mxf"))->descriptorXml(), picture->descriptorXml);
        QCOMPARE(readTrackFile(path("s.mxf"))->descriptorXml(), sound->descriptorXml);
        QVERIFY(picture->descriptorXml.contains("<r1:EssenceLength>1</r1:EssenceLength>"));
        QCOMPARE(sound->descriptorXml.count("<r0:AudioChannelLabelSubDescriptor>"), 6);
        if (!programs::exists(QStringLiteral("mediainfo")))
            QSKIP("mediainfo is not installed");
        for (const QByteArray& xml : {picture->descriptorXml, sound->descriptorXml})
            QCOMPARE(programs::run(QStringLiteral("xmllint"), {"--nonet", "--noout", "-"}, xml), QByteArray());
        const QByteArray said = programs::run(
            QStringLiteral("mediainfo"),
            {"--Inform=Audio;%ChannelLayout%|%Language%|%SamplingRate%|%BitDepth%|%SamplingCount%", path("s.mxf")});
        QCOMPARE(said.trimmed(), QByteArray("L R C LFE Ls Rs|en-US|48000|24|4800"));
    }

    void longTracksAlternateEssenceAndIndex_data()
    {
        const support::Rows<int, int, int, int> row;
        row("just one minute", 24, int(Sampling::YCbCr422), 1440, 4);
        row("one frame more", 24, int(Sampling::YCbCr422), 1441, 6);
        row("two segments in a partition", 120, int(Sampling::Rgb444), 7300, 6);
    }

    void longTracksAlternateEssenceAndIndex()
    {
        const auto [rate, sampling, frames, partitions] = support::fetched<int, int, int, int>();
        const QString file = path("long.mxf");
        QFile::remove(file);
        const PictureFormat format = speck({rate, 1}, Sampling(sampling));
        const auto profile = support::valueOf(chooseProfile(format, {J2kSettings::Mode::Reversible, 0}));
        const QByteArray even = *encodeFrame(tinytracks::picture(format, 0), format, profile);
        const QByteArray odd = *encodeFrame(tinytracks::picture(format, 5), format, profile);
        QVERIFY(even.size() != odd.size());
        auto writer = support::valueOf(PictureTrackWriter::create({file, {}, frames}, format, profile));
        for (int n = 0; n < frames; ++n)
            QVERIFY(writer->append(n % 3 == 0 ? odd : even));
        const auto info = support::valueOf(writer->finish());
        QCOMPARE(info.sha1, sha1(file));

        auto track = support::valueOf(readTrackFile(file));
        QVERIFY(track.facts().editRate == format.frameRate);
        QCOMPARE(track.facts().partitions.size(), partitions);
        for (const Partition& partition : track.facts().partitions)
            QVERIFY(int(partition.headerByteCount != 0) + int(partition.bodySid != 0) + int(partition.indexSid != 0) <=
                    1);
        for (int n = 0; n < frames; ++n)
            QVERIFY(*track.readFrame(n) == (n % 3 == 0 ? odd : even));
        if (!programs::exists(QStringLiteral("ffprobe")))
            QSKIP("ffprobe is not installed");
        const QByteArray sizes = programs::run(
            QStringLiteral("ffprobe"), {"-v", "warning", "-show_entries", "packet=size", "-of", "csv=p=0", file});
        const QList<QByteArray> lines = sizes.trimmed().split('\n');
        QCOMPARE(lines.size(), frames);
        for (int n = 0; n < frames; ++n)
            QCOMPARE(lines[n].toInt(), (n % 3 == 0 ? odd : even).size());
    }

    void announcedSizesGiveTheSameFileHashedInOnePass()
    {
        const PictureFormat format = speck({24, 1}, Sampling::YCbCr422);
        const auto profile = chooseProfile(format, {J2kSettings::Mode::Reversible, 0});
        const QByteArray one = *encodeFrame(tinytracks::picture(format, 0), format, *profile);
        const QByteArray last = *encodeFrame(tinytracks::picture(format, 5), format, *profile);
        QVector<qint64> sizes(1500, one.size());
        sizes.last() = last.size();
        auto writer = support::valueOf(
            PictureTrackWriter::create({path("sized.mxf"), {}, sizes.size()}, format, *profile, sizes));
        for (int n = 0; n < sizes.size(); ++n)
            QVERIFY(writer->append(n + 1 < sizes.size() ? one : last));
        const auto info = support::valueOf(writer->finish());
        QCOMPARE(info.sha1, sha1(path("sized.mxf")));
        QCOMPARE(info.size, QFileInfo(path("sized.mxf")).size());
        auto track = support::valueOf(readTrackFile(path("sized.mxf")));
        QVERIFY(*track.readFrame(1499) == last);
    }

    void wrongEssenceIsRefused()
    {
        const PictureFormat format = tinytracks::format();
        const auto reversible = chooseProfile(format, {J2kSettings::Mode::Reversible, 0});
        const auto lossy = chooseProfile(format, {J2kSettings::Mode::Lossy, 20});
        const QByteArray good = *encodeFrame(tinytracks::picture(format, 0), format, *reversible);
        auto writer = support::valueOf(PictureTrackWriter::create({path("wrong.mxf"), {}, 2}, format, *reversible));
        QVERIFY(!writer->append("no codestream"));
        const Status other = writer->append(*encodeFrame(tinytracks::picture(format, 0), format, *lossy));
        QVERIFY(other.error().what.contains(QStringLiteral("0x0411 instead of 0x0701")));
        QVERIFY(writer->append(good));
        const auto early = writer->finish();
        QVERIFY(early.error().what.contains(QStringLiteral("ends before its 2 frames")));
        QVERIFY(writer->append(good));
        QVERIFY(!writer->append(good));

        SoundFormat sound = tinytracks::sound();
        const std::int32_t sample[2] = {1, 2};
        auto soundWriter = support::valueOf(SoundTrackWriter::create({path("wrong-sound.mxf"), {}, 1}, sound));
        QVERIFY(!soundWriter->finish());
        QVERIFY(soundWriter->append(sample, 1));
        QVERIFY(!soundWriter->append(sample, 1));
        sound.language = QStringLiteral("not a tag");
        QVERIFY(!SoundTrackWriter::create({path("never.mxf"), {}, 1}, sound));
        QVERIFY(!QFile::exists(path("never.mxf")));
    }

    void failingDisksAreReported()
    {
        QVERIFY(tinytracks::writeSound(path("there.mxf"), 10));
        QVERIFY(tinytracks::writeSound(path("there.mxf"), 10).error().what.contains(QStringLiteral("exists already")));
        QVERIFY(tinytracks::writeSound(path("no/such/folder.mxf"), 10)
                    .error()
                    .what.contains(QStringLiteral("folder is gone")));
        {
            const FileSizeLimit limit(100000);
            const Error error = tinytracks::writeSound(path("full.mxf"), 48000).error();
            QVERIFY2(error.sentence().contains(QStringLiteral("does not take a file of this size")),
                     qPrintable(error.sentence()));
            QCOMPARE(error.where, QStringLiteral("offset 100000"));
        }
        // A long one is not written to its end in vain.
        const qint64 many = 3000000;
        auto longer =
            support::valueOf(SoundTrackWriter::create({path("endless.mxf"), {}, 2 * many}, tinytracks::sound()));
        QVERIFY(QFile::remove(path("endless.mxf")));
        const std::vector<std::int32_t> silence(2 * many);
        QVERIFY(longer->append(silence.data(), many).error().what.contains(QStringLiteral("folder is gone")));
    }

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestMxfTracks)
#include "tst_mxf_tracks.moc"

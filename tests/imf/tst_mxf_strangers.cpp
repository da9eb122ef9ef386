#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "imf/support/Programs.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

using namespace desk;
using namespace desk::imf;

namespace
{

/// Every element of a descriptor with its text, in no order: "CDCIDescriptor/StoredWidth=3840".
QStringList leaves(const QByteArray& xml, const QString& root)
{
    QStringList found;
    QStringList path;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement && (!path.isEmpty() || reader.name() == root))
            path.append('{' + reader.namespaceUri().toString() + '}' + reader.name().toString());
        else if (token == QXmlStreamReader::EndElement && !path.isEmpty())
            path.removeLast();
        else if (token == QXmlStreamReader::Characters && !path.isEmpty() && !reader.isWhitespace())
            found.append(path.join('/') + '=' + reader.text().toString());
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

/// Track files and compositions made by other people's tools.
class TestMxfStrangers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void factsAreRead_data();
    void factsAreRead();
    void descriptorsAgreeWithTheComposition_data();
    void descriptorsAgreeWithTheComposition();
    void framesDecodeAsElsewhere_data();
    void framesDecodeAsElsewhere();
    void samplesDecodeAsElsewhere_data();
    void samplesDecodeAsElsewhere();

private:
    QString file(const QString& name) const { return m_folder.filePath(name); }

    QDir m_folder;
};

void TestMxfStrangers::initTestCase()
{
    const QString folder = qEnvironmentVariable("STRATACUT_IMF_SAMPLES");
    if (folder.isEmpty())
        QSKIP("STRATACUT_IMF_SAMPLES is not set");
    m_folder.setPath(folder);
}

void TestMxfStrangers::factsAreRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("duration");
    QTest::addColumn<QString>("what");
    QTest::newRow("RGB") << "countdown/countdown-small.mxf"
                         << "35e05073-878e-4b2f-b69d-2369f25adfc9" << 24 << "640x360 2 16 bits colour 3 rsiz 706";
    QTest::newRow("UHD") << "uhd-reversible/test00-imf-mm-api-0500Hz_v0.mxf"
                         << "80156451-2f8e-4813-8100-3d39b0f1c5fc" << 2 << "3840x2160 0 10 bits colour 5 rsiz 0";
    QTest::newRow("stereo") << "countdown-audio/WAV_d01bc6be-ae2f-436b-9705-c402e1d92212.mxf"
                            << "d01bc6be-ae2f-436b-9705-c402e1d92212" << 48000 << "sgST en-US  chL chR";
    QTest::newRow("Lt-Rt") << "uhd-reversible/test00-imf-mm-api-0500Hz_a0.mxf"
                           << "34ca64f5-300b-453f-b4f3-d0035b015d9f" << 4000 << "sgLtRt en test chLt chRt";
}

void TestMxfStrangers::factsAreRead()
{
    QFETCH(QString, name);
    QFETCH(QString, id);
    QFETCH(int, duration);
    QFETCH(QString, what);
    const auto track = readTrackFile(file(name));
    QVERIFY2(track, qPrintable(track ? QString() : track.error().sentence()));
    const TrackFileFacts& facts = track->facts();
    QCOMPARE(facts.id.toString(QUuid::WithoutBraces), id);
    QCOMPARE(facts.duration, qint64(duration));
    QString said;
    if (facts.kind == TrackKind::Picture) {
        said = QStringLiteral("%1x%2 %3 %4 bits colour %5 rsiz %6")
                   .arg(facts.picture.width)
                   .arg(facts.picture.height)
                   .arg(int(facts.picture.sampling))
                   .arg(facts.picture.bitDepth)
                   .arg(int(facts.picture.colour))
                   .arg(facts.j2k.rsiz, 0, 16);
    } else {
        said = facts.sound.soundfield + ' ' + facts.sound.language + ' ' + facts.sound.contentKind;
        for (const ChannelLabel& channel : facts.sound.channels)
            said += ' ' + channel.symbol;
    }
    QCOMPARE(said, what);
}

void TestMxfStrangers::descriptorsAgreeWithTheComposition_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("group");
    QTest::newRow("RGB") << "countdown"
                         << "countdown-small.mxf"
                         << "RGBADescriptor";
    QTest::newRow("stereo") << "countdown-audio"
                            << "WAV_d01bc6be-ae2f-436b-9705-c402e1d92212.mxf"
                            << "WAVEPCMDescriptor";
    QTest::newRow("UHD") << "uhd-reversible"
                         << "test00-imf-mm-api-0500Hz_v0.mxf"
                         << "CDCIDescriptor";
    QTest::newRow("Lt-Rt") << "uhd-reversible"
                           << "test00-imf-mm-api-0500Hz_a0.mxf"
                           << "WAVEPCMDescriptor";
}

void TestMxfStrangers::descriptorsAgreeWithTheComposition()
{
    QFETCH(QString, folder);
    QFETCH(QString, name);
    QFETCH(QString, group);
    const QDir dir(file(folder));
    const QStringList compositions = dir.entryList({QStringLiteral("CPL*.xml")});
    QCOMPARE(compositions.size(), 1);
    const auto track = readTrackFile(dir.filePath(name));
    QVERIFY(track);
    const QStringList ours = leaves(track->descriptorXml(), group);
    const QStringList theirs = leaves(programs::fileBytes(dir.filePath(compositions.first())), group);
    QVERIFY(ours.size() > 20);
    QCOMPARE(ours.join('\n'), theirs.join('\n'));
}

void TestMxfStrangers::framesDecodeAsElsewhere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("pixels");
    QTest::newRow("RGB") << "countdown/countdown-small.mxf"
                         << "gbrp16le";
    QTest::newRow("UHD") << "uhd-reversible/test00-imf-mm-api-0500Hz_v0.mxf"
                         << "yuv422p10le";
}

void TestMxfStrangers::framesDecodeAsElsewhere()
{
    QFETCH(QString, name);
    QFETCH(QString, pixels);
    auto track = readTrackFile(file(name));
    QVERIFY(track);
    const bool rgb = track->facts().picture.sampling == Sampling::Rgb444;
    QByteArray ours;
    for (qint64 n = 0; n < track->facts().duration; ++n) {
        const auto codestream = track->readFrame(n);
        QVERIFY2(codestream, qPrintable(codestream ? QString() : codestream.error().sentence()));
        const auto picture = decodeFrame(*codestream);
        QVERIFY2(picture, qPrintable(picture ? QString() : picture.error().sentence()));
        const int order[2][3] = {{0, 1, 2}, {1, 2, 0}};
        for (const int plane : order[rgb ? 1 : 0]) {
            const auto& samples = picture->planes[std::size_t(plane)];
            ours.append(reinterpret_cast<const char*>(samples.data()), int(samples.size() * 2));
        }
    }
    if (!programs::exists(QStringLiteral("ffmpeg")))
        QSKIP("ffmpeg is not installed");
    const QByteArray theirs = programs::run(
        QStringLiteral("ffmpeg"), {"-v", "error", "-i", file(name), "-f", "rawvideo", "-pix_fmt", pixels, "-"});
    QVERIFY2(ours == theirs, theirs.left(200).constData());
}

void TestMxfStrangers::samplesDecodeAsElsewhere_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("index after the essence") << "countdown-audio/WAV_d01bc6be-ae2f-436b-9705-c402e1d92212.mxf";
    QTest::newRow("index before the essence") << "uhd-reversible/test00-imf-mm-api-0500Hz_a0.mxf";
}

void TestMxfStrangers::samplesDecodeAsElsewhere()
{
    QFETCH(QString, name);
    auto track = readTrackFile(file(name));
    QVERIFY(track);
    const auto ours = track->readSamples(0, track->facts().duration);
    QVERIFY(ours);
    if (!programs::exists(QStringLiteral("ffmpeg")))
        QSKIP("ffmpeg is not installed");
    const QByteArray theirs = programs::run(QStringLiteral("ffmpeg"),
                                            {"-v", "error", "-i", file(name), "-c:a", "pcm_s32le", "-f", "s32le", "-"});
    QCOMPARE(theirs.size(), int(ours->size() * 4));
    const auto* words = reinterpret_cast<const std::int32_t*>(theirs.constData());
    QVERIFY(std::equal(ours->begin(), ours->end(), words, [](std::int32_t a, std::int32_t b) { return a == b >> 8; }));
}

QTEST_GUILESS_MAIN(TestMxfStrangers)
#include "tst_mxf_strangers.moc"

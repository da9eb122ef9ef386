#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "imf/support/Programs.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/ValueOf.h"

#include <QDir>
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

    void initTestCase()
    {
        const QString folder = qEnvironmentVariable("STRATACUT_IMF_SAMPLES");
        if (folder.isEmpty())
            QSKIP("STRATACUT_IMF_SAMPLES is not set");
        m_folder.setPath(folder);
    }

    void factsAreRead_data() { everySample(); }

    void factsAreRead()
    {
        const auto [name, group, what, pixels] = support::fetched<QString, QString, QString, QString>();
        const auto track = support::valueOf(readTrackFile(file(name)));
        const TrackFileFacts& facts = track.facts();
        QString said = facts.id.toString(QUuid::WithoutBraces).left(8) + ' ' + QString::number(facts.duration) + ' ';
        if (facts.kind == TrackKind::Picture) {
            said += QStringLiteral("%1x%2 %3 %4 bits colour %5 rsiz %6")
                        .arg(facts.picture.width)
                        .arg(facts.picture.height)
                        .arg(int(facts.picture.sampling))
                        .arg(facts.picture.bitDepth)
                        .arg(int(facts.picture.colour))
                        .arg(facts.j2k.rsiz, 0, 16);
        } else {
            said += facts.sound.soundfield + ' ' + facts.sound.language + ' ' + facts.sound.contentKind;
            for (const ChannelLabel& channel : facts.sound.channels)
                said += ' ' + channel.symbol;
        }
        QCOMPARE(said, what);
        const QDir dir = QFileInfo(file(name)).dir();
        const QStringList compositions = dir.entryList({QStringLiteral("CPL*.xml")});
        QCOMPARE(compositions.size(), 1);
        const QStringList ours = leaves(track.descriptorXml(), group);
        const QStringList theirs = leaves(support::fileBytes(dir.filePath(compositions.first())), group);
        QVERIFY(ours.size() > 20);
        QCOMPARE(ours.join('\n'), theirs.join('\n'));
    }

    void essenceDecodesAsElsewhere_data() { everySample(); }

    void essenceDecodesAsElsewhere()
    {
        const auto [name, group, what, pixels] = support::fetched<QString, QString, QString, QString>();
        auto track = support::valueOf(readTrackFile(file(name)));
        const bool isPicture = track.facts().kind == TrackKind::Picture;
        const QByteArray ours = isPicture ? decodedFrames(track) : decodedSamples(track);
        if (!programs::exists(QStringLiteral("ffmpeg")))
            QSKIP("ffmpeg is not installed");
        const QStringList output = isPicture ? QStringList{"-f", "rawvideo", "-pix_fmt", pixels}
                                             : QStringList{"-f", "s32le", "-c:a", "pcm_s32le"};
        const QByteArray theirs = programs::run(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-i", file(name)} +
                                                                              output + QStringList{"-"});
        QVERIFY2(ours == theirs, theirs.left(200).constData());
    }

private:
    static void everySample()
    {
        const support::Rows<QString, QString, QString, QString> row;
        row("RGB", "countdown/countdown-small.mxf", "RGBADescriptor", "35e05073 24 640x360 2 16 bits colour 3 rsiz 706",
            "gbrp16le");
        row("UHD", "uhd-reversible/test00-imf-mm-api-0500Hz_v0.mxf", "CDCIDescriptor",
            "80156451 2 3840x2160 0 10 bits colour 5 rsiz 0", "yuv422p10le");
        row("stereo, index after the essence", "countdown-audio/WAV_d01bc6be-ae2f-436b-9705-c402e1d92212.mxf",
            "WAVEPCMDescriptor", "d01bc6be 48000 sgST en-US  chL chR", "");
        row("Lt-Rt, index before the essence", "uhd-reversible/test00-imf-mm-api-0500Hz_a0.mxf", "WAVEPCMDescriptor",
            "34ca64f5 4000 sgLtRt en test chLt chRt", "");
    }

    static QByteArray decodedFrames(TrackFile& track)
    {
        const bool isRgb = track.facts().picture.sampling == Sampling::Rgb444;
        QByteArray bytes;
        for (qint64 n = 0; n < track.facts().duration; ++n) {
            const auto picture = support::valueOf(decodeFrame(support::valueOf(track.readFrame(n))));
            const int order[2][3] = {{0, 1, 2}, {1, 2, 0}};
            for (const int plane : order[isRgb ? 1 : 0]) {
                const auto& samples = picture.planes[std::size_t(plane)];
                bytes.append(reinterpret_cast<const char*>(samples.data()), int(samples.size() * 2));
            }
        }
        return bytes;
    }

    /// In the high bytes of 32 bits, as ffmpeg gives them.
    static QByteArray decodedSamples(TrackFile& track)
    {
        auto samples = support::valueOf(track.readSamples(0, track.facts().duration));
        for (std::int32_t& sample : samples)
            sample *= 256;
        return {reinterpret_cast<const char*>(samples.data()), int(samples.size() * 4)};
    }

    QString file(const QString& name) const { return m_folder.filePath(name); }

    QDir m_folder;
};

QTEST_GUILESS_MAIN(TestMxfStrangers)
#include "tst_mxf_strangers.moc"

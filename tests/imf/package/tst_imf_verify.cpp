#include "imf/package/Deliveries.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace desk;
using namespace desk::imf;

using Damage = std::function<void(const QString& folder)>;

namespace
{

QString listFile()
{
    return QStringLiteral("PKL_%1.xml").arg(deliveries::packageId(1).toString(QUuid::WithoutBraces));
}

QString compositionFile()
{
    return QStringLiteral("CPL_%1.xml").arg(deliveries::compositionId(1).toString(QUuid::WithoutBraces));
}

Damage replaced(const QString& file, const QByteArray& from, const QByteArray& to)
{
    return [=](const QString& folder) {
        const QString path = folder + QLatin1Char('/') + file;
        QByteArray bytes = support::fileBytes(path);
        const int at = bytes.indexOf(from);
        if (at >= 0)
            support::writeFile(path, bytes.replace(at, from.size(), to));
    };
}

/// Its last occurrence.
Damage lastReplaced(const QString& file, const QByteArray& from, const QByteArray& to)
{
    return [=](const QString& folder) {
        const QString path = folder + QLatin1Char('/') + file;
        QByteArray bytes = support::fileBytes(path);
        support::writeFile(path, bytes.replace(bytes.lastIndexOf(from), from.size(), to));
    };
}

/// Two elements that stand one behind the other.
Damage swapped(const QString& file, const QString& first, const QString& second)
{
    return [=](const QString& folder) {
        const QString path = folder + QLatin1Char('/') + file;
        const QRegularExpression pair(QStringLiteral("(<%1>[^<]*</%1>)(\\s*)(<%2>[^<]*</%2>)").arg(first, second));
        support::writeFile(path, QString::fromUtf8(support::fileBytes(path)).replace(pair, "\\3\\2\\1").toUtf8());
    };
}

Damage removed(const QString& file)
{
    return [=](const QString& folder) { QFile::remove(folder + QLatin1Char('/') + file); };
}

Damage cut(const QString& file, int bytes)
{
    return [=](const QString& folder) {
        const QString path = folder + QLatin1Char('/') + file;
        support::writeFile(path, support::fileBytes(path).left(bytes));
    };
}

Resource& firstResource(Composition& composition, int sequence)
{
    return composition.segments[0].sequences[sequence].resources[0];
}

/// Of the picture, whose track file says nothing of it.
void nameFieldDominance(Composition& composition)
{
    QByteArray& xml = composition.essenceDescriptors[0].regXml;
    const int at = xml.indexOf(':', xml.indexOf("StoredWidth>") - 3);
    const QByteArray prefix = xml.mid(xml.lastIndexOf('<', at) + 1, at - xml.lastIndexOf('<', at) - 1);
    xml.insert(xml.lastIndexOf('<', at), "<" + prefix + ":FieldDominance>FieldOne</" + prefix + ":FieldDominance>");
}

/// Takes this program's marks out, as if another had written the map.
void makeStrange(const QString& folder)
{
    const QString path = folder + "/ASSETMAP.xml";
    AssetMap map = *readAssetMap(support::fileBytes(path), path);
    map.annotation = UserText();
    for (MappedAsset& asset : map.assets)
        asset.annotation = UserText();
    support::writeFile(path, writeAssetMap(map));
}

} // namespace

class TestVerify : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir{deliveries::scratch()};
    deliveries::Tracks m_tracks;

    QString path(const char* name) const { return m_dir.filePath(QLatin1String(name)); }

    QString freshCopy()
    {
        const QString folder = path("copy");
        QDir(folder).removeRecursively();
        deliveries::copyFolder(path("good"), folder);
        return folder;
    }

    QStringList findingsAfter(const Damage& damage)
    {
        const QString folder = freshCopy();
        const auto before = deliveries::contents(folder);
        damage(folder);
        if (deliveries::contents(folder) == before)
            qFatal("the damage changed nothing");
        return deliveries::brief(verifyDelivery(folder));
    }

private slots:

    void initTestCase()
    {
        m_tracks = deliveries::make(path("tracks"));
        const Status done = deliveries::commitFirst(path("good"), m_tracks);
        QVERIFY2(done, qPrintable(done.error().sentence()));
        QCOMPARE(deliveries::brief(verifyDelivery(path("good"))), QStringList());
    }

    void aDamagedFileIsFound_data()
    {
        const support::Rows<Damage, QStringList> row;
        const QString map = QStringLiteral("ASSETMAP.xml");
        const QString index = QStringLiteral("VOLINDEX.xml");
        const QByteArray mapLength = QByteArray::number(m_tracks.sound.size);
        row("no map", removed(map), {"asset-map-unreadable ASSETMAP.xml"});
        row("changed issuer", replaced(map, "The issuer", "The issues"), {"seal-broken ASSETMAP.xml"});
        row("destroyed seal", replaced(map, "[IMF Original", "(IMF Original"), {"seal-missing ASSETMAP.xml"});
        row("changed length", replaced(map, "<Length>" + mapLength, "<Length>1" + mapLength),
            {"length-mismatch sound.mxf", "seal-broken ASSETMAP.xml"});
        row("path upwards", replaced(map, "sound.mxf", "../sound.mxf"),
            {"file-unlisted sound.mxf", "path-refused ASSETMAP.xml", "seal-broken ASSETMAP.xml"});
        row("no volume index", removed(index), {"file-missing VOLINDEX.xml"});
        row("changed volume index", replaced(index, "<Index>1", "<Index>01"),
            {"seal-broken VOLINDEX.xml", "volume-index-unreadable VOLINDEX.xml"});
        row("blank in volume index", replaced(index, "  <Index", " <Index"), {"seal-broken VOLINDEX.xml"});
        row("changed packing list", replaced(listFile(), "One package", "Two package"), {"hash-mismatch PKL.xml"});
        row("no packing list", removed(listFile()), {"file-missing PKL.xml"});
        row("other hash", replaced(listFile(), m_tracks.sound.sha1.toBase64(), QByteArray(20, 'x').toBase64()),
            {"hash-mismatch PKL.xml", "hash-mismatch sound.mxf"});
        row("longer title", replaced(compositionFile(), "Title 1", "Title 11"),
            {"hash-mismatch CPL.xml", "length-mismatch CPL.xml", "size-mismatch CPL.xml"});
        row("no composition", removed(compositionFile()), {"file-missing CPL.xml"});
        row("no track file", removed("sound.mxf"), {"file-missing sound.mxf"});
        row("cut track file", cut("sound.mxf", 20000),
            {"hash-mismatch sound.mxf", "length-mismatch sound.mxf", "resource-hash-mismatch CPL.xml",
             "size-mismatch sound.mxf", "track-file-unreadable sound.mxf"});
        row("first frame without its start", replaced("picture.mxf", "\xff\x4f\xff\x51", "\xff\x4f\xff\x50"),
            {"frame-unreadable picture.mxf", "hash-mismatch picture.mxf", "resource-hash-mismatch CPL.xml"});
        row("last frame with a broken tile-part",
            lastReplaced("picture.mxf", QByteArray("\xff\x90\x00\x0a", 4), QByteArray("\xff\x91\x00\x0a", 4)),
            {"frame-unreadable picture.mxf", "hash-mismatch picture.mxf", "resource-hash-mismatch CPL.xml"});
        row("last frame of another size",
            lastReplaced("picture.mxf", QByteArray("\x00\x00\x01\x40\x00", 5), QByteArray("\x00\x00\x01\x42\x00", 5)),
            {"frame-varies picture.mxf", "hash-mismatch picture.mxf", "resource-hash-mismatch CPL.xml"});
        row("composition out of order", swapped(compositionFile(), "IntrinsicDuration", "EntryPoint"),
            {"element-order CPL.xml", "element-order CPL.xml", "hash-mismatch CPL.xml"});
        row("packing list out of order", swapped(listFile(), "Hash", "Size"),
            {"element-order PKL.xml", "element-order PKL.xml", "element-order PKL.xml", "hash-mismatch PKL.xml"});
        row("composition packed as a track file",
            [](const QString& folder) {
                makeStrange(folder);
                replaced(listFile(), "text/xml", "application/mxf")(folder);
            },
            {"length-mismatch PKL.xml", "track-file-unreadable CPL.xml"});
        row("further file", [](const QString& folder) { support::writeFile(folder + "/notes.txt", "x"); },
            {"file-unlisted notes.txt"});
        row("broken-off commit",
            [](const QString& folder) {
                QDir(folder).mkdir(".stratacut-commit-1");
                support::writeFile(folder + "/.stratacut-commit-1/track-1.mxf", "x");
            },
            {"leftover .stratacut-commit-1"});
    }

    void aDamagedFileIsFound()
    {
        const auto [damage, findings] = support::fetched<Damage, QStringList>();
        QCOMPARE(findingsAfter(damage), findings);
    }

    void aFileOutsideTheFolderIsNotFollowed()
    {
        const QStringList findings = findingsAfter([this](const QString& folder) {
            QFile::remove(folder + "/sound.mxf");
            QFile::link(path("tracks") + "/other.mxf", folder + "/sound.mxf");
        });
        QVERIFY2(findings.contains("path-refused ASSETMAP.xml"), qPrintable(findings.join(", ")));
        QVERIFY(!openDelivery(path("copy")));
    }

    void aRuleThatTheCompositionBreaksIsFound_data()
    {
        const support::Rows<deliveries::Change, QStringList> row;
        row("shorter sound", [](Composition& c) { firstResource(c, 1).sourceDuration = 8000; },
            {"duration-unequal CPL.xml"});
        row("part of a frame", [](Composition& c) { firstResource(c, 1).sourceDuration = 8001; },
            {"duration-fraction CPL.xml"});
        row("beyond the source",
            [](Composition& c) {
                firstResource(c, 0).entryPoint = 1;
                firstResource(c, 1).entryPoint = 2000;
            },
            {"resource-bounds CPL.xml", "resource-bounds CPL.xml"});
        row("longer than the file", [](Composition& c) { firstResource(c, 0).intrinsicDuration = 6; },
            {"duration-of-file CPL.xml"});
        row("two rates",
            [](Composition& c) {
                Resource second = firstResource(c, 1);
                second.editRate = {96000, 1};
                second.sourceDuration = 4000;
                firstResource(c, 1).sourceDuration = 8000;
                c.segments[0].sequences[1].resources.append(second);
            },
            {"edit-rate-of-file CPL.xml", "edit-rate-varies CPL.xml", "sample-rate-mismatch CPL.xml"});
        row("other composition rate",
            [](Composition& c) {
                c.editRate = {25, 1};
            },
            {"duration-fraction CPL.xml", "duration-fraction CPL.xml", "edit-rate-mismatch CPL.xml"});
        row("no picture", [](Composition& c) { c.segments[0].sequences[0].kind = SequenceKind::MainAudio; },
            {"image-count CPL.xml", "kind-of-file CPL.xml"});
        row("one track twice",
            [](Composition& c) { c.segments[0].sequences[1].trackId = c.segments[0].sequences[0].trackId; },
            {"descriptor-varies CPL.xml", "edit-rate-varies CPL.xml", "track-duplicate CPL.xml"});
        row("a track in one segment only",
            [](Composition& c) {
                c.segments.append(c.segments[0]);
                c.segments[1].sequences.removeLast();
            },
            {"track-missing CPL.xml"});
        row("no descriptor", [](Composition& c) { c.essenceDescriptors.removeLast(); }, {"descriptor-missing CPL.xml"});
        row("unused descriptor",
            [](Composition& c) {
                c.essenceDescriptors.append({deliveries::packageId(9), c.essenceDescriptors[0].regXml});
            },
            {"descriptor-unused CPL.xml"});
        row("wrong descriptor", [](Composition& c) { c.essenceDescriptors[0].regXml.replace(">320<", ">322<"); },
            {"descriptor-of-file CPL.xml"});
        row("wrong track file", [](Composition& c) { firstResource(c, 1).trackFileId = deliveries::packageId(8); },
            {"asset-missing CPL.xml"});
        row("no resources", [](Composition& c) { c.segments[0].sequences[1].resources.clear(); },
            {"descriptor-unused CPL.xml", "duration-unequal CPL.xml", "resource-none CPL.xml"});
        row("property that the file lacks", nameFieldDominance, {"descriptor-of-file CPL.xml"});
        row("hash of an unknown kind", [](Composition& c) { firstResource(c, 0).hash.chop(1); },
            {"hash-unknown CPL.xml"});
        row("timecode that is none",
            [](Composition& c) {
                c.timecode = CompositionTimecode{true, 25, QStringLiteral("24:00:00:00")};
            },
            {"timecode-drop CPL.xml", "timecode-invalid CPL.xml", "timecode-rate CPL.xml"});
        row("running time of another composition", [](Composition& c) { c.totalRunningTime = "00:00:02"; },
            {"running-time CPL.xml"});
        row("older edition",
            [](Composition& c) { c.coreNameSpace = QStringLiteral("http://www.smpte-ra.org/schemas/2067-2/2016"); },
            {"application-edition CPL.xml"});
        row("no application", [](Composition& c) { c.applicationIds.clear(); }, {"application-none CPL.xml"});
        row("marker behind the end",
            [](Composition& c) {
                Sequence markers = c.segments[0].sequences[0];
                markers.kind = SequenceKind::Marker;
                markers.trackId = deliveries::packageId(7);
                markers.resources[0].markers = {{{}, {QLatin1String(edition::markerScope), QStringLiteral("LFOC")}, 5}};
                c.segments[0].sequences.prepend(markers);
            },
            {"marker-bounds CPL.xml"});
    }

    void aRuleThatTheCompositionBreaksIsFound()
    {
        const auto [change, findings] = support::fetched<deliveries::Change, QStringList>();
        QTemporaryDir dir{deliveries::scratch()};
        const Status done = deliveries::commitFirst(dir.filePath("d"), m_tracks, change);
        QVERIFY2(done, qPrintable(done.error().sentence()));
        QCOMPARE(deliveries::brief(verifyDelivery(dir.filePath("d"))), findings);
    }

    void anyChangedByteIsFound()
    {
        const bool isSoak = qEnvironmentVariableIsSet("STRATACUT_SOAK");
        QRandomGenerator random(support::seed());
        const QString folder = freshCopy();
        const auto good = deliveries::contents(folder);
        for (auto file = good.cbegin(); file != good.cend(); ++file) {
            const int tries = isSoak ? qMin(file->size(), 20000) : 80;
            for (int i = 0; i < tries; ++i) {
                const int at = isSoak && tries == file->size() ? i : random.bounded(file->size());
                QByteArray bad = *file;
                bad[at] = char(bad[at] ^ (1 << random.bounded(8)));
                support::writeFile(folder + QLatin1Char('/') + file.key(), bad);
                QVERIFY2(hasErrors(verifyDelivery(folder)),
                         qPrintable(QStringLiteral("%1, byte %2").arg(file.key()).arg(at)));
            }
            support::writeFile(folder + QLatin1Char('/') + file.key(), *file);
        }
        QCOMPARE(deliveries::brief(verifyDelivery(folder)), QStringList());
    }

    void anotherProgramsDeliveryIsNotBlamedForLackingSeals()
    {
        QCOMPARE(findingsAfter(makeStrange), QStringList());
        QCOMPARE(findingsAfter([](const QString& folder) {
                     makeStrange(folder);
                     QFile::remove(folder + "/VOLINDEX.xml");
                 }),
                 QStringList());
    }

    void aStopEndsTheHashing()
    {
        int calls = 0;
        VerifyOptions options;
        options.progress = [&](qint64 done, qint64 total) {
            ++calls;
            return done > total;
        };
        verifyDelivery(path("good"), options);
        QCOMPARE(calls, 1);
    }
};

STRATACUT_TEST_MAIN(TestVerify)

#include "tst_imf_verify.moc"

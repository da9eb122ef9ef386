#include "desk/imf/package/Digest.h"
#include "imf/package/Deliveries.h"
#include "imf/xml/Schema.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace desk;
using namespace desk::imf;

namespace
{

DeliveryDescription described(DeliveryVersion version = DeliveryVersion::Original)
{
    return {QStringLiteral("Other"), version, {}, {}, {}};
}

QString failureOf(const Status& status)
{
    return status ? QStringLiteral("no failure") : status.error().sentence();
}

} // namespace

class TestPackage : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir{deliveries::scratch()};
    deliveries::Tracks m_tracks;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString committed(const QString& name)
    {
        const QString folder = path(name);
        deliveries::copyFolder(path(QStringLiteral("good")), folder);
        return folder;
    }

    /// Commits a package that holds a composition over the tracks of the good delivery and no track file.
    Status commitSupplement(const QString& folder, DeliveryVersion version)
    {
        Result<PackageTransaction> transaction = PackageTransaction::begin(folder, described(version));
        if (!transaction)
            return transaction.error();
        transaction->setPackage({deliveries::packageId(3), {}, QStringLiteral("Trim"), {}, {}, {}});
        const Status added = transaction->addComposition(deliveries::composition(3, m_tracks, m_tracks.sound));
        return added ? transaction->commit() : added;
    }

private slots:

    void initTestCase()
    {
        m_tracks = deliveries::make(path("tracks"));
        QCOMPARE(failureOf(deliveries::commitFirst(path("good"), m_tracks)), QStringLiteral("no failure"));
    }

    void aDeliveryReadsAsItWasCommitted()
    {
        const auto read = support::valueOf(openDelivery(path("good") + "/"));
        QCOMPARE(read.name, QStringLiteral("Feature film"));
        QCOMPARE(read.annotation.text, QStringLiteral("For the [archive] \"only\""));
        QCOMPARE(int(read.version), int(DeliveryVersion::Original));
        QCOMPARE(read.componentId, deliveryComponentId(path("good")));
        const DeliveredPackage& package = read.packages[0];
        QCOMPARE(package.name, QStringLiteral("First"));
        QCOMPARE(package.packingList.annotation.text, QStringLiteral("One package"));
        QCOMPARE(package.compositions[0].name, QStringLiteral("Main version"));
        QCOMPARE(package.compositions[0].composition.duration().value_or(0), 5);
        QVERIFY(!read.hasMissingAssets());
    }

    void componentIdentifiersAreUniquePerFolderAndLast()
    {
        const auto identifiers = [](const Delivery& delivery) {
            const DeliveredPackage& package = delivery.packages[0];
            return QVector<QByteArray>{delivery.componentId, package.componentId, package.compositions[0].componentId};
        };
        const QVector<QByteArray> ours = identifiers(*openDelivery(path("good")));
        const QVector<QByteArray> other = identifiers(*openDelivery(committed("twin")));
        QCOMPARE(identifiers(*openDelivery(path("tracks/../good"))), ours);
        for (int i = 0; i < ours.size(); ++i)
            QVERIFY(other[i] != ours[i]);
        // Known before there is such a folder, and the same afterwards.
        const QByteArray early = deliveryComponentId(path("later/on"));
        QDir().mkpath(path("later/on"));
        QCOMPARE(deliveryComponentId(path("later/on")), early);
    }

    void aPackageTakesFurtherCompositions()
    {
        const QString folder = committed("grown");
        auto transaction = support::valueOf(PackageTransaction::begin(folder, described()));
        transaction.setPackage(
            {deliveries::packageId(9), deliveries::packageId(1), QStringLiteral("First"), {}, {}, {}});
        QVERIFY(transaction.addComposition(deliveries::composition(2, m_tracks, m_tracks.sound)));
        QCOMPARE(failureOf(transaction.commit()), QStringLiteral("no failure"));
        QCOMPARE(deliveries::brief(verifyDelivery(folder)), QStringList());
        const Result<Delivery> read = openDelivery(folder);
        QCOMPARE(read->packages.size(), 1);
        QCOMPARE(read->packages[0].compositions.size(), 2);
    }

    void aSupplementFindsItsAssetsInLoadedDeliveries()
    {
        const QString folder = path("supplement");
        QCOMPARE(failureOf(commitSupplement(folder, DeliveryVersion::Supplemental)), QStringLiteral("no failure"));
        const Result<Delivery> alone = openDelivery(folder);
        QCOMPARE(int(alone->version), int(DeliveryVersion::Supplemental));
        QCOMPARE(alone->packages[0].compositions[0].missingAssets,
                 (QVector<QUuid>{m_tracks.picture.id, m_tracks.sound.id}));
        QCOMPARE(deliveries::brief(verifyDelivery(folder)),
                 QStringList({"asset-missing CPL.xml", "asset-missing CPL.xml"}));
        QVERIFY(!hasErrors(verifyDelivery(folder)));
        const Result<Delivery> original = openDelivery(path("good"));
        VerifyOptions options;
        options.resolver = [&](const QUuid& asset) { return original->existingFile(asset); };
        QVERIFY(!openDelivery(folder, options.resolver)->hasMissingAssets());
        QCOMPARE(deliveries::brief(verifyDelivery(folder, options)), QStringList());
    }

    void aStrangersDeliveryIsSupplementalWhenItRefersElsewhere()
    {
        const QString folder = path("strange");
        QCOMPARE(failureOf(commitSupplement(folder, DeliveryVersion::Original)), QStringLiteral("no failure"));
        const QString map = folder + "/ASSETMAP.xml";
        QByteArray bytes = support::fileBytes(map);
        bytes.replace("[IMF", "[XYZ").replace("[sha1", "[md5");
        support::writeFile(map, bytes);
        QCOMPARE(int(openDelivery(folder)->version), int(DeliveryVersion::Supplemental));
        QCOMPARE(openDelivery(folder)->name, QStringLiteral("strange"));
    }

    void samplesOfOtherProgramsOpenAndFollowTheSchemaAfterARewrite_data()
    {
        const support::Rows<QString, QString, int, int, QStringList> row;
        const QStringList wrongHash{"hash-mismatch CPL.xml", "size-mismatch CPL.xml"};
        row("countdown", "countdown", "countdown-small", 41, 1, wrongHash + QStringList{"sound-none CPL.xml"});
        row("countdown-audio", "countdown-audio", "Image and audio test clip", 96, 2, wrongHash);
        row("uhd-reversible", "uhd-reversible", "imf-mm-api-test00 - 1 HD frame with 500Hz Tone", 2, 2, {});
    }

    void samplesOfOtherProgramsOpenAndFollowTheSchemaAfterARewrite()
    {
        const auto [sample, title, frames, sequences, findings] =
            support::fetched<QString, QString, int, int, QStringList>();
        const QString samples = qEnvironmentVariable("STRATACUT_IMF_SAMPLES");
        if (samples.isEmpty())
            QSKIP("STRATACUT_IMF_SAMPLES is not set: other programs' deliveries are not opened");
        const auto read = support::valueOf(openDelivery(samples + QLatin1Char('/') + sample));
        QCOMPARE(deliveries::brief(verifyDelivery(samples + QLatin1Char('/') + sample)), findings);
        QCOMPARE(int(read.version), int(DeliveryVersion::Original));
        const DeliveredComposition& one = read.packages[0].compositions[0];
        QCOMPARE(one.name, title);
        QCOMPARE(one.composition.duration().value_or(0), frames);
        QCOMPARE(one.composition.segments[0].sequences.size(), sequences);
        QVERIFY(one.missingAssets.isEmpty());
        if (qEnvironmentVariableIsEmpty("STRATACUT_IMF_XSD"))
            QSKIP("STRATACUT_IMF_XSD is not set: documents are not validated");
        validate(writeComposition(one.composition), "cpl-all.xsd");
        validate(writePackingList(read.packages[0].packingList), "pkl-am-all.xsd");
        validate(writeAssetMap(read.assetMap), "pkl-am-all.xsd");
    }

    void foldersThatAreNoDeliveryAreRefused()
    {
        const QString folder = path("nothing");
        QVERIFY(openDelivery(folder).error().sentence().contains("the folder is not there"));
        QDir().mkpath(folder);
        QVERIFY(openDelivery(folder).error().sentence().contains("the folder holds no ASSETMAP.xml"));
        support::writeFile(folder + "/ASSETMAP.xml", "<!DOCTYPE a><a/>");
        QVERIFY(openDelivery(folder).error().sentence().contains("document type declaration"));
        QVERIFY(PackageTransaction::begin(folder, described()).error().sentence().contains("ASSETMAP.xml"));
        QCOMPARE(deliveries::contents(folder).size(), 1);
    }

    void aDocumentInTheCompositionsPlaceIsRefused()
    {
        const QString folder = committed("replaced");
        support::writeFile(folder + "/CPL_" + deliveries::compositionId(1).toString(QUuid::WithoutBraces) + ".xml",
                           "<a/>");
        QVERIFY(openDelivery(folder).error().sentence().contains("not a CompositionPlaylist"));
    }

    void aRolledBackCommitLeavesNothing()
    {
        const QString folder = path("undone");
        {
            Result<PackageTransaction> transaction = PackageTransaction::begin(folder, described());
            QVERIFY(deliveries::addTrack(*transaction, m_tracks, m_tracks.picture, "picture.mxf"));
            QVERIFY(transaction->addComposition(deliveries::composition(1, m_tracks, m_tracks.sound)));
        }
        QVERIFY(!QFileInfo::exists(folder));
        const QString kept = path("kept");
        QDir().mkpath(kept);
        PackageTransaction::begin(kept, described())->rollback();
        QVERIFY(QFileInfo(kept).isDir());
    }

    void aSecondCommitIntoTheFolderWaits()
    {
        const QString folder = path("busy");
        const auto first = support::valueOf(PackageTransaction::begin(folder, described()));
        QVERIFY(PackageTransaction::begin(folder, described()).error().what.contains("another commit"));
        QCOMPARE(*recoverFolder(folder), QStringList());
        QCOMPARE(QDir(folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
    }

    void filesThatAreThereAreNeverOverwritten()
    {
        const QString folder = path("occupied");
        QDir().mkpath(folder);
        support::writeFile(folder + "/picture.mxf", "mine");
        const QString failure = failureOf(deliveries::commitFirst(folder, m_tracks));
        QVERIFY2(failure.contains("picture.mxf: a file of that name is already there"), qPrintable(failure));
        QCOMPARE(deliveries::contents(folder), (QMap<QString, QByteArray>{{"picture.mxf", "mine"}}));
        // One that comes while the commit is under way.
        const QString late = path("late");
        Result<PackageTransaction> transaction = PackageTransaction::begin(late, described());
        transaction->setPackage({deliveries::packageId(1), {}, {}, {}, {}, {}});
        QVERIFY(deliveries::addTrack(*transaction, m_tracks, m_tracks.picture, "picture.mxf"));
        QVERIFY(deliveries::addTrack(*transaction, m_tracks, m_tracks.sound, "sound.mxf"));
        support::writeFile(late + "/sound.mxf", "mine");
        QVERIFY(!transaction->commit());
        QCOMPARE(deliveries::contents(late), (QMap<QString, QByteArray>{{"sound.mxf", "mine"}}));
    }

    void aChangedDeliveryIsNotSealedAgain()
    {
        const QString folder = committed("tampered");
        QByteArray map = support::fileBytes(folder + "/ASSETMAP.xml");
        support::writeFile(folder + "/ASSETMAP.xml", map.replace("The issuer", "The issues"));
        const QString failure = failureOf(deliveries::commitSecond(folder, m_tracks));
        QVERIFY2(failure.contains("changed after it was committed"), qPrintable(failure));
        QCOMPARE(support::fileBytes(folder + "/ASSETMAP.xml"), map);
    }

    void aPathThatIsTooLongIsToldAtOnce()
    {
        QString folder = path("deep");
        while (folder.size() + 201 < 4096)
            folder += QLatin1Char('/') + QString(200, 'd');
        QVERIFY(QDir().mkpath(folder));
        const auto begun =
            PackageTransaction::begin(folder + QLatin1Char('/') + QString(4090 - folder.size(), 'n'), described());
        QVERIFY2(begun.error().what.contains("4019 bytes"), qPrintable(begun.error().what));
        QVERIFY(QDir(folder).isEmpty());
    }

    void aFullDiskLosesNothing()
    {
        const QString disk = path("disk");
        QDir().mkpath(disk);
        const QStringList mount{"-t", "tmpfs", "-o", "size=1m", "tmpfs", disk};
        if (::geteuid() != 0 || QProcess::execute(QStringLiteral("mount"), mount) != 0)
            QSKIP("a small disk can only be mounted by root: a full disk is not tried");
        const QString folder = disk + "/delivery";
        const Status first = deliveries::commitFirst(folder, m_tracks);
        const auto before = deliveries::contents(folder);
        QFile filler(disk + "/filler");
        filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        while (filler.write(QByteArray(4096, 'x')) == 4096) {
        }
        QStringList failures;
        QString spoilt;
        // A page more is free each time, so that every write of the commit is once the one that fails.
        for (Status second = Error(); !second && filler.size() > 0; filler.resize(filler.size() - 4096)) {
            second = commitSupplement(folder, DeliveryVersion::Original);
            failures.append(failureOf(second));
            if (!second && deliveries::contents(folder) != before)
                spoilt = failures.last();
        }
        const QStringList findings = deliveries::brief(verifyDelivery(folder));
        filler.close();
        QProcess::execute(QStringLiteral("umount"), {disk});
        QCOMPARE(failureOf(first), QStringLiteral("no failure"));
        QCOMPARE(spoilt, QString());
        QCOMPARE(findings, QStringList());
        QCOMPARE(failures.takeLast(), QStringLiteral("no failure"));
        QVERIFY(failures.size() > 3);
        for (const QString& failure : qAsConst(failures))
            QVERIFY2(failure.contains("the disk is full; free space"), qPrintable(failure));
    }
};

STRATACUT_TEST_MAIN(TestPackage)

#include "tst_imf_package.moc"

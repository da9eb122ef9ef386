#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/imf/package/Verifier.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/PackageOutput.h"
#include "desk/services/SettingsStorage.h"
#include "services/Clip.h"
#include "support/MemorySettings.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <thread>

using namespace desk;
using namespace desk::services;
using Model = IMF_PackageMgrQtModel;

/// The output service under the real item model and controller, with real media and real folders.
class TestPackageOutput : public QObject
{
    Q_OBJECT

    MediaLibrary m_library;
    std::unique_ptr<PackageOutput> m_output;
    std::unique_ptr<Model> m_model;
    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_media;
    QString m_sequence;

    IMF_Controller& controller() const { return *m_model->getIMFController(); }

    QModelIndex add(const QString& name) const
    {
        controller().onNewIMFDelivery(name, IMF_PackageMgr::Original);
        return m_model->index(m_model->rowCount() - 1, 0);
    }

    QModelIndex addImp(const QModelIndex& delivery, const QString& name) const
    {
        m_model->addIMPNode(m_model->FromIndex(delivery));
        const QModelIndex imp = m_model->index(m_model->rowCount(delivery) - 1, 0, delivery);
        m_model->setData(imp, name);
        m_model->createCPLFromMobs({m_sequence}, imp);
        return imp;
    }

    bool commit(const QModelIndex& index) const
    {
        QSignalSpy completed(&controller(), &IMF_Controller::commitCompleted);
        controller().onCommit({index});
        return completed.wait(60000);
    }

    QStringList names(const QModelIndex& parent) const
    {
        QStringList found;
        for (int row = 0; row < m_model->rowCount(parent); ++row)
            found += m_model->index(row, 0, parent).data(Model::NameRole).toString();
        return found;
    }

    static IMF_PackageMgr::Status status(const QModelIndex& index) { return Model::StatusFromIndex(index); }

    IMFO_Bridge::Error read(const QString& folder, QJsonObject& document) const
    {
        IMFO_Bridge::Error error;
        std::pair<QByteArray, QJsonObject> result;
        m_output->readDelivery(error, folder, result);
        document = result.second;
        return error;
    }

    static QJsonValue firstComposition(const QJsonObject& delivery)
    {
        const QJsonValue imps = delivery[ImfDict::Children];
        return imps[0][ImfDict::Children][0];
    }

    static void alterComposition(const QDir& folder, const QByteArray& from, const QByteArray& to)
    {
        QFile composition(folder.filePath(folder.entryList({"CPL_*.xml"}).value(0)));
        QVERIFY(composition.open(QIODevice::ReadWrite));
        QByteArray text = composition.readAll();
        QVERIFY(text.contains(from));
        composition.resize(0);
        composition.write(text.replace(from, to));
    }

    void refusedWith(const QString& part, const std::function<void()>& action) const
    {
        support::ModalAnswer answer(QMessageBox::Ok);
        action();
        QTRY_VERIFY(answer.answered);
        QVERIFY2(answer.text.contains(part), qPrintable(answer.text));
    }

private slots:

    void initTestCase()
    {
        support::Clip clip;
        const auto sequence = media::openSequence(support::makeClip(m_media.filePath("clip.mov"), clip));
        QVERIFY(sequence.ok());
        m_library.add(*sequence);
        m_sequence = sequence->id;
        IMF_MXE_bridge::Initialize(std::make_unique<MediaEngine>(&m_library));
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_output = std::make_unique<PackageOutput>(&m_library);
        m_output->setDefaultFolder(m_folder->path());
        m_model = std::make_unique<Model>();
        m_output->follow(m_model.get());
        m_model->initialize(m_output.get(), std::make_unique<support::MemorySettings>());
    }

    void cleanup()
    {
        m_model.reset();
        m_output.reset();
    }

    void aCommittedDeliveryHoldsWhatTheTreeHeld()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        const QByteArray id = Model::ComponentIDFromIndex(delivery);
        addImp(delivery, QStringLiteral("First"));
        const QModelIndex second = addImp(delivery, QStringLiteral("Second"));
        m_model->createCPLFromMobs({m_sequence}, second);
        m_model->setData(second, QStringLiteral("Renamed"));
        m_model->setData(m_model->index(1, 0, second), QStringLiteral("Cut two"), Model::ContentTitleRole);
        QVERIFY(commit(delivery));
        const QString folder = m_folder->filePath(QStringLiteral("Feature"));
        QCOMPARE(delivery.data(Model::PathRole).toString(), folder);
        QCOMPARE(status(delivery), IMF_PackageMgr::Committed);
        QCOMPARE(Model::ComponentIDFromIndex(delivery), id);
        QCOMPARE(names(delivery), (QStringList{"First", "Renamed"}));
        QCOMPARE(m_model->rowCount(second), 2);
        const QModelIndex cpl = m_model->index(1, 0, second);
        QCOMPARE(status(cpl), IMF_PackageMgr::Committed);
        QCOMPARE(cpl.data(Model::ContentTitleRole).toString(), QStringLiteral("Cut two"));
        const QJsonObject video = Model::MetadataJsonFromIndex(cpl)[ImfDict::Video].toObject();
        QCOMPARE(video[ImfDict::Resolution].toObject()[ImfDict::values].toArray(), QJsonArray{"1920x1080"});
        QVERIFY(imf::verifyDelivery(folder).isEmpty());
        controller().onRemoveIMFItem(delivery);
        QCOMPARE(m_model->rowCount(), 0);
        QVERIFY(imf::isDelivery(folder));
    }

    void impsCommittedOneByOneKeepTheOrderOfTheTree()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        const QModelIndex second = addImp(delivery, QStringLiteral("Second"));
        QVERIFY(commit(second));
        QCOMPARE(status(second), IMF_PackageMgr::Committed);
        QCOMPARE(status(m_model->index(0, 0, delivery)), IMF_PackageMgr::Uncommitted);
        // The rest follows into the same folder.
        QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("other")));
        IMFO_Bridge::Error error;
        QString actual;
        m_output->setItemPath(error, IMF_Controller::itemInfo(delivery), m_folder->filePath(QStringLiteral("other")),
                              actual);
        QVERIFY(error.message().contains(QStringLiteral("keeps its folder")));
        QVERIFY(commit(delivery));
        QCOMPARE(names(delivery), (QStringList{"First", "Second"}));
        QCOMPARE(status(m_model->index(0, 0, delivery)), IMF_PackageMgr::Committed);
        QVERIFY(imf::verifyDelivery(delivery.data(Model::PathRole).toString()).isEmpty());
    }

    void aCancelledExportLeavesNothing()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        support::ModalAnswer answer(QMessageBox::Ok);
        controller().onCommit({delivery});
        m_output->cancel(Model::ComponentIDFromIndex(delivery));
        QTRY_VERIFY_WITH_TIMEOUT(answer.answered, 60000);
        QCOMPARE(answer.icon, QMessageBox::Warning);
        QCOMPARE(status(delivery), IMF_PackageMgr::Uncommitted);
        QVERIFY(!QFileInfo::exists(m_folder->filePath(QStringLiteral("Feature"))));
        QVERIFY(commit(delivery));
    }

    void aDeliveryStaysWhereItsExportWasBegun()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("other")));
        controller().onCommit({delivery});
        const IMFO_ItemInfo info = IMF_Controller::itemInfo(delivery);
        const auto isRefused = [&](const QString& why) {
            IMFO_Bridge::Error folder;
            IMFO_Bridge::Error name;
            QString out;
            m_output->setItemPath(folder, info, m_folder->filePath(QStringLiteral("other")), out);
            m_output->renameItem(name, info, QStringLiteral("Documentary"), out);
            return folder.message().contains(why) && name.message().contains(why);
        };
        QVERIFY(isRefused(QStringLiteral("being exported")));
        // The end is posted, and nobody has heard of it yet.
        while (m_output->isBusy(info.componentId))
            std::this_thread::yield();
        QVERIFY(isRefused(QStringLiteral("keeps its folder")));
        QTRY_COMPARE(status(delivery), IMF_PackageMgr::Committed);
    }

    void anExportThatOutlivesTheModelEndsQuietly()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        controller().onCommit({delivery});
        m_model.reset();
        m_output.reset();
        QVERIFY(!imf::isDelivery(m_folder->filePath(QStringLiteral("Feature"))));
    }

    void whatCannotBeExportedIsSaidBeforeItStarts()
    {
        const QModelIndex empty = add(QStringLiteral("Empty"));
        refusedWith(QStringLiteral("no IMP"), [&] { controller().onCommit({empty}); });
        m_model->addIMPNode(m_model->FromIndex(empty));
        refusedWith(QStringLiteral("no composition"), [&] { controller().onCommit({empty}); });
        m_model->createCPLFromMobs({m_sequence}, m_model->index(0, 0, empty));
        // An empty folder is taken, one that holds anything is not.
        QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("Empty/.hidden")));
        refusedWith(QStringLiteral("already exists"), [&] { controller().onCommit({empty}); });
        QVERIFY(QDir(m_folder->path()).rmdir(QStringLiteral("Empty/.hidden")));
        QVERIFY(QFile::rename(m_media.filePath("clip.mov"), m_media.filePath("away.mov")));
        refusedWith(QStringLiteral("clip.mov"), [&] { controller().onCommit({empty}); });
        QVERIFY(QFile::rename(m_media.filePath("away.mov"), m_media.filePath("clip.mov")));
        QVERIFY(m_model->setData(empty, QStringLiteral("Movies"), Model::PathRole));
        refusedWith(QStringLiteral("this is no full path"), [&] { controller().onCommit({empty}); });
        QVERIFY(m_model->setData(empty, m_folder->path(), Model::PathRole));
        QVERIFY(commit(empty));
    }

    void namesAndFoldersAreRefusedWhereTheyAreGiven()
    {
        refusedWith(QStringLiteral("a/b"), [&] { add(QStringLiteral("a/b")); });
        refusedWith(QStringLiteral("control"), [&] { add(QString::fromUtf8("Film \xE2\x80\xAEvom.")); });
        refusedWith(QStringLiteral("255 bytes"), [&] { add(QString(128, QChar(0x05D0))); });
        QCOMPARE(m_model->rowCount(), 0);
        const QModelIndex delivery = add(QStringLiteral("Good"));
        refusedWith(QStringLiteral(".."), [&] { m_model->setData(delivery, QStringLiteral("..")); });
        QCOMPARE(names({}), QStringList{"Good"});
        QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("other/Good/held")));
        IMFO_Bridge::Error error;
        QString actual;
        const IMFO_ItemInfo info = IMF_Controller::itemInfo(delivery);
        m_output->setItemPath(error, info, m_folder->filePath(QStringLiteral("other")), actual);
        QCOMPARE(error.code(), quint8(IMFO_Bridge::Error::ItemExists));
        m_output->setItemPath(error, info, m_folder->filePath(QStringLiteral("nowhere")), actual);
        QVERIFY(error.isError() && error.code() != IMFO_Bridge::Error::ItemExists);
        QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("film/extras")));
        QVERIFY(QFile(m_folder->filePath(QStringLiteral("film/ASSETMAP.xml"))).open(QIODevice::WriteOnly));
        m_output->setItemPath(error, info, m_folder->filePath(QStringLiteral("film/extras")), actual);
        QVERIFY2(error.message().contains(QLatin1String("inside another one")), qPrintable(error.message()));
        QVERIFY(actual.isEmpty());
        m_output->setItemPath(error, info, m_folder->path() + QStringLiteral("/other/../"), actual);
        QVERIFY2(!error.isError(), qPrintable(error.message()));
        QCOMPARE(actual, m_folder->path());
    }

    void aDeliveryThatIsDamagedLaterKeepsItsLastGoodDocument()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        QVERIFY(commit(delivery));
        const QString folder = delivery.data(Model::PathRole).toString();
        QJsonObject before;
        QVERIFY(!read(folder, before).isError());
        QVERIFY(QFile::remove(folder + QStringLiteral("/ASSETMAP.xml")));
        QJsonObject after;
        const auto error = read(folder, after);
        QVERIFY(error.isError());
        QVERIFY(error.message().contains(QStringLiteral("ASSETMAP.xml")));
        QCOMPARE(after, before);
        QVERIFY(read(m_folder->filePath(QStringLiteral("nowhere")), after).isError());
        QCOMPARE(after, QJsonObject());
    }

    void missingAssetsAreTheOnesThatNoLoadedDeliveryHolds()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        QVERIFY(commit(delivery));
        const QString folder = delivery.data(Model::PathRole).toString();
        const QString copy = m_folder->filePath(QStringLiteral("Copy"));
        support::run(QStringLiteral("cp"), {"-r", folder, copy});
        const QStringList trackFiles = QDir(copy).entryList({"*.mxf"});
        for (const QString& file : trackFiles)
            QVERIFY(QFile::remove(copy + '/' + file));
        bool missing = false;
        controller().loadNewDelivery(copy, &missing, false);
        QVERIFY(!missing);
        controller().onRemoveIMFItem(delivery);
        controller().loadNewDelivery(copy, &missing, true);
        QVERIFY(missing);
        const QModelIndex left = m_model->index(0, 0);
        QVERIFY(controller().hasMissingAssets(left));
        missing = false;
        controller().loadNewDelivery(folder, &missing, false);
        QVERIFY(!missing);
        QVERIFY(!controller().hasMissingAssets(left));
    }

    /// The composition only repeats what the track file says.
    void soundIsReadBackFromItsTrackFile()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        QVERIFY(commit(delivery));
        const QDir folder(delivery.data(Model::PathRole).toString());
        alterComposition(folder, "AudioContentKind>PRM<", "AudioContentKind>MEC<");
        const auto kind = [&] {
            QJsonObject document;
            read(folder.path(), document);
            const QJsonValue sound = firstComposition(document)[ImfDict::Audio][ImfDict::MultipleAudioMix];
            return sound[ImfDict::AudioMapping][0][ImfDict::Metadata][ImfDict::AudioContentKind].toString();
        };
        QCOMPARE(kind(), QStringLiteral("PRM"));
        const QStringList trackFiles = folder.entryList({"*.mxf"});
        for (const QString& file : trackFiles)
            QVERIFY(QFile::resize(folder.filePath(file), 100));
        QCOMPARE(kind(), QStringLiteral("MEC"));
    }

    /// No parameter of the output stands in for what a composition does not have.
    void aCompositionWithoutSoundShowsNone()
    {
        const QModelIndex delivery = add(QStringLiteral("Feature"));
        addImp(delivery, QStringLiteral("First"));
        QVERIFY(commit(delivery));
        const QDir folder(delivery.data(Model::PathRole).toString());
        const QPersistentModelIndex row = delivery;
        const auto sampleRate = [&] {
            const QModelIndex read = controller().onRefreshIMFItem(row);
            const QModelIndex cpl = m_model->index(0, 0, m_model->index(0, 0, read));
            const QJsonValue document = Model::MetadataJsonFromIndex(cpl);
            const QJsonValue rate = document[ImfDict::Audio][ImfDict::SampleRate];
            return rate[ImfDict::values][rate[ImfDict::currentIndex].toInt()].toString();
        };
        QCOMPARE(sampleRate(), QStringLiteral("48 kHz"));
        alterComposition(folder, "WAVEPCMDescriptor", "StrangeDescriptor");
        QCOMPARE(sampleRate(), QStringLiteral("Unknown"));
        alterComposition(folder, "MainAudioSequence", "StrangeSequence");
        QCOMPARE(sampleRate(), QStringLiteral("None"));
    }

    void strangersDeliveriesShowWhatTheyHold()
    {
        const QString samples = qEnvironmentVariable("STRATACUT_IMF_SAMPLES");
        if (samples.isEmpty())
            QSKIP("STRATACUT_IMF_SAMPLES is not set: no packages of other makers to open");
        QJsonObject document;
        QVERIFY(!read(samples + QStringLiteral("/countdown-audio"), document).isError());
        const QJsonValue cpl = firstComposition(document);
        QCOMPARE(cpl[ImfDict::Video][ImfDict::FrameRate][ImfDict::values][0].toString(), QStringLiteral("24"));
        QCOMPARE(cpl[ImfDict::Video][ImfDict::Resolution][ImfDict::values][0].toString(), QStringLiteral("640x360"));
        QCOMPARE(cpl[ImfDict::Video][ImfDict::ColorDepth][ImfDict::values][0].toString(), QStringLiteral("16"));
        const QJsonValue sound = cpl[ImfDict::Audio][ImfDict::MultipleAudioMix][ImfDict::AudioMapping][0];
        QCOMPARE(sound[ImfDict::MixMode].toString(), QStringLiteral("Stereo"));
        QCOMPARE(sound[ImfDict::Metadata][ImfDict::RFC5646SpokenLanguage].toString(), QStringLiteral("en-US"));
        QVERIFY(!QJsonDocument(document).toJson().contains("MissingAssets"));
    }

    void savedWorkComesBackAndCanBeExported()
    {
        const QString file = m_folder->filePath(QStringLiteral("packages.json"));
        m_model->initialize(m_output.get(), std::make_unique<SettingsStorage>(file));
        const QModelIndex committed = add(QStringLiteral("Committed"));
        addImp(committed, QStringLiteral("First"));
        QVERIFY(commit(committed));
        const QModelIndex cpl = m_model->index(0, 0, addImp(add(QStringLiteral("Later")), QStringLiteral("Work")));
        const auto choice = qMakePair(QString(ImfDict::Compression), QStringLiteral("JPEG 2000 reversible"));
        m_model->setData(cpl, QVariant::fromValue(choice), Model::MetadataRole);
        controller().onSaveSettings();
        m_model.reset();
        m_output = std::make_unique<PackageOutput>(&m_library);
        m_model = std::make_unique<Model>();
        m_output->follow(m_model.get());
        m_model->initialize(m_output.get(), std::make_unique<SettingsStorage>(file));
        QCOMPARE(names({}), (QStringList{"Committed", "Later"}));
        const QModelIndex later = m_model->index(1, 0);
        QCOMPARE(status(m_model->index(0, 0)), IMF_PackageMgr::Committed);
        QVERIFY(commit(later));
        QJsonObject document;
        QVERIFY(!read(later.data(Model::PathRole).toString(), document).isError());
        const QJsonValue written = firstComposition(document);
        QCOMPARE(written[ImfDict::Video][ImfDict::Compression][ImfDict::values][0].toString(), choice.second);
    }
};

STRATACUT_TEST_MAIN(TestPackageOutput)
#include "tst_package_output.moc"

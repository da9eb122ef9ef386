#include "manager/ManagerFixture.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QComboBox>
#include <QIdentityProxyModel>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace ViewDeckQt;
using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using support::ModalAnswer;

namespace
{
/// Writes down what is set, and refuses it.
class Recorder : public QIdentityProxyModel
{
public:
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        using KeyAndText = QPair<QString, QString>;
        const bool pair = value.userType() == qMetaTypeId<KeyAndText>();
        const QString text =
            pair ? value.value<KeyAndText>().first + '=' + value.value<KeyAndText>().second : value.toString();
        written += QString("%1 %2 %3").arg(index.data().toString()).arg(role).arg(text);
        return false;
    }

    QStringList written;
};

} // namespace

/// What the user types and chooses, and where it goes.
class TestParamsEdit : public QObject
{
    Q_OBJECT
private slots:

    void everyValueGoesToItsRole_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("written");
        const auto row = [](int kind, const char* id, const char* written) {
            QTest::addRow("%s %d", id, kind) << kind << QString(id) << QString(written);
        };
        row(0, "id_name", "Film 2 X");
        row(0, "id_set_directory", "Film 258 X");
        row(0, "id_issuer", "Film 267 Issuer=X");
        row(1, "id_annotation", "Untitled IMP 260 Annotation=X");
        row(2, "id_creator", "Sequence m 268 Creator=X");
        row(2, "id_content_title", "Sequence m 284 ContentTitle=X");
        row(2, "id_stereoscopic_setting", "Sequence m 260 Stereoscopic Settings=X");
        row(2, "id_multiple_audio_mix", "Sequence m 281 ");
    }

    void everyValueGoesToItsRole()
    {
        QFETCH(int, kind);
        QFETCH(QString, id);
        const Film film(0);
        Recorder recorder;
        recorder.setSourceModel(film.f.model.get());
        IMF_PackageParamsView view(&recorder);
        const QModelIndex index = recorder.mapFromSource(film.at(kind));
        view.onSelectionChanged(QItemSelection(index, index), {});
        QSignalSpy changed(&view, &IMF_PackageParamsView::valueChanged);
        const QJsonObject mix{
            {"AudioMapping", QJsonArray()}, {"Groups", QJsonArray()}, {"AllActiveTracks", QJsonArray()}};
        view.onValueChanged(id, id == "id_multiple_audio_mix" ? QVariant(mix) : QVariant("X"));
        QTEST(recorder.written.value(0), "written");
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].value<QModelIndex>(), index);
        if (id == "id_set_directory") // A refused folder comes back as it was.
            QCOMPARE(view.findChild<PWSetDirectory*>()->getValue(), index.data(Model::PathRole));
    }

    void aChoiceThatExcludesOthersTakesThemAlong()
    {
        Film film(2);
        auto* resolutions = film.f.param<PWDiscrete>("id_resolution");
        auto* box = resolutions->findChild<QComboBox*>();
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(film.value("id_resolution"), QString("3840x2160"));
        QCOMPARE(film.f.param<PWDiscrete>("id_compression_profile")->items(), (QStringList{"4K", "Lossless"}));
        QCOMPARE(film.value("id_compression_profile"), QString("4K"));
        film.f.params().onValueChanged("id_app_pattern", "App 2");
        QCOMPARE(resolutions->items(), QStringList{"1920x1080"});
        QCOMPARE(film.value("id_compression_profile"), QString("2K"));
    }

    void anIssuerAlsoFillsWhatHasNoneAbove_data()
    {
        QTest::addColumn<QString>("ofImp");
        QTest::addColumn<QString>("ofDelivery");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("after");
        const auto row = [](const char* tag, const char* ofImp, const char* ofDelivery, const char* typed,
                            const char* after) {
            QTest::newRow(tag) << QString(ofImp) << QString(ofDelivery) << QString(typed) << QString(after);
        };
        row("none above", "", "", "X", "X,X,X");
        row("deliverable has one", "", "D", "X", "X,X,D");
        row("IMP has one", "I", "", "X", "X,I,");
        row("cleared", "I", "D", "", ",I,D");
    }

    void anIssuerAlsoFillsWhatHasNoneAbove()
    {
        QFETCH(QString, ofImp);
        QFETCH(QString, ofDelivery);
        QFETCH(QString, typed);
        Film film(0);
        for (const int role : {int(Model::IssuerRole), int(Model::CreatorRole)}) {
            film.f.model->setData(film.cpl, "Former", role);
            film.f.model->setData(film.imp, ofImp, role);
            film.f.model->setData(film.delivery, ofDelivery, role);
            film.f.click(film.cpl);
            film.f.params().onValueChanged(role == Model::IssuerRole ? "id_issuer" : "id_creator", typed);
            QTEST(QStringList({film.role(2, role), film.role(1, role), film.role(0, role)}).join(','), "after");
        }
    }

    void aRefusedNameDoesNotStay()
    {
        Film film(0);
        film.f.bridge.fail("renameItem", 1, "No such name.");
        film.f.bridge.takeCalls();
        // As a field does that loses the focus to the message.
        film.f.bridge.onCall = [&film](const QString&) { film.f.params().onValueChanged("id_name", "a/b"); };
        ModalAnswer refusal(QMessageBox::Ok);
        film.f.type("id_name", "a/b");
        QCOMPARE(refusal.text, QString("No such name."));
        QCOMPARE(film.f.bridge.takeCalls().filter("renameItem").size(), 1);
        QCOMPARE(film.value("id_name"), QString("Film"));
        QCOMPARE(film.delivery.data().toString(), QString("Film"));
    }

    void theFolderIsAskedFor()
    {
        const QTemporaryDir folder;
        Film film(0);
        auto* directory = film.f.param<PWSetDirectory>("id_set_directory");
        FolderAnswer chosen(folder.path());
        emit directory->setPathButtonClicked();
        QCOMPARE(directory->getValue().toString(), folder.path());
        QCOMPARE(film.role(0, Model::PathRole), folder.path() + "/Film");
    }

    void anEmptyRequiredFieldIsMarked()
    {
        Film film(2);
        const auto* title = film.f.param<PWTextInput>("id_content_title");
        const auto* issuer = film.f.param<PWTextInput>("id_issuer");
        QVERIFY(!title->isTitleHilighted());
        film.f.type("id_content_title", "");
        film.f.type("id_issuer", "");
        QVERIFY(title->isTitleHilighted());
        QVERIFY(!issuer->isTitleHilighted());
        film.f.type("id_content_title", "x");
        QVERIFY(!title->isTitleHilighted());
        film.f.click(film.delivery);
        film.f.type("id_name", "");
        QVERIFY(film.f.param<PWTextInput>("id_name")->isTitleHilighted());
        QCOMPARE(film.delivery.data().toString(), QString("Film"));
    }

    void aHiddenEmptyFieldIsMarkedWhenItShows()
    {
        Film film(2);
        film.f.window->hide();
        film.f.model->setData(film.delivery, "", Model::PathRole);
        film.f.tree().select(film.delivery);
        const auto* directory = film.f.params().findChild<PWSetDirectory*>();
        QVERIFY(!directory->isTitleHilighted());
        film.f.window->show();
        QVERIFY(directory->isTitleHilighted());
    }

    void aWrongMixIsAProgrammingError()
    {
        Film film(2);
        support::Assertions assertions;
        film.f.params().onValueChanged("id_multiple_audio_mix", QJsonObject{{"AudioMapping", 1}});
        QCOMPARE(assertions.take(),
                 QStringList{"IMFPackageParamsView: JSON::VerifyMultiMix(newValue.toJsonObject(), burned)"});
    }

    void writeTakesWhatThePagesShow_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("CPL") << QStringList{"Audio", "DescriptiveMetadata", "Type", "Video"};
        QTest::newRow("Delivery") << QStringList{"DescriptiveMetadata", "Type"};
        QTest::newRow("IMP") << QStringList{"DescriptiveMetadata", "Name", "Type"};
        QTest::newRow("Reel") << QStringList{"Type"};
    }

    void writeTakesWhatThePagesShow()
    {
        Film film(0);
        film.f.click(film.imp);
        film.f.click(film.cpl);
        film.f.type("id_issuer", "Of the CPL");
        film.f.type("id_annotation", "Two words");
        QJsonObject document{{"Type", QTest::currentDataTag()}};
        const bool known = document["Type"] != "Reel";
        if (known)
            document["DescriptiveMetadata"] = QJsonObject{{"Former", "goes"}};
        film.f.params().write(document);
        QTEST(document.keys(), "keys");
        const QJsonObject metadata{{"Annotation", "Two words"},
                                   {"Issuer", "Of the CPL"},
                                   {"Creator", "Test 1.0"},
                                   {"ContentOriginator", ""},
                                   {"ContentKind", ""}};
        QVERIFY(!known || document["DescriptiveMetadata"].toObject() == metadata);
        QCOMPARE(Model::MetadataJsonFromIndex(film.cpl)["DescriptiveMetadata"].toObject()["Annotation"],
                 metadata["Annotation"]);
        if (document.contains("Name"))
            QCOMPARE(document["Name"].toString(), QString("Untitled IMP"));
        if (document.contains("Audio")) {
            QCOMPARE(document["Video"].toObject().size(), 7);
            QCOMPARE(document["Audio"].toObject()["Sample Rate"].toString(), QString("48000"));
        }
    }
};

STRATACUT_TEST_MAIN(TestParamsEdit)
#include "tst_params_edit.moc"

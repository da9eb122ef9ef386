#include "manager/ManagerFixture.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QComboBox>
#include <QIdentityProxyModel>
#include <QLineEdit>

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

    void everyValueGoesToItsRole()
    {
        struct Row {
            int kind;
            const char* id;
            const char* written;
        };

        const Row rows[] = {{0, "id_name", "Film 2 X"},
                            {0, "id_set_directory", "Film 258 X"},
                            {0, "id_issuer", "Film 267 Issuer=X"},
                            {1, "id_annotation", "Untitled IMP 260 Annotation=X"},
                            {2, "id_creator", "Sequence m 268 Creator=X"},
                            {2, "id_content_title", "Sequence m 284 ContentTitle=X"},
                            {2, "id_stereoscopic_setting", "Sequence m 260 Stereoscopic Settings=X"},
                            {2, "id_multiple_audio_mix", "Sequence m 281 "}};
        const QJsonObject mix{
            {"AudioMapping", QJsonArray()}, {"Groups", QJsonArray()}, {"AllActiveTracks", QJsonArray()}};
        const Film film(0);
        for (const Row& row : rows) {
            Recorder recorder;
            recorder.setSourceModel(film.f.model.get());
            IMF_PackageParamsView view(&recorder);
            const QModelIndex index = recorder.mapFromSource(film.at(row.kind));
            view.onSelectionChanged(QItemSelection(index, index), {});
            QSignalSpy changed(&view, &IMF_PackageParamsView::valueChanged);
            const QString id = row.id;
            view.onValueChanged(id, id == "id_multiple_audio_mix" ? QVariant(mix) : QVariant("X"));
            QCOMPARE(recorder.written.value(0), QString(row.written));
            QCOMPARE(changed.size(), 1);
            QCOMPARE(changed[0][0].value<QModelIndex>(), index);
            if (id == "id_set_directory") // A refused folder comes back as it was.
                QCOMPARE(view.findChild<PWSetDirectory*>()->getValue(), index.data(Model::PathRole));
        }
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

    void anIssuerAlsoFillsWhatHasNoneAbove()
    {
        struct Row {
            const char* ofImp;
            const char* ofDelivery;
            const char* typed;
            const char* after;
        };

        const Row rows[] = {
            {"", "", "X", "X,X,X"}, {"", "D", "X", "X,X,D"}, {"I", "", "X", "X,I,"}, {"I", "D", "", ",I,D"}};
        Film film(2);
        for (const int role : {int(Model::IssuerRole), int(Model::CreatorRole)}) {
            for (const Row& row : rows) {
                film.f.model->setData(film.cpl, "Former", role);
                film.f.model->setData(film.imp, row.ofImp, role);
                film.f.model->setData(film.delivery, row.ofDelivery, role);
                film.f.params().onValueChanged(role == Model::IssuerRole ? "id_issuer" : "id_creator", row.typed);
                const QStringList after{film.role(2, role), film.role(1, role), film.role(0, role)};
                QCOMPARE(after.join(','), QString(row.after));
            }
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

    void aViewMayGoBehindTheHostsRefusal()
    {
        Film film(1);
        auto view = std::make_unique<IMF_PackageParamsView>(film.f.model.get());
        view->onSelectionChanged(QItemSelection(film.delivery, film.delivery), {});
        film.f.bridge.fail("renameItem", 1, "No such name.");
        film.f.bridge.onCall = [&view](const QString&) { view.reset(); };
        const ModalAnswer refusal(QMessageBox::Ok);
        view->onValueChanged("id_name", "a/b");
        QVERIFY(!view);
    }

    /// A name is reported when its field is left, and much may happen before.
    void aNameThatIsBeingTypedIsNeitherLostNorGivenToAnotherItem()
    {
        struct Row {
            std::function<void(const Film&)> event;
            const char* inField;
            const char* deliveries;
        };

        const Row rows[] = {
            {[](const Film& film) { film.f.params().reload(); }, "Half", "Film,Other"},
            {[](const Film& film) { film.f.tree().select(film.f.model->index(1, 0)); }, "Other", "Half,Other"},
            {[](const Film& film) {
                 film.f.tree().selectionModel()->setCurrentIndex(film.imp, QItemSelectionModel::ClearAndSelect);
             },
             "Untitled IMP", "Half,Other"},
            {[](const Film& film) { film.f.model->removeIndex(film.delivery); }, "Other", "Other"}};
        for (const Row& row : rows) {
            Film film(0);
            film.f.newDelivery("Other");
            auto* line = film.f.param<PWTextInput>("id_name")->findChild<QLineEdit*>();
            line->setFocus();
            line->selectAll();
            QTest::keyClicks(line, "Half");
            row.event(film);
            QCOMPARE(film.value("id_name"), QString(row.inField));
            QCoreApplication::processEvents();
            QCOMPARE(shape(*film.f.model).remove("(Untitled IMP(Sequence m))"), QString(row.deliveries));
        }
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
        film.f.type("id_content_title", "");
        film.f.type("id_issuer", "");
        QVERIFY(title->isTitleHilighted());
        QVERIFY(!film.f.param<PWTextInput>("id_issuer")->isTitleHilighted());
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

    void writeTakesWhatThePagesShow()
    {
        const QMap<QString, QStringList> keys{{"CPL", {"Audio", "DescriptiveMetadata", "Type", "Video"}},
                                              {"Delivery", {"DescriptiveMetadata", "Type"}},
                                              {"IMP", {"DescriptiveMetadata", "Name", "Type"}},
                                              {"Reel", {"Type"}}};
        Film film(1);
        film.f.click(film.cpl);
        film.f.type("id_annotation", "Two words");
        const QJsonObject metadata{{"Annotation", "Two words"},
                                   {"Issuer", ""},
                                   {"Creator", "Test 1.0"},
                                   {"ContentOriginator", ""},
                                   {"ContentKind", ""}};
        for (auto entry = keys.cbegin(); entry != keys.cend(); ++entry) {
            QJsonObject document{{"Type", entry.key()}};
            if (entry.key() != "Reel")
                document["DescriptiveMetadata"] = QJsonObject{{"Former", "goes"}};
            film.f.params().write(document);
            QCOMPARE(document.keys(), *entry);
            QVERIFY(entry.key() == "Reel" || document["DescriptiveMetadata"].toObject() == metadata);
            QVERIFY(entry.key() != "IMP" || document["Name"].toString() == "Untitled IMP");
            if (entry.key() == "CPL") {
                QCOMPARE(document["Video"].toObject().size(), 7);
                QCOMPARE(document["Audio"].toObject()["Sample Rate"].toString(), QString("48000"));
            }
        }
        QCOMPARE(Model::MetadataJsonFromIndex(film.cpl)["DescriptiveMetadata"].toObject()["Annotation"],
                 metadata["Annotation"]);
    }
};

STRATACUT_TEST_MAIN(TestParamsEdit)
#include "tst_params_edit.moc"

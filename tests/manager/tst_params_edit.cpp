#include "manager/ManagerFixture.h"
#include "support/Assertions.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QComboBox>
#include <QIdentityProxyModel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace ViewDeckQt;
using Model = IMF_PackageMgrQtModel;
using support::FolderAnswer;
using support::ModalAnswer;

namespace
{
/// Writes down what is set.
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
        return !refuse && QIdentityProxyModel::setData(index, value, role);
    }

    QStringList written;
    bool refuse = false;
};

/// A deliverable, an IMP and a CPL, of which one is selected in the window.
struct Film {
    Film()
    {
        delivery = f.newDelivery("Film");
        imp = f.newImp(delivery);
        cpl = f.newCpl(imp, "m");
    }

    QModelIndex at(int kind) const { return kind == 0 ? delivery : kind == 1 ? imp : cpl; }

    QString value(const QString& id) const { return f.param<AbstractParamWidget>(id)->getValue().toString(); }

    QString role(int kind, int role) const { return at(kind).data(role).toString(); }

    ManagerFixture f;
    QPersistentModelIndex delivery;
    QPersistentModelIndex imp;
    QPersistentModelIndex cpl;
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
        row(0, "id_annotation", "Film 260 Annotation=X");
        row(1, "id_annotation", "Untitled IMP 260 Annotation=X");
        row(2, "id_creator", "Sequence m 268 Creator=X");
        row(2, "id_content_title", "Sequence m 284 ContentTitle=X");
        row(2, "id_content_originator", "Sequence m 260 ContentOriginator=X");
        row(2, "id_content_kind", "Sequence m 260 ContentKind=X");
        row(2, "id_app_pattern", "Sequence m 260 Application Pattern=X");
        row(2, "id_stereoscopic_setting", "Sequence m 260 Stereoscopic Settings=X");
        row(2, "id_bits_per_sample", "Sequence m 260 Bit Depth=X");
        row(2, "id_audio_mix", "Sequence m 260 Audio Mix=X");
        row(2, "id_multiple_audio_mix", "");
    }

    void everyValueGoesToItsRole()
    {
        QFETCH(int, kind);
        QFETCH(QString, id);
        QFETCH(QString, written);
        const Film film;
        Recorder recorder;
        recorder.setSourceModel(film.f.model.get());
        recorder.refuse = true;
        IMF_PackageParamsView view(&recorder);
        const QModelIndex index = recorder.mapFromSource(film.at(kind));
        view.onSelectionChanged(QItemSelection(index, index), {});
        QSignalSpy changed(&view, &IMF_PackageParamsView::valueChanged);
        if (id == "id_multiple_audio_mix") {
            const QJsonObject mix{
                {"AudioMapping", QJsonArray()}, {"Groups", QJsonArray()}, {"AllActiveTracks", QJsonArray()}};
            view.onValueChanged(id, mix);
            QCOMPARE(recorder.written.value(0), QString("Sequence m 281 "));
        } else {
            view.onValueChanged(id, "X");
            QCOMPARE(recorder.written.value(0), written);
        }
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].value<QModelIndex>(), index);
    }

    void whatIsTypedIsInTheDocument()
    {
        Film film;
        film.f.click(film.cpl);
        film.f.type("id_content_title", "My title");
        film.f.type("id_annotation", "Two words");
        film.f.type("id_content_originator", QString(300, 'n'));
        QCOMPARE(film.role(2, Model::ContentTitleRole), QString("My title"));
        QCOMPARE(film.cpl.data().toString(), QString("My title"));
        const QJsonObject metadata = Model::MetadataJsonFromIndex(film.cpl)["DescriptiveMetadata"].toObject();
        QCOMPARE(metadata["Annotation"].toString(), QString("Two words"));
        QCOMPARE(metadata["ContentOriginator"].toString(), QString(300, 'n'));
    }

    void aChoiceThatExcludesOthersTakesThemAlong()
    {
        Film film;
        film.f.click(film.cpl);
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
        QTest::addColumn<QStringList>("after");
        QTest::newRow("none above") << ""
                                    << ""
                                    << "X" << QStringList{"X", "X", "X"};
        QTest::newRow("deliverable has one") << ""
                                             << "D"
                                             << "X" << QStringList{"X", "X", "D"};
        QTest::newRow("IMP has one") << "I"
                                     << ""
                                     << "X" << QStringList{"X", "I", ""};
        QTest::newRow("cleared") << "I"
                                 << "D"
                                 << "" << QStringList{"", "I", "D"};
    }

    void anIssuerAlsoFillsWhatHasNoneAbove()
    {
        QFETCH(QString, ofImp);
        QFETCH(QString, ofDelivery);
        QFETCH(QString, typed);
        Film film;
        for (const int role : {int(Model::IssuerRole), int(Model::CreatorRole)}) {
            film.f.model->setData(film.cpl, "Former", role);
            film.f.model->setData(film.imp, ofImp, role);
            film.f.model->setData(film.delivery, ofDelivery, role);
            film.f.click(film.cpl);
            film.f.params().onValueChanged(role == Model::IssuerRole ? "id_issuer" : "id_creator", typed);
            QTEST((QStringList{film.role(2, role), film.role(1, role), film.role(0, role)}), "after");
        }
    }

    void aRefusedNameDoesNotStay()
    {
        Film film;
        film.f.click(film.delivery);
        film.f.bridge.fail("renameItem", 1, "No such name.");
        film.f.bridge.takeCalls();
        {
            ModalAnswer refusal(QMessageBox::Ok);
            film.f.type("id_name", "a/b");
            QCOMPARE(refusal.text, QString("No such name."));
        }
        QCOMPARE(film.f.bridge.takeCalls().filter("renameItem").size(), 1);
        QCOMPARE(film.value("id_name"), QString("Film"));
        QCOMPARE(film.delivery.data().toString(), QString("Film"));
        film.f.bridge.succeed();
        film.f.type("id_name", QString::fromUtf8("\xd7\xa1\xd7\xa8\xd7\x98"));
        QCOMPARE(film.delivery.data().toString(), QString::fromUtf8("\xd7\xa1\xd7\xa8\xd7\x98"));
        QCOMPARE(film.f.bridge.takeCalls().filter("renameItem").size(), 1);
    }

    void aRefusedFolderComesBackAsItWas()
    {
        const Film film;
        Recorder recorder;
        recorder.setSourceModel(film.f.model.get());
        recorder.refuse = true;
        IMF_PackageParamsView view(&recorder);
        const QModelIndex index = recorder.mapFromSource(film.delivery);
        view.onSelectionChanged(QItemSelection(index, index), {});
        view.onValueChanged("id_set_directory", "/elsewhere");
        QCOMPARE(view.findChild<PWSetDirectory*>()->getValue().toString(), index.data(Model::PathRole).toString());
    }

    void theFolderIsAskedForUntilTheHostTakesIt()
    {
        const QTemporaryDir taken;
        const QTemporaryDir free;
        Film film;
        film.f.click(film.delivery);
        film.f.bridge.failCall("setItemPath(Film#1, " + taken.path() + ")", 3, "There.");
        auto* directory = film.f.param<PWSetDirectory>("id_set_directory");
        FolderAnswer first(taken.path());
        ModalAnswer again(QMessageBox::Ok);
        FolderAnswer second(free.path());
        emit directory->setPathButtonClicked();
        QVERIFY(again.text.startsWith("Film already exists at path:\n" + taken.path()));
        QCOMPARE(directory->getValue().toString(), free.path());
        QCOMPARE(film.role(0, Model::PathRole), free.path() + "/Film");
    }

    void anEmptyRequiredFieldIsMarked()
    {
        Film film;
        film.f.click(film.cpl);
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
        film.f.model->setData(film.delivery, "", Model::PathRole);
        QVERIFY(film.f.param<PWSetDirectory>("id_set_directory")->isTitleHilighted());
        film.f.type("id_name", "");
        QVERIFY(film.f.param<PWTextInput>("id_name")->isTitleHilighted());
        QCOMPARE(film.delivery.data().toString(), QString("Film"));
    }

    void aHiddenEmptyFieldIsMarkedWhenItShows()
    {
        Film film;
        film.f.model->setData(film.delivery, "", Model::PathRole);
        film.f.window->hide();
        film.f.tree().select(film.delivery);
        const auto* directory = film.f.params().findChild<PWSetDirectory*>();
        QVERIFY(!directory->isTitleHilighted());
        film.f.window->show();
        QVERIFY(directory->isTitleHilighted());
    }

    void aWrongMixIsAProgrammingError()
    {
        Film film;
        film.f.click(film.cpl);
        support::Assertions assertions;
        film.f.params().onValueChanged("id_multiple_audio_mix", QJsonObject{{"AudioMapping", 1}});
        QCOMPARE(assertions.take(),
                 QStringList{"IMFPackageParamsView: JSON::VerifyMultiMix(newValue.toJsonObject(), burned)"});
    }

    void writeTakesWhatThePagesShow_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("CPL") << "CPL" << QStringList{"Audio", "DescriptiveMetadata", "Type", "Video"};
        QTest::newRow("deliverable") << "Delivery" << QStringList{"DescriptiveMetadata", "Type"};
        QTest::newRow("IMP") << "IMP" << QStringList{"DescriptiveMetadata", "Name", "Type"};
        QTest::newRow("other") << "Reel" << QStringList{"Type"};
    }

    void writeTakesWhatThePagesShow()
    {
        QFETCH(QString, type);
        QFETCH(QStringList, keys);
        Film film;
        film.f.click(film.imp);
        film.f.click(film.cpl);
        film.f.type("id_issuer", "Of the CPL");
        QJsonObject document{{"Type", type}};
        film.f.params().write(document);
        QCOMPARE(document.keys(), keys);
        if (type == "Reel")
            return;
        QCOMPARE(document["DescriptiveMetadata"].toObject(), (QJsonObject{{"Annotation", ""},
                                                                          {"Issuer", "Of the CPL"},
                                                                          {"Creator", "Test 1.0"},
                                                                          {"ContentOriginator", ""},
                                                                          {"ContentKind", ""}}));
        if (type == "IMP")
            QCOMPARE(document["Name"].toString(), QString("Untitled IMP"));
        if (type == "CPL") {
            QCOMPARE(document["Video"].toObject().keys(),
                     (QStringList{"Color Depth", "Colorimetry", "Compression", "Compression Profile", "Frame Rate",
                                  "Resolution", "Stereoscopic Settings"}));
            QCOMPARE(document["Audio"].toObject()["Sample Rate"].toString(), QString("48000"));
        }
    }
};

STRATACUT_TEST_MAIN(TestParamsEdit)
#include "tst_params_edit.moc"

#include "manager/ManagerFixture.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QLineEdit>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTextEdit>

using namespace ViewDeckQt;
using Model = IMF_PackageMgrQtModel;

namespace
{
/// One item of any kind with any document.
class OneItem : public QStandardItemModel
{
public:
    OneItem(IMF_PackageMgr::NodeType type, const QJsonObject& document)
    {
        appendRow(new QStandardItem("item"));
        setData(index(0, 0), int(type), Model::NodeTypeRole);
        setData(index(0, 0), int(IMF_PackageMgr::Supplemental), Model::VersionRole);
        show(document);
    }

    void show(const QJsonObject& document) { setData(index(0, 0), document, Model::MetadataRole); }
};

QJsonObject cplDocument(const char* section, const char* key, const QJsonValue& entry)
{
    return {{"Type", "CPL"}, {"Mutable", true}, {section, QJsonObject{{key, entry}}}};
}

QJsonObject choice(const QJsonArray& values, int currentIndex)
{
    return {{"values", values}, {"currentIndex", currentIndex}};
}

/// A document in which the value of every key is the key.
QJsonObject everyKey()
{
    QJsonObject document{{"Mutable", true}, {"Name", "Name"}, {"Path", "Path"}};
    QJsonObject metadata{{"ContentKind", QJsonObject{{"values", QJsonArray{"ContentKind"}}, {"Value", "kind"}}}};
    for (const char* key : {"Annotation", "Issuer", "Creator", "ContentOriginator", "ContentTitle"})
        metadata[key] = key;
    QJsonObject video;
    for (const char* key : {"Application Pattern", "Compression", "Compression Profile", "Resolution", "Frame Rate",
                            "Colorimetry", "Color Depth", "Stereoscopic Settings"})
        video[key] = choice({"W", key}, 1);
    QJsonObject audio;
    for (const char* key : {"Format", "Sample Rate", "Bit Depth", "Audio Mix"})
        audio[key] = choice({"W", key}, 1);
    document["DescriptiveMetadata"] = metadata;
    document["Video"] = video;
    document["Audio"] = audio;
    return document;
}

/// The parameters of one item, shown.
struct Pane {
    explicit Pane(IMF_PackageMgr::NodeType type, const QJsonObject& document = {}) : model(type, document), view(&model)
    {
        view.resize(600, 800);
        view.show();
        select();
    }

    void select() { view.onSelectionChanged(QItemSelection(model.index(0, 0), model.index(0, 0)), {}); }

    AbstractParamWidget* param(const QString& id) const { return shownParam<AbstractParamWidget>(view, id); }

    QString text(const QString& id) const { return param(id)->getValue().toString(); }

    OneItem model;
    IMF_PackageParamsView view;
};

} // namespace

/// Which parameters stand on which page, and what they show of an item's document.
class TestParamsView : public QObject
{
    Q_OBJECT
private slots:

    void eachPageShowsTheDocumentByItsParameters_data()
    {
        const support::Rows<IMF_PackageMgr::NodeType, QString> row;
        row("deliverable", IMF_PackageMgr::Delivery, "Supplemental,Name,Path,Issuer,Creator,Annotation");
        row("IMP", IMF_PackageMgr::IMP, "Name,Issuer,Creator,Annotation");
        row("CPL", IMF_PackageMgr::CPL,
            "ContentTitle,,Application Pattern,Compression,Frame Rate,Compression Profile,Resolution,Colorimetry,"
            "Color Depth,Stereoscopic Settings,Format,Sample Rate,Bit Depth,Audio Mix,Annotation,Issuer,Creator,"
            "ContentOriginator,ContentKind");
    }

    void eachPageShowsTheDocumentByItsParameters()
    {
        const auto [type, expected] = support::fetched<IMF_PackageMgr::NodeType, QString>();
        const Pane pane(type, everyKey());
        QStringList shown;
        const QList<AbstractParamWidget*> all = pane.view.findChildren<AbstractParamWidget*>();
        for (const AbstractParamWidget* widget : all) {
            if (!widget->isVisible() || qobject_cast<const PWContainer*>(widget))
                continue;
            shown += widget->getValue().toString();
            const bool isFixed = type == IMF_PackageMgr::IMP && widget->getId() == "id_name";
            QCOMPARE(widget->isReadOnly(), isFixed || widget->getId() == "id_file_name");
        }
        QCOMPARE(shown.join(','), expected);
    }

    void aLabelShowsTheCurrentValueWhereThereIsOne()
    {
        struct Row {
            const char* key;
            QJsonValue entry;
            const char* shown;
        };

        const QJsonArray values{"a", "b", "c"};
        const Row rows[] = {{"Compression", choice(values, 2), "c"},
                            {"Compression", choice(values, 7), "a"},
                            {"Compression", choice(values, -1), "a"},
                            {"Color Space", choice(values, 2), "former"},
                            {"Compression", "", "former"},
                            {"Compression", choice({}, 0), "former"},
                            {"Compression", "d", "d"}};
        for (const Row& row : rows) {
            Pane pane(IMF_PackageMgr::CPL, cplDocument("Video", "Compression", choice({"former"}, 0)));
            pane.model.show(cplDocument("Video", row.key, row.entry));
            QCOMPARE(pane.text("id_compression"), QString(row.shown));
        }
    }

    void whereTheDocumentHoldsAValueTwiceTheOuterOneCounts()
    {
        QJsonObject document = cplDocument("Video", "Format", choice({"of video"}, 0));
        document["Audio"] = QJsonObject{{"Format", choice({"of audio"}, 0)}};
        Pane pane(IMF_PackageMgr::CPL, document);
        QCOMPARE(pane.text("id_audio_format"), QString("of video"));
        document["Format"] = "top";
        pane.model.show(document);
        QCOMPARE(pane.text("id_audio_format"), QString("top"));
    }

    void aContentKindIsChosenByWhatItContains()
    {
        struct Row {
            QStringList offered;
            const char* value;
            QString chosen;
        };

        const Row rows[] = {{{"Trailer", "Feature Film", "Feature"}, "feature", "Feature Film"},
                            {{"Feature"}, "opera", "opera"},
                            {{}, "trailer", "trailer"},
                            {{"", "Feature"}, "", ""}};
        for (const Row& row : rows) {
            const auto values = QJsonArray::fromStringList(row.offered);
            const QJsonObject kind{{"Scope", "s"}, {"Value", row.value}, {"values", values}};
            const Pane pane(IMF_PackageMgr::CPL, cplDocument("DescriptiveMetadata", "ContentKind", kind));
            const auto* widget = qobject_cast<PWDiscrete*>(pane.param("id_content_kind"));
            QCOMPARE(widget->getValue().toString(), row.chosen);
            const QStringList extra = row.offered.contains(row.chosen) ? QStringList() : QStringList{row.chosen};
            QCOMPARE(widget->items(), row.offered + extra);
        }
    }

    void committedItemsAreReadOnly()
    {
        ManagerFixture f;
        const auto film = documents::delivery("Film", "/d", {documents::imp("I", {documents::cpl("X")})});
        for (QModelIndex index = f.load("/d", "d", film); index.isValid(); index = f.model->index(0, 0, index)) {
            f.click(index);
            if (const auto* type = f.param<PWDiscrete>("id_imf_type"))
                QCOMPARE(type->getValue().toString(), QString("Original"));
            const QList<AbstractParamWidget*> all = f.params().findChildren<AbstractParamWidget*>();
            for (const AbstractParamWidget* widget : all)
                QVERIFY2(!widget->isVisible() || widget->isReadOnly(), qPrintable(widget->getId()));
        }
        QCOMPARE(f.param<PWTextInput>("id_file_name")->getValue().toString(), QString("X"));
    }

    void theHintShowsWithoutASingleSelection()
    {
        Pane pane(IMF_PackageMgr::IMP);
        QVERIFY(pane.param("id_name"));
        QItemSelection two(pane.model.index(0, 0), pane.model.index(0, 0));
        two.append(QItemSelectionRange(pane.model.index(0, 0)));
        pane.view.onSelectionChanged(two, {});
        QVERIFY(!pane.param("id_name"));
        QVERIFY(pane.view.findChild<QStackedWidget*>()->currentWidget()->findChild<QTextEdit*>());
        pane.select();
        QVERIFY(pane.param("id_name"));
        pane.model.removeRow(0);
        QVERIFY(!pane.param("id_name"));
    }

    void aKindThatIsNotToldIsNotThatOfTheItemBefore()
    {
        Film film(0);
        QCOMPARE(film.value("id_imf_type"), QString("Original"));
        QJsonObject document = documents::delivery("Other", "/d");
        document.remove("Original");
        film.f.click(film.f.load("/d", "d", document));
        QCOMPARE(film.value("id_imf_type"), QString());
    }

    void changesOfOtherItemsAreIgnored()
    {
        ManagerFixture f;
        const QModelIndex first = f.newDelivery("First");
        const QModelIndex second = f.newDelivery("Second");
        f.click(first);
        auto* issuer = f.param<PWTextInput>("id_issuer");
        issuer->setValue("not written");
        f.model->setData(second, "Someone", Model::IssuerRole);
        QCOMPARE(issuer->getValue().toString(), QString("not written"));
        f.model->setData(first, "Someone", Model::IssuerRole);
        QCOMPARE(issuer->getValue().toString(), QString("Someone"));
    }

    void tabVisitsEveryFieldOfThePageAndComesBack()
    {
        ManagerFixture f;
        f.click(f.newDelivery("Film"));
        QStringList visited;
        QWidget* first = f.param<PWTextInput>("id_name")->findChild<QLineEdit*>();
        first->setFocus();
        do {
            for (QWidget* up = QApplication::focusWidget(); up; up = up->parentWidget()) {
                if (const auto* param = qobject_cast<AbstractParamWidget*>(up)) {
                    visited += param->getId();
                    break;
                }
            }
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != first && visited.size() < 20);
        visited.removeDuplicates();
        QCOMPARE(visited,
                 (QStringList{"id_name", "id_set_directory", "id_param_metadata", "id_issuer", "id_annotation"}));
        QTest::keyClick(first, Qt::Key_Backtab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), first);
    }
};

STRATACUT_TEST_MAIN(TestParamsView)
#include "tst_params_view.moc"

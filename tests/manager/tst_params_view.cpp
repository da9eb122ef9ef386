#include "manager/ManagerFixture.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PWLabel.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QLabel>
#include <QLineEdit>
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

/// The parameters of one item, shown.
struct Pane {
    explicit Pane(IMF_PackageMgr::NodeType type, const QJsonObject& document = {}) : model(type, document), view(&model)
    {
        view.resize(600, 800);
        view.show();
        select();
    }

    void select() { view.onSelectionChanged(QItemSelection(model.index(0, 0), model.index(0, 0)), {}); }

    AbstractParamWidget* param(const QString& id) const
    {
        const QList<AbstractParamWidget*> all = view.findChildren<AbstractParamWidget*>();
        for (AbstractParamWidget* widget : all) {
            if (widget->getId() == id && widget->isVisible())
                return widget;
        }
        return nullptr;
    }

    QString text(const QString& id) const { return param(id)->getValue().toString(); }

    OneItem model;
    IMF_PackageParamsView view;
};

QStringList idsBelow(const QWidget& root)
{
    QStringList ids;
    const QList<AbstractParamWidget*> all = root.findChildren<AbstractParamWidget*>();
    for (const AbstractParamWidget* widget : all)
        ids += widget->getId();
    return ids;
}
} // namespace

/// Which parameters stand on which page, and what they show of an item's document.
class TestParamsView : public QObject
{
    Q_OBJECT
private slots:

    void eachPageHoldsItsParametersInOrder_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QStringList>("ids");
        const QStringList metadata{"id_param_root", "id_param_metadata", "id_issuer", "id_creator", "id_annotation"};
        QTest::newRow("deliverable") << 0 << QStringList{"id_imf_type", "id_name", "id_set_directory"} + metadata;
        QTest::newRow("IMP") << 1 << QStringList{"id_name"} + metadata;
        QTest::newRow("CPL") << 2
                             << QStringList{"id_content_title",
                                            "id_file_name",
                                            "id_app_pattern",
                                            "id_param_root",
                                            "id_param_encoding",
                                            "id_param_video",
                                            "id_compression",
                                            "id_frame_rate",
                                            "id_compression_profile",
                                            "id_resolution",
                                            "id_colorimetry",
                                            "id_color_depth",
                                            "id_stereoscopic_setting",
                                            "id_param_audio",
                                            "id_audio_format",
                                            "id_audio_sample_rate",
                                            "id_bits_per_sample",
                                            "id_audio_mix",
                                            "id_param_descriptive_metadata",
                                            "id_annotation",
                                            "id_issuer",
                                            "id_creator",
                                            "id_content_originator",
                                            "id_content_kind"};
    }

    void eachPageHoldsItsParametersInOrder()
    {
        QFETCH(int, type);
        const Pane pane{IMF_PackageMgr::NodeType(type)};
        const QList<AbstractParamWidget*> roots = pane.view.findChildren<AbstractParamWidget*>();
        QStringList shown;
        for (const AbstractParamWidget* widget : roots) {
            if (widget->isVisible())
                shown += widget->getId();
        }
        QTEST(shown, "ids");
    }

    void containersAreNestedAsTheyStand_data()
    {
        QTest::addColumn<QString>("outer");
        QTest::addColumn<QStringList>("inner");
        QTest::newRow("root") << "id_param_root" << QStringList{"id_param_encoding"};
        QTest::newRow("encoding") << "id_param_encoding"
                                  << QStringList{"id_param_video", "id_param_audio", "id_param_descriptive_metadata"};
        QTest::newRow("metadata") << "id_param_descriptive_metadata" << QStringList{"id_content_kind", "id_creator"};
    }

    void containersAreNestedAsTheyStand()
    {
        QFETCH(QString, outer);
        QFETCH(QStringList, inner);
        const Pane pane(IMF_PackageMgr::CPL);
        const QStringList below = idsBelow(*pane.param(outer));
        for (const QString& id : qAsConst(inner))
            QVERIFY(below.contains(id));
    }

    void everyParameterHasItsTitleAndShowsItsValue_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QJsonObject>("document");
        const auto top = [](const char* key) { return QJsonObject{{"Mutable", true}, {key, "X"}}; };
        const auto described = [](const char* key) {
            return QJsonObject{{"Mutable", true}, {"DescriptiveMetadata", QJsonObject{{key, "X"}}}};
        };
        const auto row = [](const char* name, int type, const char* id, const char* title,
                            const QJsonObject& document) {
            QTest::newRow(name) << type << QString(id) << QString(title) << document;
        };
        const auto encoded = [&row](const char* section, const char* id, const char* key, const char* title) {
            row(key, 2, id, title, cplDocument(section, key, choice({"W", "X"}, 1)));
        };
        row("IMF name", 0, "id_name", "IMF Name:", top("Name"));
        row("IMP name", 1, "id_name", "IMP Name:", top("Name"));
        row("folder", 0, "id_set_directory", "", top("Path"));
        for (int type = 0; type < 3; ++type) {
            const QByteArray page = QByteArray::number(type);
            row("annotation " + page, type, "id_annotation", "Annotation:", described("Annotation"));
            row("issuer " + page, type, "id_issuer", "Issuer:", described("Issuer"));
            row("creator " + page, type, "id_creator", "Creator:", described("Creator"));
        }
        row("originator", 2, "id_content_originator", "Content Originator:", described("ContentOriginator"));
        row("title", 2, "id_content_title", "Content Title:", described("ContentTitle"));
        encoded("Video", "id_app_pattern", "Application Pattern", "Application Pattern:");
        encoded("Video", "id_compression", "Compression", "Compression:");
        encoded("Video", "id_compression_profile", "Compression Profile", "Compression Profile:");
        encoded("Video", "id_resolution", "Resolution", "Resolution:");
        encoded("Video", "id_frame_rate", "Frame Rate", "Frame Rate:");
        encoded("Video", "id_colorimetry", "Colorimetry", "Colorimetry:");
        encoded("Video", "id_color_depth", "Color Depth", "Color Depth:");
        encoded("Video", "id_stereoscopic_setting", "Stereoscopic Settings", "Stereoscopic Setting:");
        encoded("Audio", "id_audio_format", "Format", "Format:");
        encoded("Audio", "id_audio_sample_rate", "Sample Rate", "Sampling Rate:");
        encoded("Audio", "id_bits_per_sample", "Bit Depth", "Bit Depth:");
        encoded("Audio", "id_audio_mix", "Audio Mix", "Audio Mix:");
    }

    void everyParameterHasItsTitleAndShowsItsValue()
    {
        QFETCH(int, type);
        QFETCH(QString, id);
        QFETCH(QString, title);
        QFETCH(QJsonObject, document);
        const Pane pane(IMF_PackageMgr::NodeType(type), document);
        AbstractParamWidget* widget = pane.param(id);
        QVERIFY(widget);
        QCOMPARE(widget->getValue().toString(), QString("X"));
        QVERIFY(!widget->isReadOnly() || (type == 1 && id == "id_name"));
        if (title.isEmpty())
            return;
        QStringList titles;
        const QList<QLabel*> labels = widget->findChildren<QLabel*>();
        for (const QLabel* label : labels)
            titles += label->text().remove('&');
        QVERIFY2(titles.contains(title), qPrintable(titles.join(", ")));
    }

    void theTitlesOfAPageShareTheirColumnFromItsFirstShow()
    {
        ManagerFixture f;
        f.click(f.newCpl(f.newImp(f.newDelivery("Film")), "m"));
        QCoreApplication::processEvents();
        QSet<int> ends;
        const QList<AbstractParamWidget*> all = f.params().findChildren<AbstractParamWidget*>();
        for (const AbstractParamWidget* widget : all) {
            const auto* title = widget->findChild<QLabel*>();
            if (widget->isVisible() && title && !qobject_cast<const PWContainer*>(widget))
                ends.insert(title->mapTo(f.window.get(), title->rect().topRight()).x());
        }
        QCOMPARE(ends.size(), 1);
    }

    void anAbsentParameterLeavesItsWidgetAsItIs_data()
    {
        QTest::addColumn<QJsonValue>("entry");
        QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("text") << QJsonValue("");
        QTest::newRow("no values") << QJsonValue(choice({}, 0));
    }

    void anAbsentParameterLeavesItsWidgetAsItIs()
    {
        QFETCH(QJsonValue, entry);
        Pane pane(IMF_PackageMgr::CPL, cplDocument("Video", "Resolution", choice({"HD", "UHD"}, 1)));
        pane.model.show(cplDocument("Video", entry.isUndefined() ? "Color Space" : "Resolution",
                                    entry.isUndefined() ? QJsonValue("") : entry));
        QCOMPARE(pane.text("id_resolution"), QString("UHD"));
    }

    void whereTheDocumentHoldsAValueTwiceTheOuterOneCounts()
    {
        QJsonObject document = cplDocument("Video", "Format", choice({"of video"}, 0));
        document["Audio"] = QJsonObject{{"Format", choice({"of audio"}, 0)}};
        Pane pane(IMF_PackageMgr::CPL, document);
        QCOMPARE(pane.text("id_audio_format"), QString("of video"));
        document["DescriptiveMetadata"] = QJsonObject{{"Format", "described"}};
        pane.model.show(document);
        QCOMPARE(pane.text("id_audio_format"), QString("described"));
        document["Format"] = "top";
        pane.model.show(document);
        QCOMPARE(pane.text("id_audio_format"), QString("top"));
    }

    void aPositionOutsideTheValuesShowsTheFirstInALabel_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<QString>("shown");
        QTest::newRow("beyond") << 7 << "a";
        QTest::newRow("negative") << -1 << "a";
        QTest::newRow("last") << 2 << "c";
    }

    void aPositionOutsideTheValuesShowsTheFirstInALabel()
    {
        QFETCH(int, position);
        const Pane pane(IMF_PackageMgr::CPL, cplDocument("Video", "Compression", choice({"a", "b", "c"}, position)));
        QTEST(pane.text("id_compression"), "shown");
    }

    void aContentKindIsChosenByWhatItContains_data()
    {
        QTest::addColumn<QJsonArray>("values");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<int>("chosen");
        const QStringList films{"Feature Film", "Feature"};
        const QJsonArray offered = QJsonArray::fromStringList(films);
        QTest::newRow("first match") << offered << "feature" << films << 0;
        QTest::newRow("unknown") << offered << "opera" << films + QStringList{"opera"} << 2;
        QTest::newRow("no list") << QJsonArray() << "trailer" << QStringList{"trailer"} << 0;
        QTest::newRow("empty") << QJsonArray{"", "Feature"} << "" << QStringList{"", "Feature"} << 0;
    }

    void aContentKindIsChosenByWhatItContains()
    {
        QFETCH(QJsonArray, values);
        QFETCH(QString, value);
        const QJsonObject kind{{"Scope", "s"}, {"Value", value}, {"values", values}};
        const Pane pane(IMF_PackageMgr::CPL, cplDocument("DescriptiveMetadata", "ContentKind", kind));
        const auto* widget = qobject_cast<PWDiscrete*>(pane.param("id_content_kind"));
        QTEST(widget->items(), "items");
        QTEST(widget->currentIndex(), "chosen");
    }

    void everyKindOfContentIsFoundAgain()
    {
        ManagerFixture f;
        f.click(f.newCpl(f.newImp(f.newDelivery("Film")), "m"));
        auto* kinds = f.param<PWDiscrete>("id_content_kind");
        QCOMPARE(kinds->items().size(), 13);
        const QStringList labels = kinds->items();
        for (const QString& label : labels) {
            f.params().onValueChanged("id_content_kind", label);
            QCOMPARE(kinds->getValue().toString(), label);
        }
    }

    void theTypeIsThatOfTheDeliverable_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("shown");
        QTest::newRow("original") << 1 << "Original";
        QTest::newRow("supplemental") << 2 << "Supplemental";
    }

    void theTypeIsThatOfTheDeliverable()
    {
        QFETCH(int, version);
        ManagerFixture f;
        f.click(f.newDelivery("Film", IMF_PackageMgr::Version(version)));
        const auto* type = f.param<PWDiscrete>("id_imf_type");
        QTEST(type->getValue().toString(), "shown");
        QVERIFY(!type->isEnabled());
        QCOMPARE(type->items(), (QStringList{"Original", "Supplemental"}));
    }

    void committedItemsAreReadOnly_data()
    {
        QTest::addColumn<int>("depth");
        QTest::newRow("deliverable") << 0;
        QTest::newRow("IMP") << 1;
        QTest::newRow("CPL") << 2;
    }

    void committedItemsAreReadOnly()
    {
        QFETCH(int, depth);
        ManagerFixture f;
        QModelIndex index =
            f.load("/d", "d", documents::delivery("Film", "/d", {documents::imp("I", {documents::cpl("X")})}));
        for (int level = 0; level < depth; ++level)
            index = f.model->index(0, 0, index);
        f.click(index);
        const QList<AbstractParamWidget*> all = f.params().findChildren<AbstractParamWidget*>();
        for (const AbstractParamWidget* widget : all)
            QVERIFY2(!widget->isVisible() || widget->isReadOnly(), qPrintable(widget->getId()));
        if (depth == 2)
            QCOMPARE(f.param<PWTextInput>("id_file_name")->getValue().toString(), QString("X"));
    }

    void anEditableCplHasNoFileNameYet()
    {
        ManagerFixture f;
        f.click(f.newCpl(f.newImp(f.newDelivery("Film")), "m"));
        const auto* name = f.param<PWTextInput>("id_file_name");
        QVERIFY(name->getValue().toString().isEmpty());
        QVERIFY(name->isReadOnly());
    }

    void theHintShowsWithoutASingleSelection()
    {
        Pane pane(IMF_PackageMgr::IMP);
        QVERIFY(pane.param("id_name"));
        QItemSelection two(pane.model.index(0, 0), pane.model.index(0, 0));
        two.append(QItemSelectionRange(pane.model.index(0, 0)));
        pane.view.onSelectionChanged(two, {});
        QVERIFY(!pane.param("id_name"));
        const QList<QTextEdit*> hints = pane.view.findChildren<QTextEdit*>();
        const auto shown =
            std::find_if(hints.begin(), hints.end(), [](const QTextEdit* hint) { return hint->isVisible(); });
        QVERIFY(shown != hints.end());
        QCOMPARE((*shown)->toPlainText(), QString("\nMake a selection to display parameters and metadata"));
        pane.select();
        QVERIFY(pane.param("id_name"));
        pane.model.removeRow(0);
        QVERIFY(!pane.param("id_name"));
    }

    void aReplacedItemIsShownAnewAndWhatWasBelowItNoMore()
    {
        ManagerFixture f;
        f.click(f.load("/d", "d", documents::delivery("Film", "/d", {documents::imp("I")})));
        f.putOnDisk("/d", "d", documents::delivery("Newer", "/d", {documents::imp("J")}));
        f.withoutTester([&] { f.controller().onRefreshIMFItem(f.model->index(0, 0)); });
        QCOMPARE(f.param<PWTextInput>("id_name")->getValue().toString(), QString("Newer"));
        f.click(f.model->index(0, 0, f.model->index(0, 0)));
        QCOMPARE(f.param<PWTextInput>("id_name")->getValue().toString(), QString("J"));
        f.withoutTester([&] { f.controller().onRefreshIMFItem(f.model->index(0, 0)); });
        QVERIFY(!f.param<PWTextInput>("id_name"));
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
        QVERIFY(QApplication::focusWidget() != first);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), first);
    }
};

STRATACUT_TEST_MAIN(TestParamsView)
#include "tst_params_view.moc"

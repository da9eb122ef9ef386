#include "manager/ManagerFixture.h"
#include "support/TestMain.h"

#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QAbstractButton>
#include <QLabel>
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

/// What a parameter shows, as "id title value", indented by the sections that it stands in.
QString line(const AbstractParamWidget& widget)
{
    QString text = widget.getId();
    for (const QWidget* above = widget.parentWidget(); above; above = above->parentWidget()) {
        if (qobject_cast<const AbstractParamWidget*>(above))
            text.prepend("  ");
    }
    if (qobject_cast<const PWContainer*>(&widget)) {
        const auto* header = widget.findChild<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly);
        return header ? text + ' ' + header->text() : text;
    }
    const auto* title = widget.findChild<QLabel*>();
    return QString("%1 %2 %3").arg(text, title ? title->text().remove('&') : QString(), widget.getValue().toString());
}
} // namespace

/// Which parameters stand on which page, and what they show of an item's document.
class TestParamsView : public QObject
{
    Q_OBJECT
private slots:

    void eachPageShowsTheDocumentByItsParameters_data()
    {
        QTest::addColumn<QStringList>("lines");
        const QStringList metadata{"id_param_root", "  id_param_metadata Metadata", "    id_issuer Issuer: Issuer",
                                   "    id_creator Creator: Creator", "    id_annotation Annotation: Annotation"};
        QTest::newRow("deliverable") << QStringList{"id_imf_type Type: Supplemental", "id_name IMF Name: Name",
                                                    "id_set_directory Folder: Path"} +
                                            metadata;
        QTest::newRow("IMP") << QStringList{"id_name IMP Name: Name"} + metadata;
        QTest::newRow("CPL") << QStringList{
            "id_content_title Content Title: ContentTitle",
            "id_file_name CPL file name: ",
            "id_app_pattern Application Pattern: Application Pattern",
            "id_param_root",
            "  id_param_encoding Encoding",
            "    id_param_video Video",
            "      id_compression Compression: Compression",
            "      id_frame_rate Frame Rate: Frame Rate",
            "      id_compression_profile Compression Profile: Compression Profile",
            "      id_resolution Resolution: Resolution",
            "      id_colorimetry Colorimetry: Colorimetry",
            "      id_color_depth Color Depth: Color Depth",
            "      id_stereoscopic_setting Stereoscopic Setting: Stereoscopic Settings",
            "    id_param_audio Audio",
            "      id_audio_format Format: Format",
            "      id_audio_sample_rate Sampling Rate: Sample Rate",
            "      id_bits_per_sample Bit Depth: Bit Depth",
            "      id_audio_mix Audio Mix: Audio Mix",
            "    id_param_descriptive_metadata Metadata",
            "      id_annotation Annotation: Annotation",
            "      id_issuer Issuer: Issuer",
            "      id_creator Creator: Creator",
            "      id_content_originator Content Originator: ContentOriginator",
            "      id_content_kind Content Kind: ContentKind",
        };
    }

    void eachPageShowsTheDocumentByItsParameters()
    {
        const QString tag = QTest::currentDataTag();
        const auto type = tag == "CPL"   ? IMF_PackageMgr::CPL
                          : tag == "IMP" ? IMF_PackageMgr::IMP
                                         : IMF_PackageMgr::Delivery;
        const Pane pane(type, everyKey());
        QStringList shown;
        const QList<AbstractParamWidget*> all = pane.view.findChildren<AbstractParamWidget*>();
        for (const AbstractParamWidget* widget : all) {
            if (!widget->isVisible())
                continue;
            shown += line(*widget);
            const bool fixed = widget->getId() == "id_file_name" || (tag == "IMP" && widget->getId() == "id_name");
            QCOMPARE(widget->isReadOnly(), fixed);
        }
        QTEST(shown, "lines");
    }

    void theTitlesOfAPageShareTheirColumnFromItsFirstShow()
    {
        Film film(2);
        ManagerFixture& f = film.f;
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

    void aLabelShowsTheCurrentValueWhereThereIsOne_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QJsonValue>("entry");
        QTest::addColumn<QString>("shown");
        const QJsonArray values{"a", "b", "c"};
        const auto row = [](const char* tag, const char* key, const QJsonValue& entry, const char* shown) {
            QTest::newRow(tag) << QString(key) << entry << QString(shown);
        };
        row("last", "Compression", choice(values, 2), "c");
        row("beyond", "Compression", choice(values, 7), "a");
        row("negative", "Compression", choice(values, -1), "a");
        row("absent", "Color Space", choice(values, 2), "former");
        row("text", "Compression", "", "former");
        row("no values", "Compression", choice({}, 0), "former");
    }

    void aLabelShowsTheCurrentValueWhereThereIsOne()
    {
        QFETCH(QString, key);
        QFETCH(QJsonValue, entry);
        Pane pane(IMF_PackageMgr::CPL, cplDocument("Video", "Compression", choice({"former"}, 0)));
        pane.model.show(cplDocument("Video", key.toLatin1(), entry));
        QTEST(pane.text("id_compression"), "shown");
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

    void aContentKindIsChosenByWhatItContains_data()
    {
        QTest::addColumn<QStringList>("offered");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("chosen");
        QTest::newRow("first match") << QStringList{"Trailer", "Feature Film", "Feature"} << "feature"
                                     << "Feature Film";
        QTest::newRow("unknown") << QStringList{"Feature"} << "opera"
                                 << "opera";
        QTest::newRow("no list") << QStringList() << "trailer"
                                 << "trailer";
        QTest::newRow("empty") << QStringList{"", "Feature"} << ""
                               << "";
    }

    void aContentKindIsChosenByWhatItContains()
    {
        QFETCH(QStringList, offered);
        QFETCH(QString, value);
        QFETCH(QString, chosen);
        const QJsonObject kind{{"Scope", "s"}, {"Value", value}, {"values", QJsonArray::fromStringList(offered)}};
        const Pane pane(IMF_PackageMgr::CPL, cplDocument("DescriptiveMetadata", "ContentKind", kind));
        const auto* widget = qobject_cast<PWDiscrete*>(pane.param("id_content_kind"));
        QCOMPARE(widget->getValue().toString(), chosen);
        QCOMPARE(widget->items(), offered.contains(chosen) ? offered : offered + QStringList{chosen});
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
        const QWidget* shown = pane.view.findChild<QStackedWidget*>()->currentWidget();
        QCOMPARE(shown->findChild<QTextEdit*>()->toPlainText(),
                 QString("\nMake a selection to display parameters and metadata"));
        pane.select();
        QVERIFY(pane.param("id_name"));
        pane.model.removeRow(0);
        QVERIFY(!pane.param("id_name"));
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

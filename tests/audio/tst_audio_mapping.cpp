#include "NvCore/Toggles.h"
#include "StratacutUI/AudioMappingWidget.h"
#include "StratacutUI/IMF_AudioMetadataDialogTest.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PaletteManager.h"
#include "support/Junk.h"
#include "support/TestMain.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

using namespace ImfDict;
using ViewDeckQt::PWDiscrete;

namespace
{
constexpr const char* metadataToggle = "/Stratacut/IMFMCAMetadata";

QStringList sources()
{
    return {"Alle aktiven Spuren", "----------", "A1 Stereo Dialogue", "A2 Mono Effects",
            "----------",          "Dialogue",   "Music and Effects"};
}

QStringList mixes()
{
    return {"Mono", "Stereo", "5.1"};
}

class Choices : public ITrackGroupingManger
{
public:
    explicit Choices(QStringList sourceList = sources()) : m_sources(std::move(sourceList)) {}

    QStringList getAllActiveTracks() override { return {"A1", "A2"}; }

    QStringList getSourceList() override { return m_sources; }

    QStringList getAudioMixList() override { return m_sources.isEmpty() ? QStringList() : mixes(); }

    QJsonArray getTrackGroups() override
    {
        return {QJsonObject{{Name, "Dialogue"}, {IncludeMasterFader, false}, {Tracks, QJsonArray{"A1"}}}};
    }

private:
    QStringList m_sources;
};

QJsonObject row(const QJsonValue& source, const QJsonValue& mode = "5.1")
{
    return {{TargetTrack, "A9"}, {MixMode, mode}, {SourceTracksGroups, source}};
}

QJsonObject mappingOf(const QJsonArray& rows)
{
    return {{AudioMapping, rows}, {TrackGroups, QJsonArray()}, {AllActiveTracks, QJsonArray()}};
}

QJsonObject cplWith(const QJsonValue& mix)
{
    return {{Mutable, true}, {Audio, QJsonObject{{MultipleAudioMix, mix}}}};
}

/// A mapping in a window, and what a user sees of it.
struct Window {
    explicit Window(const QStringList& sourceList = sources())
        : mapping(new AudioMappingWidget("id", std::make_unique<Choices>(sourceList), &page))
    {
        (new QVBoxLayout(&page))->addWidget(mapping);
        page.show();
        page.activateWindow();
    }

    template <class T = QComboBox>
    QList<T*> all(const char* name) const
    {
        QList<T*> found;
        for (int i = 0; i < mapping->layout()->count(); ++i)
            found << mapping->layout()->itemAt(i)->widget()->findChild<T*>(QLatin1String(name));
        return found;
    }

    QStringList labels() const
    {
        QStringList texts;
        for (int i = 0; i < mapping->layout()->count(); ++i) {
            const QList<QLabel*> found = mapping->layout()->itemAt(i)->widget()->findChildren<QLabel*>();
            for (const QLabel* label : found)
                if (!label->text().isEmpty())
                    texts << label->text();
        }
        return texts;
    }

    QComboBox* source(int at) const { return all("m_TrackAndGroupCBox").at(at); }

    QComboBox* mode(int at) const { return all("m_mapToCBox").at(at); }

    QPushButton* button(const char* name, int at) const { return all<QPushButton>(name).at(at); }

    QJsonArray rows() const { return mapping->getValue().toJsonObject()[AudioMapping].toArray(); }

    QStringList stored(const char* key) const
    {
        QStringList texts;
        const QJsonArray array = rows();
        for (const QJsonValue& value : array)
            texts << value.toObject()[QLatin1String(key)].toString();
        return texts;
    }

    QWidget page;
    AudioMappingWidget* mapping;
};

QWidgetList tabOrder(const Window& window)
{
    QWidgetList stops;
    for (QWidget* stop = window.page.nextInFocusChain(); stop != &window.page; stop = stop->nextInFocusChain())
        if (window.mapping->isAncestorOf(stop) && stop->focusPolicy() != Qt::NoFocus && stop->window() == &window.page)
            stops << stop;
    return stops;
}

void pick(QComboBox* box, const QString& beginning)
{
    QTest::keyClicks(box, beginning);
    QVERIFY2(box->currentText().startsWith(beginning), qPrintable(box->currentText()));
}

QJsonObject table(const char* name)
{
    QFile file(QStringLiteral(":/IMF/mapping_metadata/%1").arg(name));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}
} // namespace

class TestAudioMapping : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase() { QApplication::setKeyboardInputInterval(10000); }

    void init() { TGL_SetToggle(metadataToggle, true); }

    void theTablesAreComplete()
    {
        QCOMPARE(table("content_kind.json").size(), 22);
        QCOMPARE(table("content_kind.json")["OP"].toString(), QString("Optional  Music and Effects"));
        const QJsonObject languages = table("languages.json");
        int names = 0;
        for (auto language = languages.begin(); language != languages.end(); ++language) {
            names += language.value().toObject().size();
            QVERIFY2(!language.value()[language.key()].toString().isEmpty(), qPrintable(language.key()));
        }
        QCOMPARE(languages.size(), 156);
        QCOMPARE(names, 196);
    }

    void aRowAddedInTheMiddleTakesItsNumberAndItsPlace()
    {
        Window window;
        QVERIFY(!window.button("m_minusButton", 0)->isEnabled());
        window.mapping->setValue(mappingOf({row("Dialogue"), row("Music and Effects")}));
        QSignalSpy changes(window.mapping, &AudioMappingWidget::valueChanged);
        QTest::mouseClick(window.button("m_plusButton", 0), Qt::LeftButton);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(window.labels(), QStringList({"IMF Track A1", "IMF Track A2", "IMF Track A3"}));
        QCOMPARE(window.stored(TargetTrack), QStringList({"A1", "A2", "A3"}));
        QCOMPARE(window.stored(SourceTracksGroups),
                 QStringList({"Dialogue", "All Active Tracks", "Music and Effects"}));
        QWidgetList expected;
        for (int i = 0; i < 3; ++i) {
            QVERIFY(window.button("m_minusButton", i)->isEnabled());
            expected << window.source(i) << window.mode(i) << window.button("m_metadataButton", i)
                     << window.button("m_plusButton", i) << window.button("m_minusButton", i);
        }
        QCOMPARE(tabOrder(window), expected);
    }

    void removingKeepsTheFocusAtHandAndTheLastRow()
    {
        Window window;
        window.mapping->setValue(mappingOf({row("Dialogue"), row("A2 Mono Effects"), row("Music and Effects")}));
        window.button("m_minusButton", 1)->setFocus();
        QTest::keyClick(window.button("m_minusButton", 1), Qt::Key_Space);
        QCOMPARE(window.page.focusWidget(), window.button("m_minusButton", 1));
        QTest::keyClick(window.page.focusWidget(), Qt::Key_Space);
        QCOMPARE(window.page.focusWidget(), window.button("m_plusButton", 0));
        window.mapping->onRemoveButtonClicked(0);
        QCOMPARE(window.stored(SourceTracksGroups), QStringList("Dialogue"));
        support::expectMessage(QtWarningMsg, "out of range");
        window.mapping->removeTrackMapping(5, false);
        QCOMPARE(window.rows().size(), 1);
    }

    void aRowAddedBelowTheEdgeIsScrolledTo()
    {
        Window window;
        QScrollArea area;
        area.setWidgetResizable(true);
        auto* page = new QWidget;
        auto* section = new ViewDeckQt::PWExpandableContainer(page, "Audio", "section");
        section->addContent(window.mapping);
        (new QVBoxLayout(page))->addWidget(section);
        area.setWidget(page);
        QJsonArray many;
        for (int i = 0; i < 40; ++i)
            many.append(row("Dialogue"));
        window.mapping->setValue(mappingOf(many));
        area.resize(600, 200);
        area.show();
        QTest::mouseClick(window.button("m_plusButton", 39), Qt::LeftButton);
        QTRY_VERIFY(!window.button("m_plusButton", 40)->visibleRegion().isEmpty());
    }

    void onlyAMappingWithoutRowsIsReported_data()
    {
        const support::Rows<QJsonObject, QStringList, int> add;
        const QJsonObject three = mappingOf({row("All Active Tracks"), row("Dialogue"), row("A2 Mono Effects")});
        const QStringList shown{"All Active Tracks", "Dialogue", "A2 Mono Effects"};
        add("a CPL's document", cplWith(three), shown, 0);
        add("a mapping alone", three, shown, 0);
        add("no rows", cplWith(mappingOf({})), {"All Active Tracks"}, 1);
        add("no mapping", {{Mutable, true}}, {"All Active Tracks"}, 1);
        add("a row without a mode", cplWith(mappingOf({QJsonObject{{TargetTrack, "A1"}}})), {"All Active Tracks"}, 1);
    }

    void onlyAMappingWithoutRowsIsReported()
    {
        const auto [value, expected, reports] = support::fetched<QJsonObject, QStringList, int>();
        Window window;
        for (int i = 0; i < 4; ++i)
            window.mapping->insertTrackMapping(0, false);
        QSignalSpy changes(window.mapping, &AudioMappingWidget::valueChanged);
        window.mapping->setValue(value);
        QCOMPARE(changes.size(), reports);
        QCOMPARE(window.stored(SourceTracksGroups), expected);
        QCOMPARE(window.labels().size(), expected.size());
        QCOMPARE(window.source(0)->currentText(), sources().constFirst());
    }

    void aSourceThatIsGoneStaysAndIsMarked()
    {
        Window window;
        const QStringList gone{"Group 5.1", "Dialogue"};
        window.mapping->setValue(mappingOf({row(gone.first(), "9.1"), row(gone.last())}));
        QCOMPARE(window.stored(MixMode), QStringList({"9.1", "5.1"}));
        window.mapping->setTrackGroupingManager(std::make_unique<Choices>(sources().mid(0, 4)));
        QCOMPARE(window.stored(SourceTracksGroups), gone);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(window.source(i)->currentText(), gone.at(i));
            QVERIFY(window.source(i)->toolTip().contains(gone.at(i)));
            // On Linux a screen reader takes what is chosen for the name of a combo box.
            const QString heard =
                QAccessible::queryAccessibleInterface(window.source(i))->text(QAccessible::Description);
            QCOMPARE(heard, QStringLiteral("Source of IMF Track A%1. ").arg(i + 1) + window.source(i)->toolTip());
        }
        // Without any choices, nothing is the first one.
        window.mapping->setTrackGroupingManager(std::make_unique<Choices>(QStringList()));
        QCOMPARE(window.stored(SourceTracksGroups), gone);
        window.mapping->setTrackGroupingManager(std::make_unique<Choices>());
        QVERIFY(window.source(1)->toolTip().isEmpty());
        QCOMPARE(window.source(1)->count(), sources().size());
        QTest::keyClick(window.source(0), Qt::Key_Home);
        QCOMPARE(window.stored(SourceTracksGroups), QStringList({"All Active Tracks", "Dialogue"}));
        QVERIFY(window.source(0)->toolTip().isEmpty());
    }

    void arrowKeysPassOverSeparators()
    {
        Window window;
        QStringList visited;
        for (int i = 0; i < 5; ++i) {
            QTest::keyClick(window.source(0), Qt::Key_Down);
            const QStringList stored = window.stored(SourceTracksGroups);
            visited << stored.first();
        }
        QCOMPARE(visited, QStringList({"A1 Stereo Dialogue", "A2 Mono Effects", "Dialogue", "Music and Effects",
                                       "Music and Effects"}));
    }

    void aRowWithoutSourcesShowsItsModeAlone()
    {
        Window window;
        QJsonObject fixed = row("");
        fixed.remove(SourceTracksGroups);
        QJsonObject committed = cplWith(mappingOf({fixed}));
        committed[Mutable] = false;
        window.mapping->setValue(committed);
        QVERIFY(!window.source(0)->isVisible());
        QCOMPARE(window.mode(0)->count(), 1);
        QCOMPARE(window.mode(0)->currentText(), QString("5.1"));
        window.mapping->setReadOnly(true);
        window.mapping->insertTrackMapping(1, false);
        for (int i = 0; i < 2; ++i)
            QVERIFY(!window.mode(i)->isEnabled() && !window.button("m_plusButton", i)->isVisible());
        window.mapping->setValue(mappingOf({row("Dialogue")}));
        QVERIFY(window.source(0)->isVisible());
        QCOMPARE(window.mode(0)->count(), mixes().size());
    }

    void whateverIsSetComesBack()
    {
        support::Junk junk(support::seed(), {Name},
                           QStringList(sources()) << "Gone 7"
                                                  << "All Active Tracks");
        Window window;
        for (int round = 0; round < 60; ++round) {
            QJsonArray rows;
            for (int i = junk.below(7); i >= 0; --i) {
                QString source = junk.text();
                if (source == sources().constFirst())
                    source = "All Active Tracks";
                QJsonObject set = row(source, mixes().at(junk.below(3)));
                set[Metadata] = QJsonObject{{RFC5646SpokenLanguage, junk.text()}, {AudioContentKind, "HI"}};
                set[TargetTrack] = QStringLiteral("A%1").arg(rows.size() + 1);
                rows.append(set);
            }
            window.mapping->setValue(round % 2 ? mappingOf(rows) : cplWith(mappingOf(rows)));
            QCOMPARE(window.rows(), rows);
            const QVariant value = window.mapping->getValue();
            window.mapping->setValue(value);
            QCOMPARE(window.mapping->getValue(), value);
        }
    }

    void damagedDocumentsLeaveAUsableMapping()
    {
        support::Junk junk(support::seed(),
                           {Audio, MultipleAudioMix, AudioMapping, TargetTrack, MixMode, SourceTracksGroups, Metadata,
                            RFC5646SpokenLanguage, AudioContentKind, Mutable},
                           {"A1", "", "en-", "a-b-c", "----------"});
        Window window;
        QSignalSpy changes(window.mapping, &AudioMappingWidget::valueChanged);
        for (int round = 0; round < 400; ++round) {
            QJsonObject damaged = row("Dialogue");
            damaged[Metadata] = QJsonObject{{RFC5646SpokenLanguage, "en"}, {AudioContentKind, "HI"}};
            junk.damage(damaged);
            QJsonObject document = cplWith(mappingOf({damaged, junk.value(2)}));
            if (round % 2)
                junk.damage(document);
            window.mapping->setValue(document);
            QVERIFY(!window.rows().isEmpty());
            QVERIFY(JSON::VerifyMultiMix(window.mapping->getValue().toJsonObject(), false));
        }
        for (const QVariant& value : {QVariant(), QVariant("text"), QVariant(QJsonArray{1})}) {
            changes.clear();
            window.mapping->setValue(value);
            QCOMPARE(changes.size(), 1);
        }
    }

    void metadataIsChosenInTheRowsDialog_data()
    {
        const support::Rows<QString, QStringList, QString, QString> add;
        const QString en = "en";
        add("as it was", en, {"", "", ""}, "en", "None");
        add("region and kind", en, {"en (", "AU", "HI"}, "en-AU", "HI");
        add("a language without regions", "en-AU", {"bo", "", ""}, "bo", "None");
        add("a script", en, {"sr (", "Cyrl", "DDXC"}, "sr-Cyrl", "DDXC");
        add("an unknown language", "qaa-ZZ", {"", "", ""}, "qaa-ZZ", "None");
        add("a language for an unknown one", "qaa-ZZ", {"en (", "", ""}, "en", "None");
        add("three parts", "zh-Hans-CN", {"", "", "OP"}, "zh", "OP");
    }

    void metadataIsChosenInTheRowsDialog()
    {
        const auto [tag, picks, newTag, newKind] = support::fetched<QString, QStringList, QString, QString>();
        for (const bool painted : {true, false}) {
            Window window;
            QJsonObject set = row("Dialogue");
            set[Metadata] = QJsonObject{{RFC5646SpokenLanguage, tag}, {AudioContentKind, "None"}};
            window.mapping->setValue(mappingOf({set, set}));
            QSignalSpy changes(window.mapping, &AudioMappingWidget::valueChanged);
            auto* dialog = window.mapping->layout()->itemAt(1)->widget()->findChild<QDialog*>();
            dialog->setUpdatesEnabled(painted);
            QTimer::singleShot(0, dialog, [dialog, isPainted = painted, chosen = picks] {
                const auto closing = qScopeGuard([dialog] { dialog->isVisible() ? dialog->reject() : void(); });
                if (isPainted)
                    dialog->grab();
                QComboBox* boxes[3];
                const auto fields = dialog->findChildren<PWDiscrete*>();
                for (PWDiscrete* field : fields)
                    boxes[field->getId() == "id_mca_language" ? 0 : 2] = field->findChild<QComboBox*>();
                const auto regions = dialog->findChildren<QComboBox*>(QString(), Qt::FindDirectChildrenOnly);
                for (QComboBox* box : regions)
                    boxes[1] = box;
                if (isPainted)
                    QVERIFY(boxes[1]->currentText() != "None" && boxes[2]->currentText() != "None");
                for (int i = 0; i < 3; ++i)
                    if (!chosen.at(i).isEmpty())
                        pick(boxes[i], chosen.at(i));
                QCOMPARE(boxes[1]->isEnabled(), !boxes[0]->currentText().startsWith("bo"));
                const auto notes = dialog->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
                for (const QLabel* note : notes)
                    QVERIFY(!note->wordWrap() || !note->isVisible() || chosen.at(0).isEmpty());
                QTest::keyClick(dialog, Qt::Key_Return);
            });
            QTest::mouseClick(window.button("m_metadataButton", 1), Qt::LeftButton);
            QCOMPARE(changes.size(), 1);
            const QJsonObject stored = window.rows().at(1)[Metadata].toObject();
            QCOMPARE(stored, (QJsonObject{{RFC5646SpokenLanguage, newTag}, {AudioContentKind, newKind}}));
            QCOMPARE(window.rows().at(0).toObject()[Metadata], set[Metadata]);
        }
    }

    void whatIsShownFollowsTheMetadataAndTheSkin()
    {
        Window window;
        QJsonObject set = row("Gone");
        set[Metadata] = QJsonObject{{RFC5646SpokenLanguage, "fr-CA"}, {AudioContentKind, "VO"}};
        window.mapping->setValue(mappingOf({set}));
        QPushButton* button = window.button("m_metadataButton", 0);
        QCOMPARE(button->toolTip(), QString("Edit multi - channel audio metadata\nMCA Language: fr (French)\n"
                                            "Region: CA\nMCA ContentKind: VO (Voice Over)"));
        const qint64 icon = button->icon().cacheKey();
        const QColor marked = window.source(0)->palette().color(QPalette::ButtonText);
        using Palette::Skin;
        const Skin skin = Palette::PaletteManager::Instance().skin();
        Palette::PaletteManager::Instance().setSkin(skin == Skin::Dark ? Skin::Light : Skin::Dark);
        QVERIFY(button->icon().cacheKey() != icon);
        QVERIFY(window.source(0)->palette().color(QPalette::ButtonText) != marked);
    }

    void aCancelledChoiceLeavesNoTrace()
    {
        Window window;
        auto* dialog = window.mapping->findChild<QDialog*>();
        for (int time = 0; time < 2; ++time) {
            QTimer::singleShot(0, dialog, [dialog, time] {
                const auto closing = qScopeGuard([dialog] { dialog->reject(); });
                auto* kind = dialog->findChildren<PWDiscrete*>().at(0)->findChild<QComboBox*>();
                QVERIFY(!kind->currentText().startsWith("HI"));
                if (time == 0)
                    pick(kind, "HI");
            });
            QTest::mouseClick(window.button("m_metadataButton", 0), Qt::LeftButton);
        }
        QCOMPARE(window.rows().at(0)[Metadata][AudioContentKind].toString(), QString("None"));
    }

    void withoutTheToggleRowsCarryNoMetadata()
    {
        TGL_SetToggle(metadataToggle, false);
        Window window;
        QVERIFY(!window.button("m_metadataButton", 0) && !window.mapping->findChild<QDialog*>());
        window.mapping->setReadOnly(true);
        QVERIFY(!window.rows().at(0).toObject().contains(Metadata));
    }

    void theTestHostShowsADialogInItself()
    {
        IMF_AudioMetadataDialogTest host(nullptr);
        host.show();
        auto* dialog = host.findChild<QDialog*>();
        QVERIFY(dialog->isVisible() && !dialog->isWindow());
        QCOMPARE(dialog->findChild<QLabel*>(QString(), Qt::FindDirectChildrenOnly)->text(),
                 QString("Dummy Track Name"));
    }
};

STRATACUT_TEST_MAIN(TestAudioMapping)
#include "tst_audio_mapping.moc"

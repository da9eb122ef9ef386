#include "manager/ManagerFixture.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include "NvCore/Toggles.h"
#include "StratacutUI/AudioMappingWidget.h"
#include "ViewDeckQt/PWDiscrete.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QTableView>

#include <optional>

using Model = IMF_PackageMgrQtModel;

namespace
{
constexpr char toggle[] = "/Stratacut/IMFMultipleAudioMix";
constexpr char metadataToggle[] = "/Stratacut/IMFMCAMetadata";

/// A film whose composition is shown with the audio tools.
struct Mapped {
    Mapped()
    {
        film.f.click(film.cpl);
        box().show();
    }

    QComboBox& box() const
    {
        return *film.f.param<AudioMappingWidget>("id_multiple_audio_mix")->findChild<QComboBox*>("m_TrackAndGroupCBox");
    }

    QStringList sources() const
    {
        QStringList texts;
        for (int i = 0; i < box().count(); ++i)
            texts += box().itemText(i);
        return texts;
    }

    /// The stored mix of the composition.
    QJsonObject mix() const
    {
        const QJsonObject audio = film.cpl.data(Model::MetadataRole).toJsonObject()["Audio"].toObject();
        return audio["Multiple Audio Mix"].toObject();
    }

    QJsonArray groups() const { return film.cpl.data(Model::TrackGroupsRole).toJsonArray(); }

    void inDialog(const std::function<void(QWidget&)>& work) const
    {
        const WhenOpened dialog([&work](QWidget& opened) {
            work(opened);
            // The default group cannot be saved, and says so.
            std::optional<support::ModalAnswer> refusal;
            if (opened.findChild<QComboBox*>("m_groups")->currentIndex() == 0)
                refusal.emplace(QMessageBox::Ok);
            QTest::mouseClick(opened.findChild<QPushButton*>("m_save"), Qt::LeftButton);
        });
        QTest::mouseClick(&film.f.button("ATGbtn"), Qt::LeftButton);
    }

    static void pick(QComboBox& box, const QString& entry)
    {
        box.showPopup();
        box.view()->setCurrentIndex(box.model()->index(box.findText(entry), 0));
        QTest::keyClick(box.view(), Qt::Key_Return);
    }

    static void tick(const QWidget& dialog, int row)
    {
        const auto* view = dialog.findChild<QTableView*>("m_tracks");
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->visualRect(view->model()->index(row, 1)).center());
    }

    Film film{0};
};
} // namespace

/// The audio tools of a composition's page, which a toggle switches.
class TestParamsAudio : public QObject
{
    Q_OBJECT
private slots:

    void cleanup()
    {
        TGL_ResetToggle(toggle);
        TGL_ResetToggle(metadataToggle);
    }

    void theToggleDecidesWhatThePageHas()
    {
        for (const bool on : {false, true}) {
            TGL_SetToggle(toggle, on);
            Film film(2);
            QCOMPARE(film.f.param<ViewDeckQt::AbstractParamWidget>("id_audio_mix") == nullptr, on);
            QCOMPARE(film.f.param<AudioMappingWidget>("id_multiple_audio_mix") != nullptr, on);
            const auto* button = film.f.params().findChild<QPushButton*>("ATGbtn");
            QCOMPARE(button != nullptr, on);
            if (!on)
                continue;
            QCOMPARE(button->text().remove('&'), QString("Audio Tracks Grouping"));
            QCOMPARE(button->maximumWidth(), 200);
            const auto* title = qobject_cast<QLabel*>(button->parentWidget()->layout()->itemAt(3)->widget());
            QVERIFY(title && title->text() == "Audio Mapping");
        }
    }

    void groupsComeFromTheDialogAndGoIntoTheMix()
    {
        TGL_SetToggle(toggle, true);
        Mapped m;
        m.inDialog([](QWidget& dialog) {
            Mapped::tick(dialog, 1);
            const WhenOpened naming([](QWidget& asks) {
                asks.findChild<QLineEdit*>("GroupName")->setText("Music");
                QTest::mouseClick(asks.findChild<QPushButton*>("OK"), Qt::LeftButton);
            });
            Mapped::pick(*dialog.findChild<QComboBox*>("m_groups"), "Save As...");
        });
        const QJsonObject music{{"Name", "Music"}, {"Include Master Fader", false}, {"Tracks", QJsonArray{"A2"}}};
        QCOMPARE(m.groups(), QJsonArray{music});
        QVERIFY(m.sources().endsWith("Music"));
        Mapped::pick(m.box(), "Music");
        QCOMPARE(m.mix()["Groups"].toArray(), QJsonArray{music});
        QCOMPARE(m.mix()["AudioMapping"].toArray()[0].toObject()["SourceTracksGroups"].toString(), QString("Music"));
        // A group that changes below a mapping changes the stored mix, too.
        m.inDialog([](QWidget& dialog) {
            Mapped::pick(*dialog.findChild<QComboBox*>("m_groups"), "Music");
            Mapped::tick(dialog, 0);
        });
        QCOMPARE(m.mix()["Groups"].toArray()[0].toObject()["Tracks"].toArray(), (QJsonArray{"A1", "A2"}));
        // One that goes stays named where it is used.
        m.inDialog([](QWidget& dialog) {
            Mapped::pick(*dialog.findChild<QComboBox*>("m_groups"), "Music");
            Mapped::pick(*dialog.findChild<QComboBox*>("m_groups"), "Remove Current...");
        });
        QCOMPARE(m.groups(), QJsonArray());
        QCOMPARE(m.mix()["AudioMapping"].toArray()[0].toObject()["SourceTracksGroups"].toString(), QString("Music"));
    }

    void aCancelledDialogChangesNothing()
    {
        TGL_SetToggle(toggle, true);
        Mapped m;
        const QJsonObject before = m.mix();
        const WhenOpened dialog([](QWidget& opened) {
            Mapped::tick(opened, 1);
            const support::ModalAnswer answer(QMessageBox::Yes);
            QTest::mouseClick(opened.findChild<QPushButton*>("m_cancel"), Qt::LeftButton);
        });
        QTest::mouseClick(&m.film.f.button("ATGbtn"), Qt::LeftButton);
        QCOMPARE(m.groups(), QJsonArray());
        QCOMPARE(m.mix(), before);
    }

    void metadataOfACompositionThatGoesIsNotThatOfTheNext()
    {
        TGL_SetToggle(toggle, true);
        TGL_SetToggle(metadataToggle, true);
        Mapped m;
        const QPersistentModelIndex next = m.film.f.newCpl(m.film.imp, "n");
        for (const QModelIndex& cpl : {QModelIndex(next), QModelIndex(m.film.cpl)})
            m.film.f.click(cpl);
        const WhenOpened dialog([&m](QWidget& opened) {
            opened.findChildren<ViewDeckQt::PWDiscrete*>().at(0)->setValue("HI (Hearing Impaired)");
            m.film.f.model->removeIndex(m.film.cpl);
            QTest::keyClick(&opened, Qt::Key_Return);
        });
        QTest::mouseClick(m.film.f.params().findChild<QPushButton*>("m_metadataButton"), Qt::LeftButton);
        const QJsonDocument left(next.data(Model::MetadataRole).toJsonObject());
        QVERIFY2(!left.toJson().contains("HI"), left.toJson());
    }

    void savedGroupsOfAnyShapeAreOfferedWithoutHarm()
    {
        TGL_SetToggle(toggle, true);
        Mapped m;
        m.film.f.model->setData(m.film.cpl,
                                QJsonArray{1, QJsonObject{{"Name", "Music"}, {"Tracks", 3}},
                                           QJsonObject{{"Name", "Music"}, {"Tracks", QJsonArray{"A1"}}}},
                                Model::TrackGroupsRole);
        QCOMPARE(m.sources().mid(m.sources().size() - 2), (QStringList{"Music", "Music.1"}));
        Mapped::pick(m.box(), "Music.1");
        QCOMPARE(m.mix()["Groups"].toArray().size(), 2);
    }

    void aCommittedCompositionIsShownNotChanged()
    {
        TGL_SetToggle(toggle, true);
        ManagerFixture f;
        const auto film = documents::delivery("Film", "/d", {documents::imp("I", {documents::cpl("X")})});
        const QModelIndex cpl = f.model->index(0, 0, f.model->index(0, 0, f.load("/d", "d", film)));
        const QVariant before = cpl.data(Model::MetadataRole);
        QSignalSpy changed(&f.params(), &IMF_PackageParamsView::valueChanged);
        f.click(cpl);
        QVERIFY(f.param<AudioMappingWidget>("id_multiple_audio_mix")->isReadOnly());
        QVERIFY(!f.button("ATGbtn").isEnabled());
        QCOMPARE(changed.size(), 0);
        QCOMPARE(cpl.data(Model::MetadataRole), before);
    }

    void sourcesOfAnotherCompositionDoNotStay()
    {
        TGL_SetToggle(toggle, true);
        Mapped m;
        const auto other = documents::delivery("Other", "/d", {documents::imp("I", {documents::cpl("X")})});
        QVERIFY(m.sources().size() > 1);
        const QModelIndex delivery = m.film.f.load("/d", "d", other);
        m.film.f.click(m.film.f.model->index(0, 0, m.film.f.model->index(0, 0, delivery)));
        QVERIFY2(m.sources().size() <= 1, qPrintable(m.sources().join('|')));
    }
};

STRATACUT_TEST_MAIN(TestParamsAudio)
#include "tst_params_audio.moc"

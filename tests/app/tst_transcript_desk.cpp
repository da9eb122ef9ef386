#include "app/Desk.h"
#include "media/MediaMaker.h"
#include "media/Otio.h"
#include "support/TestMain.h"

#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "desk/app/Host.h"
#include "desk/app/walk/Hand.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/TranscriptPane.h"
#include "desk/services/FrameTime.h"
#include "desk/services/TranscriptService.h"

#include <QAction>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>

using namespace desk::app;
using desk::media::Player;
using desk::services::frameOfMs;

/// The transcript in the desk's window with the real player, and by commands.
class TestTranscriptDesk : public QObject
{
    Q_OBJECT

    static constexpr int wordMs = 200;

    MediaMaker m_maker;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<DeskWindow> m_window;

    STT_TranscriptManagerWindow& transcript() const { return m_window->transcript().window(); }

    Player& player(MonitorPane::Kind kind) const { return m_window->monitor(kind).player(); }

    QString bold() const { return transcript().getBoldedCursor().selectedText(); }

    void open(const QString& name, MonitorPane::Kind kind) const
    {
        BinView& bin = m_window->bin().view();
        const QModelIndex row = bin.model()->match(bin.model()->index(0, 0), Qt::DisplayRole, name).value(0);
        Hand::doubleClick(&bin, row);
        QTRY_VERIFY(player(kind).sequence() && player(kind).sequence()->name == name);
    }

    static void choose(QWidget* dialog, const QString& file)
    {
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(file);
        qobject_cast<QDialog*>(dialog)->accept();
    }

    /// A word of each of two tracks.
    void writeTwoTracks() const
    {
        m_maker.write("two.json", R"({"format": "stratacut-transcript", "version": 1, "segments": [
            {"track": 0, "words": [{"text": "left", "start": 0, "end": 500}]},
            {"track": 1, "words": [{"text": "right", "start": 1000, "end": 1500}]}]})");
    }

    /// Words "w0", "w1", ... without a pause.
    void writeTranscript() const
    {
        QJsonArray words;
        for (int word = 0; word * wordMs < 4000; ++word)
            words += QJsonObject{
                {"text", QStringLiteral("w%1").arg(word)}, {"start", word * wordMs}, {"end", (word + 1) * wordMs}};
        m_maker.write("clip.json", QJsonDocument(QJsonObject{{"format", "stratacut-transcript"},
                                                             {"version", 1},
                                                             {"segments", QJsonArray{QJsonObject{{"words", words}}}}})
                                       .toJson());
    }

    void openDesk()
    {
        m_host = std::make_unique<Host>(m_maker.path("profile"));
        QVERIFY(m_host->claim().ok());
        DeskWindow::prepareLook(m_host->profile());
        m_host->load();
        m_window = std::make_unique<DeskWindow>(m_host.get());
        m_window->show();
        QApplication::setActiveWindow(m_window.get());
    }

private slots:

    void initTestCase()
    {
        m_maker.writeWav("noise.wav", noise(48000 * 4, 24, 5), 24);
        QVERIFY(m_maker.ffmpeg("-f lavfi -i color=red:s=160x90:r=30000/1001:d=4,format=yuv422p10le -i @noise.wav "
                               "-map 0 -map 1 -map 1 "
                               "-timecode 10:00:00:00 -c:v prores -c:a pcm_s24le @clip.mov"));
        writeTranscript();
        writeTwoTracks();
        m_maker.writeWav("lone.wav", noise(48000, 16, 6), 16);
        m_maker.write("cut.otio",
                      otio::timeline({otio::track("Audio", {otio::clip("lone.wav", otio::range(0, 25, 25))})}));
        openDesk();
        m_window->addMedia({m_maker.path("clip.mov"), m_maker.path("cut.otio")});
        QTRY_COMPARE(m_window->bin().view().model()->rowCount(), 2);
        m_window->action("focusTranscript")->trigger();
    }

    void cleanupTestCase()
    {
        m_window.reset();
        m_host.reset();
    }

    void anImportedTranscriptShows()
    {
        open("clip", MonitorPane::Kind::Source);
        QTRY_COMPARE(transcript().missingWidgets().size(), 1);
        Hand::whenOpen([this](QWidget* dialog) { choose(dialog, m_maker.path("clip.json")); });
        m_window->action("importTranscript")->trigger();
        QTRY_COMPARE(transcript().entryWidgets().size(), 1);
        QVERIFY(transcript().missingWidgets().isEmpty());
    }

    /// The clip is noise, in which nothing is recognised.
    void transcribingAgainAsksAndKeepsWhatItCannotBetter()
    {
        BinView& bin = m_window->bin().view();
        bin.setCurrentIndex(bin.model()->index(0, 0));
        QAction* action = m_window->action("transcribeAgain");
        QVERIFY(action->isEnabled());
        desk::services::TranscriptService& service = m_host->transcripts();
        QString why;
        QObject context;
        connect(&service, &desk::services::TranscriptService::ended, &context,
                [&](const QString&, desk::services::TranscriptService::Outcome, const QString& text) { why = text; });
        const QStringList answers{"Keep", "Transcribe Again"};
        for (const QString& answer : answers) {
            QCOMPARE(service.active(), 0);
            Hand::whenOpen([answer](QWidget* dialog) {
                const auto buttons = dialog->findChildren<QPushButton*>();
                for (QPushButton* button : buttons) {
                    if (button->text() == answer)
                        return Hand::click(button);
                }
            });
            m_window->action(answer == "Keep" ? "transcribe" : "transcribeAgain")->trigger();
        }
        QCOMPARE(service.active(), 1);
        QVERIFY(!action->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!why.isEmpty(), 60000);
        QVERIFY2(why.contains("no speech"), qPrintable(why));
        QTRY_VERIFY(transcript().missingWidgets().isEmpty());
        QCOMPARE(transcript().entryWidgets().size(), 1);
        QVERIFY(action->isEnabled());
    }

    /// At every frame that the monitor reports, the last word that has started is the bold one. A word starts with the
    /// frame to which a click on it leads.
    void playbackIsFollowedWordByWord()
    {
        Player& source = player(MonitorPane::Kind::Source);
        source.seek(0);
        QStringList wrong;
        int frames = 0;
        QObject context;
        connect(&source, &Player::positionChanged, &context, [&](qint64 frame) {
            ++frames;
            int word = 0;
            while (frameOfMs((word + 1) * wordMs, source.rate()) <= frame && (word + 1) * wordMs < 4000)
                ++word;
            if (bold() != QStringLiteral("w%1").arg(word))
                wrong += QStringLiteral("%1: %2").arg(frame).arg(bold());
        });
        source.play();
        QTRY_VERIFY_WITH_TIMEOUT(!source.isPlaying(), 30000);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(", ")));
        QVERIFY(frames > 10);
    }

    void marksSelectTheWordsBetween()
    {
        Player& source = player(MonitorPane::Kind::Source);
        source.setMarks(frameOfMs(1000, source.rate()) + 1, frameOfMs(1999, source.rate()));
        QCOMPARE(transcript().getTranscriptTextEdit()->textCursor().selectedText(), QString("w5 w6 w7 w8 w9"));
        source.clearMarks();
    }

    void exportsGoWhereTheUserSays()
    {
        Hand::whenOpen([this](QWidget* dialog) {
            qobject_cast<QFileDialog*>(dialog)->selectNameFilter("WebVTT (*.vtt)");
            choose(dialog, m_maker.path("mine"));
        });
        transcript().exportSubcapSlot();
        QTRY_VERIFY(m_maker.bytes("mine.vtt").startsWith("WEBVTT"));
        transcript().scriptFromClipSlot();
        QTRY_VERIFY(m_maker.bytes("profile/scripts/clip.txt").contains("10:00:00:00"));
    }

    void tracksAreChosenByKeyboardAndRemembered()
    {
        Hand::whenOpen([this](QWidget* dialog) { choose(dialog, m_maker.path("two.json")); });
        m_window->action("importTranscript")->trigger();
        QTRY_COMPARE(transcript().entryWidgets().size(), 2);
        const QString id = player(MonitorPane::Kind::Source).sequence()->id;
        const auto choose = [&](const QList<int>& keys) {
            Hand::whenOpen([keys](QWidget* dialog) {
                for (const int key : keys)
                    Hand::key(dialog->focusWidget(), key);
            });
            transcript().onTrackSelectionClicked();
        };
        choose({Qt::Key_Down, Qt::Key_Space, Qt::Key_Return});
        QTRY_COMPARE(transcript().entryWidgets().size(), 1);
        QCOMPARE(transcript().getTranscriptTextEdit()->toPlainText().trimmed(), QString("left"));
        const auto kept = desk::services::TranscriptSettings::load(m_host->profile().transcriptSettingsFile());
        QCOMPARE(kept.tracks.value(id), QVector<int>{0});
        // Without any track there is nothing to confirm.
        choose({Qt::Key_Space, Qt::Key_Return, Qt::Key_Escape});
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(m_host->transcripts().chosenTracks(id), QVector<int>{0});
        choose({Qt::Key_Down, Qt::Key_Space, Qt::Key_Return});
        QTRY_COMPARE(transcript().entryWidgets().size(), 2);
        QVERIFY(m_host->transcripts().chosenTracks(id).isEmpty());
    }

    /// A crash leaves a clip waiting that stands in a timeline alone.
    void whatAFormerRunLeftGoesOn()
    {
        m_window.reset();
        m_host.reset();
        const QString lone = desk::media::openSequence(m_maker.path("lone.wav"))->id;
        using Stage = desk::speech::ClipState::Stage;
        {
            desk::speech::TranscriptStore store(desk::services::Profile(m_maker.path("profile")).transcriptFile());
            store.setClipState(lone, {Stage::Running, 40, {}});
            QVERIFY(store.waitUntilStored(5000));
        }
        openDesk();
        QTRY_COMPARE(m_host->transcripts().active(), 1);
    }

    void theCommandsWorkOnTheSameProfile()
    {
        m_window.reset();
        m_host.reset();
        const QString profile = m_maker.path("commands");
        const auto run = [&](const QStringList& words) {
            return support::desk(words + QStringList{"--profile", profile});
        };
        const QString speech =
            "/usr/share/pocketsphinx/test/data/librivox/sense_and_sensibility_01_austen_64kb-0870.wav";
        QVERIFY(QFile::exists(speech));
        QVERIFY(m_maker.ffmpeg(QStringLiteral("-i %1 -c:a pcm_s16le @said.wav").arg(speech)));
        auto answer = run({"recogniser", "--program", m_maker.path("none"), "--model", m_maker.path("said.wav")});
        QVERIFY2(answer.exitCode == 1 && answer.errors.contains("none: the speech"), qPrintable(answer.errors));
        answer = run({"transcript", m_maker.path("said.wav")});
        QCOMPARE(answer.exitCode, 1);
        QVERIFY2(answer.errors.contains("said.wav: it has no transcript"), qPrintable(answer.errors));
        // A clip that fails does not keep the next one.
        answer = run({"transcribe", m_maker.path("lone.wav"), "said"});
        QVERIFY2(answer.exitCode == 1 && answer.errors.contains("no speech"), qPrintable(answer.errors));
        QVERIFY2(run({"transcript", "said"}).output.contains("mr john"), "what was said is not in the transcript");
        QCOMPARE(run({"speakers", "rename", "1", "Elinor"}).exitCode, 0);
        QVERIFY(run({"transcribe", "said"}).output.contains("has a transcript"));
        QVERIFY(run({"transcribe", "--again", "said"}).output.contains(" words"));
        QVERIFY(run({"speakers"}).output.startsWith("1  Elinor"));
        QCOMPARE(run({"transcript", "said", "--export", m_maker.path("said.csv")}).exitCode, 0);
        QVERIFY(m_maker.bytes("said.csv").contains("Elinor"));
        QCOMPARE(run({"transcript", "said", "--import", m_maker.path("clip.json")}).exitCode, 0);
        QVERIFY(run({"transcript", "said"}).output.contains("w1 w2"));
        QVERIFY(m_maker.ffmpeg("-i @lone.wav -i @said.wav -map 0 -map 1 -c:a pcm_s16le @pair.mov"));
        answer = run({"transcribe", m_maker.path("pair.mov"), "--tracks", "1,3"});
        QVERIFY2(answer.exitCode == 1 && answer.errors.contains("track \"3\": there is no such track; name tracks by "
                                                                "their numbers: A1 Mono; A2 Mono"),
                 qPrintable(answer.errors));
        QCOMPARE(run({"transcribe", "pair", "--tracks", "A2"}).exitCode, 0);
        QVERIFY(run({"transcript", "pair"}).output.contains("mr john"));
        answer = run({"transcript", "pair", "--tracks", "1"});
        QVERIFY2(answer.exitCode == 1 && answer.errors.contains("no words of the chosen"), qPrintable(answer.errors));
    }
};

STRATACUT_TEST_MAIN(TestTranscriptDesk)
#include "tst_transcript_desk.moc"

// The walk's way through the transcript: nothing to show, recognising, following, searching, speakers, timelines, and
// what goes wrong.

#include "desk/app/walk/Walk.h"

#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_MissingTranscriptWidget.h"
#include "StratacutUI/STT_SearchWidget.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "desk/app/Host.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/TranscriptPane.h"
#include "desk/services/TranscriptService.h"

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTextBlock>
#include <QToolButton>

#include <algorithm>

namespace desk::app
{

namespace
{
constexpr int recognitionAtMost = 5 * 60 * 1000;

int countOfBoldWords(const STT_TranscriptManagerWindow& window)
{
    int words = 0;
    const QTextDocument* document = window.getTranscriptTextEdit()->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto at = block.begin(); !at.atEnd(); ++at)
            words += at.fragment().charFormat().fontWeight() > QFont::Normal;
    }
    return words;
}

/// The missing clip's button, once it stands in the window.
QPushButton* transcribeButton(const STT_TranscriptManagerWindow& window)
{
    const auto clips = window.missingWidgets();
    return clips.isEmpty() ? nullptr : clips.first()->findChild<QPushButton*>();
}
} // namespace

STT_TranscriptManagerWindow& Walk::transcript() const
{
    return m_window->transcript().window();
}

Status Walk::openTranscript()
{
    m_window->action(QStringLiteral("focusTranscript"))->trigger();
    Status shown = expect(transcript().isVisible(), QStringLiteral("showing the transcript"));
    return shown ? m_hand->shoot(QStringLiteral("transcript-nothing-loaded")) : shown;
}

/// Without the lines of such clips nothing is left to be shown.
Status Walk::hideMissingClips()
{
    const QList<QAction*> actions = transcript().findChild<QMenu*>()->actions();
    const auto found = std::find_if(actions.begin(), actions.end(), [](const QAction* action) {
        return action->text() == QLatin1String("Show Not Transcribed");
    });
    if (found == actions.end())
        return expect(false, QStringLiteral("hiding what is not transcribed"));
    (*found)->trigger();
    Status pictured = m_hand->shoot(QStringLiteral("transcript-empty"));
    (*found)->trigger();
    Hand::waitFor([this] { return transcribeButton(transcript()) != nullptr; });
    return pictured;
}

Status Walk::transcribeClip()
{
    m_window->action(QStringLiteral("clearMarks"))->trigger();
    if (!Hand::waitFor([this] { return transcribeButton(transcript()) != nullptr; }))
        return expect(false, QStringLiteral("offering to transcribe the clip"));
    Status pictured = m_hand->shoot(QStringLiteral("not-transcribed"));
    if (pictured)
        pictured = hideMissingClips();
    auto& store = m_host->transcripts().store();
    const auto count = [&](speech::ClipState::Stage stage) { return store.clips(stage).size(); };
    Hand::click(transcribeButton(transcript()));
    Hand::waitFor([&] {
        const QStringList running = store.clips(speech::ClipState::Stage::Running);
        return count(speech::ClipState::Stage::Done) == 1 ||
               (!running.isEmpty() && store.clipState(running.first()).percent > 0);
    });
    Status running = m_hand->shoot(QStringLiteral("transcribing"));
    const bool done = Hand::waitFor([this] { return transcript().entryWidgets().size() > 1; }, recognitionAtMost);
    Status recognised =
        expect(done && count(speech::ClipState::Stage::Done) == 1, QStringLiteral("recognising speech"));
    if (!recognised)
        return recognised;
    return pictured ? running : pictured;
}

Status Walk::followTranscript()
{
    MonitorPane& monitor = m_window->monitor(MonitorPane::Kind::Source);
    const media::Player& player = monitor.player();
    auto* view = monitor.findChild<QWidget*>(QStringLiteral("m_view"));
    Hand::key(view, Qt::Key_Home);
    Hand::key(view, Qt::Key_L);
    QStringList spoken;
    Hand::waitFor([&] {
        const QString word = transcript().getBoldedCursor().selectedText();
        if (!word.isEmpty() && (spoken.isEmpty() || spoken.last() != word))
            spoken += word;
        return player.position() >= player.frames() / 2;
    });
    Status pictured = m_hand->shoot(QStringLiteral("transcript-follows"));
    Hand::key(view, Qt::Key_K);
    Status followed = expect(spoken.size() > 3, QStringLiteral("following playback word by word"));
    return followed ? pictured : followed;
}

Status Walk::searchTranscript()
{
    auto* field = transcript().findChild<STT_SearchWidget*>()->findChild<QLineEdit*>();
    Hand::type(field, QStringLiteral("be"));
    STT_TranscriptTextEdit* text = transcript().getTranscriptTextEdit();
    const bool found = Hand::waitFor([text] { return text->extraSelections().size() > 1; }, 2000);
    Hand::key(field, Qt::Key_Return);
    Status pictured = m_hand->shoot(QStringLiteral("transcript-search"));
    Hand::type(field, QString());
    Hand::key(field, Qt::Key_Delete);
    Status searched = expect(found, QStringLiteral("finding words in the transcript"));
    return searched ? pictured : searched;
}

Status Walk::nameSpeaker()
{
    STT_EntryWidget* entry = transcript().entryWidgets().first();
    STT_SpeakerTextEdit* field = entry->speakerEdit();
    field->beginEditing();
    Hand::type(field, QStringLiteral("Elinor"));
    Hand::key(field, Qt::Key_Return);
    const auto& speakers = m_host->transcripts().store().speakers();
    const auto isNamed = [](const speech::Speaker& speaker) { return speaker.name == QLatin1String("Elinor"); };
    Status named = expect(std::any_of(speakers.begin(), speakers.end(), isNamed), QStringLiteral("naming a speaker"));
    if (!named)
        return named;
    Status pictured;
    Hand::whenOpen([&](QWidget* menu) {
        Hand::key(menu, Qt::Key_Down);
        Hand::key(menu, Qt::Key_Right);
        pictured = m_hand->shoot(QStringLiteral("speaker-menu"));
        STT_TranscriptManagerWindow::GetSpeakerMenu()->close();
    });
    entry = transcript().entryWidgets().last();
    entry->findChild<QToolButton*>()->click();
    Hand::waitFor([] { return !STT_TranscriptManagerWindow::GetSpeakerMenu()->isVisible(); });
    return pictured;
}

/// Two voices of the clip speak at once there.
Status Walk::transcribeTimeline()
{
    m_window->action(QStringLiteral("switchTranscript"))->trigger();
    media::Player& player = m_window->monitor(MonitorPane::Kind::Record).player();
    Hand::waitFor([this] { return transcript().entryWidgets().size() > 2; });
    qint64 frame = player.frames();
    do
        player.seek(--frame);
    while (frame > 0 && countOfBoldWords(transcript()) < 2);
    Hand::waitFor([&] { return player.picture() && player.picture()->frame == frame; });
    Status shown = expect(countOfBoldWords(transcript()) == 2 && transcribeButton(transcript()) != nullptr,
                          QStringLiteral("showing the transcript of a timeline"));
    return shown ? m_hand->shoot(QStringLiteral("transcript-of-a-timeline")) : shown;
}

/// The second clip's file goes away while the timeline is in the monitor.
Status Walk::failToTranscribe()
{
    QFile::remove(secondMedia());
    Hand::click(transcribeButton(transcript()));
    const bool failed = Hand::waitFor([this] {
        const auto clips = transcript().missingWidgets();
        return !clips.isEmpty() && clips.first()->clip().state == STT_Transcription::Failed;
    });
    Status told = expect(failed, QStringLiteral("telling that a clip's file is gone"));
    Status pictured = m_hand->shoot(QStringLiteral("transcription-failed"));
    QFile::copy(m_request.media, secondMedia());
    m_window->action(QStringLiteral("switchTranscript"))->trigger();
    m_window->action(QStringLiteral("focusPackages"))->trigger();
    return told ? pictured : told;
}

/// A database that is no database is left alone, and taken again when it is back.
Status Walk::loseTranscripts()
{
    const services::TranscriptService& service = m_host->transcripts();
    m_window->action(QStringLiteral("focusTranscript"))->trigger();
    Status shown = watch(0, m_window->monitor(MonitorPane::Kind::Source));
    if (!shown)
        return shown;
    Status lost = expect(Hand::waitFor([&] { return !service.isReadable() && !service.isOpening(); }),
                         QStringLiteral("finding the database unreadable"));
    Status pictured = m_hand->shoot(QStringLiteral("database-offline"));
    const QString file = m_host->profile().transcriptFile();
    QFile::remove(file);
    QFile::rename(file + QStringLiteral(".away"), file);
    shown = watch(0, m_window->monitor(MonitorPane::Kind::Source));
    Status back = expect(Hand::waitFor([this] { return transcript().entryWidgets().size() > 1; }),
                         QStringLiteral("reading the transcripts again"));
    m_window->action(QStringLiteral("focusPackages"))->trigger();
    for (const Status* status : {&lost, &pictured, &shown}) {
        if (!*status)
            return *status;
    }
    return back;
}

void Walk::hideTranscripts() const
{
    const QString file = services::Profile(m_request.profile).transcriptFile();
    QFile::rename(file, file + QStringLiteral(".away"));
    QFile junk(file);
    if (junk.open(QIODevice::WriteOnly))
        junk.write("no database\n");
}

} // namespace desk::app

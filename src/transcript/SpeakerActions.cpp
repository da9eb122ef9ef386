// The speaker menu and what it asks of the host.

#include "EntryColumn.h"
#include "NvCore/NvText.h"
#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <QTextBlock>

namespace
{
/// The line that the menu was opened for. Its widget may show another segment before the user has chosen.
struct MenuLine {
    int segment = -1;
    QPointer<QWidget> view;
};

MenuLine& menuLine()
{
    static MenuLine line;
    return line;
}

int menuSegment()
{
    return menuLine().segment;
}

QString actionText(QString name)
{
    return name.replace('&', QStringLiteral("&&"));
}
} // namespace

QMenu* STT_TranscriptManagerWindow::GetSpeakerMenu()
{
    static QPointer<QMenu> menu;
    if (!menu) {
        menu = new QMenu;
        // It must not outlive the application, which no widget does.
        qAddPostRoutine([] { delete menu.data(); });
    }
    return menu;
}

void STT_TranscriptManagerWindow::SetSpeakerMenuEntry(STT_EntryWidget* entry)
{
    menuLine() = entry ? MenuLine{entry->segment(), entry->parentWidget()} : MenuLine();
}

void STT_TranscriptManagerWindow::RefreshSpeakerMenu(int)
{
    QMenu* menu = GetSpeakerMenu();
    const auto former = menu->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    qDeleteAll(former);
    menu->clear();
    QMenu* identify = menu->addMenu(stx_func("Identify Speaker"));
    const std::vector<STT_SpeakerInfo> named = getSpeakersInfo(false);
    for (const STT_SpeakerInfo& speaker : named) {
        if (speaker.name.empty())
            continue;
        QAction* action = identify->addAction(actionText(QString::fromStdString(speaker.name)));
        connect(action, &QAction::triggered, this, [=] { IdentifySpeakerAction(action, speaker); });
    }
    identify->addSeparator();
    connect(identify->addAction(stx_func("Clear Name")), &QAction::triggered, this,
            &STT_TranscriptManagerWindow::ClearNameSpeakerAction);
    connect(identify->addAction(stx_func("Rename")), &QAction::triggered, this,
            &STT_TranscriptManagerWindow::RenameSpeakerAction);

    QMenu* correct = menu->addMenu(stx_func("Correct Speaker ID"));
    const std::vector<STT_SpeakerInfo> all = getSpeakersInfo(true);
    for (const STT_SpeakerInfo& speaker : all) {
        QAction* action = correct->addAction(actionText(speaker.displayName()));
        connect(action, &QAction::triggered, this, [=] { CorrectSpeakerAction(action, speaker); });
    }
    correct->addSeparator();
    connect(correct->addAction(stx_func("Add New Speaker")), &QAction::triggered, this,
            &STT_TranscriptManagerWindow::AddNewSpeakerAction);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void STT_TranscriptManagerWindow::IdentifySpeakerAction(QAction*, STT_SpeakerInfo speaker)
{
    const int segment = menuSegment();
    if (segment >= 0 && info->speakerOfSegment(segment).name != speaker.name)
        SpeakerNameChangedSlot(segment, QString::fromStdString(speaker.name));
}

void STT_TranscriptManagerWindow::ClearNameSpeakerAction()
{
    const int segment = menuSegment();
    if (segment >= 0 && !info->speakerOfSegment(segment).name.empty())
        SpeakerNameChangedSlot(segment, QString());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
void STT_TranscriptManagerWindow::CorrectSpeakerAction(QAction*, STT_SpeakerInfo speaker)
{
    const int segment = menuSegment();
    if (segment < 0)
        return;
    info->correctSpeaker(segment, speaker);
    m_entryColumn->refreshTexts();
}

void STT_TranscriptManagerWindow::AddNewSpeakerAction()
{
    if (menuSegment() >= 0)
        CorrectSpeakerAction(nullptr, {std::to_string(info->addSpeaker()), {}, {}});
}

/// The widget beside a segment, which is brought into view; null for a segment that has no line.
STT_EntryWidget* STT_TranscriptManagerWindow::entryInView(int segment)
{
    const int block = getBlockNumberForSegment(segment);
    if (block < 0)
        return nullptr;
    const QTextCursor line(m_textEdit->document()->findBlockByNumber(block));
    if (!m_textEdit->isInView(m_textEdit->getTranscriptRectForCursor(line)))
        m_textEdit->scrollToMiddle(line);
    m_entryColumn->sync();
    return m_entryColumn->entry(segment);
}

/// The line may have left the view while the menu was open, and a field that is hidden takes no name.
void STT_TranscriptManagerWindow::RenameSpeakerAction()
{
    if (!m_showSpeaker->isChecked())
        m_showSpeaker->trigger();
    if (STT_EntryWidget* entry = entryInView(menuSegment()))
        entry->speakerEdit()->beginEditing();
}

void STT_TranscriptManagerWindow::openSpeakerMenu(STT_EntryWidget* entry, const QPoint& position)
{
    SetSpeakerMenuEntry(entry);
    RefreshSpeakerMenu(entry->segment());
    GetSpeakerMenu()->popup(position);
}

/// Its segment is gone, or it means something else now.
void STT_TranscriptManagerWindow::closeSpeakerMenu()
{
    if (menuLine().view != m_textEdit->viewport())
        return;
    SetSpeakerMenuEntry(nullptr);
    GetSpeakerMenu()->close();
}

/// For the line of the bold word; where no word is bold, for the one of the text cursor.
void STT_TranscriptManagerWindow::openSpeakerMenuByKey()
{
    const QTextCursor here = m_boldedCursor.hasSelection() ? m_boldedCursor : m_textEdit->textCursor();
    if (STT_EntryWidget* entry = entryInView(here.block().userState()))
        openSpeakerMenu(entry, entry->mapToGlobal(entry->speakerEdit()->geometry().bottomLeft()));
}

void STT_TranscriptManagerWindow::SpeakerNameChangedSlot(int segment, QString newName)
{
    const STT_SpeakerInfo speaker = info->speakerOfSegment(segment);
    const std::vector<STT_TranscriptSegment>& segments = info->segments(0);
    if (segment < 0 || segment >= int(segments.size()))
        return;
    const int key = segments[size_t(segment)].speakerKey;
    const STT_SpeakerInfo renamed{speaker.id, speaker.detail, newName.toStdString()};
    m_entryColumn->showSpeaker(renamed.displayName(), [&](int other) {
        return other >= 0 && other < int(segments.size()) && segments[size_t(other)].speakerKey == key;
    });
    info->storeSpeakerName(speaker, renamed.name);
}

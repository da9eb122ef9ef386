#include "EntryColumn.h"

#include "LineParts.h"
#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_MissingTranscriptWidget.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QContextMenuEvent>
#include <QEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextEdit>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace
{
/// What a clip's line shows; the block owns it.
struct ClipLine : QTextBlockUserData {
    ClipLine(STT_MissingTranscript shown, QString start) : clip(std::move(shown)), timecode(std::move(start)) {}

    STT_MissingTranscript clip;
    QString timecode;
};

const ClipLine* clipOf(const QTextBlock& block)
{
    return dynamic_cast<const ClipLine*>(block.userData());
}

/// Where a line's widgets stand: in the middle of the first line of text.
QRect besideFirstLine(const QTextBlock& block, const QRect& bounds, int fieldHeight)
{
    const QTextLayout* layout = block.layout();
    const int text = layout && layout->lineCount() > 0 ? int(layout->lineAt(0).height()) : bounds.height();
    const int height = std::max(text, fieldHeight);
    return {0, bounds.top() - (height - text) / 2, bounds.width(), height};
}

template <class Widget>
QList<Widget*> fromTopToBottom(QList<Widget*> widgets)
{
    std::sort(widgets.begin(), widgets.end(), [](const Widget* a, const Widget* b) { return a->y() < b->y(); });
    return widgets;
}
} // namespace

EntryColumn::EntryColumn(QTextEdit* edit, Texts texts) : QObject(edit), m_edit(edit), m_texts(std::move(texts))
{
    m_edit->viewport()->installEventFilter(this);
    m_edit->installEventFilter(this);
    for (const QScrollBar* bar : {m_edit->verticalScrollBar(), m_edit->horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, &EntryColumn::sync);
}

void EntryColumn::layClipLine(QTextCursor& cursor) const
{
    QTextBlockFormat room;
    room.setLineHeight(LineParts::clipHeight(m_edit->font()), QTextBlockFormat::MinimumHeight);
    cursor.mergeBlockFormat(room);
}

void EntryColumn::setClip(QTextBlock block, const STT_MissingTranscript& clip, const QString& timecode)
{
    block.setUserState(-1);
    block.setUserData(new ClipLine(clip, timecode));
}

void EntryColumn::beginRebuild()
{
    m_isPaused = true;
}

void EntryColumn::endRebuild()
{
    m_isPaused = false;
    for (STT_MissingTranscriptWidget* line : std::as_const(m_byBlock)) {
        line->hide();
        m_spareClips += line;
    }
    m_byBlock.clear();
    refreshTexts();
    syncSoon();
}

void EntryColumn::setVisibilities(const STT_Visibilities& visibilities)
{
    m_visibilities = visibilities;
    for (STT_EntryWidget* entry : std::as_const(m_bySegment))
        entry->setVisibilities(visibilities);
    for (STT_MissingTranscriptWidget* line : std::as_const(m_byBlock))
        line->setVisibilities(visibilities);
    syncSoon();
}

int EntryColumn::gutterWidth() const
{
    return LineParts::gutterWidth(m_visibilities, m_edit->font());
}

void EntryColumn::refreshTexts()
{
    // Asked for a text, the host may change the transcript and so which lines are in view.
    const QList<int> segments = m_bySegment.keys();
    for (const int segment : segments) {
        if (STT_EntryWidget* shown = entry(segment))
            fill(shown, segment);
    }
    for (auto line = m_byBlock.constBegin(); line != m_byBlock.constEnd(); ++line)
        fill(line.value(), line.key());
}

void EntryColumn::showSpeaker(const QString& name, const std::function<bool(int segment)>& isMeant)
{
    for (STT_EntryWidget* entry : std::as_const(m_bySegment)) {
        if (isMeant(entry->segment()))
            entry->speakerEdit()->showName(name);
    }
}

void EntryColumn::endEditing(const std::function<bool(int segment)>& isMeant)
{
    for (STT_EntryWidget* entry : std::as_const(m_bySegment)) {
        if (entry->speakerEdit()->isEditing() && !isMeant(entry->segment()))
            entry->speakerEdit()->cancelEditing();
    }
}

QList<STT_EntryWidget*> EntryColumn::entries() const
{
    return fromTopToBottom(m_bySegment.values());
}

QList<STT_MissingTranscriptWidget*> EntryColumn::clipLines() const
{
    return fromTopToBottom(m_byBlock.values());
}

/// Whatever moves a line paints the text; the blinking of a cursor costs one look at the lines in view.
bool EntryColumn::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::Paint || type == QEvent::Resize || type == QEvent::Show)
        syncSoon();
    const bool isMenuKey = watched == m_edit && type == QEvent::ContextMenu &&
                           static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard;
    if (isMenuKey)
        emit speakerMenuKeyPressed();
    return isMenuKey || QObject::eventFilter(watched, event);
}

void EntryColumn::syncSoon()
{
    if (!std::exchange(m_isSyncDue, true))
        QMetaObject::invokeMethod(this, &EntryColumn::sync, Qt::QueuedConnection);
}

void EntryColumn::sync()
{
    m_isSyncDue = false;
    if (m_isPaused || m_isSyncing)
        return;
    // Asking for a line's place may lay it out, which may scroll.
    const QScopedValueRollback<bool> guard(m_isSyncing, true);
    const Places places = placesInView();
    placeEntries(places.entries);
    placeClips(places.clips);
}

EntryColumn::Places EntryColumn::placesInView() const
{
    Places places;
    const QAbstractTextDocumentLayout* layout = m_edit->document()->documentLayout();
    const QRect view = m_edit->viewport()->rect();
    const int scrolled = m_edit->verticalScrollBar()->value();
    const int fieldHeight = LineParts::fieldHeight(m_edit->font());
    const int width = gutterWidth();
    const int first = std::max(layout->hitTest(QPointF(0, scrolled), Qt::FuzzyHit), 0);
    for (QTextBlock block = m_edit->document()->findBlock(first); block.isValid(); block = block.next()) {
        const QRectF bounds = layout->blockBoundingRect(block);
        const int top = int(bounds.top()) - scrolled;
        if (top > view.bottom())
            break;
        if (!block.isVisible())
            continue;
        if (block.userState() >= 0) {
            const QRect gutter(0, top, width, int(bounds.height()));
            places.entries.push_back({block.userState(), besideFirstLine(block, gutter, fieldHeight)});
        } else if (clipOf(block)) {
            const int edge = LineParts::clipEdge;
            const QRect line(edge, top, view.width() - 2 * edge, int(bounds.height()));
            places.clips.push_back({block.blockNumber(), line});
        }
    }
    return places;
}

void EntryColumn::placeEntries(const std::vector<Place>& places)
{
    QHash<int, STT_EntryWidget*> leaving = std::exchange(m_bySegment, {});
    for (const Place& place : places) {
        if (STT_EntryWidget* entry = leaving.take(place.key))
            m_bySegment.insert(place.key, entry);
    }
    for (STT_EntryWidget* entry : std::as_const(leaving)) {
        if (entry->speakerEdit()->isEditing()) {
            entry->move(0, m_edit->viewport()->height());
            m_bySegment.insert(entry->segment(), entry);
        } else {
            entry->hide();
            m_spareEntries += entry;
        }
    }
    const bool shown = m_visibilities.speaker || m_visibilities.timecode;
    for (const Place& place : places) {
        STT_EntryWidget*& entry = m_bySegment[place.key];
        if (!entry) {
            entry = takeEntry();
            fill(entry, place.key);
        }
        entry->setGeometry(place.rect);
        entry->setVisible(shown);
    }
}

void EntryColumn::placeClips(const std::vector<Place>& places)
{
    QHash<int, STT_MissingTranscriptWidget*> leaving = std::exchange(m_byBlock, {});
    for (const Place& place : places) {
        if (STT_MissingTranscriptWidget* line = leaving.take(place.key))
            m_byBlock.insert(place.key, line);
    }
    for (STT_MissingTranscriptWidget* line : std::as_const(leaving)) {
        line->hide();
        m_spareClips += line;
    }
    for (const Place& place : places) {
        STT_MissingTranscriptWidget*& line = m_byBlock[place.key];
        if (!line) {
            line = takeClipLine();
            fill(line, place.key);
        }
        line->setGeometry(place.rect);
        line->show();
    }
}

STT_EntryWidget* EntryColumn::takeEntry()
{
    if (!m_spareEntries.isEmpty())
        return m_spareEntries.takeLast();
    auto* entry = new STT_EntryWidget(m_edit->viewport());
    STT_SpeakerTextEdit* speaker = entry->speakerEdit();
    connect(speaker, &STT_SpeakerTextEdit::speakerNameChangedSignal, this, &EntryColumn::speakerNameChanged);
    connect(speaker, &STT_SpeakerTextEdit::editingEnded, this, &EntryColumn::giveFocusBack);
    connect(entry, &STT_EntryWidget::speakerMenuRequested, this,
            [this, entry](const QPoint& position) { emit speakerMenuRequested(entry, position); });
    return entry;
}

STT_MissingTranscriptWidget* EntryColumn::takeClipLine()
{
    if (!m_spareClips.isEmpty())
        return m_spareClips.takeLast();
    auto* line = new STT_MissingTranscriptWidget(m_edit->viewport());
    connect(line, &STT_MissingTranscriptWidget::transcribeRequested, this, &EntryColumn::transcribeRequested);
    return line;
}

void EntryColumn::fill(STT_EntryWidget* entry, int segment)
{
    entry->setLine({segment, m_texts.speaker(segment), m_texts.timecode(segment)});
    entry->setVisibilities(m_visibilities);
}

void EntryColumn::fill(STT_MissingTranscriptWidget* line, int block)
{
    if (const ClipLine* shown = clipOf(m_edit->document()->findBlockByNumber(block)))
        line->setClip(shown->clip, shown->timecode);
    line->setVisibilities(m_visibilities);
}

/// After Return or Escape the keyboard is the transcript's again; after a click elsewhere it is where the click was.
void EntryColumn::giveFocusBack()
{
    if (!QApplication::focusWidget())
        m_edit->setFocus(Qt::OtherFocusReason);
}

#include "StratacutUI/STT_SearchWidget.h"

#include "LineParts.h"
#include "NvCore/NvText.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "ViewDeckQt/NineSlice.h"
#include "ViewDeckQt/QFFLineEditQt.h"
#include "ViewDeckQt/StyledIconButton.h"

#include <QAction>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>

#include <limits>

namespace
{
constexpr int sliceMs = 6;
// What is searched at once.
constexpr int shortText = 50000;
constexpr int unlimitedMs = std::numeric_limits<int>::max();
// How many matches are worked on between two looks at the clock.
constexpr int stride = 64;
constexpr int lineWidth = 220;

constexpr const char* forwardImage = "Arrows/navigate_forward_arrow.png";
constexpr const char* backImage = "Arrows/navigate_back_arrow.png";
} // namespace

struct STT_SearchWidget::Command {
    const char* text;
    const char* toolTip;
    QKeySequence::StandardKey key;
    void (STT_SearchWidget::*slot)();
};

STT_SearchWidget::STT_SearchWidget(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("searchWindow"));
    setToolTip(stx_func("Go to Next or Previous instance of word or phrase"));
    createWidgets();
    layOut();
    connectAll();
    showImages();
}

void STT_SearchWidget::createWidgets()
{
    m_line = new ViewDeckQt::QFFLineEditQt(this);
    m_line->setPlaceholderText(stx_func("Search"));
    m_line->setAccessibleName(stx_func("Search"));
    m_line->setClearButtonEnabled(true);
    m_line->setMinimumWidth(lineWidth / 2);
    m_line->setMaximumWidth(lineWidth);
    m_line->installEventFilter(this);
    m_count = new QLabel(this);
    m_previous = createAction({"Previous", "Go to Previous instance of word or phrase", QKeySequence::FindPrevious,
                               &STT_SearchWidget::onPreviousClicked});
    m_next = createAction(
        {"Next", "Go to Next instance of word or phrase", QKeySequence::FindNext, &STT_SearchWidget::onNextClicked});
    createAction(
        {"Search Transcript", "Search for a word or phrase", QKeySequence::Find, &STT_SearchWidget::focusLine});
    createAction({"Search for Selected Text", "Search for what is selected in the transcript", QKeySequence::UnknownKey,
                  &STT_SearchWidget::onSetSelectedClicked});
    setContextMenuPolicy(Qt::ActionsContextMenu);
    m_rest.setInterval(0);
}

/// Its key works wherever the focus is in the transcript window.
QAction* STT_SearchWidget::createAction(const Command& command)
{
    auto* action = new QAction(stx_func(command.text), this);
    action->setToolTip(stx_func(command.toolTip));
    action->setShortcut(command.key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(action);
    if (auto* window = transcriptWindow())
        window->addAction(action);
    connect(action, &QAction::triggered, this, command.slot);
    return action;
}

void STT_SearchWidget::focusLine()
{
    m_line->setFocus(Qt::ShortcutFocusReason);
    m_line->selectAll();
}

void STT_SearchWidget::layOut()
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_line, 1);
    for (QAction* action : {m_previous, m_next}) {
        auto* button = new ViewDeckQt::StyledIconButton(this);
        button->setDefaultAction(action);
        button->setImage(QStringLiteral("iconsV2"), QLatin1String(action == m_next ? forwardImage : backImage));
        layout->addWidget(button);
    }
    layout->addWidget(m_count);
}

void STT_SearchWidget::connectAll()
{
    connect(m_line, &QLineEdit::textChanged, this, &STT_SearchWidget::onSearchLabelTextChanged);
    connect(&m_rest, &QTimer::timeout, this, &STT_SearchWidget::searchSlice);
    connect(&m_spread, &QTimer::timeout, this, &STT_SearchWidget::layMore);
    connect(this, &STT_SearchWidget::searchText, this, &STT_SearchWidget::step);
    const auto* window = transcriptWindow();
    if (!window)
        return;
    connect(window, &STT_TranscriptManagerWindow::refreshDoneSignal, this, &STT_SearchWidget::onRefreshDone);
    connect(transcriptText(), &STT_TranscriptTextEdit::aboutToBeReplaced, this, &STT_SearchWidget::dropHighlights);
    connect(transcriptText(), &STT_TranscriptTextEdit::visibleLinesChanged, this, &STT_SearchWidget::layInView);
}

void STT_SearchWidget::showImages()
{
    m_next->setIcon(NineSlice::GetImage(QStringLiteral("iconsV2"), QLatin1String(forwardImage)));
    m_previous->setIcon(NineSlice::GetImage(QStringLiteral("iconsV2"), QLatin1String(backImage)));
    LineParts::setTextColor(m_count, LineParts::dim(palette()));
}

STT_TranscriptManagerWindow* STT_SearchWidget::transcriptWindow() const
{
    return qobject_cast<STT_TranscriptManagerWindow*>(parentWidget());
}

STT_TranscriptTextEdit* STT_SearchWidget::transcriptText() const
{
    const auto* window = transcriptWindow();
    return window ? window->getTranscriptTextEdit() : nullptr;
}

void STT_SearchWidget::onPreviousClicked()
{
    emit searchText(previous);
}

void STT_SearchWidget::onNextClicked()
{
    emit searchText(next);
}

void STT_SearchWidget::onSetSelectedClicked()
{
    if (const auto* text = transcriptText())
        m_line->setText(text->textCursor().selectedText().simplified());
}

bool STT_SearchWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_line || (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride))
        return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (!isReturn && key->key() != Qt::Key_Escape)
        return QWidget::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::ShortcutOverride)
        return true;
    if (isReturn) {
        emit searchText(key->modifiers().testFlag(Qt::ShiftModifier) ? previous : next);
    } else {
        m_line->clear();
        if (auto* text = transcriptText())
            text->setFocus(Qt::OtherFocusReason);
    }
    return true;
}

void STT_SearchWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_count)
        showImages();
}

QRegularExpression STT_SearchWidget::expressionFor(const QString& typed)
{
    static const QRegularExpression punctuation(QStringLiteral("\\p{P}"));
    const QString plain = QString(typed).replace(punctuation, QStringLiteral(" "));
    QStringList words = plain.simplified().split(' ', Qt::SkipEmptyParts);
    for (QString& word : words)
        word = QRegularExpression::escape(word);
    return QRegularExpression(words.join(QStringLiteral("[\\s\\p{P}]+")),
                              QRegularExpression::CaseInsensitiveOption |
                                  QRegularExpression::UseUnicodePropertiesOption);
}

void STT_SearchWidget::onSearchLabelTextChanged()
{
    if (!transcriptWindow())
        return;
    m_expression = expressionFor(m_line->text());
    m_isActive = !m_expression.pattern().isEmpty();
    startWhereTheUserReads();
    m_currentPlace = {};
    highlight();
}

void STT_SearchWidget::onRefreshDone()
{
    if (!m_isOutdated)
        return;
    m_textEdit = nullptr;
    m_isOutdated = false;
    if (m_isActive)
        highlight();
}

void STT_SearchWidget::startWhereTheUserReads()
{
    m_textEdit = transcriptText();
    const QTextCursor& bolded = transcriptWindow()->getBoldedCursor();
    m_position = bolded.hasSelection() ? pointOf(bolded) : topOfView();
}

void STT_SearchWidget::highlight()
{
    m_rest.stop();
    m_spread.stop();
    m_current = -1;
    m_matches.clear();
    m_text = QString();
    m_found = {};
    if (!m_isActive)
        return finishSearch();
    if (transcriptText()->document()->characterCount() <= shortText)
        return finishSearch();
    layFirstHits();
    m_rest.start();
    showCount();
}

void STT_SearchWidget::takeMatches(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (m_found.hasNext()) {
        const QRegularExpressionMatch match = m_found.next();
        m_matches.push_back({match.capturedStart(), match.capturedEnd()});
        if (m_matches.size() % stride == 0 && clock.hasExpired(milliseconds))
            return;
    }
}

void STT_SearchWidget::searchSlice()
{
    if (m_text.isNull())
        readText();
    takeMatches(sliceMs);
    if (!m_found.hasNext())
        finishSearch();
}

void STT_SearchWidget::readText()
{
    m_text = transcriptText()->toPlainText();
    m_found = m_expression.globalMatch(m_text);
}

void STT_SearchWidget::finishSearch()
{
    m_rest.stop();
    if (m_isActive && m_text.isNull())
        readText();
    takeMatches(unlimitedMs);
    m_text = QString();
    m_found = {};
    m_laid = {};
    findCurrentAgain();
    m_selections.clear();
    showSelections();
    layInView();
    showCount();
}

#include "AudioChoiceBox.h"

#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyleOption>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace
{
const QLatin1String separator("----------");
constexpr int shownCharacters = 6;
constexpr int shownEntries = 16;
constexpr int lineHeight = 9;
constexpr int entryPadding = 4;
constexpr qreal lineOpacity = 0.22;

/// Entries of the height that they have in the popups of the parameter widgets.
class EntryDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width(), isLine(index) ? lineHeight : option.fontMetrics.height() + 2 * entryPadding};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (!isLine(index))
            return QStyledItemDelegate::paint(painter, option, index);
        QColor color = option.palette.color(QPalette::Text);
        color.setAlphaF(lineOpacity);
        painter->fillRect(option.rect.left() + entryPadding, option.rect.center().y(),
                          option.rect.width() - 2 * entryPadding, 1, color);
    }

private:
    static bool isLine(const QModelIndex& index) { return !(index.flags() & Qt::ItemIsEnabled); }
};

QStandardItem* makeItem(const QString& entry)
{
    if (entry != separator)
        return new QStandardItem(entry);
    auto* line = new QStandardItem;
    line->setFlags(line->flags() & ~(Qt::ItemIsSelectable | Qt::ItemIsEnabled));
    // By this role a combo box knows its separators.
    line->setData(QStringLiteral("separator"), Qt::AccessibleDescriptionRole);
    return line;
}

int rowOf(const QStandardItemModel& model, const QString& text)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        const QStandardItem* item = model.item(row);
        if (item->isEnabled() && item->text() == text)
            return row;
    }
    return -1;
}
} // namespace

AudioChoiceBox::AudioChoiceBox(QWidget* parent) : QComboBox(parent)
{
    setStyle(ViewDeckQt::DecorationManager::style());
    m_isMade = true;
    setFocusPolicy(Qt::StrongFocus);
    setMaxVisibleItems(shownEntries);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &AudioChoiceBox::markMissing);
}

AudioChoiceBox::~AudioChoiceBox() = default;

AudioChoices AudioChoiceBox::makeChoices(const QStringList& entries)
{
    auto choices = std::make_shared<QStandardItemModel>();
    for (const QString& entry : entries)
        choices->appendRow(makeItem(entry));
    return choices;
}

void AudioChoiceBox::setChoices(const AudioChoices& choices)
{
    m_choices = choices;
    showList(choices);
    choose(0);
}

int AudioChoiceBox::choiceCount() const
{
    return m_choices ? m_choices->rowCount() : 0;
}

void AudioChoiceBox::choose(int index)
{
    if (m_shown != m_choices)
        showList(m_choices);
    setCurrentIndex(index < choiceCount() ? index : -1);
}

void AudioChoiceBox::choose(const QString& text)
{
    const int index = m_choices && !text.isEmpty() ? rowOf(*m_choices, text) : -1;
    if (index >= 0 || text.isEmpty())
        return choose(index);
    auto extended = std::make_shared<QStandardItemModel>();
    for (int row = 0; row < choiceCount(); ++row)
        extended->appendRow(m_choices->item(row)->clone());
    extended->appendRow(new QStandardItem(text));
    showList(extended);
    setCurrentIndex(choiceCount());
    // With an empty list the box was there already.
    markMissing();
}

void AudioChoiceBox::showList(const AudioChoices& choices)
{
    setModel(choices.get());
    m_shown = choices;
}

bool AudioChoiceBox::isMissing() const
{
    return m_shown != m_choices && currentIndex() == choiceCount();
}

void AudioChoiceBox::setPurpose(const QString& purpose)
{
    m_purpose = purpose;
    setAccessibleName(purpose);
    describe();
}

void AudioChoiceBox::describe()
{
    // Where there is no label to it, a screen reader on Linux gets for the name of a combo box what is chosen in it.
    setAccessibleDescription(m_isMarked ? m_purpose + QStringLiteral(". ") + toolTip() : m_purpose);
}

void AudioChoiceBox::setMissingToolTip(const QString& format)
{
    m_missingToolTip = format;
    markMissing();
}

void AudioChoiceBox::markMissing()
{
    const bool missing = isMissing();
    if (!missing && !m_isMarked)
        return;
    m_isMarked = missing;
    setToolTip(missing ? m_missingToolTip.arg(currentText()) : QString());
    QPalette own;
    if (missing)
        own.setColor(QPalette::ButtonText, Palette::PaletteManager::Instance().color(QStringLiteral("AttentionColor")));
    setPalette(own);
    describe();
}

QSize AudioChoiceBox::sizeHint() const
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QSize text(fontMetrics().horizontalAdvance(QLatin1Char('X')) * shownCharacters, fontMetrics().height());
    return style()->sizeFromContents(QStyle::CT_ComboBox, &option, text, this);
}

QSize AudioChoiceBox::minimumSizeHint() const
{
    return sizeHint();
}

void AudioChoiceBox::showPopup()
{
    if (!dynamic_cast<EntryDelegate*>(itemDelegate())) {
        setItemDelegate(new EntryDelegate(this));
        ViewDeckQt::DecorationManager::decorate(view()->window());
    }
    const int widest = view()->sizeHintForColumn(0) + view()->verticalScrollBar()->sizeHint().width();
    view()->setMinimumWidth(std::min(widest, screen()->availableSize().width() / 2));
    QComboBox::showPopup();
}

bool AudioChoiceBox::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || isMissing())
        return QComboBox::event(event);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect place = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    if (fontMetrics().horizontalAdvance(currentText()) <= place.width())
        return QComboBox::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), currentText(), this);
    return true;
}

void AudioChoiceBox::changeEvent(QEvent* event)
{
    // For a change of style the base makes the list of its popup. That takes far longer than all the rest, and few are
    // ever opened.
    if (event->type() == QEvent::StyleChange && !m_isMade)
        return QWidget::changeEvent(event); // NOLINT(bugprone-parent-virtual-call)
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && isMissing())
        markMissing();
}

void AudioChoiceBox::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

#include "ChoiceBox.h"

#include "FamilyStyle.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyleOption>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace ViewDeckQt
{

namespace
{
constexpr int separatorHeight = 9;
constexpr int entryPadding = 4;
constexpr int textPadding = Spacing::fieldPadding - 1;

bool isDivider(const QModelIndex& index)
{
    return !(index.flags() & Qt::ItemIsEnabled);
}

class EntryDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return {option.fontMetrics.horizontalAdvance(index.data().toString()) + 2 * textPadding + 1,
                isDivider(index) ? separatorHeight : option.fontMetrics.height() + 2 * entryPadding};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (!isDivider(index))
            return paintEntry(painter, option, index);
        const QRect line(option.rect.left() + entryPadding, option.rect.center().y(),
                         option.rect.width() - 2 * entryPadding, 1);
        painter->fillRect(line, Tone::divider(option.palette));
    }

    // The text is drawn apart so that it reads in its own direction, as in the closed box, not in that of the layout.
    void paintEntry(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
    {
        QStyleOptionViewItem item(option);
        initStyleOption(&item, index);
        item.text.clear();
        const QStyle* style = item.widget->style();
        style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
        const QRect place = item.rect.adjusted(textPadding, 0, -textPadding, 0);
        const QString text = item.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, place.width());
        const Qt::Alignment lines = QStyle::visualAlignment(item.direction, Qt::AlignLeft | Qt::AlignVCenter);
        style->drawItemText(painter, place, int(lines), item.palette, true, text,
                            item.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text);
    }

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override
    {
        if (event->type() != QEvent::ToolTip || sizeHint(option, index).width() <= option.rect.width())
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        QToolTip::showText(event->globalPos(), index.data().toString(), view);
        return true;
    }
};
} // namespace

ChoiceBox::ChoiceBox(QWidget* parent) : QComboBox(parent)
{
    FamilyStyle::apply(this);
    // Neither the wheel nor a page that scrolls below the pointer may give it the focus.
    setFocusPolicy(Qt::StrongFocus);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    setMaxVisibleItems(16);
    setItemDelegate(new EntryDelegate(this));
}

bool ChoiceBox::isSeparator(const QString& entry)
{
    return entry == QLatin1String("----------") || entry == QLatin1String("Separator");
}

void ChoiceBox::setEntries(const QStringList& entries)
{
    clear();
    for (const QString& entry : entries) {
        if (isSeparator(entry))
            insertSeparator(count());
        else
            addItem(entry);
    }
}

void ChoiceBox::showPopup()
{
    const int widest = view()->sizeHintForColumn(0) + view()->verticalScrollBar()->sizeHint().width();
    const int room = screen()->availableSize().width() / 2;
    view()->setMinimumWidth(std::min(widest, room));
    QComboBox::showPopup();
}

bool ChoiceBox::isElided() const
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect place = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return fontMetrics().horizontalAdvance(currentText()) > place.width();
}

bool ChoiceBox::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && isElided()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), currentText(), this);
        return true;
    }
    return QComboBox::event(event);
}

void ChoiceBox::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

} // namespace ViewDeckQt

#pragma once

#include <QStyledItemDelegate>

namespace desk::app
{

/// Draws a sequence of the bin: its picture, its name and the lines of its facts.
class BinDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace desk::app

#include "desk/app/window/BinDelegate.h"

#include "ViewDeckQt/NineSlice.h"
#include "ViewDeckQt/PaletteManager.h"
#include "desk/app/window/BinModel.h"

#include <QApplication>
#include <QPainter>

namespace desk::app
{

namespace
{
constexpr int padding = 6;
constexpr int gap = 10;
constexpr QSize pictureSize(96, 54);

void drawPicture(QPainter& painter, const QRect& place, const QImage& image)
{
    painter.fillRect(place, QColor(20, 21, 23));
    if (!image.isNull())
        return painter.drawImage(place, image);
    const QPixmap sign = NineSlice::GetImage(QStringLiteral("iconsV2/BinMedia"), QStringLiteral("sequence"));
    const QSize size = sign.size() / sign.devicePixelRatio();
    painter.drawPixmap(place.center() - QPoint(size.width() / 2, size.height() / 2), sign);
}

QColor mixed(const QColor& a, const QColor& b)
{
    return {(a.red() * 2 + b.red()) / 3, (a.green() * 2 + b.green()) / 3, (a.blue() * 2 + b.blue()) / 3};
}

struct Colors {
    QColor name;
    QColor facts;
};

Colors colorsOf(const QStyleOptionViewItem& option, const QModelIndex& index)
{
    const bool selected = option.state & QStyle::State_Selected;
    const QColor name = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    if (index.data(BinModel::MissingRole).toBool() && !selected) {
        const QColor attention = Palette::PaletteManager::Instance().color(QStringLiteral("AttentionColor"));
        return {name, attention};
    }
    return {name, selected ? name : mixed(name, option.palette.color(QPalette::Base))};
}

/// From the side where lines start, in whatever direction the text itself reads.
void drawLine(QPainter& painter, const QRect& line, const QString& text)
{
    const Qt::Alignment side = QStyle::visualAlignment(painter.layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    const int reads = text.isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    painter.drawText(line, int(side | Qt::AlignAbsolute) | reads,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
}

QFont smaller(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * 0.9);
    return font;
}
} // namespace

void BinDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);
    const QRect inner = option.rect.adjusted(padding, padding, -padding, -padding);
    const QRect picture(inner.topLeft() + QPoint(0, (inner.height() - pictureSize.height()) / 2), pictureSize);
    // Where lines start on the right, all of it is mirrored.
    const auto placed = [&option](const QRect& rect) {
        return QStyle::visualRect(option.direction, option.rect, rect);
    };
    drawPicture(*painter, placed(picture), index.data(Qt::DecorationRole).value<QImage>());
    const Colors colors = colorsOf(option, index);
    const int left = picture.right() + gap;
    QFont bold = option.font;
    bold.setBold(true);
    const QFont small = smaller(option.font);
    const int nameHeight = QFontMetrics(bold).height();
    const int factHeight = QFontMetrics(small).height();
    const QStringList facts = index.data(BinModel::FactsRole).toStringList();
    int top = inner.center().y() - (nameHeight + factHeight * facts.size()) / 2;
    painter->setFont(bold);
    painter->setPen(colors.name);
    drawLine(*painter, placed({left, top, inner.right() - left, nameHeight}), index.data().toString());
    top += nameHeight;
    painter->setFont(small);
    painter->setPen(colors.facts);
    for (const QString& fact : facts) {
        drawLine(*painter, placed({left, top, inner.right() - left, factHeight}), fact);
        top += factHeight;
    }
    painter->restore();
}

QSize BinDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    Q_UNUSED(index);
    const int text = QFontMetrics(option.font).height() * 3;
    return {pictureSize.width() + 2 * padding, std::max(pictureSize.height(), text) + 2 * padding};
}

} // namespace desk::app

// The signs of message boxes: flat, in the colours of the skin.

#include "FamilyStyle.h"

#include "ViewDeckQt/PaletteManager.h"

#include <QIcon>
#include <QPainter>

#include <algorithm>
#include <iterator>

namespace ViewDeckQt
{

namespace
{
struct MessageSign {
    QStyle::StandardPixmap icon;
    const char* letter;
    /// A colour of the skin.
    const char* color;
};

constexpr MessageSign signs[] = {
    {QStyle::SP_MessageBoxInformation, "i", "IconSecondColor"},
    {QStyle::SP_MessageBoxQuestion, "?", "IconSecondColor"},
    {QStyle::SP_MessageBoxWarning, "!", "AttentionColor"},
    {QStyle::SP_MessageBoxCritical, "\xC3\x97", "AttentionColor"},
};

QPixmap draw(const MessageSign& sign, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = Palette::PaletteManager::Instance().color(QLatin1String(sign.color));
    const qreal inset = size / 16.0;
    const QRectF circle(inset, inset, size - 2 * inset, size - 2 * inset);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(circle);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(size * 5 / 8);
    painter.setFont(font);
    painter.setPen(Palette::PaletteManager::Instance().color(QStringLiteral("PanelBackgroundColor")));
    painter.drawText(circle, Qt::AlignCenter, QString::fromUtf8(sign.letter));
    return pixmap;
}
} // namespace

QIcon FamilyStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const
{
    const auto* sign =
        std::find_if(std::begin(signs), std::end(signs), [icon](const MessageSign& one) { return one.icon == icon; });
    if (sign == std::end(signs))
        return QProxyStyle::standardIcon(icon, option, widget);
    QIcon drawn;
    for (const int size : {32, 48, 64, 96})
        drawn.addPixmap(draw(*sign, size));
    return drawn;
}

} // namespace ViewDeckQt

#include "PanePalette.h"

#include "ViewDeckQt/PaletteManager.h"

#include <QWidget>

#include <algorithm>

namespace
{
QColor lighter(const QColor& color)
{
    const auto raised = [](int channel) { return std::min(channel + 5, 255); };
    return {raised(color.red()), raised(color.green()), raised(color.blue())};
}
} // namespace

QColor PanePalette::background(const QWidget& widget)
{
    const auto color = Palette::PaletteManager::Instance().GetNvRGBColor(QStringLiteral("PanelBackgroundLighterColor"));
    if (color)
        return *color;
    const QWidget& above = widget.parentWidget() ? *widget.parentWidget() : widget;
    return lighter(above.palette().color(QPalette::Base));
}

QColor PanePalette::text(const QWidget& widget)
{
    const auto color = Palette::PaletteManager::Instance().GetNvRGBColor(QStringLiteral("TETextColor"));
    return color ? color->toQColor() : widget.palette().color(QPalette::Text);
}

#include "ViewDeckQt/PaletteManager.h"

#include <QApplication>

#include <algorithm>
#include <iterator>

namespace Palette
{

namespace
{
struct NamedColor {
    const char* name;
    NvRGBColor dark;
    NvRGBColor light;

    NvRGBColor of(Skin skin) const { return skin == Skin::Dark ? dark : light; }
};

// The two icon colours keep the promise of the header: recolouring tells them apart by their greyness.
constexpr NamedColor colors[] = {
    {"PanelBackgroundColor", {38, 39, 42}, {232, 233, 235}},
    {"PanelBackgroundLighterColor", {48, 50, 54}, {246, 247, 248}},
    {"TETextColor", {226, 228, 231}, {24, 26, 29}},
    {"AppFontColor", {210, 212, 216}, {36, 38, 42}},
    {"QuietFontColor", {156, 158, 162}, {98, 100, 104}},
    {"DisabledFontColor", {118, 121, 127}, {146, 149, 154}},
    {"ControlColor", {62, 65, 70}, {218, 220, 224}},
    {"HighlightColor", {43, 108, 176}, {43, 108, 176}},
    {"HighlightedTextColor", {255, 255, 255}, {255, 255, 255}},
    {"IconFirstColor", {196, 196, 196}, {72, 72, 72}},
    {"IconSecondColor", {82, 168, 255}, {20, 104, 196}},
    {"AttentionColor", {255, 184, 76}, {156, 74, 0}},
};

const NamedColor* find(const QString& name)
{
    const auto* entry = std::find_if(std::begin(colors), std::end(colors),
                                     [&](const NamedColor& c) { return name == QLatin1String(c.name); });
    return entry == std::end(colors) ? nullptr : entry;
}

struct PaletteRole {
    QPalette::ColorRole role;
    const char* color;
};

constexpr PaletteRole paletteRoles[] = {
    {QPalette::Window, "PanelBackgroundColor"},
    {QPalette::WindowText, "AppFontColor"},
    {QPalette::Base, "PanelBackgroundLighterColor"},
    {QPalette::AlternateBase, "PanelBackgroundColor"},
    {QPalette::Text, "TETextColor"},
    {QPalette::Button, "ControlColor"},
    {QPalette::ButtonText, "AppFontColor"},
    {QPalette::ToolTipBase, "ControlColor"},
    {QPalette::ToolTipText, "AppFontColor"},
    {QPalette::Highlight, "HighlightColor"},
    {QPalette::HighlightedText, "HighlightedTextColor"},
    {QPalette::Link, "IconSecondColor"},
    {QPalette::PlaceholderText, "QuietFontColor"},
};

constexpr QPalette::ColorRole disabledTextRoles[] = {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                                     QPalette::HighlightedText};
} // namespace

PaletteManager& PaletteManager::Instance()
{
    static PaletteManager instance;
    return instance;
}

std::optional<NvRGBColor> PaletteManager::GetNvRGBColor(const QString& name) const
{
    if (const NamedColor* entry = find(name))
        return entry->of(skin());
    if (!m_reported.contains(name)) {
        m_reported.insert(name);
        qWarning("Palette: there is no colour named \"%s\"", qUtf8Printable(name));
    }
    return std::nullopt;
}

QColor PaletteManager::color(const QString& name) const
{
    const std::optional<NvRGBColor> found = GetNvRGBColor(name);
    return found ? found->toQColor() : QGuiApplication::palette().color(QPalette::WindowText);
}

Skin PaletteManager::skin() const
{
    if (m_skin)
        return *m_skin;
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128 ? Skin::Dark : Skin::Light;
}

void PaletteManager::setSkin(Skin skin)
{
    m_skin = skin;
    QApplication::setPalette(paletteOf(skin));
}

QPalette PaletteManager::paletteOf(Skin skin)
{
    // The two-colour constructor derives the shades of frames and bevels.
    QPalette palette(find(QStringLiteral("ControlColor"))->of(skin),
                     find(QStringLiteral("PanelBackgroundColor"))->of(skin));
    for (const PaletteRole& entry : paletteRoles)
        palette.setColor(entry.role, find(QLatin1String(entry.color))->of(skin));
    for (const QPalette::ColorRole role : disabledTextRoles)
        palette.setColor(QPalette::Disabled, role, find(QStringLiteral("DisabledFontColor"))->of(skin));
    return palette;
}

} // namespace Palette

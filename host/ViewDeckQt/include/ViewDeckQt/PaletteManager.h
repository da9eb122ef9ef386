#pragma once

#include "ViewDeckQt/Export.h"

#include "NvCore/NvRGBColor.h"

#include <QPalette>
#include <QSet>
#include <QString>

#include <optional>

namespace Palette
{

enum class Skin { Dark, Light };

/// The process-wide source of colours by name, in two skins. User-interface thread only.
///
/// | name                          | what it colours                                  |
/// |-------------------------------|--------------------------------------------------|
/// | "PanelBackgroundColor"        | the background of windows                        |
/// | "PanelBackgroundLighterColor" | the background of lists, trees and forms         |
/// | "TETextColor"                 | text in editable fields                          |
/// | "AppFontColor"                | all other text                                   |
/// | "QuietFontColor"              | facts and hints, which stand back                |
/// | "DisabledFontColor"           | text of what cannot be used now                  |
/// | "ControlColor"                | buttons and headers                              |
/// | "HighlightColor"              | the background of selected rows and text         |
/// | "HighlightedTextColor"        | text on HighlightColor                           |
/// | "IconFirstColor"              | the main colour of icons, always a neutral grey  |
/// | "IconSecondColor"             | the accent colour of icons, never a neutral grey |
/// | "AttentionColor"              | titles of fields that need a value               |
class VIEWDECK_EXPORT PaletteManager
{
public:
    static PaletteManager& Instance();

    PaletteManager(const PaletteManager&) = delete;
    PaletteManager& operator=(const PaletteManager&) = delete;

    /// The colour of that name in the present skin. A name that no skin has answers nothing and is reported once as a
    /// warning.
    std::optional<NvRGBColor> GetNvRGBColor(const QString& name) const;

    /// The same, as a colour to paint with; an unknown name answers the application's text colour.
    QColor color(const QString& name) const;

    /// The skin in use. Until setSkin has been called, the one that suits the application's palette.
    Skin skin() const;

    /// Chooses the skin and sets the application's palette from it, so that every widget gets QEvent::PaletteChange.
    void setSkin(Skin skin);

    /// The palette that setSkin gives the application.
    static QPalette paletteOf(Skin skin);

private:
    PaletteManager() = default;

    std::optional<Skin> m_skin;
    mutable QSet<QString> m_reported;
};

} // namespace Palette

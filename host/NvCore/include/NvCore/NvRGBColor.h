#pragma once

#include <QColor>

/// An opaque colour of three 8-bit channels in sRGB. Usable in constants with static storage.
struct NvRGBColor {
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;

    constexpr NvRGBColor() = default;

    constexpr NvRGBColor(quint8 r, quint8 g, quint8 b) : red(r), green(g), blue(b) {}

    /// Takes the colour's channels; its opacity is lost.
    explicit NvRGBColor(const QColor& color)
        : red(quint8(color.red())), green(quint8(color.green())), blue(quint8(color.blue()))
    {
    }

    QColor toQColor() const { return {red, green, blue}; }

    operator QColor() const { return toQColor(); } // NOLINT(google-explicit-constructor): stands for a colour

    friend constexpr bool operator==(NvRGBColor a, NvRGBColor b)
    {
        return a.red == b.red && a.green == b.green && a.blue == b.blue;
    }

    friend constexpr bool operator!=(NvRGBColor a, NvRGBColor b) { return !(a == b); }
};

inline constexpr NvRGBColor RGBblack{0, 0, 0};
inline constexpr NvRGBColor RGByellow{255, 255, 0};
inline constexpr NvRGBColor RGBorange{255, 165, 0};
inline constexpr NvRGBColor RGBgray8{128, 128, 128};

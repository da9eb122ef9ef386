#pragma once

#include <QPalette>
#include <QProxyStyle>

namespace ViewDeckQt
{

/// Colours that the look derives from a palette, so that it suits whatever skin the palette is of.
namespace Tone
{
QColor mix(const QColor& from, const QColor& to, qreal share);
/// Frames of fields and buttons: stands out 3:1 from the window.
QColor border(const QPalette& palette);
/// Lines that only divide.
QColor divider(const QPalette& palette);
QColor focus(const QPalette& palette);
} // namespace Tone

/// Distances in device-independent pixels that every member of the family keeps.
namespace Spacing
{
constexpr int titleToField = 8;
constexpr int row = 6;
constexpr int section = 10;
constexpr int indent = 14;
constexpr int fieldPadding = 6;
} // namespace Spacing

/// The look of the parameter widgets, drawn over Fusion: rounded fields and buttons, a ring round what has the focus,
/// read-only fields without a frame.
class FamilyStyle : public QProxyStyle
{
    Q_OBJECT

public:
    FamilyStyle();

    /// Gives the look to a widget that has no style of its own.
    static void apply(QWidget* widget);

    /// The height of every field and button.
    static int fieldHeight(const QFontMetrics& metrics);

    /// Whether a button has no room for its text, which is then elided.
    static bool isTooNarrow(const QWidget& button, const QString& text);

    void polish(QWidget* widget) override;
    using QProxyStyle::polish;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace ViewDeckQt

#include "FamilyStyle.h"

#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/NineSlice.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

#include <cmath>

namespace ViewDeckQt
{

QColor Tone::mix(const QColor& from, const QColor& to, qreal share)
{
    const auto channel = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {channel(from.red(), to.red()), channel(from.green(), to.green()), channel(from.blue(), to.blue())};
}

QColor Tone::border(const QPalette& palette)
{
    const qreal share = palette.currentColorGroup() == QPalette::Disabled ? 0.3 : 0.52;
    return mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), share);
}

QColor Tone::divider(const QPalette& palette)
{
    return mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.22);
}

QColor Tone::focus(const QPalette& palette)
{
    return palette.color(QPalette::Active, QPalette::Link);
}

namespace
{
constexpr int radius = 3;
constexpr int verticalPadding = 5;
constexpr int buttonPadding = 14;
constexpr int leastPadding = 4;
constexpr int arrowArea = 22;

// A line keeps to whole device pixels at every scale.
qreal lineWidth(const QPainter& painter, qreal width)
{
    const qreal ratio = painter.device()->devicePixelRatioF();
    return std::max(1.0, std::floor(width * ratio)) / ratio;
}

void drawPanel(QPainter* painter, const QRect& rect, const QBrush& fill, const QPen& outline)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const qreal width = lineWidth(*painter, outline.widthF());
    QPen pen(outline);
    pen.setWidthF(width);
    painter->setPen(outline.style() == Qt::NoPen ? QPen(Qt::NoPen) : pen);
    painter->setBrush(fill);
    const qreal inset = width / 2;
    painter->drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset), radius, radius);
    painter->restore();
}

QPen outlineOf(const QStyleOption& option, bool focused)
{
    return focused ? QPen(Tone::focus(option.palette), 2) : QPen(Tone::border(option.palette), 1);
}

void drawField(QPainter* painter, const QStyleOption& option)
{
    const bool focused = option.state & QStyle::State_HasFocus;
    if (option.state & QStyle::State_ReadOnly) {
        if (focused)
            drawPanel(painter, option.rect, Qt::NoBrush, QPen(Tone::focus(option.palette), 1));
        return;
    }
    const bool enabled = option.state & QStyle::State_Enabled;
    drawPanel(painter, option.rect, option.palette.brush(enabled ? QPalette::Base : QPalette::Window),
              outlineOf(option, focused));
}

QColor buttonColor(const QStyleOption& option)
{
    const QColor plain = option.palette.color(QPalette::Button);
    const QColor text = option.palette.color(QPalette::ButtonText);
    if (!(option.state & QStyle::State_Enabled))
        return Tone::mix(plain, option.palette.color(QPalette::Window), 0.6);
    if (option.state & QStyle::State_Sunken)
        return Tone::mix(plain, option.palette.color(QPalette::Window), 0.7);
    if (option.state & QStyle::State_On)
        return Tone::mix(plain, Tone::focus(option.palette), 0.35);
    return option.state & QStyle::State_MouseOver ? Tone::mix(plain, text, 0.12) : plain;
}

bool showsKeyboardFocus(const QStyleOption& option)
{
    return option.state.testFlag(QStyle::State_HasFocus) && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void drawFocusFrame(QPainter* painter, const QStyleOption& option)
{
    const auto* frame = qstyleoption_cast<const QStyleOptionFocusRect*>(&option);
    const QColor selection = option.palette.color(QPalette::Highlight);
    if (!frame || frame->backgroundColor != selection)
        return drawPanel(painter, option.rect, Qt::NoBrush, QPen(Tone::focus(option.palette), 1));
    // On a selected item the colour of the focus is too near to that of the selection, which is seen on either side.
    const QColor light = Tone::mix(selection, option.palette.color(QPalette::HighlightedText), 0.75);
    drawPanel(painter, option.rect.adjusted(1, 1, -1, -1), Qt::NoBrush, QPen(light, 1));
}

void drawPushButton(QPainter* painter, const QStyleOption& option)
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    const bool isDefault = button && (button->features & QStyleOptionButton::DefaultButton);
    QPen outline = outlineOf(option, showsKeyboardFocus(option));
    if (isDefault && !showsKeyboardFocus(option))
        outline.setColor(Tone::focus(option.palette));
    drawPanel(painter, option.rect, buttonColor(option), outline);
}

void drawToolButton(QPainter* painter, const QStyleOption& option)
{
    const QStyle::State active = QStyle::State_MouseOver | QStyle::State_Sunken | QStyle::State_On;
    const bool raised = (option.state & QStyle::State_Enabled) && (option.state & active);
    const QPen outline = showsKeyboardFocus(option)        ? outlineOf(option, true)
                         : option.state & QStyle::State_On ? QPen(Tone::focus(option.palette), 1)
                                                           : QPen(Qt::NoPen);
    if (raised || outline.style() != Qt::NoPen)
        drawPanel(painter, option.rect, raised ? QBrush(buttonColor(option)) : QBrush(), outline);
}

void drawChoice(QPainter* painter, const QStyleOptionComboBox& option, const QRect& arrow)
{
    drawPanel(painter, option.rect, buttonColor(option), outlineOf(option, option.state & QStyle::State_HasFocus));
    const QPixmap image = NineSlice::GetImage(QStringLiteral("icons/Arrows"), QStringLiteral("small_arrow_down"),
                                              painter->device()->devicePixelRatioF());
    QRect place(QPoint(), image.size() / image.devicePixelRatio());
    place.moveCenter(arrow.center());
    painter->save();
    painter->setOpacity(option.state & QStyle::State_Enabled ? 1 : 0.4);
    painter->drawPixmap(place.topLeft(), image);
    painter->restore();
}

void drawCheckBox(QPainter* painter, const QStyleOption& option)
{
    const bool enabled = option.state & QStyle::State_Enabled;
    drawPanel(painter, option.rect, option.palette.brush(enabled ? QPalette::Base : QPalette::Window),
              outlineOf(option, false));
    if (!(option.state & (QStyle::State_On | QStyle::State_NoChange)))
        return;
    const QRectF box(option.rect);
    const auto point = [&box](qreal x, qreal y) { return box.topLeft() + QPointF(x * box.width(), y * box.height()); };
    QPolygonF mark{QVector<QPointF>{point(0.24, 0.52), point(0.43, 0.72), point(0.77, 0.28)}};
    if (option.state & QStyle::State_NoChange)
        mark = QVector<QPointF>{point(0.26, 0.5), point(0.74, 0.5)};
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(option.palette.brush(QPalette::Text), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPolyline(mark);
    painter->restore();
}

bool isPanelOfAField(QStyle::PrimitiveElement element, const QStyleOption* option)
{
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    return element == QStyle::PE_PanelLineEdit && frame && frame->lineWidth > 0;
}
} // namespace

FamilyStyle::FamilyStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void FamilyStyle::apply(QWidget* widget)
{
    if (!widget->testAttribute(Qt::WA_SetStyle))
        widget->setStyle(DecorationManager::style());
}

bool FamilyStyle::isTooNarrow(const QWidget& button, const QString& text)
{
    const int needed = button.fontMetrics().size(Qt::TextShowMnemonic, text).width();
    return needed > button.width() - 2 * leastPadding;
}

int FamilyStyle::fieldHeight(const QFontMetrics& metrics)
{
    return metrics.height() + 2 * verticalPadding;
}

void FamilyStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) || qobject_cast<QLineEdit*>(widget))
        widget->setAttribute(Qt::WA_Hover);
}

void FamilyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const
{
    if (isPanelOfAField(element, option))
        return drawField(painter, *option);
    switch (element) {
    case PE_PanelButtonCommand:
        return drawPushButton(painter, *option);
    case PE_PanelButtonTool:
        return drawToolButton(painter, *option);
    case PE_IndicatorCheckBox:
        return drawCheckBox(painter, *option);
    case PE_FrameGroupBox:
        return drawPanel(painter, option->rect, Qt::NoBrush, QPen(Tone::divider(option->palette), 1));
    case PE_FrameFocusRect:
        // Buttons and choices show the focus by their own frame.
        if (!qobject_cast<const QAbstractButton*>(widget) || widget->inherits("QCheckBox"))
            drawFocusFrame(painter, *option);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void FamilyStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element == CE_PushButtonLabel && button && widget && isTooNarrow(*widget, button->text)) {
        QStyleOptionButton narrow(*button);
        narrow.text = narrow.fontMetrics.elidedText(narrow.text, Qt::ElideRight, widget->width() - 2 * leastPadding,
                                                    Qt::TextShowMnemonic);
        return QProxyStyle::drawControl(element, &narrow, painter, widget);
    }
    const auto* choice = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (element != CE_ComboBoxLabel || !choice || choice->editable)
        return QProxyStyle::drawControl(element, option, painter, widget);
    const QRect place = subControlRect(CC_ComboBox, choice, SC_ComboBoxEditField, widget);
    const QString text = choice->fontMetrics.elidedText(choice->currentText, Qt::ElideRight, place.width());
    const Qt::Alignment alignment = visualAlignment(choice->direction, Qt::AlignLeft | Qt::AlignVCenter);
    drawItemText(painter, place, int(alignment), choice->palette, choice->state & State_Enabled, text,
                 QPalette::ButtonText);
}

void FamilyStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                     const QWidget* widget) const
{
    const auto* choice = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ComboBox && choice && !choice->editable)
        return drawChoice(painter, *choice, subControlRect(control, option, SC_ComboBoxArrow, widget));
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect FamilyStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const
{
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (element == SE_LineEditContents && frame && frame->lineWidth > 0)
        // QLineEdit adds two pixels of its own on either side.
        return option->rect.adjusted(Spacing::fieldPadding - 2, 2, 2 - Spacing::fieldPadding, -2);
    return QProxyStyle::subElementRect(element, option, widget);
}

QRect FamilyStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                  const QWidget* widget) const
{
    const auto* choice = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control != CC_ComboBox || !choice || choice->editable)
        return QProxyStyle::subControlRect(control, option, part, widget);
    QRect rect = option->rect;
    if (part == SC_ComboBoxArrow)
        rect.setLeft(rect.right() + 1 - arrowArea);
    else if (part == SC_ComboBoxEditField)
        rect.adjust(Spacing::fieldPadding, 1, -arrowArea, -1);
    return visualRect(option->direction, option->rect, rect);
}

QSize FamilyStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                    const QWidget* widget) const
{
    if (!option)
        return QProxyStyle::sizeFromContents(type, option, contents, widget);
    const int height = fieldHeight(option->fontMetrics);
    switch (type) {
    case CT_LineEdit:
        return {contents.width() + 2 * Spacing::fieldPadding, height};
    case CT_ComboBox:
        return {contents.width() + Spacing::fieldPadding + arrowArea, height};
    case CT_PushButton:
        return {contents.width() + 2 * buttonPadding, std::max(height, contents.height() + verticalPadding)};
    default:
        return QProxyStyle::sizeFromContents(type, option, contents, widget);
    }
}

int FamilyStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* returned) const
{
    if (hint == SH_ComboBox_Popup)
        return 0;
    if (hint == SH_ComboBox_ListMouseTracking)
        return 1;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

} // namespace ViewDeckQt

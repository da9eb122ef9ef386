#include "LineParts.h"

#include "StratacutUI/STT_TranscriptData.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QLabel>

namespace LineParts
{

namespace
{
constexpr double timecodeScale = 0.9;
constexpr int charactersOfSpeaker = 16;

QFont timecodeFont(QFont font)
{
    font.setPointSizeF(QFontInfo(font).pointSizeF() * timecodeScale);
    return font;
}

int timecodeWidth(const QFont& font)
{
    return QFontMetrics(timecodeFont(font)).horizontalAdvance(QStringLiteral("00:00:00:00")) + 2;
}
} // namespace

int fieldHeight(const QFont& font)
{
    return QFontMetrics(font).height() + 2 * fieldMargin;
}

int clipHeight(const QFont& font)
{
    constexpr int air = 16;
    return 2 * QFontMetrics(font).height() + air;
}

QColor dim(const QPalette& palette)
{
    constexpr double share = 0.68;
    const QColor& text = palette.color(QPalette::Active, QPalette::Text);
    const QColor& base = palette.color(QPalette::Active, QPalette::Base);
    const auto mix = [](int from, int to) { return int(from + (to - from) * share); };
    return {mix(base.red(), text.red()), mix(base.green(), text.green()), mix(base.blue(), text.blue())};
}

void setTextColor(QLabel* label, const QColor& color)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setForegroundRole(QPalette::WindowText);
    label->setPalette(palette);
}

QLabel* timecodeLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    setTextColor(label, dim(parent->palette()));
    fitTimecode(label);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

void fitTimecode(QLabel* label)
{
    const QFont& font = label->parentWidget()->font();
    label->setFont(timecodeFont(font));
    label->setFixedWidth(timecodeWidth(font));
}

int gutterWidth(const STT_Visibilities& visibilities, const QFont& font)
{
    const int timecode = visibilities.timecode ? timecodeWidth(font) + gap : 0;
    const int speaker =
        visibilities.speaker ? QFontMetrics(font).averageCharWidth() * charactersOfSpeaker + menuButton + gap : 0;
    return edge + timecode + speaker;
}

} // namespace LineParts

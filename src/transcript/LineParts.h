#pragma once

#include <QColor>
#include <QFont>

class QLabel;
class QPalette;
class QWidget;
struct STT_Visibilities;

/// What all lines of the transcript have in common: distances in device-independent pixels and the timecode.
namespace LineParts
{
constexpr int edge = 18;
/// Left and right of the line of a clip.
constexpr int clipEdge = 6;
constexpr int gap = 10;
constexpr int menuButton = 16;
/// Between the edge of a speaker field and its text.
constexpr int fieldMargin = 2;

/// The height of a speaker field.
int fieldHeight(const QFont& font);

/// The height of the line of a clip that has no transcript: two lines of text and air.
int clipHeight(const QFont& font);

/// The colour of what is less than the text itself, still easy to read.
QColor dim(const QPalette& palette);

/// Gives a label a colour of its own, whatever lies behind it.
void setTextColor(QLabel* label, const QColor& color);

/// A label for a timecode: dim, with the same width in every line.
QLabel* timecodeLabel(QWidget* parent);

/// Gives the label the size that goes with its parent's font.
void fitTimecode(QLabel* label);

/// How much room the parts that are shown need left of the text.
int gutterWidth(const STT_Visibilities& visibilities, const QFont& font);
} // namespace LineParts

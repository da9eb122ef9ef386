#pragma once

#include <QColor>

class QWidget;

/// The colours of the package manager's panes.
namespace PanePalette
{

/// The skin's background for lists and forms; without one a shade lighter than the base of the widget's parent.
QColor background(const QWidget& widget);
/// The skin's text colour for lists and forms; without one the widget's own.
QColor text(const QWidget& widget);

} // namespace PanePalette

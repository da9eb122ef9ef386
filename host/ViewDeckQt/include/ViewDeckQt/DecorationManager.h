#pragma once

#include "ViewDeckQt/Export.h"

class QStyle;
class QWidget;

namespace ViewDeckQt
{

/// Gives windows the look of the parameter widgets, so that plain Qt controls beside them belong to the same family:
/// frames, focus rings, paddings and hover states, all in the colours of each widget's own palette, hence following the
/// skin. Parameter widgets and styled buttons carry the look by themselves. User-interface thread only.
class VIEWDECK_EXPORT DecorationManager
{
public:
    DecorationManager() = delete;

    /// Decorates a widget and everything in it, now and as long as it lives: children that come later are decorated
    /// when they are first shown. A widget that has a style of its own keeps it. Doing it twice does no harm.
    static void decorate(QWidget* root);

    /// The look as a style, for a host that wants it for all of its windows. Owned by the application object.
    static QStyle* style();
};

} // namespace ViewDeckQt

#pragma once

#include "ViewDeckQt/Export.h"

#include <QMessageBox>

namespace ViewDeckQt::ManagedMessageBox
{

/// Shows a modal message box and waits for the user's answer. The text is shown verbatim, never as rich text.
///
/// Escape and the window's close control answer, in this order, with the first of Cancel, No, Close, Abort, Discard, Ok
/// that is among the buttons, or else with the default button. That is the answer, too, when `parent` is destroyed
/// while the box is open.
/// @param parent the window to stay in front of; may be null and may be deleted while the box is open.
/// @param defaultButton answers the Enter key; NoButton leaves the choice to the platform.
VIEWDECK_EXPORT QMessageBox::StandardButton messageBox(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                                       const QString& text, QMessageBox::StandardButtons buttons,
                                                       QMessageBox::StandardButton defaultButton);

} // namespace ViewDeckQt::ManagedMessageBox

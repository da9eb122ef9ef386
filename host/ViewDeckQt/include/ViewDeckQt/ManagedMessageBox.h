#pragma once

#include "ViewDeckQt/Export.h"

#include <QMessageBox>

#include <functional>

namespace ViewDeckQt::ManagedMessageBox
{

/// Shows a modal message box and waits for the user's answer. The text is shown verbatim, never as rich text.
/// User-interface thread only.
///
/// Escape and the window's close control answer, in this order, with the first of Cancel, No, Close, Abort, Discard, Ok
/// that is among the buttons, or else with the default button. That is the answer, too, when `parent` is destroyed
/// while the box is open.
/// @param parent the window to stay in front of; may be null and may be deleted while the box is open.
/// @param defaultButton answers the Enter key; NoButton leaves the choice to the platform.
VIEWDECK_EXPORT QMessageBox::StandardButton messageBox(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                                       const QString& text, QMessageBox::StandardButtons buttons,
                                                       QMessageBox::StandardButton defaultButton);

/// Lets a text scroll that would make a message box higher than its screen, with its buttons out of reach. For boxes
/// that messageBox() does not make; to be called once text and buttons are set and before the box is shown.
VIEWDECK_EXPORT void keepOnScreen(QMessageBox& box);

/// What a message box is to say and which answers it offers.
struct Request {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

/// Answers a request without a window. Called on the user-interface thread.
using Presenter = std::function<QMessageBox::StandardButton(const Request&)>;

/// Hands every message box to `presenter` from now on: for hosts that run without a display, such as a command line.
/// An empty one brings the windows back. User-interface thread.
VIEWDECK_EXPORT void setPresenter(Presenter presenter);

} // namespace ViewDeckQt::ManagedMessageBox

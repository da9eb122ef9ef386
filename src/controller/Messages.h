#pragma once

#include "StratacutUI/IMFO_Bridge.h"

#include <QMessageBox>
#include <QString>

/// What the controller tells the user.
namespace Messages
{

/// The title of every message of the controller; not translated.
inline constexpr char title[] = "Norvel Stratacut";

/// Shows a text with an OK button and waits.
void show(QMessageBox::Icon icon, const QString& text);

/// Shows a failed call's message as an error.
/// @return whether the call had failed.
bool showIfFailed(const IMFO_Bridge::IMFO_Error_t& error);

} // namespace Messages

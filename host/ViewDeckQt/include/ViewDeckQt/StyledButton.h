#pragma once

#include "ViewDeckQt/Export.h"

#include <QPushButton>

namespace ViewDeckQt
{

/// A push button in the look of the parameter widgets. It is never a dialog's default button unless it is told to be. A
/// text that it has no room for is elided and shown whole as a tool tip.
class VIEWDECK_EXPORT StyledButton : public QPushButton
{
    Q_OBJECT

public:
    explicit StyledButton(QWidget* parent = nullptr);
    explicit StyledButton(const QString& text, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
};

} // namespace ViewDeckQt

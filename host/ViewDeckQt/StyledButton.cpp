#include "ViewDeckQt/StyledButton.h"

#include "FamilyStyle.h"

namespace ViewDeckQt
{

StyledButton::StyledButton(QWidget* parent) : StyledButton(QString(), parent) {}

StyledButton::StyledButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    FamilyStyle::apply(this);
    setAutoDefault(false);
}

} // namespace ViewDeckQt

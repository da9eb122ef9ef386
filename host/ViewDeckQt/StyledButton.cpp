#include "ViewDeckQt/StyledButton.h"

#include "FamilyStyle.h"

#include <QHelpEvent>
#include <QKeySequence>
#include <QToolTip>

namespace ViewDeckQt
{

StyledButton::StyledButton(QWidget* parent) : StyledButton(QString(), parent) {}

StyledButton::StyledButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    FamilyStyle::apply(this);
    setAutoDefault(false);
}

bool StyledButton::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() || !FamilyStyle::isTooNarrow(*this, text()))
        return QPushButton::event(event);
    const QString plain = QKeySequence::mnemonic(text()).isEmpty() ? text() : QString(text()).remove(QLatin1Char('&'));
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plain, this);
    return true;
}

} // namespace ViewDeckQt

#include "ViewDeckQt/PWLabel.h"

#include "ParamRow.h"

#include "ViewDeckQt/QFFLineEditQt.h"

namespace ViewDeckQt
{

PWLabel::PWLabel(QWidget* parent, const QString& label, const QString& id, const QString& value)
    : AbstractParamWidget(id, parent), m_value(new QFFLineEditQt(value, this))
{
    m_value->setReadOnly(true);
    m_value->setFocusPolicy(Qt::ClickFocus);
    layOutParam(this, label, {m_value});
}

QVariant PWLabel::getValue() const
{
    return m_value->text();
}

void PWLabel::setValue(const QVariant& value)
{
    m_value->showText(value.toString());
}

void PWLabel::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    m_value->setFocusPolicy(readOnly ? Qt::StrongFocus : Qt::ClickFocus);
}

} // namespace ViewDeckQt

#include "ViewDeckQt/AbstractParamWidget.h"

namespace ViewDeckQt
{

AbstractParamWidget::AbstractParamWidget(const QString& id, QWidget* parent) : QWidget(parent), m_id(id) {}

AbstractParamWidget::~AbstractParamWidget() = default;

QVariant AbstractParamWidget::getValue() const
{
    return {};
}

void AbstractParamWidget::setValue(const QVariant&) {}

void AbstractParamWidget::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

} // namespace ViewDeckQt

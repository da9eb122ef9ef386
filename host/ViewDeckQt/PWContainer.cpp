#include "ViewDeckQt/PWContainer.h"

#include "FamilyStyle.h"

#include <QVBoxLayout>

namespace ViewDeckQt
{

PWContainer::PWContainer(QWidget* parent, const QString& id) : PWContainer(parent, id, new QVBoxLayout)
{
    setLayout(m_contents);
}

PWContainer::PWContainer(QWidget* parent, const QString& id, QVBoxLayout* contents)
    : AbstractParamWidget(id, parent), m_contents(contents)
{
    m_contents->setContentsMargins(0, 0, 0, 0);
    m_contents->setSpacing(Spacing::row);
    // Holds the contents together at the top where the container is given more room than they need.
    m_contents->addStretch();
}

void PWContainer::addContent(QWidget* content)
{
    m_contents->insertWidget(m_contents->count() - 1, content);
}

void PWContainer::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    const QList<AbstractParamWidget*> contents = findChildren<AbstractParamWidget*>();
    for (AbstractParamWidget* content : contents)
        content->setReadOnly(readOnly);
}

} // namespace ViewDeckQt

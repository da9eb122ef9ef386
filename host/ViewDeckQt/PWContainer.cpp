#include "ViewDeckQt/PWContainer.h"

#include "FamilyStyle.h"
#include "SectionHeader.h"

#include <QVBoxLayout>

namespace ViewDeckQt
{

namespace
{
QList<QWidget*> tabStopsIn(const QWidget* root)
{
    QList<QWidget*> stops;
    QWidget* window = root->window();
    for (QWidget* widget = window->nextInFocusChain(); widget != window; widget = widget->nextInFocusChain()) {
        const bool inside = widget == root || root->isAncestorOf(widget);
        if (inside && widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy())
            stops.append(widget);
    }
    return stops;
}
} // namespace

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
    QWidget* last = lastTabStop();
    m_contents->insertWidget(m_contents->count() - 1, content);
    const QList<QWidget*> added = tabStopsIn(content);
    for (QWidget* stop : added) {
        if (last)
            setTabOrder(last, stop);
        last = stop;
    }
}

QWidget* PWContainer::lastTabStop() const
{
    for (int i = m_contents->count() - 1; i >= 0; --i) {
        const QWidget* content = m_contents->itemAt(i)->widget();
        const QList<QWidget*> stops = content ? tabStopsIn(content) : QList<QWidget*>();
        if (!stops.isEmpty())
            return stops.last();
    }
    return findChild<SectionHeader*>(QString(), Qt::FindDirectChildrenOnly);
}

void PWContainer::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    const QList<AbstractParamWidget*> contents = findChildren<AbstractParamWidget*>();
    for (AbstractParamWidget* content : contents)
        content->setReadOnly(readOnly);
}

} // namespace ViewDeckQt

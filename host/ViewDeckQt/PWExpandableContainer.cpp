#include "ViewDeckQt/PWExpandableContainer.h"

#include "FamilyStyle.h"
#include "SectionHeader.h"

#include <QEvent>
#include <QVBoxLayout>

namespace ViewDeckQt
{

PWExpandableContainer::PWExpandableContainer(QWidget* parent, const QString& label, const QString& id)
    : PWExpandableContainer(parent, label, id, new QVBoxLayout)
{
}

PWExpandableContainer::PWExpandableContainer(QWidget* parent, const QString& label, const QString& id,
                                             QVBoxLayout* contents)
    : PWContainer(parent, id, contents), m_header(new SectionHeader(label, this)), m_body(new QWidget(this))
{
    m_body->setLayout(contents);
    indent();
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, Spacing::section - Spacing::row, 0, 0);
    whole->setSpacing(Spacing::row);
    whole->addWidget(m_header);
    whole->addWidget(m_body);
    connect(m_header, &SectionHeader::toggled, this, &PWExpandableContainer::showContents);
    connect(m_header, &SectionHeader::expandRequested, this, &PWExpandableContainer::expand);
    connect(m_header, &SectionHeader::collapseRequested, this, &PWExpandableContainer::collapse);
}

// Layouts mirror their items but not their margins.
void PWExpandableContainer::indent()
{
    const int left = isRightToLeft() ? 0 : Spacing::indent;
    m_body->layout()->setContentsMargins(left, 0, Spacing::indent - left, 0);
}

void PWExpandableContainer::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        indent();
    PWContainer::changeEvent(event);
}

void PWExpandableContainer::expand()
{
    m_header->setChecked(true);
}

void PWExpandableContainer::collapse()
{
    m_header->setChecked(false);
}

void PWExpandableContainer::toggle()
{
    m_header->toggle();
}

void PWExpandableContainer::showContents(bool expanded)
{
    m_expanded = expanded;
    if (!expanded && m_body->isAncestorOf(window()->focusWidget()))
        m_header->setFocus();
    m_body->setVisible(expanded);
    emit expansionChanged();
}

} // namespace ViewDeckQt

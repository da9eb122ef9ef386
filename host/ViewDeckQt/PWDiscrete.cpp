#include "ViewDeckQt/PWDiscrete.h"

#include "ChoiceBox.h"
#include "ParamRow.h"
#include "ParamTitle.h"

#include "ViewDeckQt/QFFLineEditQt.h"

#include <QHBoxLayout>

namespace ViewDeckQt
{

PWDiscrete::PWDiscrete(QWidget* parent, const QString& label, const QString& id, const QStringList& items)
    : AbstractParamWidget(id, parent), m_choice(new ChoiceBox(this)), m_text(new QFFLineEditQt(this))
{
    m_text->setReadOnly(true);
    m_text->hide();
    m_title = layOutParam(this, label, {m_choice, m_text});
    static_cast<QHBoxLayout*>(layout())->setStretchFactor(m_text, 1);
    connect(m_choice, QOverload<int>::of(&QComboBox::activated), this, &PWDiscrete::onActivated);
    setItems(items, items.isEmpty() ? -1 : 0);
}

QVariant PWDiscrete::getValue() const
{
    return m_chosen;
}

void PWDiscrete::setValue(const QVariant& value)
{
    const QString text = value.toString();
    if (text == m_chosen)
        return;
    if (m_lastIsUnlisted) {
        m_items.removeLast();
        m_choice->removeItem(m_choice->count() - 1);
        m_lastIsUnlisted = false;
    }
    int index = ChoiceBox::isSeparator(text) ? -1 : m_items.indexOf(text);
    if (index < 0 && !text.isEmpty() && !ChoiceBox::isSeparator(text)) {
        index = m_items.size();
        m_items.append(text);
        m_choice->addItem(text);
        m_lastIsUnlisted = true;
    }
    choose(index);
}

void PWDiscrete::setItems(const QStringList& items, int currentIndex)
{
    if (items != m_items) {
        m_items = items;
        m_choice->setEntries(items);
    }
    m_lastIsUnlisted = false;
    choose(currentIndex);
}

QStringList PWDiscrete::items() const
{
    return m_items;
}

int PWDiscrete::currentIndex() const
{
    return m_choice->currentIndex();
}

void PWDiscrete::choose(int index)
{
    const bool isChoice = index >= 0 && index < m_items.size() && !ChoiceBox::isSeparator(m_items.at(index));
    m_choice->setCurrentIndex(isChoice ? index : -1);
    m_chosen = isChoice ? m_items.at(index) : QString();
    m_text->showText(m_chosen);
}

void PWDiscrete::onActivated(int index)
{
    const QString former = m_chosen;
    choose(index);
    if (m_chosen != former)
        emit valueChanged(m_chosen);
}

void PWDiscrete::setReadOnly(bool readOnly)
{
    if (readOnly == isReadOnly())
        return;
    AbstractParamWidget::setReadOnly(readOnly);
    QWidget* shown = readOnly ? static_cast<QWidget*>(m_text) : m_choice;
    QWidget* hidden = readOnly ? static_cast<QWidget*>(m_choice) : m_text;
    const bool hadFocus = hidden->hasFocus();
    shown->show();
    setFocusProxy(shown);
    m_title->setField(shown);
    if (hadFocus)
        shown->setFocus();
    hidden->hide();
}

} // namespace ViewDeckQt

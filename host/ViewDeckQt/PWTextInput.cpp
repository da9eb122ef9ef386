#include "ViewDeckQt/PWTextInput.h"

#include "ParamRow.h"
#include "ParamTitle.h"

#include "ViewDeckQt/QFFLineEditQt.h"

namespace ViewDeckQt
{

PWTextInput::PWTextInput(QWidget* parent, const QString& label, const QString& id)
    : AbstractParamWidget(id, parent), m_edit(new QFFLineEditQt(this))
{
    m_title = layOutParam(this, label, {m_edit});
    connect(m_edit, &QLineEdit::textEdited, this, [this](const QString& text) { report(text, Reporting::EachEdit); });
    connect(m_edit, &QFFLineEditQt::textCommitted, this,
            [this](const QString& text) { report(text, Reporting::EndOfEdit); });
}

QVariant PWTextInput::getValue() const
{
    return m_edit->text();
}

void PWTextInput::setValue(const QVariant& value)
{
    m_edit->showText(value.toString());
}

void PWTextInput::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    if (readOnly)
        m_edit->revert();
    m_edit->setReadOnly(readOnly);
}

void PWTextInput::hilightTitle(bool highlighted)
{
    m_title->setHighlighted(highlighted);
}

bool PWTextInput::isTitleHilighted() const
{
    return m_title->isHighlighted();
}

void PWTextInput::setReporting(Reporting reporting)
{
    m_reporting = reporting;
}

void PWTextInput::report(const QString& text, Reporting occasion)
{
    if (occasion != m_reporting)
        return;
    m_edit->settle();
    emit valueChanged(text);
}

} // namespace ViewDeckQt

#include "ViewDeckQt/PWMultiLineTextInput.h"

#include "ParamRow.h"
#include "TextBox.h"

#include <QScopedValueRollback>
#include <QTextCursor>

#include <algorithm>

namespace ViewDeckQt
{

PWMultiLineTextInput::PWMultiLineTextInput(QWidget* parent, const QString& label, const QString& id)
    : AbstractParamWidget(id, parent), m_edit(new TextBox(this))
{
    layOutParam(this, label, {m_edit});
    connect(m_edit, &QPlainTextEdit::textChanged, this, &PWMultiLineTextInput::report);
}

QVariant PWMultiLineTextInput::getValue() const
{
    return m_edit->toPlainText();
}

void PWMultiLineTextInput::setValue(const QVariant& value)
{
    const QString text = value.toString();
    if (text == m_shown)
        return;
    const int position = m_edit->hasFocus() ? m_edit->textCursor().position() : 0;
    {
        const QScopedValueRollback<bool> setting(m_setting, true);
        m_edit->setPlainText(text);
    }
    m_shown = m_edit->toPlainText();
    QTextCursor cursor = m_edit->textCursor();
    cursor.setPosition(std::min(position, m_edit->document()->characterCount() - 1));
    m_edit->setTextCursor(cursor);
}

void PWMultiLineTextInput::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    m_edit->setReadOnly(readOnly);
    if (readOnly)
        m_edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void PWMultiLineTextInput::report()
{
    if (m_setting)
        return;
    const QString text = m_edit->toPlainText();
    // The document also reports changes that are none of the text, such as those of its layout.
    if (text == m_shown)
        return;
    m_shown = text;
    emit valueChanged(text);
}

} // namespace ViewDeckQt

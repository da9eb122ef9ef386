#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

namespace ViewDeckQt
{

class TextBox;

/// Text of several lines; its value is the text with "\n" between lines, reported after each edit. The Tab key leaves
/// the field. It grows with its text, from three lines to eight.
class VIEWDECK_EXPORT PWMultiLineTextInput : public AbstractParamWidget
{
    Q_OBJECT

public:
    PWMultiLineTextInput(QWidget* parent, const QString& label, const QString& id);

    QVariant getValue() const override;
    void setValue(const QVariant& value) override;
    void setReadOnly(bool readOnly) override;

private:
    void report();

    TextBox* m_edit;
    QString m_shown;
    bool m_setting = false;
};

} // namespace ViewDeckQt

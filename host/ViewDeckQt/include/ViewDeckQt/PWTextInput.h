#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

namespace ViewDeckQt
{

class ParamTitle;
class QFFLineEditQt;

/// A line of text; its value is the text.
class VIEWDECK_EXPORT PWTextInput : public AbstractParamWidget
{
    Q_OBJECT

public:
    /// When valueChanged comes: after each keystroke, so that nothing typed is ever lost, or when the user leaves the
    /// field or presses Enter; Escape then brings back what stood there.
    enum class Reporting { EachEdit, EndOfEdit };

    PWTextInput(QWidget* parent, const QString& label, const QString& id);

    QVariant getValue() const override;
    void setValue(const QVariant& value) override;
    void setReadOnly(bool readOnly) override;

    /// Marks the title as that of a field that needs a value, by colour, weight and a sign, or takes the mark away.
    void hilightTitle(bool highlighted);
    bool isTitleHilighted() const;

    /// EachEdit at first.
    void setReporting(Reporting reporting);

private:
    void report(const QString& text, Reporting occasion);

    ParamTitle* m_title;
    QFFLineEditQt* m_edit;
    Reporting m_reporting = Reporting::EachEdit;
};

} // namespace ViewDeckQt

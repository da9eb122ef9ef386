#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

namespace ViewDeckQt
{

class QFFLineEditQt;

/// A value that is only shown. It can always be selected and copied with the mouse; the Tab key visits it where it is
/// read-only, that is on a page where there is nothing to edit.
class VIEWDECK_EXPORT PWLabel : public AbstractParamWidget
{
    Q_OBJECT

public:
    PWLabel(QWidget* parent, const QString& label, const QString& id, const QString& value);

    /// The shown text.
    QVariant getValue() const override;
    void setValue(const QVariant& value) override;
    void setReadOnly(bool readOnly) override;

private:
    QFFLineEditQt* m_value;
};

} // namespace ViewDeckQt

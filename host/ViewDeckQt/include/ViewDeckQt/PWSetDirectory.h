#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

namespace ViewDeckQt
{

class ParamTitle;
class QFFLineEditQt;
class StyledButton;

/// A folder: a line for its path, which can be typed, and a button whose click asks the owner to let the user choose
/// one. Its value is the path as shown. Enter or leaving the line reports a typed path; Escape brings back what stood
/// there. A folder dropped on the line is reported at once.
class VIEWDECK_EXPORT PWSetDirectory : public AbstractParamWidget
{
    Q_OBJECT

public:
    PWSetDirectory(QWidget* parent, const QString& id);

    QVariant getValue() const override;
    void setValue(const QVariant& value) override;

    /// Read-only, the button is hidden.
    void setReadOnly(bool readOnly) override;

    /// Marks the title as that of a field that needs a value, by colour, weight and a sign, or takes the mark away.
    void hilightTitle(bool highlighted);
    bool isTitleHilighted() const;

Q_SIGNALS:
    void setPathButtonClicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void drop(const QString& folder);

    ParamTitle* m_title;
    QFFLineEditQt* m_path;
    StyledButton* m_button;
};

} // namespace ViewDeckQt

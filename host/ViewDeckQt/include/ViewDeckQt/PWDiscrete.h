#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

#include <QStringList>

namespace ViewDeckQt
{

class ChoiceBox;
class ParamTitle;
class QFFLineEditQt;

/// A choice from a list of texts; its value is the chosen text, empty where nothing is chosen. An entry "Separator" or
/// of ten hyphens ("----------") is a dividing line that cannot be chosen. A text that does not fit is elided and shown
/// whole in a tooltip. The wheel changes the choice only while it has the focus.
class VIEWDECK_EXPORT PWDiscrete : public AbstractParamWidget
{
    Q_OBJECT

public:
    PWDiscrete(QWidget* parent, const QString& label, const QString& id, const QStringList& items);

    /// The chosen text.
    QVariant getValue() const override;

    /// Chooses the first entry with this text. A text that the list lacks is added at its end and chosen, so that no
    /// stored value is lost; the next setValue takes it out again. An empty one chooses nothing.
    void setValue(const QVariant& value) override;
    void setReadOnly(bool readOnly) override;

    /// Replaces the list and chooses one of it.
    /// @param currentIndex counted over all entries, dividing lines included; one outside of the list or on a dividing
    ///        line chooses nothing.
    void setItems(const QStringList& items, int currentIndex);

    /// All entries in order, dividing lines included.
    QStringList items() const;

    /// The place of the chosen entry among items(), -1 where nothing is chosen.
    int currentIndex() const;

private:
    void choose(int index);
    void onActivated(int index);

    ParamTitle* m_title;
    ChoiceBox* m_choice;
    QFFLineEditQt* m_text;
    QStringList m_items;
    QString m_chosen;
    bool m_lastIsUnlisted = false;
};

} // namespace ViewDeckQt

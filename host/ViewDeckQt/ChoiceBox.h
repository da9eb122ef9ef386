#pragma once

#include <QComboBox>

namespace ViewDeckQt
{

/// The list of choices of a parameter.
class ChoiceBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ChoiceBox(QWidget* parent);

    /// Whether the entry is a dividing line.
    static bool isSeparator(const QString& entry);

    /// Replaces all entries; entries keep their places, dividing lines included.
    void setEntries(const QStringList& entries);

    void showPopup() override;

protected:
    bool event(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool isElided() const;
};

} // namespace ViewDeckQt

#pragma once

#include <QComboBox>
#include <QStringList>

#include <memory>

class QStandardItemModel;

/// The entries of choice boxes, which boxes with the same list share. Never changed once it is made.
using AudioChoices = std::shared_ptr<QStandardItemModel>;

/// A list of choices in the look of the parameter widgets. An entry of ten hyphens ("----------") is a dividing line
/// that cannot be chosen. A text that the list lacks can be shown beside it, marked as missing. The wheel changes the
/// choice only while the box has the focus.
class AudioChoiceBox : public QComboBox
{
    Q_OBJECT

public:
    explicit AudioChoiceBox(QWidget* parent);
    ~AudioChoiceBox() override;

    static AudioChoices makeChoices(const QStringList& entries);

    /// Replaces the list and chooses its first entry.
    void setChoices(const AudioChoices& choices);

    /// The number of entries of the list, without the missing one.
    int choiceCount() const;

    /// Chooses an entry of the list.
    void choose(int index);

    /// Chooses the first entry with this text; one that the list lacks is shown in addition to it. An empty text
    /// chooses nothing.
    void choose(const QString& text);

    /// Whether the text that is shown is not in the list.
    bool isMissing() const;

    /// Names the box for assistive technology. @param purpose what is chosen here.
    void setPurpose(const QString& purpose);

    /// What the user reads of a missing text: "%1" stands for it.
    void setMissingToolTip(const QString& format);

    /// Independent of the entries, unlike a plain combo box's.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    void showPopup() override;

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void showList(const AudioChoices& choices);
    void markMissing();
    void describe();

    AudioChoices m_choices;
    AudioChoices m_shown;
    QString m_purpose;
    QString m_missingToolTip;
    bool m_isMarked = false;
    bool m_isMade = false;
};

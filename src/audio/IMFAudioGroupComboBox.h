#pragma once

#include "AudioGroups.h"

#include <QComboBox>

/// What the group that is being edited holds at present.
class AudioGroupEditor
{
public:
    virtual QStringList selectedTracks() const = 0;
    virtual bool includesMasterFader() const = 0;
    /// Whether the above differs from what was chosen last.
    virtual bool isChanged() const = 0;
    /// What sources besides groups are called.
    virtual QStringList otherSources() const = 0;

protected:
    ~AudioGroupEditor() = default;
};

/// Chooses among the groups, the default one first, and offers the commands on the chosen one below them. Commands
/// run from the opened list alone: neither the wheel nor a key on the closed box reaches them.
class IMFAudioGroupComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit IMFAudioGroupComboBox(QWidget* parent);

    /// @param editor what the commands save; not owned. Without one they save empty groups.
    void setEditor(const AudioGroupEditor* editor);

    /// Replaces the groups but the default one, which becomes current.
    /// @return what was wrong with the array, for the user to read.
    QStringList load(const QJsonArray& profiles);

    const AudioGroup& current() const;

    /// The profiles of all groups but the default one.
    QJsonArray profiles() const;

    /// The current group takes what the editor holds; the default group refuses with a message.
    void save();

Q_SIGNALS:
    /// The user has chosen, saved or removed a group: this one is current now, and shall be shown as it is.
    void profileChosen(const AudioGroup& group);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void onActivated(int position);
    void choose(int position);
    void saveAs();
    void removeCurrent();
    void rebuild();
    void add(const QString& entry);
    void tell(const char* text);
    AudioGroup edited(const QString& name) const;
    QStringList names() const;
    QString suggestedName() const;

    QVector<AudioGroup> m_groups;
    int m_current = 0;
    const AudioGroupEditor* m_editor = nullptr;
};

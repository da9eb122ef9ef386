#pragma once

#include "IMFAudioGroupComboBox.h"

#include "ViewDeckQt/ManagedDialog.h"

#include <QDialog>
#include <QPointer>

class IMFAudioTrackView;
class IMFTracksSortFilterModel;
class QCheckBox;
class QLabel;
class QPushButton;

/// Lets the user define named groups of a sequence's tracks. Run it modally and read the profiles once it is accepted.
class IMFAudioGroupDialog : public ViewDeckQt::ManagedDialog<QDialog>, private AudioGroupEditor
{
    Q_OBJECT

public:
    /// @param trackModel the track data model of the sequence, as the media engine fills it; not owned, and it may go
    ///        while the dialog is open.
    /// @param groups the profiles to begin with.
    IMFAudioGroupDialog(QWidget* parent, QAbstractItemModel* trackModel, const QJsonArray& groups);
    ~IMFAudioGroupDialog() override;

    /// The profiles of all groups but the default one, once the dialog is accepted.
    QJsonArray profiles() const { return m_result; }

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    QStringList selectedTracks() const override;
    bool includesMasterFader() const override;

    bool isChanged() const override { return m_changed; }

    QStringList otherSources() const override;

    void handOn(QEvent* event);
    void layOut();
    void connectAll();
    void apply(const AudioGroup& group);
    void showTracks(const QStringList& names);
    void markChanged();
    void remark(const QStringList& lines);
    void warnOfMissingSequence();
    void onCancel();
    void onSave();

    IMFTracksSortFilterModel* m_tracks;
    QPointer<QAbstractItemModel> m_trackModel;
    IMFAudioGroupComboBox* m_groups;
    IMFAudioTrackView* m_view;
    QCheckBox* m_masterFader;
    QJsonArray m_input;
    QJsonArray m_result;
    bool m_changed = false;
    /// Tracks of the group that the list does not have, or not at present.
    QStringList m_missing;
    bool m_sequenceIsMissing = false;
    QLabel* m_remark;
    QPushButton* m_cancel;
    QPushButton* m_save;
};

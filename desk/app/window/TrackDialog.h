#pragma once

#include "ViewDeckQt/ManagedDialog.h"
#include "desk/services/SpokenRanges.h"

#include <QDialog>

class QListWidget;
class QPushButton;

namespace desk::app
{

/// Asks which audio tracks of a sequence are transcribed and shown. OK stays away while none is ticked.
class TrackDialog : public ViewDeckQt::ManagedDialog<QDialog>
{
    Q_OBJECT

public:
    /// @param chosen as services::spokenRanges() has it.
    TrackDialog(const media::Sequence& sequence, const QVector<int>& chosen, QWidget* parent = nullptr);

    /// The ticked tracks; empty where all are.
    QVector<int> chosen() const;

private:
    void layOut(const QString& hint);
    QPushButton* tickButton(const QString& text, Qt::CheckState state);
    QVector<int> ticked() const;

    QListWidget* m_tracks;
    QPushButton* m_ok = nullptr;
};

} // namespace desk::app

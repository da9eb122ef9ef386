#pragma once

#include "ViewDeckQt/ManagedDialog.h"

#include <QDialog>
#include <QStringList>

class QLineEdit;

/// Asks for the name under which a group is saved. Run it modally; made for one question.
class IMFAudioGroupSaveAsDialog : public ViewDeckQt::ManagedDialog<QDialog>
{
    Q_OBJECT

public:
    IMFAudioGroupSaveAsDialog(QWidget* parent, const QString& suggestedName, const QStringList& existingNames);

    /// The entered name, not empty once the dialog is accepted.
    QString name() const;

private:
    void onOk();
    bool mayReplace();

    QStringList m_existingNames;
    QLineEdit* m_name;
};

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

    /// Refuses these names as well.
    void reserve(const QStringList& names) { m_reservedNames += names; }

    /// The entered name, not empty once the dialog is accepted.
    QString name() const;

private:
    void onOk();
    bool mayReplace();

    QStringList m_existingNames;
    QStringList m_reservedNames;
    QLineEdit* m_name;
};

#pragma once

#include "ViewDeckQt/ManagedDialog.h"
#include "desk/speech/recognition/Recogniser.h"

#include <QDialog>

class QLabel;
class QLineEdit;

namespace desk::app
{

/// Asks which program and model recognise speech. OK stays away while a file that is named is not there.
class RecogniserDialog : public ViewDeckQt::ManagedDialog<QDialog>
{
    Q_OBJECT

public:
    explicit RecogniserDialog(const speech::RecogniserSettings& settings, QWidget* parent = nullptr);

    speech::RecogniserSettings settings() const;

    void accept() override;

private:
    void layOut();
    QLineEdit* field(const char* name, const QString& text, const QString& hint);
    QWidget* withBrowse(QLineEdit* field, const QString& title);

    speech::RecogniserSettings m_settings;
    QLineEdit* m_program;
    QLineEdit* m_model;
    QLineEdit* m_language;
    QLabel* m_problem;
};

} // namespace desk::app

#pragma once

#include <QFileDialog>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

class QAbstractButton;

namespace support
{

/// Answers the next message box as a user does: by a click on the button, posted to the event loop that the box runs.
/// Make it before the call that asks. Where several live, each answers one box, in the order of their making. A test
/// in which the box never comes fails.
class ModalAnswer : public QObject
{
public:
    explicit ModalAnswer(QMessageBox::StandardButton button);
    /// Clicks the button with this text.
    explicit ModalAnswer(const QString& buttonText);
    ~ModalAnswer() override;

    bool answered = false;
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    /// The standard buttons that the box shows.
    QMessageBox::StandardButtons buttons;
    /// The texts of all buttons, in the order of their display.
    QStringList buttonTexts;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QWidget* parentWidget = nullptr;

private:
    void watch();
    void record(const QMessageBox& box);
    QAbstractButton* wanted(const QMessageBox& box) const;

    QMessageBox::StandardButton m_button = QMessageBox::NoButton;
    QString m_buttonText;
    QTimer m_timer;
};

/// Answers the next folder dialog: chooses a folder, or cancels where the folder is empty.
class FolderAnswer : public QObject
{
public:
    explicit FolderAnswer(const QString& folder);
    ~FolderAnswer() override;

    bool answered = false;
    QString title;
    /// The folder that the dialog opened in.
    QString openedIn;
    QFileDialog::Options options;

private:
    void watch();

    QString m_folder;
    QTimer m_timer;
};

} // namespace support

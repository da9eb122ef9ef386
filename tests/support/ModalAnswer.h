#pragma once

#include <QFileDialog>
#include <QMargins>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

class QAbstractButton;

namespace support
{

/// Answers the next dialog as a user does: by a click, posted to the event loop that the dialog runs. Make it before
/// the call that asks. Where several live, each answers one dialog, in the order of their making. A test in which the
/// dialog never comes fails.
class DialogAnswer : public QObject
{
public:
    DialogAnswer();
    ~DialogAnswer() override;

    bool answered = false;
    QString title;

protected:
    /// Writes down what the dialog shows and finds the button to click; false where it is of another kind.
    virtual bool record(QWidget& dialog) = 0;

    QAbstractButton* m_button = nullptr;

private:
    void watch();

    QTimer m_timer;
};

/// Answers a message box.
class ModalAnswer : public DialogAnswer
{
public:
    explicit ModalAnswer(QMessageBox::StandardButton button) : m_choice(button) {}

    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    /// The standard buttons that the box shows.
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QWidget* parentWidget = nullptr;
    QMargins margins;

protected:
    bool record(QWidget& dialog) override;

private:
    QMessageBox::StandardButton m_choice;
};

/// Answers a folder dialog: chooses a folder, or cancels where the folder is empty.
class FolderAnswer : public DialogAnswer
{
public:
    explicit FolderAnswer(const QString& folder) : m_folder(folder) {}

    /// The folder that the dialog opened in.
    QString openedIn;

protected:
    bool record(QWidget& dialog) override;

private:
    QString m_folder;
};

/// Deals with the next dialog or menu that opens, as a user would. Make it before the call that opens it; a test in
/// which none comes fails.
class WhenOpened : public QObject
{
public:
    explicit WhenOpened(std::function<void(QWidget&)> deal);
    ~WhenOpened() override;

    /// Clicks a button by its object name.
    static std::function<void(QWidget&)> clicking(const char* button);
    /// Chooses the entry of a menu with this text.
    static std::function<void(QWidget&)> choosing(const QString& text);

    bool opened = false;

private:
    void watch();

    std::function<void(QWidget&)> m_deal;
    QTimer m_timer;
};

} // namespace support

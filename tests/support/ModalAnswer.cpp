#include "support/ModalAnswer.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <deque>

namespace
{
// The answers that wait for a dialog, first come first served.
std::deque<const QObject*> waiting;

void leave(const QObject* answer)
{
    waiting.erase(std::remove(waiting.begin(), waiting.end(), answer), waiting.end());
}

template <class Dialog>
Dialog* openDialogFor(const QObject* answer)
{
    if (waiting.empty() || waiting.front() != answer)
        return nullptr;
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    // Answers that fell due for one dialog must not click it twice while it closes.
    return dialog && dialog->isVisible() && !dialog->property("answered").toBool() ? dialog : nullptr;
}

template <class Dialog>
void claim(Dialog& dialog, const QObject* answer)
{
    dialog.setProperty("answered", true);
    leave(answer);
}
} // namespace

namespace support
{

ModalAnswer::ModalAnswer(QMessageBox::StandardButton button) : m_button(button)
{
    waiting.push_back(this);
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswer::watch);
    m_timer.start(0);
}

ModalAnswer::ModalAnswer(const QString& buttonText) : ModalAnswer(QMessageBox::NoButton)
{
    m_buttonText = buttonText;
}

ModalAnswer::~ModalAnswer()
{
    leave(this);
    if (!answered)
        QTest::qFail("the expected message box was never answered", __FILE__, __LINE__);
}

void ModalAnswer::watch()
{
    QMessageBox* box = openDialogFor<QMessageBox>(this);
    if (!box)
        return;
    m_timer.stop();
    claim(*box, this);
    record(*box);
    QAbstractButton* button = wanted(*box);
    if (!button) {
        QTest::qFail(qPrintable("no such button among: " + buttonTexts.join(", ")), __FILE__, __LINE__);
        box->reject();
        return;
    }
    answered = true;
    QTest::mouseClick(button, Qt::LeftButton);
}

void ModalAnswer::record(const QMessageBox& box)
{
    title = box.windowTitle();
    text = box.text();
    icon = box.icon();
    buttons = box.standardButtons();
    const QList<QAbstractButton*> all = box.buttons();
    for (QAbstractButton* button : all) {
        buttonTexts += button->text();
        const auto* push = qobject_cast<QPushButton*>(button);
        if (push && push->isDefault())
            defaultButton = box.standardButton(button);
    }
    parentWidget = box.parentWidget();
}

QAbstractButton* ModalAnswer::wanted(const QMessageBox& box) const
{
    if (m_buttonText.isEmpty())
        return box.button(m_button);
    const QList<QAbstractButton*> all = box.buttons();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [this](const QAbstractButton* button) { return button->text() == m_buttonText; });
    return found == all.end() ? nullptr : *found;
}

FolderAnswer::FolderAnswer(const QString& folder) : m_folder(folder)
{
    waiting.push_back(this);
    connect(&m_timer, &QTimer::timeout, this, &FolderAnswer::watch);
    m_timer.start(0);
}

FolderAnswer::~FolderAnswer()
{
    leave(this);
    if (!answered)
        QTest::qFail("the expected folder dialog was never answered", __FILE__, __LINE__);
}

void FolderAnswer::watch()
{
    QFileDialog* dialog = openDialogFor<QFileDialog>(this);
    if (!dialog)
        return;
    m_timer.stop();
    claim(*dialog, this);
    answered = true;
    title = dialog->windowTitle();
    openedIn = dialog->directory().absolutePath();
    options = dialog->options();
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    auto* box = dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    if (name)
        name->setText(m_folder);
    const auto choice = m_folder.isEmpty() ? QDialogButtonBox::Cancel : QDialogButtonBox::Open;
    QAbstractButton* button = box ? box->button(choice) : nullptr;
    if (button)
        QTest::mouseClick(button, Qt::LeftButton);
    else
        dialog->reject();
}

} // namespace support

#include "support/ModalAnswer.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <deque>

namespace
{
// The answers that wait for a dialog, first come first served.
Q_GLOBAL_STATIC(std::deque<const QObject*>, waiting)

void leave(const QObject* answer)
{
    waiting->erase(std::remove(waiting->begin(), waiting->end(), answer), waiting->end());
}
} // namespace

namespace support
{

DialogAnswer::DialogAnswer()
{
    waiting->push_back(this);
    connect(&m_timer, &QTimer::timeout, this, &DialogAnswer::watch);
    m_timer.start(0);
}

DialogAnswer::~DialogAnswer()
{
    leave(this);
    if (!answered)
        QTest::qFail("the expected dialog was never answered", __FILE__, __LINE__);
}

void DialogAnswer::watch()
{
    QWidget* dialog = QApplication::activeModalWidget();
    // Answers that fell due for one dialog must not click it twice while it closes.
    if (waiting->empty() || waiting->front() != this || !dialog || !dialog->isVisible() ||
        dialog->property("answered").toBool())
        return;
    if (!record(*dialog))
        return;
    m_timer.stop();
    dialog->setProperty("answered", true);
    leave(this);
    answered = true;
    title = dialog->windowTitle();
    if (m_button) {
        QTest::mouseClick(m_button, Qt::LeftButton);
        return;
    }
    QTest::qFail("the dialog has no such button", __FILE__, __LINE__);
    dialog->close();
}

bool ModalAnswer::record(QWidget& dialog)
{
    const auto* box = qobject_cast<QMessageBox*>(&dialog);
    if (!box)
        return false;
    text = box->text();
    icon = box->icon();
    buttons = box->standardButtons();
    const QList<QAbstractButton*> all = box->buttons();
    for (QAbstractButton* button : all) {
        const auto* push = qobject_cast<QPushButton*>(button);
        if (push && push->isDefault())
            defaultButton = box->standardButton(button);
    }
    parentWidget = box->parentWidget();
    margins = box->contentsMargins();
    m_button = box->button(m_choice);
    return true;
}

bool FolderAnswer::record(QWidget& dialog)
{
    const auto* chooser = qobject_cast<QFileDialog*>(&dialog);
    if (!chooser)
        return false;
    openedIn = chooser->directory().absolutePath();
    if (auto* name = chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
        name->setText(m_folder);
    const auto choice = m_folder.isEmpty() ? QDialogButtonBox::Cancel : QDialogButtonBox::Open;
    if (auto* box = chooser->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox")))
        m_button = box->button(choice);
    return true;
}

WhenOpened::WhenOpened(std::function<void(QWidget&)> deal) : m_deal(std::move(deal))
{
    connect(&m_timer, &QTimer::timeout, this, &WhenOpened::watch);
    m_timer.start(0);
}

WhenOpened::~WhenOpened()
{
    if (!opened)
        QTest::qFail("the expected dialog or menu never opened", __FILE__, __LINE__);
}

void WhenOpened::watch()
{
    QWidget* widget = QApplication::activePopupWidget();
    if (!widget)
        widget = QApplication::activeModalWidget();
    if (!widget || !widget->isVisible())
        return;
    m_timer.stop();
    opened = true;
    m_deal(*widget);
}

std::function<void(QWidget&)> WhenOpened::clicking(const char* button)
{
    return [button](QWidget& dialog) {
        auto* found = dialog.findChild<QPushButton*>(QLatin1String(button));
        if (found)
            QTest::mouseClick(found, Qt::LeftButton);
        else
            dialog.close();
    };
}

std::function<void(QWidget&)> WhenOpened::choosing(const QString& text)
{
    return [text](QWidget& widget) {
        auto* menu = qobject_cast<QMenu*>(&widget);
        const QList<QAction*> actions = menu ? menu->actions() : QList<QAction*>();
        for (QAction* action : actions) {
            if (action->text() == text)
                return QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        }
        widget.close();
    };
}

} // namespace support

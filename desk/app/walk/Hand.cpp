#include "desk/app/walk/Hand.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDragEnterEvent>
#include <QEventLoop>
#include <QImage>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include <memory>

namespace desk::app
{

namespace
{
void send(QWidget* widget, QEvent::Type type, const QPoint& place, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, place, widget->mapToGlobal(place), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void clickAt(QWidget* widget, const QPoint& place)
{
    widget->setFocus(Qt::MouseFocusReason);
    send(widget, QEvent::MouseButtonPress, place, Qt::LeftButton);
    send(widget, QEvent::MouseButtonRelease, place, Qt::NoButton);
    QApplication::processEvents();
}

void sendKey(QWidget* widget, int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        const QPointer<QWidget> target = widget;
        QKeyEvent event(type, key, modifiers, text);
        if (target)
            QApplication::sendEvent(widget, &event);
        if (!target)
            return;
    }
    QApplication::processEvents();
}

QWidget* openPopupOrDialog()
{
    QWidget* popup = QApplication::activePopupWidget();
    return popup ? popup : QApplication::activeModalWidget();
}

/// A window in front of another lies where its own corner is.
void paintOnto(QPainter& painter, QWidget* window, const QWidget* front)
{
    QWidget* widget = const_cast<QWidget*>(front);
    const QPoint place = window->mapFromGlobal(widget->mapToGlobal(QPoint(0, 0)));
    painter.fillRect(QRect(place, widget->size()).adjusted(-1, -1, 1, 1), QColor(0, 0, 0, 160));
    painter.drawPixmap(place, widget->grab());
}
} // namespace

Hand::Hand(QWidget* window, const QString& pictures, int firstNumber)
    : m_window(window), m_pictures(pictures), m_number(firstNumber)
{
}

bool Hand::waitFor(const std::function<bool()>& condition, int atMost)
{
    const QDeadlineTimer deadline(atMost);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

void Hand::click(QWidget* widget)
{
    clickAt(widget, widget->rect().center());
}

void Hand::click(QAbstractItemView* view, const QModelIndex& index)
{
    view->scrollTo(index);
    view->setFocus(Qt::MouseFocusReason);
    const QPoint place = view->visualRect(index).center();
    send(view->viewport(), QEvent::MouseButtonPress, place, Qt::LeftButton);
    send(view->viewport(), QEvent::MouseButtonRelease, place, Qt::NoButton);
    QApplication::processEvents();
}

void Hand::doubleClick(QAbstractItemView* view, const QModelIndex& index)
{
    click(view, index);
    const QPoint place = view->visualRect(index).center();
    send(view->viewport(), QEvent::MouseButtonDblClick, place, Qt::LeftButton);
    send(view->viewport(), QEvent::MouseButtonRelease, place, Qt::NoButton);
    QApplication::processEvents();
}

void Hand::key(QWidget* widget, int key, Qt::KeyboardModifiers modifiers)
{
    sendKey(widget, key, modifiers, {});
}

void Hand::type(QWidget* field, const QString& text)
{
    click(field);
    sendKey(field, Qt::Key_A, Qt::ControlModifier, {});
    for (const QChar letter : text)
        sendKey(field, 0, Qt::NoModifier, letter);
}

bool Hand::drag(QAbstractItemView* from, QAbstractItemView* to, const QModelIndex& target)
{
    const std::unique_ptr<QMimeData> data(from->model()->mimeData(from->selectionModel()->selectedIndexes()));
    QWidget* place = to->isVisible() ? to->viewport() : to->parentWidget()->parentWidget();
    const QPoint point = target.isValid()  ? to->visualRect(target).center()
                         : to->isVisible() ? place->rect().bottomLeft() + QPoint(20, -10)
                                           : place->rect().center();
    return drop(place, *data, point, Qt::MoveAction);
}

bool Hand::drop(QWidget* widget, const QMimeData& data, const QPoint& place, Qt::DropAction action)
{
    QDragEnterEvent enter(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &enter);
    QDragMoveEvent move(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
    QDropEvent dropped(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    if (!enter.isAccepted())
        return false;
    QApplication::sendEvent(widget, &dropped);
    QApplication::processEvents();
    return dropped.isAccepted();
}

void Hand::whenOpen(const std::function<void(QWidget*)>& act)
{
    constexpr int glance = 20;
    QTimer::singleShot(glance, qApp, [act] {
        QWidget* open = openPopupOrDialog();
        if (open && open->isVisible())
            act(open);
        else
            whenOpen(act);
    });
}

Status Hand::shoot(const QString& name)
{
    const int number = m_number++;
    if (m_pictures.isEmpty())
        return {};
    // What was asked to lay itself out anew has done so.
    waitFor([] { return false; }, 100);
    QPixmap picture = m_window->grab();
    QPainter painter(&picture);
    if (QApplication::activeModalWidget() && QApplication::activeModalWidget() != m_window)
        paintOnto(painter, m_window, QApplication::activeModalWidget());
    // A menu stays open behind its submenu.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* one : windows) {
        if (one->isVisible() && one->windowType() == Qt::Popup && one != QApplication::activePopupWidget())
            paintOnto(painter, m_window, one);
    }
    if (QApplication::activePopupWidget())
        paintOnto(painter, m_window, QApplication::activePopupWidget());
    painter.end();
    const QString file = QStringLiteral("%1/%2-%3.png").arg(m_pictures).arg(number, 2, 10, QLatin1Char('0')).arg(name);
    // Few colours and no shades of transparency: a page of documents should load fast.
    const QImage flat = picture.toImage().convertToFormat(QImage::Format_RGB888);
    if (QDir().mkpath(m_pictures) && flat.save(file, "PNG", 0))
        return {};
    return Error{file,
                 {},
                 {},
                 QStringLiteral("the picture cannot be written"),
                 QStringLiteral("check the rights and the space of the folder")};
}

} // namespace desk::app

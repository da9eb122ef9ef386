#include "ManagerFixture.h"

#include "ViewDeckQt/AbstractParamWidget.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTest>

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

QString shape(const QAbstractItemModel& model, const QModelIndex& parent)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const QString below = shape(model, index);
        rows += index.data().toString() + (below.isEmpty() ? QString() : '(' + below + ')');
    }
    return rows.join(',');
}

ManagerFixture::ManagerFixture()
{
    reopen();
}

void ManagerFixture::reopen()
{
    window = std::make_unique<IMF_ManagerWindow>(model.get(), QModelIndex());
    window->resize(1000, 760);
    window->show();
    QApplication::setActiveWindow(window.get());
    (void)QTest::qWaitForWindowActive(window.get());
}

void ManagerFixture::click(const QModelIndex& index)
{
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent())
        tree().expand(above);
    tree().scrollTo(index);
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, tree().visualRect(index).center());
}

void ManagerFixture::type(const QString& id, const QString& text)
{
    auto* widget = param<ViewDeckQt::AbstractParamWidget>(id);
    QVERIFY2(widget, qPrintable(id));
    QWidget* field = widget->findChild<QLineEdit*>();
    if (auto* lines = widget->findChild<QAbstractScrollArea*>())
        field = lines;
    QApplication::setActiveWindow(window.get());
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Tab);
}

bool ManagerFixture::drop(const QStringList& mobIds, const QModelIndex& target)
{
    const std::unique_ptr<QMimeData> mime = support::RecordingMediaEngine::dragOf(mobIds);
    QWidget* pane = tree().isVisible() ? tree().viewport() : tree().parentWidget()->parentWidget();
    const QPoint point = target.isValid() ? tree().visualRect(target).center() : pane->rect().center();
    QDragEnterEvent enter(point, Qt::MoveAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &enter);
    QDragMoveEvent move(point, Qt::MoveAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &move);
    if (!enter.isAccepted() || !move.isAccepted())
        return false;
    QDropEvent dropped(point, Qt::MoveAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &dropped);
    return dropped.isAccepted();
}

Film::Film(int clicked)
{
    delivery = f.newDelivery("Film");
    imp = f.newImp(delivery);
    cpl = f.newCpl(imp, "m");
    f.click(at(clicked));
}

QString Film::value(const QString& id) const
{
    return f.param<ViewDeckQt::AbstractParamWidget>(id)->getValue().toString();
}

#include "ManagerFixture.h"

#include "ViewDeckQt/AbstractParamWidget.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>

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

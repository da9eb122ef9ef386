#include "ManagerFixture.h"

#include "ViewDeckQt/AbstractParamWidget.h"

#include <QApplication>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QTextEdit>

ManagerFixture::ManagerFixture() : window(std::make_unique<IMF_ManagerWindow>(model.get(), QModelIndex()))
{
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
    if (auto* lines = widget->findChild<QTextEdit*>())
        field = lines;
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Tab);
}

bool ManagerFixture::drop(const QStringList& mobIds, const QModelIndex& target, Qt::DropAction action)
{
    const std::unique_ptr<QMimeData> mime = support::RecordingMediaEngine::dragOf(mobIds);
    QWidget* pane = tree().isVisible() ? tree().viewport() : tree().parentWidget()->parentWidget();
    const QPoint point = target.isValid() ? tree().visualRect(target).center() : pane->rect().center();
    QDragEnterEvent enter(point, action, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &enter);
    QDragMoveEvent move(point, action, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &move);
    if (!enter.isAccepted() || !move.isAccepted())
        return false;
    QDropEvent dropped(point, action, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pane, &dropped);
    return dropped.isAccepted();
}

void ManagerFixture::shoot(const QString& name) const
{
    const QString folder = qEnvironmentVariable("STRATACUT_SHOTS");
    if (folder.isEmpty())
        return;
    QCoreApplication::processEvents();
    QVERIFY(window->grab().save(folder + '/' + name + ".png"));
}

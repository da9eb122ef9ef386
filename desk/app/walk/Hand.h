#pragma once

#include "desk/base/Result.h"

#include <QModelIndex>
#include <QString>

#include <functional>

class QAbstractItemView;
class QMimeData;
class QWidget;

namespace desk::app
{

/// Uses the desk as a person does: it points, clicks, types and drags by sending the events that a mouse and a keyboard
/// send, waits for what it sees and takes pictures. User-interface thread.
class Hand
{
public:
    /// @param pictures the folder for pictures; empty for none. @param firstNumber that of the first picture.
    Hand(QWidget* window, const QString& pictures, int firstNumber = 1);

    /// That of the next picture.
    int nextNumber() const { return m_number; }

    /// Lets the program go on until the condition holds; false when it does not within the time in milliseconds.
    static bool waitFor(const std::function<bool()>& condition, int atMost = 20000);

    static void click(QWidget* widget);
    static void click(QAbstractItemView* view, const QModelIndex& index);
    static void doubleClick(QAbstractItemView* view, const QModelIndex& index);
    static void key(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Clicks a field, selects what it holds and types over it.
    static void type(QWidget* field, const QString& text);
    /// Carries the selected rows of one view to a row of another, or to its empty part for an invalid index. A plain
    /// display hands no drags on between widgets: the events that a drag ends in are sent as they would come.
    /// @return whether the target took it.
    static bool drag(QAbstractItemView* from, QAbstractItemView* to, const QModelIndex& target);
    /// The same with data from elsewhere.
    static bool drop(QWidget* widget, const QMimeData& data, const QPoint& place, Qt::DropAction action);
    /// Does something as soon as a menu or a dialog is open, which the next call is about to open.
    static void whenOpen(const std::function<void(QWidget*)>& act);

    /// The window as it is, with the menus and dialogs in front of it, as "NN-name.png".
    Status shoot(const QString& name);

private:
    QWidget* m_window;
    QString m_pictures;
    int m_number;
};

} // namespace desk::app

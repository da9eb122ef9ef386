#pragma once

#include "model/ModelFixture.h"
#include "support/ModalAnswer.h"
#include "support/Shape.h"

#include "StratacutUI/IMF_ManagerWindow.h"
#include "StratacutUI/IMF_PackageParamsView.h"
#include "StratacutUI/IMF_TreeView.h"

#include <QMimeData>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

using support::shape;
using support::WhenOpened;

/// The widget of that parameter on the page that is shown; null when there is none.
template <typename Widget>
Widget* shownParam(const QWidget& view, const QString& id)
{
    const QList<Widget*> all = view.findChildren<Widget*>();
    const auto found = std::find_if(
        all.begin(), all.end(), [&id](const Widget* widget) { return widget->getId() == id && widget->isVisible(); });
    return found == all.end() ? nullptr : *found;
}

/// The package manager's window over a model with recording bridges, shown and active.
class ManagerFixture : public ModelFixture
{
public:
    ManagerFixture();

    /// Makes the window anew over the present model.
    void reopen();

    IMF_TreeView& tree() const { return *window->findChild<IMF_TreeView*>("m_treeView"); }

    IMF_PackageParamsView& params() const { return *window->findChild<IMF_PackageParamsView*>("m_paramsView"); }

    QPushButton& button(const char* name) const { return *window->findChild<QPushButton*>(name); }

    template <typename Widget>
    Widget* param(const QString& id) const
    {
        return shownParam<Widget>(params(), id);
    }

    /// Expands the way to an item and clicks it.
    void click(const QModelIndex& index);
    /// Clicks a parameter's field, replaces its text and leaves it.
    void type(const QString& id, const QString& text);
    /// What a drag of these sequences meets over an item; over the empty part for an invalid index.
    bool drop(const QStringList& mobIds, const QModelIndex& target);
    std::unique_ptr<IMF_ManagerWindow> window;
};

/// A deliverable, an IMP and a CPL in the window, of which one is clicked.
struct Film {
    /// @param clicked 0 to 2, from the deliverable down.
    explicit Film(int clicked);

    QModelIndex at(int kind) const { return kind == 0 ? delivery : kind == 1 ? imp : cpl; }

    QString value(const QString& id) const;

    QString role(int kind, int role) const { return at(kind).data(role).toString(); }

    ManagerFixture f;
    QPersistentModelIndex delivery;
    QPersistentModelIndex imp;
    QPersistentModelIndex cpl;
};

#pragma once

#include "model/ModelFixture.h"

#include "StratacutUI/IMF_ManagerWindow.h"
#include "StratacutUI/IMF_PackageParamsView.h"
#include "StratacutUI/IMF_TreeView.h"

#include <QPushButton>

/// The package manager's window over a model with recording bridges, shown and active.
class ManagerFixture : public ModelFixture
{
public:
    ManagerFixture();

    IMF_TreeView& tree() const { return *window->findChild<IMF_TreeView*>("m_treeView"); }

    IMF_PackageParamsView& params() const { return *window->findChild<IMF_PackageParamsView*>("m_paramsView"); }

    QPushButton& button(const char* name) const { return *window->findChild<QPushButton*>(name); }

    /// The widget of that parameter on the page that is shown; null when there is none.
    template <typename Widget>
    Widget* param(const QString& id) const
    {
        Widget* found = nullptr;
        const QList<Widget*> all = params().findChildren<Widget*>();
        for (Widget* widget : all) {
            if (widget->getId() == id && widget->isVisible())
                found = widget;
        }
        return found;
    }

    /// Expands the way to an item and clicks it.
    void click(const QModelIndex& index);
    /// Clicks a parameter's field, replaces its text and leaves it.
    void type(const QString& id, const QString& text);
    /// What a drag of these sequences meets over an item; over the empty part for an invalid index.
    bool drop(const QStringList& mobIds, const QModelIndex& target, Qt::DropAction action = Qt::MoveAction);
    /// Keeps a picture of the window in the folder that STRATACUT_SHOTS names, if it names one.
    void shoot(const QString& name) const;

    std::unique_ptr<IMF_ManagerWindow> window;
};

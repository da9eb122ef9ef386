#include "ViewDeckQt/DecorationManager.h"

#include "FamilyStyle.h"

#include <QApplication>
#include <QChildEvent>
#include <QPointer>
#include <QStyle>
#include <QWidget>

namespace ViewDeckQt
{

namespace
{
// Decorates what is added to a decorated tree later. Lives as a child of the tree's root.
class Decorator : public QObject
{
public:
    explicit Decorator(QWidget* root) : QObject(root) { take(root); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ChildPolished) {
            QObject* child = static_cast<QChildEvent*>(event)->child();
            if (child->isWidgetType())
                take(static_cast<QWidget*>(child));
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void take(QWidget* widget)
    {
        FamilyStyle::apply(widget);
        widget->installEventFilter(this);
        const QList<QWidget*> children = widget->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* child : children)
            take(child);
    }
};
} // namespace

void DecorationManager::decorate(QWidget* root)
{
    const QString name = QStringLiteral("ViewDeckQt::Decorator");
    if (root->findChild<QObject*>(name, Qt::FindDirectChildrenOnly))
        return;
    auto* decorator = new Decorator(root);
    decorator->setObjectName(name);
}

QStyle* DecorationManager::style()
{
    static QPointer<QStyle> style;
    if (!style) {
        style = new FamilyStyle;
        style->setParent(qApp);
    }
    return style;
}

} // namespace ViewDeckQt

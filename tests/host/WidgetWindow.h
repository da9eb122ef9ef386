#pragma once

#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace widgets
{
inline const QString longText =
    QStringLiteral("far more words than a window of this width has any room to show in one line");

template <typename Field>
Field* fieldOf(const QWidget* param)
{
    return param->findChild<Field*>();
}

inline QStringList choices()
{
    return {QStringLiteral("Alpha"), QStringLiteral("----------"), QStringLiteral("Beta"), QStringLiteral("Separator"),
            QStringLiteral("Gamma")};
}

inline ViewDeckQt::PWDiscrete* makeDiscrete(QWidget* parent)
{
    return new ViewDeckQt::PWDiscrete(parent, QStringLiteral("Kind:"), QStringLiteral("kind"), choices());
}

inline ViewDeckQt::PWTextInput* makeInput(QWidget* parent, const QString& label = QStringLiteral("Title:"))
{
    return new ViewDeckQt::PWTextInput(parent, label, QStringLiteral("title"));
}

/// A window that is shown and active, with a column for what is tested.
struct Window : QWidget {
    Window()
    {
        new QVBoxLayout(this);
        resize(360, 300);
    }

    template <typename Widget>
    Widget* add(Widget* widget)
    {
        layout()->addWidget(widget);
        return widget;
    }

    bool open()
    {
        show();
        activateWindow();
        return QTest::qWaitForWindowActive(this);
    }
};

inline bool turnWheel(QWidget* over, int steps)
{
    const QPointF at = over->rect().center();
    QWheelEvent event(at, over->mapToGlobal(at.toPoint()), {}, {0, 120 * steps}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(over, &event);
    return event.isAccepted();
}
} // namespace widgets

#pragma once

#include "ViewDeckQt/Export.h"

#include "NvCore/NvText.h"

#include <QList>
#include <QMap>
#include <QSize>
#include <QString>

#include <memory>

class QWidget;

namespace ViewDeckQt
{

/// The mix-in of every tool window and dialog: it registers the window with the process while it is shown, keeps its
/// title translated and tells it when the skin changes. Derive from a widget class first and from this class second,
/// so that the widget outlives its registration. User-interface thread only.
class VIEWDECK_EXPORT ManagedWindow
{
public:
    virtual ~ManagedWindow();
    ManagedWindow(const ManagedWindow&) = delete;
    ManagedWindow& operator=(const ManagedWindow&) = delete;

    /// Sets the window's title now and again whenever the language changes.
    void setManagedTitle(const NvText& title);

    /// The managed windows that are shown now; the one shown or activated last comes first.
    static QList<QWidget*> openWindows();

    /// The first of openWindows(); null when none is shown.
    static QWidget* activeWindow();

    /// Gives the window the size that the last one of that name had when it was hidden, at most the screen's, or
    /// `first` where there was none; from now on its own size is remembered.
    /// @param name stands for the kind of window; never shown.
    void rememberSize(const QString& name, const QSize& first);

    /// All remembered sizes by name, for a host that keeps them from run to run.
    static QMap<QString, QSize> rememberedSizes();
    static void setRememberedSizes(const QMap<QString, QSize>& sizes);

protected:
    /// @param widget the window that the mix-in belongs to; must outlive the mix-in.
    explicit ManagedWindow(QWidget& widget);

    /// Called after the window's palette has changed, by a new skin or otherwise.
    virtual void onSkinChanged();

private:
    class Watcher;
    std::unique_ptr<Watcher> m_watcher;
};

} // namespace ViewDeckQt

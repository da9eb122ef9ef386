#pragma once

#include "ViewDeckQt/PaletteManager.h"
#include "desk/base/Result.h"

#include <QByteArray>
#include <QMap>
#include <QSize>
#include <QString>

namespace desk::app
{

/// How the desk's window looks, kept in a JSON file of its own. A value; the defaults are those of a first start.
struct WindowSettings {
    Palette::Skin skin = Palette::Skin::Dark;
    /// As QWidget::saveGeometry() makes it; empty for the default size.
    QByteArray geometry;
    /// As QSplitter::saveState() makes them, by object name.
    QMap<QString, QByteArray> splitters;
    /// As ViewDeckQt::ManagedWindow remembers them.
    QMap<QString, QSize> dialogs;
    /// Where the last media came from.
    QString mediaFolder;
    enum class Monitors { Shown, Hidden } monitors = Monitors::Shown;
    /// What is below the monitors.
    enum class Work { Packages, Transcript } work = Work::Packages;

    /// What cannot be read keeps its default: looks are no work that could be lost.
    static WindowSettings load(const QString& file);
    Status save(const QString& file) const;
};

} // namespace desk::app

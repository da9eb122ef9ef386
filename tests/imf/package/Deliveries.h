#pragma once

#include "desk/imf/mxf/TrackFileWriter.h"
#include "desk/imf/package/PackageTransaction.h"
#include "desk/imf/package/Verifier.h"

#include <QMap>
#include <QString>

#include <functional>

/// Small real deliveries, committed by the transaction from tiny track files.
namespace deliveries
{

/// Template of a temporary folder, in memory where that is possible: hundreds of commits wait for a disk otherwise.
QString scratch();

/// Five frames of picture at 24 a second, and two sound tracks of as many samples.
struct Tracks {
    desk::imf::TrackFileInfo picture;
    desk::imf::TrackFileInfo sound;
    desk::imf::TrackFileInfo otherSound;
    /// Where "picture.mxf", "sound.mxf" and "other.mxf" stand.
    QString folder;
};

/// Writes the three files; ends the program when that fails.
Tracks make(const QString& folder);
/// Reads them back.
Tracks load(const QString& folder);

QUuid packageId(int n);
QUuid compositionId(int n);

/// Picture and the sound given, whole, in one segment.
desk::imf::Composition composition(int n, const Tracks& tracks, const desk::imf::TrackFileInfo& sound);

using Change = std::function<void(desk::imf::Composition&)>;

/// An original "Feature film" with one package "First" and one composition.
desk::Status commitFirst(const QString& folder, const Tracks& tracks, const Change& change = {});
/// Adds a package "Second" over the picture that is there and another sound.
desk::Status commitSecond(const QString& folder, const Tracks& tracks);

/// Copies a track file to where the transaction wants it and adds it as `name`.
desk::Status addTrack(desk::imf::PackageTransaction& transaction, const Tracks& tracks,
                      const desk::imf::TrackFileInfo& info, const QString& name);

void copyFolder(const QString& from, const QString& to);
/// Every file of a folder and what it holds.
QMap<QString, QByteArray> contents(const QString& folder);
/// Findings as "code file", sorted; identifiers in file names are left out: "hash-mismatch CPL.xml".
QStringList brief(const QVector<desk::imf::Finding>& findings);

} // namespace deliveries

#pragma once

#include "desk/imf/mxf/TrackFileWriter.h"
#include "desk/imf/xml/Composition.h"

#include <QJsonObject>

namespace desk::services
{

/// The track files that a composition plays from start to end.
struct WrittenTracks {
    imf::TrackFileInfo picture;
    QVector<imf::TrackFileInfo> sounds;
    /// RFC 5646 tags of what is spoken in them, in their order. Repetitions do not count, nor does what stands for no
    /// language or an unknown one.
    QStringList languages;
    /// Of the sequence: "hh:mm:ss:ff", ";" before the frames for drop-frame; may be empty.
    QString startTimecode;
    /// Of the sequence: what the frames of its timecode count.
    Rational sequenceRate;
};

/// The content title of a CPL's document: its name where it has no other.
QString contentTitleOf(const QJsonObject& document);

/// A composition of one segment over these tracks, with the texts of the CPL's document.
imf::Composition buildComposition(const WrittenTracks& tracks, const QJsonObject& document);

} // namespace desk::services

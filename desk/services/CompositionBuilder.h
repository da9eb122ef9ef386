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
    /// Of the sequence: "hh:mm:ss:ff", ";" before the frames for drop-frame; may be empty.
    QString startTimecode;
    /// Of the sequence: what the frames of its timecode count.
    Rational sequenceRate;
};

/// A composition of one segment over these tracks, with the texts of the CPL's document.
imf::Composition buildComposition(const WrittenTracks& tracks, const QJsonObject& document);

} // namespace desk::services

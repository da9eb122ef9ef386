#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace desk::media
{

/// Every usual frame and every sample at 48 kHz lasts a whole number of these parts of a second.
constexpr qint64 ticksPerSecond = 705600000;

/// A clip as a timeline file describes it, its media not looked at yet. Times in ticks.
struct OtioClip {
    QString name;
    /// As it stands in the file: an address or a path.
    QString media;
    /// In its track.
    qint64 start = 0;
    qint64 length = 0;
    /// From the start of its media.
    qint64 mediaStart = 0;
};

struct OtioTrack {
    enum class Kind { Picture, Sound } kind = Kind::Picture;
    /// "V1", "A1", ... where the file gives it no name.
    QString name;
    std::vector<OtioClip> clips;
    qint64 length = 0;
};

struct OtioTimeline {
    Rational rate;
    /// The time of day at its start.
    qint64 globalStart = 0;
    /// From bottom to top.
    std::vector<OtioTrack> tracks;
    /// What is left out, one sentence each.
    QStringList notices;
};

/// Reads an OpenTimelineIO JSON file: timelines of one stack of tracks that hold clips and gaps. Transitions, effects,
/// trims of whole tracks and compositions inside tracks are left out and noticed. Fails for files that are no such
/// timeline and for clips that name no media or no length.
Result<OtioTimeline> readOtio(const QString& path);

} // namespace desk::media

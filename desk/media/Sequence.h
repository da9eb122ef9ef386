#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>

namespace desk::media
{

/// One audio track of a sequence: one channel of one audio stream of the file, or of one audio track of a timeline.
struct AudioTrackInfo {
    /// "A1", "A2", ... in the order of streams and channels.
    QString name;
    /// What the channel is: "Mono", "L", "R", "C", "LFE", "Ls", "Rs", ...; "Ch 3" where the file does not say.
    QString label;
    /// The title that the file gives the stream; mostly empty.
    QString title;
    /// As the file gives it, mostly ISO 639-2 ("eng"); empty where it does not say.
    QString language;
    QString codec;
    /// The number of the stream in the file or of the audio track in the timeline, and the channel in it; from 0.
    int stream = 0;
    int channel = 0;
    /// Samples a second in the file.
    int sampleRate = 0;
};

/// The picture track. Colour facts carry FFmpeg's names ("bt709", "smpte2084"); empty where the file does not say.
struct PictureTrackInfo {
    int stream = 0;
    int width = 0;
    int height = 0;
    /// Bits of a component as coded.
    int bitDepth = 8;
    /// "4:2:0", "4:2:2", "4:4:4", "RGB", "Grey", ...
    QString sampling;
    QString codec;
    QString primaries;
    QString transfer;
    QString matrix;
    /// "tv" (narrow) or "pc" (full).
    QString range;
    /// Width of a pixel over its height; 1:1 where the file does not say.
    Rational pixelAspect{1, 1};
    /// The file says that its frames are made of two fields, or its first frame does. Readers hand out whole frames
    /// as they are; nothing here takes the fields apart.
    bool interlaced = false;
    /// Clockwise turn that the file asks a player for: 0, 90, 180 or 270. Readers turn the picture so; width and height
    /// are those of the coded one.
    int rotation = 0;

    /// The transfer is PQ or HLG. Readers convert the matrix and the range, never the transfer or the primaries.
    bool isHighDynamicRange() const;
};

/// Where each frame lies in the file; made while the file is opened and shared by its readers. Never changes.
class PictureIndex;

/// What of which file a timeline shows and sounds when. Never changes.
struct EditList;

/// A media file, or a timeline that takes parts of several, as the desk edits it: one picture track and its audio
/// tracks, with time 0 at the first picture. A value; copies share the index and the edit list. A sequence without
/// picture has sound only and cannot be exported.
struct Sequence {
    /// A UUID made from the canonical path of the file alone: the same in every run, and when the file is written
    /// anew; another when the file moves.
    QString id;
    /// The file's name without its last suffix.
    QString name;
    /// Absolute and canonical.
    QString path;
    /// Size in bytes and time of last change (milliseconds since 1970, UTC) when it was opened: with `id` they tell
    /// whether the file is still the one that was opened.
    qint64 bytes = 0;
    qint64 modified = 0;
    /// Exact; invalid without picture.
    Rational frameRate;
    /// Pictures that can be read; 0 without picture.
    qint64 frames = 0;
    /// The longest sound in samples at 48 kHz from time 0, as far as the file tells without being decoded.
    qint64 soundSamples = 0;
    /// "hh:mm:ss:ff", with ";" before the frames for drop-frame; empty where the file has none.
    QString startTimecode;
    /// Of a timeline that of its first clip, but high dynamic range where any clip has it.
    std::optional<PictureTrackInfo> picture;
    QVector<AudioTrackInfo> audio;
    /// Set for a file with a picture.
    std::shared_ptr<const PictureIndex> index;
    /// Set for a timeline.
    std::shared_ptr<const EditList> edits;
    /// What of a timeline is left out or silent, one sentence each.
    QStringList notices;

    bool isTimeline() const { return edits != nullptr; }
};

/// Whether a file of this name is read as a timeline: OpenTimelineIO JSON, ".otio".
bool isTimelineFile(const QString& path);

/// Opens a media file or a timeline of this machine and learns everything above. Reads the file's index, or the whole
/// file where it has none: not for the user-interface thread. Any thread; calls do not disturb each other.
///
/// Refused, each with one sentence: addresses of a network, folders and devices, empty and unreadable files, files
/// that are no media, playlists (they name other files), a variable frame rate (names the frame where it first
/// differs), and a file that holds fewer pictures than it promises (names the last good frame). A timeline also where a
/// file that it names cannot be opened or a clip cannot be cut exactly.
Result<Sequence> openSequence(const QString& path);

} // namespace desk::media

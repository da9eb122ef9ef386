#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/SoundFormat.h"

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

namespace desk::imf
{

class MetadataSets;
struct CodestreamHeader;

enum class TrackKind { Picture, Sound, Other };

/// What the JPEG 2000 sub-descriptor and the coding label of a picture track say.
struct J2kFacts {
    /// PictureEssenceCoding, 16 bytes.
    QByteArray pictureCoding;
    /// 0 where the file has no JPEG 2000 sub-descriptor.
    quint16 rsiz = 0;
    /// Of the label; 0 where the label is none of the IMF profiles.
    int mainLevel = 0;
    int subLevel = 0;
    enum class Coding { Unknown, Lossy, Reversible, HighThroughput };
    Coding coding = Coding::Unknown;
    /// FrameLayout of the descriptor: 0 full frame, 1 separate fields, ... (ST 377-1, G.2.1).
    int frameLayout = 0;
};

/// One partition of the file (ST 377-1:2019, 7.1).
struct Partition {
    enum class Kind { Header, Body, Footer };
    Kind kind = Kind::Body;
    /// Bytes from the start of the file.
    qint64 offset = 0;
    qint64 headerByteCount = 0;
    qint64 indexByteCount = 0;
    quint32 indexSid = 0;
    quint32 bodySid = 0;
    qint64 bodyOffset = 0;
};

/// What a track file says about itself.
struct TrackFileFacts {
    QUuid id;
    TrackKind kind = TrackKind::Other;
    Rational editRate;
    /// Edit units: frames, or samples for sound.
    qint64 duration = 0;
    /// Only for TrackKind::Picture.
    PictureFormat picture;
    J2kFacts j2k;
    /// Only for TrackKind::Sound. Symbols of unknown labels are kept as the file has them.
    SoundFormat sound;
    QVector<Partition> partitions;
};

/// An opened track file, its own or a stranger's. Cheap to move; keeps the file open. One thread at a time.
class TrackFile
{
public:
    struct State;
    explicit TrackFile(std::unique_ptr<State> state);
    TrackFile(TrackFile&&) noexcept;
    TrackFile& operator=(TrackFile&&) noexcept;
    ~TrackFile();

    const TrackFileFacts& facts() const;
    /// All header metadata, generic.
    const MetadataSets& sets() const;
    /// The RegXML element of the essence descriptor, as in TrackFileInfo. Items outside our dictionary are left out.
    QByteArray descriptorXml() const;

    /// The codestream of frame `n` of a picture track.
    Result<QByteArray> readFrame(qint64 n);
    /// The main header of frame `n`, whose codestream is followed to its end; see walkCodestream().
    Result<CodestreamHeader> walkFrame(qint64 n);
    /// `count` samples of every channel from sample `first` of a sound track, interleaved and signed.
    Result<std::vector<std::int32_t>> readSamples(qint64 first, qint64 count);

private:
    std::unique_ptr<State> m_state;
};

/// Opens a track file and reads partitions, header metadata and index tables. A file that is cut, damaged or of another
/// kind gives an error with the file and the byte offset; nothing larger than the file itself is ever allocated.
Result<TrackFile> readTrackFile(const QString& path);

/// The RegXML element of a track file's essence descriptor alone, from its header metadata: neither index nor essence
/// is read. Errors as those of readTrackFile.
Result<QByteArray> readTrackDescriptor(const QString& path);

} // namespace desk::imf

#pragma once

#include "desk/imf/mxf/Ul.h"

#include <QByteArray>
#include <QtGlobal>

#include <optional>

namespace desk::imf
{

/// Keys of what stands in a track file beside the header metadata (ST 377-1, ST 422, ST 382).
namespace keys
{

inline constexpr Ul partitionHead{0x060e2b3402050101, 0x0d01020101000000};
inline constexpr Ul headerPartition{0x060e2b3402050101, 0x0d01020101020400};
inline constexpr Ul bodyPartition{0x060e2b3402050101, 0x0d01020101030400};
inline constexpr Ul footerPartition{0x060e2b3402050101, 0x0d01020101040400};
inline constexpr Ul primer{0x060e2b3402050101, 0x0d01020101050100};
inline constexpr Ul randomIndex{0x060e2b3402050101, 0x0d01020101110100};
inline constexpr Ul indexSegment{0x060e2b3402530101, 0x0d01020101100100};
inline constexpr Ul fill{0x060e2b3401010102, 0x0301021001000000};
inline constexpr Ul j2kFrame{0x060e2b3401020101, 0x0d01030115010801};
inline constexpr Ul pcmClip{0x060e2b3401020101, 0x0d01030116010201};
inline constexpr Ul j2kContainer{0x060e2b340401010d, 0x0d010301020c0600};
inline constexpr Ul pcmContainer{0x060e2b3404010101, 0x0d01030102060200};
inline constexpr Ul op1a{0x060e2b3404010101, 0x0d01020101010100};
inline constexpr Ul pictureTrack{0x060e2b3404010101, 0x0103020201000000};
inline constexpr Ul soundTrack{0x060e2b3404010101, 0x0103020202000000};
inline constexpr Ul imfChannelAssignment{0x060e2b340401010d, 0x0402021004010000};

} // namespace keys

/// What the 14th and 15th byte of a partition pack's key say.
struct PartitionKey {
    /// 2 header, 3 body, 4 footer.
    int kind = 0;
    /// 1 open incomplete, 2 closed incomplete, 3 open complete, 4 closed complete.
    int status = 0;
};

/// Nothing where the key is none of a partition pack.
std::optional<PartitionKey> partitionKey(const Ul& key);
bool isFill(const Ul& key);
/// Elements of a generic container with picture (0x15) or sound (0x16) essence.
bool isEssence(const Ul& key, std::uint8_t itemType);

/// A BER length: four bytes where it fits, else eight.
QByteArray berLength(qint64 length);
/// Key, length and value.
QByteArray klv(const Ul& key, const QByteArray& value);
/// Size of key and length for a value of so many bytes.
qint64 klvHeadSize(qint64 valueSize);
/// A fill item of exactly `size` bytes; at least 20.
QByteArray fillItem(qint64 size);

/// The value of a partition pack (ST 377-1:2019, 7.1).
struct PartitionPack {
    /// Grid that partitions and essence are aligned to with fill; 1: none.
    quint32 alignment = 1;
    qint64 thisPartition = 0;
    qint64 previousPartition = 0;
    qint64 footerPartition = 0;
    qint64 headerByteCount = 0;
    qint64 indexByteCount = 0;
    quint32 indexSid = 0;
    qint64 bodyOffset = 0;
    quint32 bodySid = 0;

    /// Key, length and value, with one essence container.
    QByteArray serialise(const Ul& key, const Ul& container) const;
    static std::optional<PartitionPack> parse(const QByteArray& value);
};

/// Bytes of a serialised pack with one essence container.
inline constexpr qint64 partitionPackSize = 16 + 4 + 80 + 8 + 16;

} // namespace desk::imf

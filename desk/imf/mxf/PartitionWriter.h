#pragma once

#include "desk/base/Result.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/OutputFile.h"

#include <QVector>

#include <memory>

namespace desk::imf
{

/// Writes the partitions of a track file in order, each with one kind of contents (ST 2067-5): header, then body and
/// index in turns, then footer and random index pack. The packs carry the footer's place; where it was not known at the
/// start they are written once more at the end.
class PartitionWriter
{
public:
    /// `footer`: offset of the footer partition, 0 if not known.
    PartitionWriter(std::unique_ptr<OutputFile> file, const Ul& container, qint64 footer);

    OutputFile& file() { return *m_file; }

    /// Bytes of essence written so far: the stream offset of what comes next.
    qint64 essenceBytes() const { return m_essenceBytes; }

    Status writeHeader(const QByteArray& metadata);
    Status startBody();
    Status writeEssence(const QByteArray& bytes);
    Status writeIndex(const QByteArray& segments);
    /// Footer and random index pack; closes the file. Its SHA-1.
    Result<QByteArray> finish();

private:
    struct Written {
        Ul key;
        PartitionPack pack;
    };

    Status writePack(const Ul& key, PartitionPack pack);
    Status rewritePacks();

    std::unique_ptr<OutputFile> m_file;
    Ul m_container;
    qint64 m_footer;
    qint64 m_essenceBytes = 0;
    QVector<Written> m_written;
};

} // namespace desk::imf

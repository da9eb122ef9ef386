#include "desk/imf/mxf/PartitionWriter.h"

#include "desk/imf/mxf/ByteOrder.h"
#include "desk/imf/mxf/HeaderMetadata.h"

namespace desk::imf
{

PartitionWriter::PartitionWriter(std::unique_ptr<OutputFile> file, const Ul& container, qint64 footer)
    : m_file(std::move(file)), m_container(container), m_footer(footer)
{
}

Status PartitionWriter::writePack(const Ul& key, PartitionPack pack)
{
    pack.thisPartition = m_file->position();
    pack.previousPartition = m_written.isEmpty() ? 0 : m_written.last().pack.thisPartition;
    pack.footerPartition = m_footer;
    m_written.append({key, pack});
    return m_file->write(pack.serialise(key, m_container));
}

Status PartitionWriter::writeHeader(const QByteArray& metadata)
{
    PartitionPack pack;
    pack.headerByteCount = metadata.size();
    if (Status status = writePack(keys::headerPartition, pack); !status)
        return status;
    return m_file->write(metadata);
}

Status PartitionWriter::startBody()
{
    PartitionPack pack;
    pack.bodySid = bodySid;
    pack.bodyOffset = m_essenceBytes;
    return writePack(keys::bodyPartition, pack);
}

Status PartitionWriter::writeEssence(const QByteArray& bytes)
{
    m_essenceBytes += bytes.size();
    return m_file->write(bytes);
}

Status PartitionWriter::writeIndex(const QByteArray& segments)
{
    PartitionPack pack;
    pack.indexSid = indexSid;
    pack.indexByteCount = segments.size();
    if (Status status = writePack(keys::bodyPartition, pack); !status)
        return status;
    return m_file->write(segments);
}

Status PartitionWriter::rewritePacks()
{
    for (Written& written : m_written) {
        written.pack.footerPartition = m_footer;
        const QByteArray bytes = written.pack.serialise(written.key, m_container);
        if (Status status = m_file->rewrite(written.pack.thisPartition, bytes); !status)
            return status;
    }
    return {};
}

Result<QByteArray> PartitionWriter::finish()
{
    const bool known = m_footer != 0;
    Q_ASSERT(!known || m_footer == m_file->position());
    m_footer = m_file->position();
    if (const Status status = writePack(keys::footerPartition, {}); !status)
        return status.error();
    QByteArray index;
    for (const Written& written : qAsConst(m_written)) {
        putBig(index, written.pack.bodySid);
        putBig(index, written.pack.thisPartition);
    }
    putBig(index, quint32(index.size() + 4 + klvHeadSize(0)));
    if (const Status status = m_file->write(klv(keys::randomIndex, index)); !status)
        return status.error();
    if (const Status status = known ? Status() : rewritePacks(); !status)
        return status.error();
    return m_file->finish();
}

} // namespace desk::imf

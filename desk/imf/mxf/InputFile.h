#pragma once

#include "desk/base/Result.h"
#include "desk/imf/mxf/Ul.h"

#include <QByteArray>
#include <QFile>
#include <QString>

namespace desk::imf
{

/// Key and length of an item in a file; its value lies within the file.
struct KlvHead {
    Ul key;
    qint64 offset = 0;
    qint64 valueOffset = 0;
    qint64 size = 0;

    qint64 end() const { return valueOffset + size; }
};

/// A file that is read in pieces; every failure names the file and the byte offset.
class InputFile
{
public:
    explicit InputFile(const QString& path) : m_file(path) {}

    Status open();

    qint64 size() const { return m_size; }

    QString path() const { return m_file.fileName(); }

    /// Exactly `count` bytes.
    Result<QByteArray> read(qint64 offset, qint64 count);
    /// An item whose value ends before `end`, which is not beyond the file.
    Result<KlvHead> readHead(qint64 offset, qint64 end);

    Result<KlvHead> readHead(qint64 offset) { return readHead(offset, m_size); }

    Result<QByteArray> readValue(const KlvHead& head) { return read(head.valueOffset, head.size); }

    Error damage(qint64 offset, const QString& what) const;

private:
    QFile m_file;
    qint64 m_size = 0;
};

} // namespace desk::imf

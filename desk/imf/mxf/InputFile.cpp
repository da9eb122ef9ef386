#include "desk/imf/mxf/InputFile.h"

#include <QtEndian>

#include <algorithm>

namespace desk::imf
{

namespace
{

constexpr int keySize = 16;
constexpr int longestHead = keySize + 9;

} // namespace

Status InputFile::open()
{
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return Error{path(),
                     {},
                     {},
                     QStringLiteral("it cannot be opened (%1)").arg(m_file.errorString()),
                     QStringLiteral("check that the file exists and may be read")};
    m_size = m_file.size();
    return {};
}

Error InputFile::damage(qint64 offset, const QString& what) const
{
    return {path(), {}, QStringLiteral("offset %1").arg(offset), what, QStringLiteral("copy the file again")};
}

Result<QByteArray> InputFile::read(qint64 offset, qint64 count)
{
    constexpr qint64 largest = 1 << 30;
    if (offset < 0 || count < 0 || offset > m_size || count > m_size - offset)
        return damage(offset, QStringLiteral("the file is cut: %1 bytes are missing").arg(count));
    if (count > largest)
        return damage(offset, QStringLiteral("an item of %1 bytes is too large").arg(count));
    QByteArray bytes(int(count), Qt::Uninitialized);
    qint64 done = 0;
    while (done < count && m_file.seek(offset + done)) {
        const qint64 got = m_file.read(bytes.data() + done, count - done);
        if (got <= 0)
            break;
        done += got;
    }
    if (done < count)
        return damage(offset, QStringLiteral("it cannot be read (%1)").arg(m_file.errorString()));
    return bytes;
}

Result<KlvHead> InputFile::readHead(qint64 offset, qint64 end)
{
    const auto cut = [&] { return damage(offset, QStringLiteral("the file is cut inside an item's key and length")); };
    if (offset < 0 || end - offset < keySize + 1)
        return cut();
    const auto bytes = read(offset, std::min<qint64>(longestHead, end - offset));
    if (!bytes)
        return bytes.error();
    const int first = quint8(bytes->at(keySize));
    const int lengthBytes = first < 0x80 ? 0 : first & 0x7f;
    if (first == 0x80 || lengthBytes > 8)
        return damage(offset, QStringLiteral("an item has no usable length"));
    if (keySize + 1 + lengthBytes > bytes->size())
        return cut();
    quint64 length = first < 0x80 ? quint64(first) : 0;
    for (int i = 0; i < lengthBytes; ++i)
        length = length << 8 | quint8(bytes->at(keySize + 1 + i));
    KlvHead head{Ul::from(bytes->constData()), offset, offset + keySize + 1 + lengthBytes, 0};
    if (length > quint64(end - head.valueOffset))
        return damage(offset, QStringLiteral("an item of %1 bytes reaches beyond its place").arg(length));
    head.size = qint64(length);
    return head;
}

} // namespace desk::imf

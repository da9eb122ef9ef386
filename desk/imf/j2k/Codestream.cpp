#include "desk/imf/j2k/Codestream.h"

#include "desk/imf/mxf/ByteOrder.h"

#include <algorithm>
#include <tuple>

namespace desk::imf
{

namespace
{

enum Marker : quint16 { Soc = 0xff4f, Siz = 0xff51, Cod = 0xff52, Qcd = 0xff5c, Sot = 0xff90, Eoc = 0xffd9 };

Error damaged(qint64 offset, const QString& what)
{
    return {{},
            QStringLiteral("JPEG 2000 codestream"),
            QStringLiteral("offset %1").arg(offset),
            what,
            QStringLiteral("encode the picture again")};
}

bool parseSiz(const QByteArray& segment, CodestreamHeader& header)
{
    BigReader reader(segment);
    header.rsiz = reader.get<quint16>();
    for (quint32* value : {&header.xsiz, &header.ysiz, &header.xOsiz, &header.yOsiz, &header.xTsiz, &header.yTsiz,
                           &header.xTOsiz, &header.yTOsiz})
        *value = reader.get<quint32>();
    const int count = reader.get<quint16>();
    for (int i = 0; i < count && reader.ok(); ++i) {
        CodestreamHeader::Component component;
        component.ssiz = reader.get<quint8>();
        component.xRsiz = reader.get<quint8>();
        component.yRsiz = reader.get<quint8>();
        header.components.append(component);
    }
    return reader.ok();
}

/// Where the marker behind the tile-part at `at` stands; -1 at the end of the codestream.
Result<qint64> nextTilePart(qint64 at, qint64 size, const CodestreamBytes& read)
{
    constexpr qint64 headSize = 12;
    const auto bytes = read(at, std::min(headSize, size - at));
    if (!bytes)
        return bytes.error();
    BigReader reader(*bytes);
    const auto marker = reader.get<quint16>();
    if (reader.ok() && marker == Eoc)
        return qint64(-1);
    reader.get<quint32>();
    const qint64 length = reader.get<quint32>();
    if (!reader.ok() || marker != Sot)
        return damaged(at, QStringLiteral("neither a tile-part nor its end stands there"));
    if (length == 0)
        return size - 2; // up to the end, whose marker is the last thing
    if (length <= headSize || length > size - 2 - at)
        return damaged(at, QStringLiteral("a tile-part of %1 bytes leaves no room for the end").arg(length));
    return at + length;
}

} // namespace

Result<CodestreamHeader> parseCodestreamHeader(const QByteArray& codestream)
{
    BigReader reader(codestream.left(1 << 16));
    CodestreamHeader header;
    if (reader.get<quint16>() != Soc)
        return damaged(0, QStringLiteral("it does not start with a JPEG 2000 codestream"));
    while (reader.ok()) {
        const qint64 at = reader.position();
        const auto marker = reader.get<quint16>();
        if (marker == Sot && !header.components.isEmpty() && !header.codingStyle.isEmpty()) {
            header.length = at;
            return header;
        }
        const int length = reader.get<quint16>();
        const QByteArray segment = reader.take(length - 2);
        if ((marker & 0xff00) != 0xff00 || !reader.ok())
            return damaged(at, QStringLiteral("its main header is damaged"));
        if (marker == Siz && !parseSiz(segment, header))
            return damaged(at, QStringLiteral("its size marker is cut"));
        if (marker == Cod)
            header.codingStyle = segment;
        if (marker == Qcd)
            header.quantization = segment;
    }
    return damaged(reader.position(), QStringLiteral("its main header is cut"));
}

Result<CodestreamHeader> walkCodestream(qint64 size, const CodestreamBytes& read)
{
    constexpr qint64 usual = 4096;
    constexpr qint64 largest = 1 << 16;
    Result<QByteArray> bytes = read(0, std::min(size, usual));
    Result<CodestreamHeader> header = bytes ? parseCodestreamHeader(*bytes) : bytes.error();
    if (bytes && !header && size > usual) {
        bytes = read(0, std::min(size, largest));
        header = bytes ? parseCodestreamHeader(*bytes) : bytes.error();
    }
    for (qint64 at = header ? header->length : size; header && at >= 0;) {
        const auto next = nextTilePart(at, size, read);
        if (!next)
            return next.error();
        at = *next;
    }
    return header;
}

bool sameSize(const CodestreamHeader& a, const CodestreamHeader& b)
{
    const auto key = [](const CodestreamHeader& h) {
        return std::tie(h.rsiz, h.xsiz, h.ysiz, h.xOsiz, h.yOsiz, h.xTsiz, h.yTsiz, h.xTOsiz, h.yTOsiz, h.components);
    };
    return key(a) == key(b);
}

bool sameCoding(const CodestreamHeader& a, const CodestreamHeader& b)
{
    return sameSize(a, b) && a.codingStyle == b.codingStyle;
}

} // namespace desk::imf

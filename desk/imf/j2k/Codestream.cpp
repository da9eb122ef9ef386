#include "desk/imf/j2k/Codestream.h"

#include "desk/imf/mxf/ByteOrder.h"

#include <tuple>

namespace desk::imf
{

namespace
{

enum Marker : quint16 { Soc = 0xff4f, Siz = 0xff51, Cod = 0xff52, Qcd = 0xff5c, Sot = 0xff90 };

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
        if (marker == Sot && !header.components.isEmpty() && !header.codingStyle.isEmpty())
            return header;
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

bool sameCoding(const CodestreamHeader& a, const CodestreamHeader& b)
{
    const auto key = [](const CodestreamHeader& h) {
        return std::tie(h.rsiz, h.xsiz, h.ysiz, h.xOsiz, h.yOsiz, h.xTsiz, h.yTsiz, h.xTOsiz, h.yTOsiz, h.components,
                        h.codingStyle);
    };
    return key(a) == key(b);
}

} // namespace desk::imf

#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QVector>

#include <functional>

namespace desk::imf
{

/// The main header of a JPEG 2000 codestream (ISO/IEC 15444-1, annex A) as far as the track file describes it.
struct CodestreamHeader {
    quint16 rsiz = 0;
    quint32 xsiz = 0, ysiz = 0, xOsiz = 0, yOsiz = 0, xTsiz = 0, yTsiz = 0, xTOsiz = 0, yTOsiz = 0;

    struct Component {
        quint8 ssiz = 0;
        quint8 xRsiz = 0;
        quint8 yRsiz = 0;

        friend bool operator==(const Component& a, const Component& b)
        {
            return a.ssiz == b.ssiz && a.xRsiz == b.xRsiz && a.yRsiz == b.yRsiz;
        }
    };

    QVector<Component> components;
    /// COD and QCD segments without marker and length.
    QByteArray codingStyle;
    QByteArray quantization;
    /// Bytes before the first tile-part.
    qint64 length = 0;
};

/// Fails on anything that does not start with SOC, SIZ, and on a main header that is cut.
Result<CodestreamHeader> parseCodestreamHeader(const QByteArray& codestream);

/// `count` bytes from `offset` of a codestream, both within it.
using CodestreamBytes = std::function<Result<QByteArray>(qint64 offset, qint64 count)>;

/// Follows a codestream of `size` bytes from its main header through the heads of its tile-parts to its end, and reads
/// no more of it. Fails where one does not lead to the next; what stands behind the end is not looked at.
Result<CodestreamHeader> walkCodestream(qint64 size, const CodestreamBytes& read);

/// Whether both have the profile, size and components of one track.
bool sameSize(const CodestreamHeader& a, const CodestreamHeader& b);

/// Whether both headers describe frames of one track: all but the quantization, which may follow the picture.
bool sameCoding(const CodestreamHeader& a, const CodestreamHeader& b);

} // namespace desk::imf

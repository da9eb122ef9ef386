#pragma once

#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace desk::media
{

/// One frame as a screen shows it: at the size of a monitor, 8 bits, four bytes a pixel in the order blue, green, red,
/// anything. Without pixels it is black.
struct Preview {
    qint64 frame = 0;
    /// The pixels are of another frame close by, until those of this one are there.
    bool isStandIn = false;
    QSize size;
    /// Bytes from one row to the next.
    int stride = 0;
    std::vector<std::uint8_t> pixels;
    /// Why there is no picture; empty where nothing is wrong.
    QString problem;
};

using PreviewPtr = std::shared_ptr<const Preview>;

} // namespace desk::media

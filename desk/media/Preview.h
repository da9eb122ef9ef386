#pragma once

#include "desk/media/FrameSource.h"

#include <QSize>

#include <cstdint>
#include <memory>
#include <vector>

namespace desk::media
{

/// One frame as a screen shows it: at the size of a monitor, 8 bits, four bytes a pixel in the order blue, green, red,
/// anything. Without pixels it is black.
struct Preview {
    qint64 frame = 0;
    QSize size;
    /// Bytes from one row to the next.
    int stride = 0;
    std::vector<std::uint8_t> pixels;
    /// Why there is no picture; empty where nothing is wrong.
    QString problem;
};

using PreviewPtr = std::shared_ptr<const Preview>;

/// Brings decoded frames to a monitor's size: fast rather than exact, in the picture's shape and turned as its file
/// asks for. One thread at a time.
class PreviewMaker
{
public:
    /// `box` is in pixels of the screen; what is made fits into it.
    Result<PreviewPtr> make(const SourceFrame& source, qint64 frame, QSize box);

private:
    SwsPtr m_scaler;
};

} // namespace desk::media

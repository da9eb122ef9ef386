#pragma once

#include "desk/media/FrameSource.h"
#include "desk/media/Preview.h"

namespace desk::media
{

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

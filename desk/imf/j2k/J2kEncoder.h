#pragma once

#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/j2k/J2kProfile.h"

#include <QByteArray>

namespace desk::imf
{

/// One frame as a raw JPEG 2000 codestream (ISO/IEC 15444-1, no JP2 boxes) of the given profile, on the calling thread.
/// Reentrant. Fails where the planes do not fit the format, where the library refuses the profile, and where the frame
/// does not come out below the profile's limit.
Result<QByteArray> encodeFrame(const Picture& picture, const PictureFormat& format, const J2kProfile& profile);

/// Decodes one codestream. `reduce` halves the size that many times (0 to 5), for previews. Fails on damaged input and
/// on components that are not one of PictureFormat's samplings.
Result<Picture> decodeFrame(const QByteArray& codestream, int reduce = 0);

} // namespace desk::imf

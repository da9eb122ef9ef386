#pragma once

#include "desk/media/PictureReader.h"

namespace desk::media
{

/// What a picture that a player turns is converted to before it is turned: the target lying on its side where the turn
/// asks for it, with whole chroma, of which any turn gives whole chroma again.
PictureTarget targetBeforeTurn(const PictureTarget& target, int clockwise);

/// The picture of `target` that turning `lying` gives. `clockwise` is 90, 180 or 270; `lying` has the format that
/// targetBeforeTurn() answers.
Frame turned(const Frame& lying, const PictureTarget& target, int clockwise);

} // namespace desk::media

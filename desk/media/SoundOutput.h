#pragma once

#include <functional>
#include <memory>

namespace desk::media
{

/// What sound is heard through, and the clock of playback: time is what was heard. Shared by players of which one
/// sounds at a time.
class SoundOutput
{
public:
    /// Writes up to `frames` pairs of left and right, -1 to 1, and answers how many. Called on the device's thread.
    using Pull = std::function<int(float* pairs, int frames)>;

    virtual ~SoundOutput() = default;

    /// Has the device ready. May take its time; any thread.
    virtual void prepare() {}

    /// Time runs from 0. One thread calls this and the following.
    virtual void start(Pull pull) = 0;
    /// No pull runs or comes any more after this.
    virtual void stop() = 0;
    /// Seconds heard since start(). What could not be pulled in time does not count. Never goes back.
    virtual double position() const = 0;
};

/// The machine's sound device; where there is none, a steady clock that nothing is heard of.
std::shared_ptr<SoundOutput> systemSoundOutput();

} // namespace desk::media

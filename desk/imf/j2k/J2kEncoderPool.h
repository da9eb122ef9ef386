#pragma once

#include "desk/base/Result.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/j2k/J2kProfile.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

namespace desk::imf
{

/// Encodes frames on several threads, one frame a worker, and hands the codestreams back in the order of the pictures.
/// One thread pushes, another takes; both may be the same one if it takes whenever hasRoom() is false.
/// Memory: never more than capacity() frames are inside, counted from push() to take(), each either as a picture or as
/// a codestream, plus about one decoded frame in 32 bits a sample and its wavelet data a worker (about 65 MB at 1080p
/// 4:2:2).
class J2kEncoderPool
{
public:
    /// How much of the processor the workers may take.
    enum class Pace {
        Full,
        /// What nothing else has a use for.
        Spare,
        Pause
    };
    /// Asked before each frame, and some times a second while frames wait for it, on the workers' threads.
    using PaceNow = std::function<Pace()>;

    /// `workers` 0 means one a core. Without `pace` they go at full pace.
    J2kEncoderPool(const PictureFormat& format, const J2kProfile& profile, int workers = 0, PaceNow pace = {});
    /// Cancels and joins the workers: waits for the frames that are being encoded, not for those in the queue.
    ~J2kEncoderPool();
    J2kEncoderPool(const J2kEncoderPool&) = delete;
    J2kEncoderPool& operator=(const J2kEncoderPool&) = delete;

    /// Twice the number of workers.
    int capacity() const;
    /// Whether push() would not wait.
    bool hasRoom() const;

    /// Waits while the pool is full. Fails with the first error of any frame, or when cancelled.
    Status push(Picture picture);
    /// No further push(): take() ends after the last frame.
    void endOfInput();

    /// Waits for the next codestream in order; nothing after the last one. Fails with the error of the first frame (in
    /// order) that failed, or when cancelled; the workers then stop.
    Result<std::optional<QByteArray>> take();

    /// Any thread. Waiting push() and take() return an error.
    void cancel();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace desk::imf

#pragma once

#include "desk/base/Result.h"
#include "desk/imf/package/PackageTransaction.h"
#include "desk/services/OutputFormat.h"

#include <QJsonObject>

#include <atomic>
#include <functional>

namespace desk::services
{

/// What to do where a composition must last a whole number of sound samples and does not (29.97 and 59.94 frames a
/// second: a multiple of five frames).
enum class Padding {
    Refuse,
    /// Black and silence at the end.
    BlackAndSilence
};

/// One composition to be written.
struct CompositionOrder {
    /// The file of the sequence and the identifier that it had in the bin.
    QString mediaPath;
    QString sequenceId;
    OutputFormat format;
    /// The CPL's document.
    QJsonObject document;
    Padding padding = Padding::Refuse;
};

/// Where an export stands. Times are those of the whole commit.
struct ExportProgress {
    /// Frames written so far and to be written, over all compositions.
    qint64 frames = 0;
    qint64 totalFrames = 0;
    /// Bytes of picture written so far.
    qint64 bytes = 0;
    double framesPerSecond = 0;
    /// -1 while it cannot be told.
    double secondsLeft = -1;
};

/// The frames that a sequence of `frames` frames at `source` lasts at the output's rate, padding excluded.
qint64 outputFrames(qint64 frames, Rational source, Rational output);
/// The composition's length in frames must be a multiple of this for its sound to end on a sample.
qint64 frameMultiple(Rational rate);
/// The composition's length with padding; the error says what is wrong and how to go on.
Result<qint64> compositionFrames(qint64 frames, Rational rate, Padding padding, const QString& media);

/// Decodes a sequence, encodes and wraps it and hands track files and composition to a transaction. Pictures are
/// decoded on one thread, encoded on all cores and written on the calling one; sound goes beside them on its own.
/// Memory does not grow with the length. Not for the user-interface thread.
class ExportJob
{
public:
    /// Frames done in this composition and bytes of the last one; called on the calling thread, frame by frame.
    using FrameWritten = std::function<void(qint64 bytes)>;

    ExportJob(const CompositionOrder& order, const std::atomic<bool>& cancelled, FrameWritten frameWritten);

    /// Fails, leaving the transaction to be rolled back, with the first error, or with one that says "cancelled".
    Status run(imf::PackageTransaction& transaction);

    /// After a run that did not fail: what the user should know of it all the same, in sentences.
    const QStringList& notes() const { return m_notes; }

private:
    struct Work;

    CompositionOrder m_order;
    const std::atomic<bool>& m_cancelled;
    FrameWritten m_frameWritten;
    QStringList m_notes;
};

} // namespace desk::services

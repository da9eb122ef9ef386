#pragma once

#include "desk/base/Result.h"
#include "desk/media/Sequence.h"

#include <limits>
#include <list>
#include <memory>
#include <utility>
#include <vector>

namespace desk::media
{

/// A stretch of a sequence that comes from one file. Counts frames in picture and samples at 48 kHz in sound.
struct Cut {
    /// In the sequence.
    qint64 start = 0;
    qint64 length = 0;
    /// No timeline itself.
    std::shared_ptr<const Sequence> media;
    /// What of the file lies at `start`.
    qint64 mediaStart = 0;
    /// Frames of the file a frame of the sequence; always 1 in sound.
    qint64 step = 1;

    qint64 end() const { return start + length; }

    qint64 mediaAt(qint64 place) const { return mediaStart + (place - start) * step; }
};

/// Ascending and apart; what lies between is black or silent.
using Cuts = std::vector<Cut>;

struct EditList {
    Cuts picture;
    /// One for each audio track of the timeline: AudioTrackInfo::stream counts these. Channel n of a cut is the track
    /// Sequence::audio[n] of its file, and silent where the file has fewer.
    std::vector<Cuts> sound;
};

/// The cut at `place` or the next one after it; the end where there is none.
Cuts::const_iterator cutFrom(const Cuts& cuts, qint64 place);

/// Puts a cut over those that are there.
void lay(const Cut& over, Cuts& cuts);

/// The picture of any sequence as cuts: a file is one cut of itself.
Cuts pictureCuts(const Sequence& sequence);

/// Fails when the file of the sequence, or one that its cuts name, is not the one that was opened.
Status checkUnchanged(const Sequence& sequence, const QString& item);

/// Keeps what was made for the files used last: a timeline may name more files than can be held open at once.
template <class Kept>
class RecentlyUsed
{
public:
    /// `make` answers Result<std::unique_ptr<Kept>>.
    template <class Make>
    Result<Kept*> get(const std::shared_ptr<const Sequence>& media, const Make& make)
    {
        for (auto entry = m_kept.begin(); entry != m_kept.end(); ++entry) {
            if (entry->first == media) {
                m_kept.splice(m_kept.begin(), m_kept, entry);
                return entry->second.get();
            }
        }
        auto made = make();
        if (!made)
            return made.error();
        if (m_kept.size() >= most)
            m_kept.pop_back();
        m_kept.emplace_front(media, std::move(*made));
        return m_kept.front().second.get();
    }

private:
    static constexpr std::size_t most = 4;

    std::list<std::pair<std::shared_ptr<const Sequence>, std::unique_ptr<Kept>>> m_kept;
};

} // namespace desk::media

#include "desk/media/EditList.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>

namespace desk::media
{

namespace
{

Status checkFile(const Sequence& sequence, const QString& item)
{
    const QFileInfo info(sequence.path);
    if (info.size() == sequence.bytes && info.lastModified().toMSecsSinceEpoch() == sequence.modified)
        return {};
    return Error{sequence.path,
                 item,
                 {},
                 QStringLiteral("the file has changed since it was opened"),
                 QStringLiteral("open it again")};
}

Status checkCuts(const Cuts& cuts, const QString& item)
{
    const Sequence* last = nullptr;
    for (const Cut& cut : cuts) {
        const Status status = cut.media.get() == last ? Status() : checkFile(*cut.media, item);
        if (!status)
            return status;
        last = cut.media.get();
    }
    return {};
}

} // namespace

Cuts::const_iterator cutFrom(const Cuts& cuts, qint64 place)
{
    return std::partition_point(cuts.begin(), cuts.end(), [place](const Cut& cut) { return cut.end() <= place; });
}

void lay(const Cut& over, Cuts& cuts)
{
    if (cuts.empty() || cuts.back().end() <= over.start)
        return cuts.push_back(over);
    Cuts result;
    result.reserve(cuts.size() + 2);
    for (const Cut& under : cuts) {
        if (under.start < over.start) {
            result.push_back(under);
            result.back().length = std::min(under.end(), over.start) - under.start;
        }
        if (under.end() > over.end()) {
            const qint64 start = std::max(under.start, over.end());
            result.push_back({start, under.end() - start, under.media, under.mediaAt(start), under.step});
        }
    }
    result.insert(cutFrom(result, over.start), over);
    cuts = std::move(result);
}

Cuts pictureCuts(const Sequence& sequence)
{
    if (sequence.edits)
        return sequence.edits->picture;
    if (!sequence.picture || !sequence.index)
        return {};
    return {{0, sequence.frames, std::make_shared<const Sequence>(sequence), 0}};
}

Status checkUnchanged(const Sequence& sequence, const QString& item)
{
    Status status = checkFile(sequence, item);
    if (!status || !sequence.edits)
        return status;
    status = checkCuts(sequence.edits->picture, item);
    for (const Cuts& track : sequence.edits->sound) {
        if (status)
            status = checkCuts(track, item);
    }
    return status;
}

} // namespace desk::media

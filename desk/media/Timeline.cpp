#include "desk/media/Timeline.h"

#include "desk/media/EditList.h"
#include "desk/media/MediaFile.h"
#include "desk/media/OtioReader.h"
#include "desk/media/Timecode.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QUrl>

#include <algorithm>

namespace desk::media
{

namespace
{

using MediaPtr = std::shared_ptr<const Sequence>;

qint64 ticksPerFrame(Rational rate)
{
    return ticksPerSecond * rate.den / rate.num;
}

constexpr qint64 ticksPerSample = ticksPerSecond / 48000;

/// The frame that starts at a time, give or take `tolerance`, or -1 where the time lies between two.
qint64 frameNear(qint64 ticks, Rational rate, qint64 tolerance)
{
    const qint64 frame = ticksPerFrame(rate);
    const qint64 number = (ticks + frame / 2) / frame;
    return ticks < 0 || std::abs(ticks - number * frame) > tolerance ? -1 : number;
}

qint64 frameAt(qint64 ticks, Rational rate)
{
    return frameNear(ticks, rate, ticksPerFrame(rate) / 1000);
}

/// The sample that sounds at a time. Times that mean the start of a frame but are a rounding away from it count as it.
qint64 sampleAt(qint64 ticks, Rational rate)
{
    const qint64 frame = rate.isValid() ? frameNear(ticks, rate, ticksPerSample / 4) : -1;
    return (frame < 0 ? ticks : frame * ticksPerFrame(rate)) / ticksPerSample;
}

/// Brings the clips of a timeline to the frames and samples of their media.
class Conform
{
public:
    explicit Conform(const QString& path) : m_path(path), m_sequence(describeFile(path)) {}

    Result<Sequence> run();

private:
    Status openMedia();
    QString pathOf(const QString& media) const;
    Status addTrack(const OtioTrack& track);
    Status checkRate(const OtioClip& clip, const Sequence& media, const QString& item) const;
    Result<Cut> pictureCut(const OtioClip& clip, const QString& item) const;
    Result<Cut> soundCut(const OtioClip& clip, const QString& item);
    void describePicture();
    void describeSound(const Cuts& cuts);
    void describeLength();

    Error failure(const QString& item, const QString& what, const QString& next) const
    {
        return {m_path, item, {}, what, next};
    }

    QString m_path;
    Sequence m_sequence;
    OtioTimeline m_timeline;
    EditList m_edits;
    /// By OtioClip::media.
    QHash<QString, MediaPtr> m_media;
};

QString itemOf(const OtioClip& clip, const OtioTrack& track)
{
    return QStringLiteral("clip \"%1\" in track %2").arg(clip.name, track.name);
}

/// Media are named by address, by path, and relative to the timeline's folder.
QString Conform::pathOf(const QString& media) const
{
    const QUrl url(media);
    if (url.isLocalFile() && (url.host().isEmpty() || url.host() == QLatin1String("localhost")))
        return url.path();
    if (media.contains(QLatin1String("://")))
        return media;
    const QDir folder(QFileInfo(m_path).path());
    const QString plain = folder.absoluteFilePath(media);
    return QFileInfo::exists(plain) ? plain : folder.absoluteFilePath(QUrl::fromPercentEncoding(media.toUtf8()));
}

Status Conform::openMedia()
{
    QStringList missing;
    for (const OtioTrack& track : m_timeline.tracks) {
        for (const OtioClip& clip : track.clips) {
            const QString path = pathOf(clip.media);
            if (!QFileInfo::exists(path) && !path.contains(QLatin1String("://")))
                missing += path;
        }
    }
    missing.removeDuplicates();
    if (!missing.isEmpty()) {
        const QString what = missing.size() == 1 ? QStringLiteral("a media file that it names is not there: %1")
                                                 : QStringLiteral("media files that it names are not there: %1");
        return failure({}, what.arg(missing.join(QStringLiteral(", "))),
                       QStringLiteral("bring the media back or relink the timeline"));
    }
    QHash<QString, MediaPtr> byPath;
    for (const OtioTrack& track : m_timeline.tracks) {
        for (const OtioClip& clip : track.clips) {
            const QString path = pathOf(clip.media);
            if (isTimelineFile(path))
                return failure(itemOf(clip, track), QStringLiteral("a timeline cannot stand inside a timeline"),
                               QStringLiteral("put the clips of %1 in its place").arg(path));
            MediaPtr& media = byPath[path];
            if (!media) {
                Result<Sequence> opened = openSequence(path);
                if (!opened)
                    return opened.error();
                media = std::make_shared<const Sequence>(std::move(*opened));
            }
            m_media[clip.media] = media;
        }
    }
    return {};
}

/// Frames of the media must fall on frames of the timeline.
Status Conform::checkRate(const OtioClip& clip, const Sequence& media, const QString& item) const
{
    const Rational in = media.frameRate;
    const Rational out = m_timeline.rate;
    if (!media.picture)
        return failure(item, QStringLiteral("%1 has no picture").arg(clip.media),
                       QStringLiteral("put the clip on an audio track"));
    if (in.num * out.den % (in.den * out.num) == 0)
        return {};
    return failure(item,
                   QStringLiteral("%1 has %2 frames a second and the timeline %3")
                       .arg(clip.media)
                       .arg(in.toDouble())
                       .arg(out.toDouble()),
                   QStringLiteral("convert the clip to the timeline's rate"));
}

Result<Cut> Conform::pictureCut(const OtioClip& clip, const QString& item) const
{
    const MediaPtr media = m_media[clip.media];
    if (const Status status = checkRate(clip, *media, item); !status)
        return status.error();
    Cut cut;
    cut.media = media;
    cut.step = media->frameRate.num * m_timeline.rate.den / (media->frameRate.den * m_timeline.rate.num);
    cut.start = frameAt(clip.start, m_timeline.rate);
    const qint64 end = frameAt(clip.start + clip.length, m_timeline.rate);
    cut.mediaStart = frameAt(clip.mediaStart, media->frameRate);
    cut.length = end - cut.start;
    if (clip.mediaStart < 0)
        return failure(item, QStringLiteral("it starts before its media"), QStringLiteral("trim the clip"));
    if (cut.start < 0 || end < 0 || cut.mediaStart < 0)
        return failure(item, QStringLiteral("it does not start and end with a frame"),
                       QStringLiteral("cut it on frames of %1 a second").arg(m_timeline.rate.toDouble()));
    const qint64 last = cut.mediaAt(end - 1);
    if (cut.length > 0 && last >= media->frames)
        return failure(
            item,
            QStringLiteral("it shows frame %1 of %2, which has %3 frames").arg(last).arg(clip.media).arg(media->frames),
            QStringLiteral("trim the clip or bring the whole media"));
    return cut;
}

Result<Cut> Conform::soundCut(const OtioClip& clip, const QString& item)
{
    const MediaPtr media = m_media[clip.media];
    if (media->audio.isEmpty())
        return failure(item, QStringLiteral("%1 has no sound").arg(clip.media),
                       QStringLiteral("take the clip off the audio track"));
    if (clip.mediaStart < 0)
        return failure(item, QStringLiteral("it starts before its media"), QStringLiteral("trim the clip"));
    Cut cut;
    cut.media = media;
    cut.start = sampleAt(clip.start, m_timeline.rate);
    cut.length = sampleAt(clip.start + clip.length, m_timeline.rate) - cut.start;
    cut.mediaStart = sampleAt(clip.mediaStart, media->frameRate);
    const qint64 frame = m_timeline.rate.isValid() ? ticksPerFrame(m_timeline.rate) / ticksPerSample : 0;
    const qint64 silent = std::min(cut.length, cut.mediaAt(cut.end()) - media->soundSamples);
    if (silent > frame)
        m_timeline.notices += QStringLiteral("%1, %2: the sound of %3 ends early; the last %4 s are silent.")
                                  .arg(m_path, item, clip.media)
                                  .arg(double(silent) / 48000, 0, 'f', 2);
    return cut;
}

Status Conform::addTrack(const OtioTrack& track)
{
    const bool sounds = track.kind == OtioTrack::Kind::Sound;
    Cuts sound;
    for (const OtioClip& clip : track.clips) {
        const QString item = itemOf(clip, track);
        const Result<Cut> cut = sounds ? soundCut(clip, item) : pictureCut(clip, item);
        if (!cut)
            return cut.error();
        if (cut->length == 0)
            continue;
        if (sounds)
            sound.push_back(*cut);
        else
            lay(*cut, m_edits.picture);
    }
    if (!sounds || sound.empty())
        return {};
    describeSound(sound);
    m_edits.sound.push_back(std::move(sound));
    return {};
}

void Conform::describePicture()
{
    if (m_edits.picture.empty())
        return;
    m_sequence.frameRate = m_timeline.rate;
    m_sequence.picture = m_edits.picture.front().media->picture;
    for (const Cut& cut : m_edits.picture) {
        if (cut.media->picture->isHighDynamicRange())
            m_sequence.picture->transfer = cut.media->picture->transfer;
    }
    PictureTrackInfo& info = *m_sequence.picture;
    // Readers have turned what they hand out.
    if (info.rotation % 180 != 0) {
        std::swap(info.width, info.height);
        info.pixelAspect = Rational(info.pixelAspect.den, info.pixelAspect.num);
    }
    info.rotation = 0;
}

/// The channels of a new audio track, each described by the first clip that has it.
void Conform::describeSound(const Cuts& cuts)
{
    const int stream = int(m_edits.sound.size());
    int channels = 0;
    for (const Cut& cut : cuts) {
        for (; channels < cut.media->audio.size(); ++channels) {
            AudioTrackInfo info = cut.media->audio[channels];
            info.name = QStringLiteral("A%1").arg(m_sequence.audio.size() + 1);
            info.stream = stream;
            info.channel = channels;
            m_sequence.audio.append(info);
        }
    }
}

void Conform::describeLength()
{
    qint64 length = 0;
    for (const OtioTrack& track : m_timeline.tracks)
        length = std::max(length, track.length);
    for (const Cuts& track : m_edits.sound)
        m_sequence.soundSamples = std::max(m_sequence.soundSamples, track.back().end());
    if (!m_sequence.picture)
        return;
    const qint64 frame = ticksPerFrame(m_timeline.rate);
    m_sequence.frames = (length + frame - frame / 1000 - 1) / frame;
    if (m_timeline.globalStart > 0)
        m_sequence.startTimecode = Timecode{m_timeline.rate}.text((m_timeline.globalStart + frame / 2) / frame);
}

Result<Sequence> Conform::run()
{
    Result<OtioTimeline> read = readOtio(m_path);
    if (!read)
        return read.error();
    m_timeline = std::move(*read);
    if (const Status status = openMedia(); !status)
        return status.error();
    const std::vector<OtioTrack> tracks = m_timeline.tracks;
    for (const OtioTrack& track : tracks) {
        if (const Status status = addTrack(track); !status)
            return status.error();
    }
    if (m_edits.picture.empty() && m_edits.sound.empty())
        return failure({}, QStringLiteral("the timeline has no clip with picture or sound"),
                       QStringLiteral("export a timeline that has one"));
    describePicture();
    describeLength();
    m_sequence.notices = m_timeline.notices;
    m_sequence.edits = std::make_shared<const EditList>(std::move(m_edits));
    return std::move(m_sequence);
}

} // namespace

Result<Sequence> openTimeline(const QString& path)
{
    return Conform(path).run();
}

} // namespace desk::media

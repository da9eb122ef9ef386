#include "desk/services/SpeechSound.h"

#include "desk/media/EditList.h"
#include "desk/media/MonoSound.h"
#include "desk/services/FrameTime.h"

#include <QFileInfo>

#include <algorithm>

namespace desk::services
{

namespace
{
/// Whether the clip's file is there and still the one that was opened.
Status checkMedia(const media::Sequence& clip)
{
    if (Status there = checkThere(clip.path); !there)
        return there;
    if (media::checkUnchanged(clip, {}))
        return {};
    return Error{clip.path,
                 {},
                 {},
                 QStringLiteral("the file was replaced or changed before its speech was recognised to the end"),
                 QStringLiteral("transcribe it again")};
}

/// Where a file ends early, readers go on with silence, so the file is looked at after each read: no word is missing
/// without notice.
class ClipSound : public speech::SoundSource
{
public:
    ClipSound(media::Sequence clip, std::unique_ptr<media::MonoSound> sound)
        : m_clip(std::move(clip)), m_sound(std::move(sound))
    {
    }

    qint64 length() const override { return m_sound->length(); }

    Result<QVector<qint16>> read(qint64 first, qint64 count) override
    {
        auto samples = m_sound->read(first, count);
        // Why reading failed is best told by what became of the file.
        if (const Status there = checkMedia(m_clip); !there)
            return there.error();
        return samples;
    }

private:
    media::Sequence m_clip;
    std::unique_ptr<media::MonoSound> m_sound;
};

speech::SoundOpener opener(const media::Sequence& clip, const QVector<int>& tracks)
{
    return [clip, tracks]() -> Result<std::unique_ptr<speech::SoundSource>> {
        if (const Status there = checkMedia(clip); !there)
            return there.error();
        auto sound = media::MonoSound::open(clip, tracks, speech::soundRate);
        if (!sound)
            return sound.error();
        return std::unique_ptr<speech::SoundSource>(std::make_unique<ClipSound>(clip, std::move(*sound)));
    };
}

/// A channel that the file gives no place beside others may be a microphone of its own.
bool standsAlone(const media::AudioTrackInfo& track)
{
    return track.label == QLatin1String("Mono") || track.label.startsWith(QLatin1String("Ch "));
}

QVector<QVector<int>> soundsOf(const media::Sequence& clip)
{
    QVector<QVector<int>> sounds;
    int open = -1;
    for (int track = 0; track < clip.audio.size(); ++track) {
        const media::AudioTrackInfo& info = clip.audio[track];
        const bool joins = open >= 0 && clip.audio[open].stream == info.stream && !standsAlone(info);
        if (joins)
            sounds.last() += track;
        else
            sounds.append(QVector<int>{track});
        open = standsAlone(info) ? -1 : track;
    }
    return sounds;
}
} // namespace

Status checkThere(const QString& path)
{
    if (QFileInfo::exists(path))
        return {};
    return Error{path,
                 {},
                 {},
                 QStringLiteral("the file is not there any more, so its speech cannot be recognised"),
                 QStringLiteral("put it back or connect its drive, and transcribe it again")};
}

int lengthMs(const media::Sequence& sequence)
{
    constexpr qint64 samplesPerMs = media::soundRate / 1000;
    qint64 ms = sequence.soundSamples / samplesPerMs;
    if (sequence.frameRate.isValid())
        ms = std::max(ms, msOfFrame(sequence.frames, sequence.frameRate, FrameRounding::Down));
    return int(ms);
}

QVector<int> heardTogether(const media::Sequence& clip, const QVector<int>& tracks)
{
    QVector<int> together;
    const QVector<QVector<int>> sounds = soundsOf(clip);
    for (const QVector<int>& sound : sounds) {
        if (std::any_of(sound.begin(), sound.end(), [&](int track) { return tracks.contains(track); }))
            together += sound;
    }
    return together;
}

speech::RecognitionJob recognitionJob(const media::Sequence& clip, const QVector<int>& chosen)
{
    speech::RecognitionJob job;
    job.clipName = clip.name;
    job.media = QStringLiteral("%1 bytes of %2").arg(clip.bytes).arg(clip.modified);
    job.lengthMs = lengthMs(clip);
    const QVector<QVector<int>> sounds = soundsOf(clip);
    for (QVector<int> tracks : sounds) {
        const auto isLeftOut = [&](int track) { return !chosen.isEmpty() && !chosen.contains(track); };
        tracks.erase(std::remove_if(tracks.begin(), tracks.end(), isLeftOut), tracks.end());
        if (tracks.isEmpty())
            continue;
        job.tracks += opener(clip, tracks);
        job.numbers += tracks.first();
    }
    return job;
}

} // namespace desk::services

#include "desk/speech/recognition/RecognitionJob.h"

#include "desk/speech/recognition/Voices.h"

#include <algorithm>

namespace desk::speech
{

namespace
{

/// A track that is worked on.
struct Track {
    int number = 0;
    std::unique_ptr<SoundSource> sound;
    QVector<QVector<Word>> utterances;

    QVector<TimeSpan> spans() const
    {
        QVector<TimeSpan> spans;
        for (const QVector<Word>& words : utterances)
            spans.append({words.first().startMs, words.last().endMs});
        return spans;
    }
};

/// Repairs what comes from the recogniser and passes it on.
class TrackSink : public RecognitionSink
{
public:
    TrackSink(Track& track, RecognitionEvents& events, std::function<Go(qint64)> progress)
        : m_track(track), m_events(events), m_progress(std::move(progress))
    {
        if (!track.utterances.isEmpty())
            m_lastEnd = track.utterances.last().last().endMs;
    }

    void take(const Batch& batch) override
    {
        Batch good;
        good.resumeAt = std::clamp<qint64>(batch.resumeAt, 0, m_track.sound->length());
        // A word that claims to last to the end of the clip would leave no room for those to come.
        const int end = msOfSample(good.resumeAt > 0 ? good.resumeAt : m_track.sound->length());
        for (QVector<Word> words : batch.utterances) {
            m_repairs += repairWords(words, {m_lastEnd, std::max(m_lastEnd, end)});
            if (words.isEmpty())
                continue;
            m_lastEnd = words.last().endMs;
            good.utterances.append(words);
        }
        m_track.utterances += good.utterances;
        m_events.recognised(m_track.number, good);
    }

    Go progress(qint64 sample) override { return m_progress(sample); }

    const RepairReport& repairs() const { return m_repairs; }

private:
    Track& m_track;
    RecognitionEvents& m_events;
    std::function<Go(qint64)> m_progress;
    int m_lastEnd = 0;
    RepairReport m_repairs;
};

class Run
{
public:
    Run(const RecognitionJob& job, Recogniser& recogniser, RecognitionEvents& events,
        const std::atomic<bool>& isCancelled)
        : m_job(job), m_recogniser(recogniser), m_events(events), m_isCancelled(isCancelled)
    {
    }

    Result<RecognitionResult> run(const QHash<int, RecognisedPart>& former)
    {
        Status status = openTracks();
        if (status.ok())
            status = chooseTracks();
        for (std::size_t i = 0; i < m_tracks.size() && status.ok() && goesOn(); ++i)
            status = recognise(m_tracks[i], former.value(m_tracks[i].number));
        if (status.ok() && goesOn())
            status = assemble();
        if (!status.ok())
            return named(status.error());
        if (!goesOn())
            return Error();
        if (m_result.transcript.segments.isEmpty()) {
            return named({QString(), QString(), QString(), QStringLiteral("no speech was recognised"),
                          QStringLiteral("check that the clip's sound has speech in the recogniser's language (%1)")
                              .arg(m_recogniser.name())});
        }
        return m_result;
    }

private:
    bool goesOn() const { return !m_isCancelled; }

    Error named(Error error) const
    {
        if (error.file.isEmpty())
            error.file = m_job.clipName;
        return error;
    }

    Status openTracks()
    {
        for (int i = 0; i < m_job.tracks.size(); ++i) {
            auto sound = m_job.tracks[i]();
            if (!sound)
                return sound.error();
            m_tracks.push_back({m_job.numbers.value(i, i), std::move(*sound), {}});
        }
        if (!m_tracks.empty())
            return {};
        return Error{QString(), QString(), QString(), QStringLiteral("the clip has no sound"),
                     QStringLiteral("choose a clip with an audio track")};
    }

    Status chooseTracks()
    {
        m_byTrack = m_job.speakersBy == SpeakersBy::Track;
        if (m_job.speakersBy == SpeakersBy::Automatic && m_tracks.size() > 1) {
            QVector<SoundSource*> sounds;
            for (const Track& track : m_tracks)
                sounds.append(track.sound.get());
            const auto own = tracksOfTheirOwn(sounds, [this] { return goesOn(); });
            if (!own)
                return own.error();
            std::vector<Track> kept;
            for (const int place : *own)
                kept.push_back(std::move(m_tracks[std::size_t(place)]));
            m_tracks = std::move(kept);
            m_byTrack = m_tracks.size() > 1;
        }
        for (const Track& track : m_tracks)
            m_length += track.sound->length();
        return {};
    }

    Status recognise(Track& track, const RecognisedPart& former)
    {
        track.utterances = former.utterances;
        const auto isBlank = [](const QVector<Word>& words) { return words.isEmpty(); };
        track.utterances.erase(std::remove_if(track.utterances.begin(), track.utterances.end(), isBlank),
                               track.utterances.end());
        TrackSink sink(track, m_events, [this](qint64 sample) {
            reportProgress(m_done + sample);
            return goesOn() ? Go::On : Go::Stop;
        });
        const Status status = m_recogniser.recognise(*track.sound, former.resumeAt, sink);
        m_result.repairs += sink.repairs();
        m_done += track.sound->length();
        return status;
    }

    void reportProgress(qint64 sample)
    {
        const int percent = m_length > 0 ? int(std::clamp<qint64>(sample * 100 / m_length, 0, 99)) : 0;
        if (percent != m_percent)
            m_events.progress(percent);
        m_percent = percent;
    }

    /// One segment an utterance, in the order of time.
    Status assemble()
    {
        Transcript& transcript = m_result.transcript;
        for (Track& track : m_tracks) {
            QVector<int> voices(track.utterances.size(), 0);
            if (!m_byTrack) {
                const auto told = tellVoicesApart(*track.sound, track.spans(), [this] { return goesOn(); });
                if (!told)
                    return told.error();
                voices = *told;
            }
            const int first = transcript.speakers.size() + 1;
            const int count = voices.isEmpty() ? 0 : *std::max_element(voices.begin(), voices.end()) + 1;
            for (int i = 0; i < count; ++i)
                transcript.speakers.append({first + i, QString()});
            for (int i = 0; i < voices.size(); ++i)
                transcript.segments.append({first + voices[i], track.utterances[i], track.number});
        }
        std::stable_sort(transcript.segments.begin(), transcript.segments.end(),
                         [](const Segment& a, const Segment& b) { return a.startMs() < b.startMs(); });
        return {};
    }

    const RecognitionJob& m_job;
    Recogniser& m_recogniser;
    RecognitionEvents& m_events;
    const std::atomic<bool>& m_isCancelled;
    std::vector<Track> m_tracks;
    bool m_byTrack = false;
    qint64 m_length = 0;
    qint64 m_done = 0;
    int m_percent = -1;
    RecognitionResult m_result;
};

} // namespace

Result<RecognitionResult> recogniseClip(const RecognitionJob& job, Recogniser& recogniser,
                                        const QHash<int, RecognisedPart>& former, RecognitionEvents& events,
                                        const std::atomic<bool>& isCancelled)
{
    return Run(job, recogniser, events, isCancelled).run(former);
}

} // namespace desk::speech

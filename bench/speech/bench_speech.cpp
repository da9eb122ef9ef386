#include "desk/speech/recognition/Recogniser.h"
#include "desk/speech/recognition/Voices.h"
#include "desk/speech/store/TranscriptStore.h"
#include "speech/Recordings.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>

// How much faster than real time is a clip transcribed, and are its voices told apart? What does a long transcript in
// the store cost the user-interface thread, against building the same transcript in memory? Seconds are the thread's
// own on the processor: a machine that does other work besides gives much the same figures.

namespace
{

using namespace desk::speech;

struct Sink : RecognitionSink {
    void take(const Batch& batch) override
    {
        for (const auto& words : batch.utterances) {
            if (words.isEmpty())
                continue;
            spans.append({words.first().startMs, words.last().endMs});
            for (const Word& word : words)
                heard << (word.text == QLatin1String("mr") ? QStringLiteral("mister") : word.text);
        }
    }

    Go progress(qint64) override { return Go::On; }

    QVector<TimeSpan> spans;
    QStringList heard;
};

double processorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

template <class Work>
double secondsOf(Work work)
{
    const double start = processorSeconds();
    work();
    return processorSeconds() - start;
}

void recognise(const char* folder)
{
    const auto recording = recordings::joined(recordings::folder(QString::fromLatin1(folder)));
    auto recogniser = makeRecogniser({});
    if (recording.words.isEmpty() || !recogniser)
        return;
    Sink nothing;
    recordings::Memory silence(recordings::Samples(soundRate, 0));
    const double loading = secondsOf([&] { (void)(*recogniser)->recognise(silence, 0, nothing).ok(); });
    Sink sink;
    recordings::Memory sound(recording.samples);
    const double length = double(recording.samples.size()) / soundRate;
    const double seconds = secondsOf([&] { (void)(*recogniser)->recognise(sound, 0, sink).ok(); });
    const double voices = secondsOf([&] { (void)tellVoicesApart(sound, sink.spans, [] { return true; }).ok(); });
    std::printf(
        "recognition of %.0f s, %s, against real time | %.1fx (word error rate %.0f %%, loads in %.2f s) | above 1x\n",
        length, folder, length / seconds, recordings::wordErrorRate(recording.words, sink.heard) * 100, loading);
    std::printf("voices told apart, %s, against real time | %.0fx | above 20x\n", folder, length / voices);
}

Transcript longTranscript(int words)
{
    Transcript transcript;
    transcript.speakers = {{1, QString()}, {2, QString()}};
    for (int i = 0; i < words / 10; ++i) {
        Segment segment{1 + i % 2, {}};
        for (int k = 0; k < 10; ++k)
            segment.words.append({i * 4000 + k * 400, i * 4000 + k * 400 + 300, QStringLiteral("word%1").arg(k), 0.5});
        transcript.segments.append(segment);
    }
    return transcript;
}

/// Handles events until the condition holds; this thread's own share of the time.
template <class Condition>
double waitFor(Condition condition)
{
    return secondsOf([&] {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    });
}

void store(int words)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("project.db"));
    const QString clip = QStringLiteral("clip");
    Transcript transcript;
    const double built = secondsOf([&] { transcript = longTranscript(words); });
    double put = 0;
    {
        TranscriptStore store(path);
        put = secondsOf([&] { store.putTranscript(clip, transcript); });
        put += waitFor([&] { return store.clipState(clip).stage == ClipState::Stage::Done; });
    }
    TranscriptStore store(path);
    const double read = waitFor([&] { return store.transcript(clip) != nullptr; });
    std::printf("store, %d words, this thread against building them | put %.2fx, read %.2fx | 1x\n", words, put / built,
                read / built);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    recognise("librivox");
    recognise("cards");
    for (const int words : {20000, 200000, 1000000})
        store(words);
    return 0;
}

#include "desk/speech/recognition/SphinxRecogniser.h"

#include "desk/speech/recognition/SphinxHandles.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace desk::speech
{

namespace
{

/// A step of the search for pauses.
constexpr int step = soundRate / 100;
/// Sound before the first sign of speech, which the search finds late.
constexpr int leadIn = 3 * soundRate / 10;
/// Speech without any pause, or noise taken for speech, is cut: the decoder's memory and the wait after a cancel grow
/// with the length.
constexpr int longestUtterance = 12 * soundRate;
constexpr int cutRange = 4 * soundRate;
constexpr int msOfFrame = 10;

/// Silences, noises and the marks of sentence ends are no words.
bool isFiller(const char* word)
{
    return word == nullptr || *word == '<' || *word == '[' || *word == '+' || *word == '\0';
}

/// "read(2)", the second pronunciation in the dictionary, is "read".
QString withoutVariant(const char* word)
{
    const QString text = QString::fromUtf8(word);
    const int mark = text.endsWith(QLatin1Char(')')) ? text.indexOf(QLatin1Char('(')) : -1;
    return mark > 0 ? text.left(mark) : text;
}

struct Utterance {
    /// The sample of the sound that it starts with.
    qint64 first = 0;
    QVector<qint16> samples;

    qint64 end() const { return first + samples.size(); }
};

/// Cuts sound into utterances at its pauses.
class Utterances
{
public:
    Utterances(sphinx::FrontEndPtr detector, qint64 first) : m_detector(std::move(detector)), m_pending{first, {}}
    {
        fe_start_stream(m_detector.get());
        fe_start_utt(m_detector.get());
    }

    /// @return the utterances that the samples completed.
    QVector<Utterance> add(const QVector<qint16>& samples)
    {
        QVector<Utterance> complete;
        for (int at = 0; at < samples.size(); at += step) {
            const QVector<qint16> next = samples.mid(at, step);
            m_pending.samples += next;
            const bool isSpeech = detect(next);
            if (m_hasSpeech && (!isSpeech || m_pending.samples.size() >= longestUtterance))
                complete.append(cut(isSpeech));
            m_hasSpeech = isSpeech;
            if (!m_hasSpeech)
                forget();
        }
        return complete;
    }

    /// What is left at the end of the sound.
    QVector<Utterance> rest() const { return m_hasSpeech ? QVector<Utterance>{m_pending} : QVector<Utterance>(); }

private:
    bool detect(const QVector<qint16>& samples)
    {
        constexpr int most = 256;
        constexpr int width = 13;
        std::array<std::array<mfcc_t, width>, most> cepstra;
        std::array<mfcc_t*, most> rows{};
        std::transform(cepstra.begin(), cepstra.end(), rows.begin(), [](auto& row) { return row.data(); });
        const int16* from = samples.constData();
        std::size_t left = std::size_t(samples.size());
        while (left > 0) {
            int32 frames = most;
            const std::size_t before = left;
            fe_process_frames(m_detector.get(), &from, &left, rows.data(), &frames, nullptr);
            if (left == before && frames == 0)
                break;
        }
        return fe_get_vad_state(m_detector.get()) != 0;
    }

    /// Speech that goes on is cut where it is quietest, and the rest starts the next utterance.
    Utterance cut(bool goesOn)
    {
        const int length = goesOn ? quietPlace(m_pending.samples, cutRange) : m_pending.samples.size();
        const Utterance done{m_pending.first, m_pending.samples.mid(0, length)};
        m_pending = {done.end(), m_pending.samples.mid(length)};
        return done;
    }

    void forget()
    {
        const int surplus = m_pending.samples.size() - leadIn;
        if (surplus > 0)
            m_pending = {m_pending.first + surplus, m_pending.samples.mid(surplus)};
    }

    sphinx::FrontEndPtr m_detector;
    Utterance m_pending;
    bool m_hasSpeech = false;
};

} // namespace

/// Decodes whole utterances: what the decoder learns of a voice's mean from all of an utterance spares a fifth of the
/// errors that it makes when it hears it piece by piece.
class SphinxRecogniser::Decoder
{
public:
    explicit Decoder(sphinx::DecoderPtr decoder) : m_decoder(std::move(decoder)) {}

    QVector<Word> words(const Utterance& utterance) const
    {
        QVector<Word> words;
        if (ps_start_utt(m_decoder.get()) < 0)
            return words;
        ps_process_raw(m_decoder.get(), utterance.samples.constData(), std::size_t(utterance.samples.size()), FALSE,
                       TRUE);
        ps_end_utt(m_decoder.get());
        for (ps_seg_t* seg = ps_seg_iter(m_decoder.get()); seg != nullptr; seg = ps_seg_next(seg)) {
            if (!isFiller(ps_seg_word(seg)))
                words.append(wordOf(seg, msOfSample(utterance.first)));
        }
        return words;
    }

private:
    Word wordOf(ps_seg_t* seg, int offset) const
    {
        int from = 0;
        int to = 0;
        ps_seg_frames(seg, &from, &to);
        const double sure = logmath_exp(ps_get_logmath(m_decoder.get()), ps_seg_prob(seg, nullptr, nullptr, nullptr));
        return {offset + from * msOfFrame, offset + (to + 1) * msOfFrame, withoutVariant(ps_seg_word(seg)),
                std::clamp(sure, 0.0, 1.0)};
    }

    sphinx::DecoderPtr m_decoder;
};

SphinxRecogniser::SphinxRecogniser(QString modelFolder) : m_folder(std::move(modelFolder)) {}

SphinxRecogniser::~SphinxRecogniser() = default;

QString SphinxRecogniser::name() const
{
    return QStringLiteral("PocketSphinx, US English");
}

Status SphinxRecogniser::recognise(SoundSource& sound, qint64 first, RecognitionSink& sink)
{
    auto detector = sphinx::openFrontEnd(sphinx::Silence::Find);
    if (!m_decoder) {
        auto decoder = sphinx::openDecoder(QFile::encodeName(m_folder));
        m_decoder = decoder ? std::make_unique<Decoder>(std::move(decoder)) : nullptr;
    }
    if (!detector || !m_decoder) {
        return Error{m_folder, QString(), QString(), QStringLiteral("the speech recogniser does not start"),
                     QStringLiteral("install the package \"pocketsphinx-en-us\" again")};
    }
    Utterances utterances(std::move(detector), first);
    const qint64 length = sound.length();
    for (qint64 at = first; at < length;) {
        const auto samples = sound.read(at, std::min<qint64>(soundRate, length - at));
        if (!samples)
            return samples.error();
        at = samples->isEmpty() ? length : at + samples->size();
        QVector<Utterance> complete = utterances.add(*samples);
        if (at >= length)
            complete += utterances.rest();
        for (const Utterance& utterance : qAsConst(complete)) {
            sink.take({{m_decoder->words(utterance)}, utterance.end()});
            if (sink.progress(utterance.end()) == Go::Stop)
                return {};
        }
        if (sink.progress(at) == Go::Stop)
            return {};
    }
    return {};
}

} // namespace desk::speech

#include "desk/speech/recognition/SphinxRecogniser.h"

#include "desk/speech/recognition/SphinxHandles.h"

#include <QFile>

#include <algorithm>

namespace desk::speech
{

namespace
{

/// How much is handed over at a time: cancelling waits for no more than this.
constexpr qint64 piece = soundRate / 10;
/// Speech without any pause, or noise taken for speech, is cut here: the search's memory and delay grow with length.
constexpr qint64 longestUtterance = 30 * soundRate;
constexpr int framesASecond = 100;

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

} // namespace

/// A decoder and the utterance that it is in.
class SphinxRecogniser::Decoder
{
public:
    explicit Decoder(sphinx::DecoderPtr decoder) : m_decoder(std::move(decoder)) {}

    /// @param first the sample that frame 0 starts with.
    bool start(qint64 first)
    {
        m_first = first;
        return ps_start_stream(m_decoder.get()) >= 0 && begin();
    }

    bool begin()
    {
        m_hasSpeech = false;
        m_length = 0;
        return ps_start_utt(m_decoder.get()) >= 0;
    }

    bool feed(const QVector<qint16>& samples)
    {
        m_length += samples.size();
        const bool ok =
            ps_process_raw(m_decoder.get(), samples.constData(), std::size_t(samples.size()), FALSE, FALSE) >= 0;
        m_isInSpeech = ps_get_in_speech(m_decoder.get()) != 0;
        if (m_isInSpeech && !m_hasSpeech)
            m_length = samples.size();
        m_hasSpeech = m_hasSpeech || m_isInSpeech;
        return ok;
    }

    /// Whether a pause, or the greatest length, has come.
    bool isOver() const { return m_hasSpeech && (!m_isInSpeech || m_length >= longestUtterance); }

    QVector<Word> end()
    {
        ps_end_utt(m_decoder.get());
        QVector<Word> words;
        for (ps_seg_t* seg = ps_seg_iter(m_decoder.get()); seg != nullptr; seg = ps_seg_next(seg)) {
            if (!isFiller(ps_seg_word(seg)))
                words.append(wordOf(seg));
        }
        return words;
    }

private:
    Word wordOf(ps_seg_t* seg) const
    {
        int from = 0;
        int to = 0;
        ps_seg_frames(seg, &from, &to);
        const double sure = logmath_exp(ps_get_logmath(m_decoder.get()), ps_seg_prob(seg, nullptr, nullptr, nullptr));
        const int offset = msOfSample(m_first);
        return {offset + from * (1000 / framesASecond), offset + (to + 1) * (1000 / framesASecond),
                withoutVariant(ps_seg_word(seg)), std::clamp(sure, 0.0, 1.0)};
    }

    sphinx::DecoderPtr m_decoder;
    qint64 m_first = 0;
    qint64 m_length = 0;
    bool m_isInSpeech = false;
    bool m_hasSpeech = false;
};

SphinxRecogniser::SphinxRecogniser(QString modelFolder) : m_folder(std::move(modelFolder)) {}

SphinxRecogniser::~SphinxRecogniser() = default;

QString SphinxRecogniser::name() const
{
    return QStringLiteral("PocketSphinx, US English");
}

Status SphinxRecogniser::recognise(SoundSource& sound, qint64 first, RecognitionSink& sink)
{
    const Error broken{m_folder, QString(), QString(), QStringLiteral("the speech recogniser does not start"),
                       QStringLiteral("install the package \"pocketsphinx-en-us\" again")};
    if (!m_decoder) {
        auto decoder = sphinx::openDecoder(QFile::encodeName(m_folder));
        if (!decoder)
            return broken;
        m_decoder = std::make_unique<Decoder>(std::move(decoder));
    }
    if (!m_decoder->start(first))
        return broken;
    const qint64 length = sound.length();
    for (qint64 at = first; at < length;) {
        const auto samples = sound.read(at, std::min(piece, length - at));
        if (!samples)
            return m_decoder->end(), samples.error();
        const bool isLast = samples->isEmpty() || at + samples->size() >= length;
        if (!m_decoder->feed(*samples))
            return m_decoder->end(), broken;
        at = isLast ? length : at + samples->size();
        if (m_decoder->isOver() || isLast) {
            sink.take({{m_decoder->end()}, at});
            if (!isLast && !m_decoder->begin())
                return broken;
        }
        if (sink.progress(at) == Go::Stop && !isLast)
            return m_decoder->end(), Status();
    }
    return {};
}

} // namespace desk::speech

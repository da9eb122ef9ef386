#include "desk/speech/recognition/Voices.h"

#include "desk/speech/recognition/SphinxHandles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace desk::speech
{

namespace
{

constexpr int dimensions = 12;
/// Weight of the model's size, as measured on read speech: smaller parts one reader in several, greater joins two.
constexpr double penalty = 1.6;
/// Fewer frames, of 10 ms, do not fix a covariance.
constexpr int fewestFrames = 60;
/// Every pair is compared; more spans than this are clustered in groups first.
constexpr int largestGroup = 600;

/// Sums of cepstra, from which mean and covariance follow; two add up to the statistics of both together.
class Voice
{
public:
    void add(const float* cepstrum)
    {
        ++m_count;
        for (int i = 0; i < dimensions; ++i) {
            m_sum[i] += double(cepstrum[i]);
            for (int j = 0; j <= i; ++j)
                m_products[i][j] += double(cepstrum[i]) * double(cepstrum[j]);
        }
    }

    Voice& operator+=(const Voice& other)
    {
        m_count += other.m_count;
        for (int i = 0; i < dimensions; ++i) {
            m_sum[i] += other.m_sum[i];
            for (int j = 0; j <= i; ++j)
                m_products[i][j] += other.m_products[i][j];
        }
        m_determinant = std::numeric_limits<double>::quiet_NaN();
        return *this;
    }

    int count() const { return m_count; }

    /// Logarithm of the covariance's determinant, by Cholesky's decomposition.
    double logDeterminant() const
    {
        if (std::isnan(m_determinant))
            m_determinant = computeLogDeterminant();
        return m_determinant;
    }

private:
    double computeLogDeterminant() const
    {
        std::array<std::array<double, dimensions>, dimensions> root{};
        double log = 0;
        for (int i = 0; i < dimensions; ++i) {
            for (int j = 0; j <= i; ++j) {
                double sum = m_products[i][j] / m_count - m_sum[i] / m_count * (m_sum[j] / m_count);
                for (int k = 0; k < j; ++k)
                    sum -= root[i][k] * root[j][k];
                // A floor under the variance: digital silence has none.
                root[i][j] = i == j ? std::sqrt(std::max(sum, 1e-4)) : sum / root[j][j];
            }
            log += 2 * std::log(root[i][i]);
        }
        return log;
    }

    int m_count = 0;
    std::array<double, dimensions> m_sum{};
    std::array<std::array<double, dimensions>, dimensions> m_products{};
    mutable double m_determinant = std::numeric_limits<double>::quiet_NaN();
};

/// What is lost by taking two for one, less what is saved: negative where they are one voice.
double difference(const Voice& a, const Voice& b)
{
    Voice both = a;
    both += b;
    const double parameters = dimensions + dimensions * (dimensions + 1) / 2.0;
    return 0.5 * (both.count() * both.logDeterminant() - a.count() * a.logDeterminant() -
                  b.count() * b.logDeterminant()) -
           0.5 * penalty * parameters * std::log(double(both.count()));
}

struct Cluster {
    Voice voice;
    QVector<int> spans;
};

/// Joins the two most alike as long as that gains. Each cluster keeps its best later partner, so that a step looks only
/// at what the last one changed.
void agglomerate(std::vector<Cluster>& clusters, const std::function<bool()>& goOn)
{
    struct Best {
        double difference = std::numeric_limits<double>::max();
        std::size_t partner = 0;
    };

    std::vector<Best> best(clusters.size());
    const auto search = [&](std::size_t a) {
        best[a] = {};
        for (std::size_t b = a + 1; b < clusters.size(); ++b) {
            const double found = difference(clusters[a].voice, clusters[b].voice);
            if (found < best[a].difference)
                best[a] = {found, b};
        }
    };
    for (std::size_t a = 0; a < clusters.size() && goOn(); ++a)
        search(a);
    while (clusters.size() > 1 && goOn()) {
        const auto least = std::min_element(best.begin(), best.end(),
                                            [](const Best& x, const Best& y) { return x.difference < y.difference; });
        if (least->difference >= 0)
            return;
        const std::size_t a = std::size_t(least - best.begin());
        const std::size_t b = least->partner;
        clusters[a].voice += clusters[b].voice;
        clusters[a].spans += clusters[b].spans;
        clusters.erase(clusters.begin() + std::ptrdiff_t(b));
        best.erase(best.begin() + std::ptrdiff_t(b));
        for (std::size_t c = 0; c < clusters.size(); ++c) {
            if (c == a || best[c].partner == a || best[c].partner == b)
                search(c);
            else if (best[c].partner > b)
                --best[c].partner;
            // The joined cluster may have become the best partner of an earlier one.
            if (c < a && best[c].partner != a) {
                const double found = difference(clusters[c].voice, clusters[a].voice);
                if (found < best[c].difference)
                    best[c] = {found, a};
            }
        }
    }
}

std::vector<Cluster> clustered(std::vector<Cluster> clusters, const std::function<bool()>& goOn)
{
    if (clusters.size() > largestGroup) {
        std::vector<Cluster> joined;
        for (std::size_t from = 0; from < clusters.size(); from += largestGroup) {
            const std::size_t to = std::min(clusters.size(), from + largestGroup);
            std::vector<Cluster> group(clusters.begin() + std::ptrdiff_t(from), clusters.begin() + std::ptrdiff_t(to));
            agglomerate(group, goOn);
            joined.insert(joined.end(), group.begin(), group.end());
        }
        clusters = std::move(joined);
    }
    agglomerate(clusters, goOn);
    return clusters;
}

Voice voiceOf(fe_t* frontEnd, const QVector<qint16>& samples)
{
    Voice voice;
    mfcc_t** cepstra = nullptr;
    int32 frames = 0;
    fe_start_utt(frontEnd);
    if (fe_process_utt(frontEnd, samples.constData(), std::size_t(samples.size()), &cepstra, &frames) < 0)
        return voice;
    // The first coefficient is loudness, which says more about the distance than about the voice.
    for (int i = 0; i < frames; ++i)
        voice.add(cepstra[i] + 1);
    fe_free_2d(cepstra);
    return voice;
}

/// Numbers the clusters by their first span; spans of no cluster go with the one before.
QVector<int> numbered(const std::vector<Cluster>& clusters, int count)
{
    QVector<int> clusterOf(count, -1);
    for (std::size_t i = 0; i < clusters.size(); ++i) {
        for (const int span : clusters[i].spans)
            clusterOf[span] = int(i);
    }
    QVector<int> numberOf(int(clusters.size()), -1);
    QVector<int> voices(count, 0);
    int next = 0;
    int last = 0;
    for (int i = 0; i < count; ++i) {
        if (clusterOf[i] >= 0) {
            int& number = numberOf[clusterOf[i]];
            number = number < 0 ? next++ : number;
            last = number;
        }
        voices[i] = last;
    }
    return voices;
}

/// What tracks have in common, gathered second by second.
/// Tells tones and hum from speech, whose loudness comes and goes with each syllable.
class Loudness
{
public:
    void add(const QVector<qint16>& samples)
    {
        constexpr int frame = soundRate / 20;
        for (int at = 0; at + frame <= samples.size(); at += frame) {
            double power = 0;
            for (int i = at; i < at + frame; ++i)
                power += double(samples[i]) * samples[i];
            if (power > faintest * faintest * frame)
                m_decibels.push_back(float(10 * std::log10(power)));
        }
    }

    bool isSteady() const
    {
        if (m_decibels.empty())
            return false;
        std::vector<float> sorted = m_decibels;
        std::sort(sorted.begin(), sorted.end());
        const std::size_t tenth = sorted.size() / 10;
        return sorted[sorted.size() - 1 - tenth] - sorted[tenth] < steadyDecibels;
    }

private:
    /// Root mean square of what is quieter than any word.
    static constexpr double faintest = 30;
    static constexpr float steadyDecibels = 2;

    std::vector<float> m_decibels;
};

class Likeness
{
public:
    explicit Likeness(int tracks)
        : m_peaks(tracks, 0), m_loudness(tracks), m_products(tracks, QVector<double>(tracks, 0))
    {
    }

    void add(const QVector<QVector<qint16>>& second)
    {
        for (int a = 0; a < second.size(); ++a) {
            for (const qint16 sample : second[a])
                m_peaks[a] = std::max(m_peaks[a], std::abs(int(sample)));
            m_loudness[a].add(second[a]);
            for (int b = 0; b <= a; ++b)
                m_products[a][b] += product(second[a], second[b]);
        }
    }

    bool hasNoSpeech(int track) const { return m_peaks[track] <= 32 || m_loudness[track].isSteady(); }

    /// Whether one track correlates with the other, whichever way round it is poled.
    bool isSame(int later, int earlier) const
    {
        const double power = m_products[later][later] * m_products[earlier][earlier];
        return power > 0 && std::abs(m_products[later][earlier]) > 0.6 * std::sqrt(power);
    }

private:
    static double product(const QVector<qint16>& a, const QVector<qint16>& b)
    {
        qint64 sum = 0;
        for (int i = 0; i < std::min(a.size(), b.size()); ++i)
            sum += int(a[i]) * int(b[i]);
        return double(sum);
    }

    QVector<int> m_peaks;
    QVector<Loudness> m_loudness;
    QVector<QVector<double>> m_products;
};

} // namespace

Result<QVector<int>> tellVoicesApart(SoundSource& sound, const QVector<TimeSpan>& spans,
                                     const std::function<bool()>& goOn)
{
    const auto frontEnd = sphinx::openFrontEnd(sphinx::Silence::Keep);
    if (!frontEnd)
        return QVector<int>(spans.size(), 0);
    std::vector<Cluster> clusters;
    for (int i = 0; i < spans.size() && goOn(); ++i) {
        const qint64 first = sampleOfMs(spans[i].startMs);
        const qint64 end = std::min(sampleOfMs(spans[i].endMs), sound.length());
        if (end - first < fewestFrames * soundRate / 100)
            continue;
        const auto samples = sound.read(first, end - first);
        if (!samples)
            return samples.error();
        Cluster cluster{voiceOf(frontEnd.get(), *samples), {i}};
        if (cluster.voice.count() >= fewestFrames)
            clusters.push_back(std::move(cluster));
    }
    return numbered(clustered(std::move(clusters), goOn), spans.size());
}

Result<QVector<int>> tracksOfTheirOwn(const QVector<SoundSource*>& tracks, const std::function<bool()>& goOn)
{
    qint64 length = 0;
    for (const SoundSource* track : tracks)
        length = std::max(length, track->length());
    Likeness likeness(tracks.size());
    for (qint64 at = 0; at < length && goOn(); at += soundRate) {
        QVector<QVector<qint16>> second;
        for (SoundSource* track : tracks) {
            const auto samples = track->read(at, std::clamp<qint64>(track->length() - at, 0, soundRate));
            if (!samples)
                return samples.error();
            second.append(*samples);
        }
        likeness.add(second);
    }
    QVector<int> own;
    for (int i = 0; i < tracks.size(); ++i) {
        const bool isKnown =
            std::any_of(own.begin(), own.end(), [&](int earlier) { return likeness.isSame(i, earlier); });
        if (!isKnown && !likeness.hasNoSpeech(i))
            own.append(i);
    }
    if (own.isEmpty() && !tracks.isEmpty())
        own.append(0);
    return own;
}

} // namespace desk::speech

#include "desk/services/SoundPlan.h"

#include "StratacutUI/ImfDict.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace desk::services
{

namespace
{
using Gains = std::vector<std::vector<double>>;

constexpr double lowered = 0.70710678118654752;

struct Placement {
    const char* place;
    const char* channel;
    double gain;
};

/// Where a sound that belongs to one place goes when the output lacks that place.
constexpr Placement stereoPlacements[] = {{"chL", "chL", 1},       {"chR", "chR", 1},        {"chC", "chL", lowered},
                                          {"chC", "chR", lowered}, {"chLs", "chL", lowered}, {"chRs", "chR", lowered}};

/// Languages as media files name them (ISO 639-2) and as packages do (RFC 5646: the shortest code).
QString languageTag(const QString& language)
{
    static const QHash<QString, QString> shorter{
        {"ara", "ar"}, {"chi", "zh"}, {"zho", "zh"}, {"cze", "cs"}, {"ces", "cs"}, {"dan", "da"}, {"dut", "nl"},
        {"nld", "nl"}, {"eng", "en"}, {"fin", "fi"}, {"fre", "fr"}, {"fra", "fr"}, {"ger", "de"}, {"deu", "de"},
        {"gre", "el"}, {"ell", "el"}, {"heb", "he"}, {"hin", "hi"}, {"hun", "hu"}, {"ita", "it"}, {"jpn", "ja"},
        {"kor", "ko"}, {"nor", "no"}, {"pol", "pl"}, {"por", "pt"}, {"rus", "ru"}, {"spa", "es"}, {"swe", "sv"},
        {"tha", "th"}, {"tur", "tr"}, {"ukr", "uk"}, {"vie", "vi"}};
    return shorter.value(language, language == QLatin1String("und") ? QString() : language);
}

QString commonLanguage(const media::Sequence& sequence, const QVector<int>& sources)
{
    QSet<QString> languages;
    for (int source : sources)
        languages.insert(languageTag(sequence.audio[source].language));
    return languages.size() == 1 ? *languages.begin() : QString();
}

/// The channel symbol that a track's label stands for; empty where the label names no place.
QString placeOf(const QString& label)
{
    static const QSet<QString> places{"L", "R", "C", "LFE", "Ls", "Rs"};
    return places.contains(label) ? QStringLiteral("ch") + label : QString();
}

QVector<QString> placesOf(const media::Sequence& sequence, const QVector<int>& sources)
{
    QVector<QString> places;
    int unplaced = 0;
    for (int source : sources) {
        QString place = placeOf(sequence.audio[source].label);
        if (place.isEmpty())
            place = sources.size() == 1 ? QStringLiteral("chC") : QString::fromLatin1(unplaced++ % 2 ? "chR" : "chL");
        places += place;
    }
    return places;
}

Gains oneToOne(const media::Sequence& sequence, const QVector<int>& sources, const MixMode& mode)
{
    QStringList places;
    for (int source : sources)
        places += placeOf(sequence.audio[source].label);
    const bool labelled =
        QSet<QString>(places.begin(), places.end()) == QSet<QString>(mode.channels.begin(), mode.channels.end());
    const std::size_t count = std::size_t(sources.size());
    Gains gains(count, std::vector<double>(count, 0.0));
    for (int source = 0; source < sources.size(); ++source)
        gains[std::size_t(labelled ? mode.channels.indexOf(places[source]) : source)][std::size_t(source)] = 1;
    return gains;
}

void placeInMono(const QVector<QString>& places, Gains& gains)
{
    const bool onlyLfe = std::all_of(places.begin(), places.end(), [](const QString& p) { return p == "chLFE"; });
    for (int source = 0; source < places.size(); ++source)
        gains[0][std::size_t(source)] = places[source] == QLatin1String("chLFE") && !onlyLfe ? 0 : 1;
}

void placeInStereo(const QVector<QString>& places, Gains& gains)
{
    for (int source = 0; source < places.size(); ++source) {
        for (const Placement& placement : stereoPlacements) {
            if (places[source] == QLatin1String(placement.place))
                gains[qstrcmp(placement.channel, "chL") == 0 ? 0 : 1][std::size_t(source)] = placement.gain;
        }
    }
    if (places.size() == 1)
        gains[0][0] = gains[1][0] = 1;
}

void lowerToUnity(Gains& gains)
{
    double loudest = 1;
    for (const auto& channel : gains) {
        double sum = 0;
        for (double gain : channel)
            sum += gain;
        loudest = std::max(loudest, sum);
    }
    for (auto& channel : gains) {
        for (double& gain : channel)
            gain /= loudest;
    }
}

Gains mixGains(const media::Sequence& sequence, const QVector<int>& sources, const MixMode& mode)
{
    if (sources.size() == mode.channels.size())
        return oneToOne(sequence, sources, mode);
    Gains gains(std::size_t(mode.channels.size()), std::vector<double>(std::size_t(sources.size()), 0.0));
    const QVector<QString> places = placesOf(sequence, sources);
    if (mode.channels.size() == 1) {
        placeInMono(places, gains);
    } else if (mode.channels.size() == 2) {
        placeInStereo(places, gains);
    } else {
        for (int source = 0; source < sources.size(); ++source)
            gains[std::size_t(mode.channels.indexOf(places[source]))][std::size_t(source)] = 1;
    }
    lowerToUnity(gains);
    return gains;
}

struct Row {
    QString name;
    QString mode;
    QVector<int> sources;
    QString language;
    QString contentKind;
};

QString trackName(int number)
{
    return QStringLiteral("IMF track A%1").arg(number);
}

/// Whether tracks can go one to one into a mode: their labels name just its channels, or none names a place. What is
/// spoken in different languages belongs to different mixes.
bool fits(const media::Sequence& sequence, const QVector<int>& sources, const MixMode& mode)
{
    QStringList places;
    QSet<QString> languages;
    for (int source : sources) {
        places += placeOf(sequence.audio[source].label);
        languages.insert(languageTag(sequence.audio[source].language));
    }
    languages.remove(QString());
    if (languages.size() > 1)
        return false;
    places.removeAll(QString());
    return places.isEmpty() ||
           QSet<QString>(places.begin(), places.end()) == QSet<QString>(mode.channels.begin(), mode.channels.end());
}

/// The largest mode up to `largest` that the tracks from `first` on fit into; a single track is mono.
const MixMode& modeAt(const media::Sequence& sequence, int first, const MixMode& largest, QVector<int>& sources)
{
    for (int i = mixModes().size() - 1; i > 0; --i) {
        const MixMode& mode = mixModes().at(i);
        const int count = mode.channels.size();
        if (count > largest.channels.size() || first + count > sequence.audio.size())
            continue;
        sources.resize(count);
        std::iota(sources.begin(), sources.end(), first);
        if (fits(sequence, sources, mode))
            return mode;
    }
    sources = {first};
    return mixModes().first();
}

bool hasPlaceOutside(const media::Sequence& sequence, const MixMode& mode)
{
    return std::any_of(sequence.audio.begin(), sequence.audio.end(), [&mode](const media::AudioTrackInfo& track) {
        const QString place = placeOf(track.label);
        return !place.isEmpty() && !mode.channels.contains(place);
    });
}

/// What is written where nobody has mapped anything: see planSound().
QVector<Row> undirectedRows(const media::Sequence& sequence, const OutputFormat& format)
{
    const MixMode& largest = *findMixMode(format.value(QLatin1String(ImfDict::AudioMix)));
    const int tracks = sequence.audio.size();
    if (tracks < largest.channels.size() || hasPlaceOutside(sequence, largest)) {
        Row all{trackName(1), QLatin1String(largest.name), {}, {}, {}};
        all.sources.resize(tracks);
        std::iota(all.sources.begin(), all.sources.end(), 0);
        return {all};
    }
    QVector<Row> rows;
    for (int first = 0; first < tracks; first += rows.last().sources.size()) {
        Row row;
        row.name = trackName(rows.size() + 1);
        row.mode = QLatin1String(modeAt(sequence, first, largest, row.sources).name);
        rows += row;
    }
    return rows;
}

QVector<Row> rowsOf(const media::Sequence& sequence, const OutputFormat& format)
{
    QVector<Row> rows;
    for (const QJsonValue& value : format.mapping) {
        const QJsonObject entry = value.toObject();
        Row row;
        row.name = trackName(entry[QLatin1String(ImfDict::Out)].toInt());
        row.mode = entry[QLatin1String(ImfDict::AudioMixdownSettings)].toString();
        const QJsonArray sources = entry[QLatin1String(ImfDict::In)].toArray();
        for (const QJsonValue& in : sources) {
            if (!row.sources.contains(in.toInt() - 1))
                row.sources += in.toInt() - 1;
        }
        row.language = entry[QLatin1String(ImfDict::RFC5646SpokenLanguage)].toString();
        row.contentKind = entry[QLatin1String(ImfDict::AudioContentKind)].toString();
        if (row.contentKind == QLatin1String("None"))
            row.contentKind.clear();
        rows += row;
    }
    return rows.isEmpty() ? undirectedRows(sequence, format) : rows;
}

Error rowError(const media::Sequence& sequence, const Row& row, const QString& what, const QString& next)
{
    return {sequence.path, row.name, {}, what, next};
}

Result<SoundPlan> planRow(const media::Sequence& sequence, const Row& row)
{
    const MixMode* mode = findMixMode(row.mode);
    if (!mode)
        return rowError(sequence, row, QStringLiteral("\"%1\" is no mix mode of the output").arg(row.mode),
                        QStringLiteral("choose Mono, Stereo or 5.1"));
    if (row.sources.isEmpty())
        return rowError(sequence, row, QStringLiteral("no source track is mapped to it"),
                        QStringLiteral("map a track or remove the row"));
    for (int source : row.sources) {
        if (source < 0 || source >= sequence.audio.size())
            return rowError(sequence, row, QStringLiteral("the sequence has no track A%1").arg(source + 1),
                            QStringLiteral("map one of its %1 tracks").arg(sequence.audio.size()));
    }
    SoundPlan plan;
    plan.sources = row.sources;
    plan.gains = mixGains(sequence, row.sources, *mode);
    plan.format.soundfield = QLatin1String(mode->soundfield);
    for (const QString& channel : mode->channels)
        plan.format.channels += imf::ChannelLabel{channel};
    plan.format.language = row.language.isEmpty() ? commonLanguage(sequence, row.sources) : row.language;
    plan.format.contentKind = row.contentKind;
    return plan;
}
} // namespace

void SoundPlan::mix(const media::SoundBlock& block, std::vector<std::int32_t>& interleaved) const
{
    const std::size_t count = block.tracks.empty() ? 0 : block.tracks.front().size();
    const std::size_t channels = gains.size();
    const std::size_t start = interleaved.size();
    interleaved.resize(start + count * channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        for (std::size_t i = 0; i < count; ++i) {
            double sum = 0;
            for (std::size_t source = 0; source < block.tracks.size(); ++source)
                sum += gains[channel][source] * block.tracks[source][i];
            const long sample = std::lround(sum);
            interleaved[start + i * channels + channel] = std::int32_t(std::clamp(sample, -8388608L, 8388607L));
        }
    }
}

Result<QVector<SoundPlan>> planSound(const media::Sequence& sequence, const OutputFormat& format)
{
    QVector<SoundPlan> plans;
    if (sequence.audio.isEmpty())
        return plans;
    const QVector<Row> rows = rowsOf(sequence, format);
    for (const Row& row : rows) {
        auto plan = planRow(sequence, row);
        if (!plan)
            return plan.error();
        plans += *plan;
    }
    return plans;
}

QVector<int> silentTracks(const media::Sequence& sequence, const QVector<SoundPlan>& plans)
{
    QSet<int> sounding;
    for (const SoundPlan& plan : plans) {
        for (const std::vector<double>& channel : plan.gains) {
            for (int source = 0; source < plan.sources.size(); ++source) {
                if (channel[std::size_t(source)] != 0)
                    sounding.insert(plan.sources[source]);
            }
        }
    }
    QVector<int> silent;
    for (int track = 0; track < sequence.audio.size(); ++track) {
        if (!sounding.contains(track))
            silent += track;
    }
    return silent;
}

QString defaultMixMode(int tracks)
{
    const int mode = tracks <= 1 ? 0 : tracks < 6 ? 1 : 2;
    return QLatin1String(mixModes().at(mode).name);
}

} // namespace desk::services

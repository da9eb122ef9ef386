#include "desk/services/MixGains.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace desk::services
{

namespace
{
constexpr double lowered = 0.70710678118654752;

/// Where a sound that belongs to one place goes when the output lacks that place; the first row that fits counts.
struct Fold {
    const char* place;
    QVector<QString> channels;
    double gain;
};

const QVector<Fold>& folds()
{
    static const QVector<Fold> rows{{"chLs", {"chLss"}, 1},
                                    {"chRs", {"chRss"}, 1},
                                    {"chLss", {"chLs"}, 1},
                                    {"chRss", {"chRs"}, 1},
                                    {"chLrs", {"chLs"}, lowered},
                                    {"chRrs", {"chRs"}, lowered},
                                    {"chLc", {"chL", "chC"}, lowered},
                                    {"chRc", {"chC", "chR"}, lowered},
                                    {"chCs", {"chLs", "chRs"}, lowered},
                                    {"chCs", {"chLrs", "chRrs"}, lowered},
                                    {"chCs", {"chL", "chR"}, 0.5},
                                    {"chLc", {"chL"}, lowered},
                                    {"chRc", {"chR"}, lowered},
                                    {"chC", {"chL", "chR"}, lowered},
                                    {"chLs", {"chL"}, lowered},
                                    {"chRs", {"chR"}, lowered},
                                    {"chLss", {"chL"}, lowered},
                                    {"chRss", {"chR"}, lowered},
                                    {"chLrs", {"chL"}, lowered},
                                    {"chRrs", {"chR"}, lowered}};
    return rows;
}

MixGains silence(int channels, int sources)
{
    return MixGains(std::size_t(channels), std::vector<double>(std::size_t(sources), 0.0));
}

bool holdsAll(const QVector<QString>& channels, const QVector<QString>& wanted)
{
    return std::all_of(wanted.begin(), wanted.end(), [&](const QString& one) { return channels.contains(one); });
}

/// The place of each source. Those without one sound in the middle when alone, on alternating sides otherwise.
QVector<QString> placesOf(const QVector<BinTrack>& tracks, const QVector<int>& sources)
{
    QVector<QString> places;
    int unplaced = 0;
    for (int source : sources) {
        QString place = placeOf(tracks[source].label);
        if (place.isEmpty())
            place = sources.size() == 1 ? QStringLiteral("chC") : QString::fromLatin1(unplaced++ % 2 ? "chR" : "chL");
        places += place;
    }
    return places;
}

MixGains summed(const QVector<BinTrack>& tracks, const QVector<int>& sources)
{
    MixGains gains = silence(1, sources.size());
    const auto isLfe = [&](int source) { return tracks[source].label == QLatin1String("LFE"); };
    const bool onlyLfe = std::all_of(sources.begin(), sources.end(), isLfe);
    for (int i = 0; i < sources.size(); ++i)
        gains[0][std::size_t(i)] = isLfe(sources[i]) && !onlyLfe ? 0 : 1;
    return gains;
}

MixGains placed(const QVector<QString>& places, const QVector<QString>& channels)
{
    MixGains gains = silence(channels.size(), places.size());
    const auto put = [&](int source, const QVector<QString>& into, double gain) {
        for (const QString& channel : into)
            gains[std::size_t(channels.indexOf(channel))][std::size_t(source)] = gain;
    };
    for (int source = 0; source < places.size(); ++source) {
        const auto fold = std::find_if(folds().begin(), folds().end(), [&](const Fold& row) {
            return places[source] == QLatin1String(row.place) && holdsAll(channels, row.channels);
        });
        if (channels.contains(places[source]))
            put(source, {places[source]}, 1);
        else if (fold != folds().end())
            put(source, fold->channels, fold->gain);
    }
    return gains;
}

/// -1 where there is none.
int channelOf(const QString& place, const QVector<QString>& channels)
{
    // Files call the side surrounds of a 7.1 what those of a 5.1 are called, and the one of a 4.0 what that of a 6.1
    // is.
    static const QHash<QString, QString> others{{"chLs", "chLss"}, {"chRs", "chRss"}, {"chCs", "chS"}};
    return channels.indexOf(channels.contains(place) ? place : others.value(place, place));
}

/// For each source its channel by label; empty where the labels do not name just the mode's channels.
QVector<int> channelsByLabel(const QVector<BinTrack>& tracks, const QVector<int>& sources,
                             const QVector<QString>& channels)
{
    QVector<int> chosen;
    for (int source : sources)
        chosen += channelOf(placeOf(tracks[source].label), channels);
    const QSet<int> reached(chosen.begin(), chosen.end());
    return reached.size() == channels.size() && !reached.contains(-1) ? chosen : QVector<int>();
}

QString namesOf(const QVector<BinTrack>& tracks, const QVector<int>& sources)
{
    QStringList names;
    for (int source : sources)
        names += tracks[source].name;
    return names.join(QStringLiteral(", "));
}

Error wrongCount(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode, int wanted)
{
    return {{},
            {},
            {},
            QStringLiteral("\"%1\" needs %2 tracks and gets %3 (%4)")
                .arg(QLatin1String(mode.name))
                .arg(wanted)
                .arg(sources.size())
                .arg(namesOf(tracks, sources)),
            QStringLiteral("map %1 tracks or choose another mix mode").arg(wanted)};
}

Result<MixGains> routed(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode,
                        const QVector<QString>& channels)
{
    QVector<int> chosen = channelsByLabel(tracks, sources, channels);
    if (chosen.isEmpty() && (sources.isEmpty() || sources.size() % channels.size() != 0))
        return wrongCount(tracks, sources, mode, channels.size());
    for (int i = chosen.size(); i < sources.size(); ++i)
        chosen += i % channels.size();
    MixGains gains = silence(channels.size(), sources.size());
    for (int i = 0; i < sources.size(); ++i)
        gains[std::size_t(chosen[i])][std::size_t(i)] = 1;
    return gains;
}

Result<MixGains> downmixed(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode)
{
    const QVector<QString> surround = findMixMode(QStringLiteral("5.1"))->channels();
    const auto whole = routed(tracks, sources, mode, surround);
    if (!whole)
        return whole.error();
    const MixGains fold = placed(surround, mode.channels());
    MixGains gains = silence(mode.channels().size(), sources.size());
    for (std::size_t out = 0; out < gains.size(); ++out) {
        for (std::size_t in = 0; in < whole->size(); ++in) {
            for (std::size_t source = 0; source < gains[out].size(); ++source)
                gains[out][source] += fold[out][in] * (*whole)[in][source];
        }
    }
    return gains;
}

/// Two one to one, a single one on both sides, more by place.
Result<MixGains> onTwoSides(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode)
{
    if (sources.size() == mode.channels().size())
        return routed(tracks, sources, mode, mode.channels());
    if (sources.size() == 1)
        return MixGains(2, {1.0});
    return placed(placesOf(tracks, sources), mode.channels());
}

MixGains numbered(int sources)
{
    MixGains gains = silence(sources, sources);
    for (std::size_t i = 0; i < gains.size(); ++i)
        gains[i][i] = 1;
    return gains;
}

MixGains loweredToUnity(MixGains gains)
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
    return gains;
}
} // namespace

QString placeOf(const QString& label)
{
    static const QSet<QString> places{"L", "R", "C", "LFE", "Ls", "Rs", "Lss", "Rss", "Lrs", "Rrs", "Lc", "Rc", "Cs"};
    return places.contains(label) ? QStringLiteral("ch") + label : QString();
}

bool hasPlaceFor(const MixMode& mode, const QString& place)
{
    return channelOf(place, mode.channels()) >= 0;
}

bool isLabelledLike(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode)
{
    return !channelsByLabel(tracks, sources, mode.channels()).isEmpty();
}

Result<MixGains> mappedGains(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode)
{
    switch (mode.rule) {
    case MixRule::Sum:
        return summed(tracks, sources);
    case MixRule::Place:
        return onTwoSides(tracks, sources, mode);
    case MixRule::Downmix:
        return downmixed(tracks, sources, mode);
    case MixRule::Number:
        return numbered(sources.size());
    case MixRule::Route:
        break;
    }
    return routed(tracks, sources, mode, mode.channels());
}

Result<MixGains> unmappedGains(const QVector<BinTrack>& tracks, const QVector<int>& sources, const MixMode& mode)
{
    const int channels = mode.channels().size();
    if (sources.size() < channels && mode.rule == MixRule::Route)
        return wrongCount(tracks, sources, mode, channels);
    // More tracks than channels are no layers here: nobody has said so.
    const bool folds = mode.rule == MixRule::Route && sources.size() > channels;
    auto gains = folds ? Result<MixGains>(placed(placesOf(tracks, sources), mode.channels()))
                       : mappedGains(tracks, sources, mode);
    return gains ? Result<MixGains>(loweredToUnity(std::move(*gains))) : gains;
}

} // namespace desk::services

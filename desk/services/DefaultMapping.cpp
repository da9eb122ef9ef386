#include "desk/services/DefaultMapping.h"

#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "desk/services/AudioMapping.h"
#include "desk/services/SoundPlan.h"

#include <algorithm>

namespace desk::services
{

namespace
{
/// Whether each channel takes one of the tracks, as it is.
bool routesAll(const SoundPlan& plan)
{
    if (plan.gains.size() != std::size_t(plan.sources.size()))
        return false;
    return std::all_of(plan.gains.begin(), plan.gains.end(), [](const std::vector<double>& channel) {
        const auto silent = std::count(channel.begin(), channel.end(), 0.0);
        return std::count(channel.begin(), channel.end(), 1.0) == 1 && std::size_t(silent) + 1 == channel.size();
    });
}

QJsonArray namesOf(const BinItem& sequence, const QVector<int>& tracks)
{
    QJsonArray names;
    for (int track : tracks)
        names += sequence.audio[track].name;
    return names;
}

bool isTaken(const QString& name, const QJsonArray& groups)
{
    return std::any_of(groups.begin(), groups.end(), [&](const QJsonValue& group) {
        return group[QLatin1String(ImfDict::Name)] == QJsonValue(name);
    });
}

/// The group of just these tracks; made where there is none, under a name that the user has given to no other.
QString groupOf(const QJsonArray& tracks, QJsonArray& groups)
{
    const QString wanted = QStringLiteral("%1-%2").arg(tracks.first().toString(), tracks.last().toString());
    QString name = wanted;
    for (int n = 1;; ++n) {
        const QJsonObject group{{ImfDict::Name, name}, {ImfDict::IncludeMasterFader, false}, {ImfDict::Tracks, tracks}};
        if (groups.contains(group))
            return name;
        if (!isTaken(name, groups)) {
            groups += group;
            return name;
        }
        name = QStringLiteral("%1.%2").arg(wanted).arg(n);
    }
}

QString sourceOf(const BinItem& sequence, const SoundPlan& plan, QJsonArray& groups)
{
    if (plan.sources.size() == sequence.audio.size())
        return QLatin1String(allActiveTracks);
    if (plan.sources.size() == 1)
        return sequence.audio[plan.sources.first()].entry();
    return groupOf(namesOf(sequence, plan.sources), groups);
}
} // namespace

std::optional<QJsonObject> defaultMapping(const BinItem& sequence, OutputFormat format, QJsonArray groups)
{
    format.mapping = {};
    const auto plans = planSound(sequence, format);
    if (!plans || plans->isEmpty() || !std::all_of(plans->begin(), plans->end(), routesAll))
        return std::nullopt;
    QJsonArray rows;
    QVector<int> all;
    for (const SoundPlan& plan : *plans) {
        const QJsonObject metadata{{ImfDict::RFC5646SpokenLanguage, plan.format.language},
                                   {ImfDict::AudioContentKind, QStringLiteral("None")}};
        rows += QJsonObject{{ImfDict::TargetTrack, QStringLiteral("A%1").arg(rows.size() + 1)},
                            {ImfDict::MixMode, plan.mode},
                            {ImfDict::SourceTracksGroups, sourceOf(sequence, plan, groups)},
                            {ImfDict::Metadata, metadata}};
        all += plan.sources;
    }
    return JSON::MakeMultiMix(rows, groups, namesOf(sequence, all));
}

} // namespace desk::services

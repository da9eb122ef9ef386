#include "desk/services/AudioMapping.h"

#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace desk::services
{

namespace
{
QString quoted(const QString& text)
{
    return QStringLiteral("\"%1\"").arg(text);
}

/// Whether a track's entry in a list of sources is this, to the letter.
bool hasTrackEntry(const BinItem& sequence, const QString& text)
{
    return std::any_of(sequence.audio.begin(), sequence.audio.end(),
                       [&text](const BinTrack& track) { return track.entry() == text; });
}

/// One check of a mix against the sequence it is for.
class Check
{
public:
    Check(const QJsonObject& multiMix, const BinItem& sequence) : m_multiMix(multiMix), m_sequence(sequence) {}

    /// The rows that make something; their types are right then.
    Result<QJsonArray> rows() const;

private:
    Error fail(const QString& item, const QString& what, const QString& next) const
    {
        return {m_sequence.path, item, {}, what, next};
    }

    Status checkTypes(const QJsonObject& row, const QString& target) const;
    Status checkSource(const QString& source, const QString& target) const;
    Status checkGroup(const QJsonArray& group, const QString& name, const QString& target) const;
    Status checkTracks(const QJsonArray& tracks, const QString& owner, const QString& next) const;
    QVector<QJsonArray> groupsCalled(const QString& name) const;
    bool makesNothing(const QJsonObject& row) const;

    const QJsonObject& m_multiMix;
    const BinItem& m_sequence;
};

QString textOf(const QJsonObject& object, const char* key)
{
    return object[QLatin1String(key)].toString();
}

Status Check::checkTypes(const QJsonObject& row, const QString& target) const
{
    const auto wrong = [&](const char* key) {
        return fail(target, QStringLiteral("its %1 is of no use").arg(quoted(QLatin1String(key))),
                    QStringLiteral("map this track again"));
    };
    static const QRegularExpression track(QStringLiteral("^A[1-9][0-9]{0,3}$"));
    if (!track.match(textOf(row, ImfDict::TargetTrack)).hasMatch())
        return wrong(ImfDict::TargetTrack);
    for (const char* key : {ImfDict::MixMode, ImfDict::SourceTracksGroups}) {
        if (!row[QLatin1String(key)].isString())
            return wrong(key);
    }
    const QJsonValue metadata = row[QLatin1String(ImfDict::Metadata)];
    if (!metadata.isUndefined() && !metadata.isObject())
        return wrong(ImfDict::Metadata);
    for (const char* key : {ImfDict::AudioContentKind, ImfDict::RFC5646SpokenLanguage}) {
        const QJsonValue label = metadata.toObject().value(QLatin1String(key));
        if (!label.isUndefined() && !label.isString())
            return wrong(key);
    }
    return {};
}

QVector<QJsonArray> Check::groupsCalled(const QString& name) const
{
    QVector<QJsonArray> found;
    const QJsonArray groups = m_multiMix[QLatin1String(ImfDict::TrackGroups)].toArray();
    for (const QJsonValue& value : groups) {
        const QJsonObject group = value.toObject();
        const QJsonArray tracks = group[QLatin1String(ImfDict::Tracks)].toArray();
        if (group[QLatin1String(ImfDict::Name)] == QJsonValue(name) && !found.contains(tracks))
            found += tracks;
    }
    return found;
}

Status Check::checkTracks(const QJsonArray& tracks, const QString& owner, const QString& next) const
{
    const auto isKnown = [this](const QJsonValue& track) {
        return std::any_of(m_sequence.audio.begin(), m_sequence.audio.end(),
                           [&](const BinTrack& one) { return track == QJsonValue(one.name); });
    };
    for (const QJsonValue& track : tracks) {
        if (!track.isString())
            return fail(owner, QStringLiteral("it holds something that is no track"), next);
        if (!isKnown(track))
            return fail(owner, QStringLiteral("the sequence has no track %1").arg(quoted(track.toString())), next);
    }
    return {};
}

Status Check::checkSource(const QString& source, const QString& target) const
{
    if (source == QLatin1String(allActiveTracks)) {
        const QJsonValue active = m_multiMix[QLatin1String(ImfDict::AllActiveTracks)];
        const QString next = QStringLiteral("map this track again");
        if (!active.isArray() || active.toArray().isEmpty())
            return fail(target, QStringLiteral("the list of all active tracks is empty"), next);
        return checkTracks(active.toArray(), QStringLiteral("%1, all active tracks").arg(target), next);
    }
    const QVector<QJsonArray> groups = groupsCalled(source);
    const QString owner = QStringLiteral("%1, group %2").arg(target, quoted(source));
    if (groups.size() > 1)
        return fail(owner, QStringLiteral("several groups are called so"), QStringLiteral("rename one of them"));
    if (groups.size() == 1 && hasTrackEntry(m_sequence, source))
        return fail(owner, QStringLiteral("a track of the sequence is called so, too"),
                    QStringLiteral("give the group another name"));
    if (groups.size() == 1 && groups.first().isEmpty())
        return fail(owner, QStringLiteral("the group has no tracks"), QStringLiteral("put tracks into the group"));
    if (groups.size() == 1)
        return checkTracks(groups.first(), owner, QStringLiteral("save the group without this track"));
    if (trackOfEntry(m_sequence, source) < 0)
        return fail(target,
                    QStringLiteral("its source %1 is neither a group nor a track of the sequence").arg(quoted(source)),
                    QStringLiteral("choose another source or make a group of that name"));
    return {};
}

bool Check::makesNothing(const QJsonObject& row) const
{
    return m_sequence.audio.isEmpty() && textOf(row, ImfDict::SourceTracksGroups) == QLatin1String(allActiveTracks);
}

Result<QJsonArray> Check::rows() const
{
    QJsonArray kept;
    QSet<QString> targets;
    const QJsonArray mapping = m_multiMix[QLatin1String(ImfDict::AudioMapping)].toArray();
    for (int i = 0; i < mapping.size(); ++i) {
        const QJsonObject row = mapping[i].toObject();
        const QString number = textOf(row, ImfDict::TargetTrack);
        const QString target = number.isEmpty() ? QStringLiteral("row %1 of the audio mapping").arg(i + 1)
                                                : QStringLiteral("IMF track %1").arg(number);
        Status checked = checkTypes(row, target);
        if (checked && targets.contains(number))
            checked = fail(target, QStringLiteral("it is mapped twice"), QStringLiteral("remove one of the two rows"));
        targets.insert(number);
        if (checked && makesNothing(row))
            continue;
        if (checked)
            checked = checkSource(textOf(row, ImfDict::SourceTracksGroups), target);
        if (!checked)
            return checked.error();
        kept += row;
    }
    return kept;
}
} // namespace

int trackOfEntry(const BinItem& sequence, const QString& entry)
{
    // A list of choices may drop the blank that stands where a title would.
    const QString wanted = entry.trimmed();
    for (int i = 0; i < sequence.audio.size(); ++i) {
        if (sequence.audio[i].entry().trimmed() == wanted)
            return i;
    }
    return -1;
}

Result<QJsonArray> flatAudioMapping(const QJsonObject& multiMix, const BinItem& sequence)
{
    auto rows = Check(multiMix, sequence).rows();
    if (!rows)
        return rows.error();
    QJsonObject checked = multiMix;
    checked[QLatin1String(ImfDict::AudioMapping)] = *rows;
    return JSON::FlattenMultiMix(checked);
}

Result<QJsonArray> flatAudioMappingOf(const QJsonObject& document, const BinItem& sequence)
{
    const QJsonValue mix =
        document[QLatin1String(ImfDict::Audio)].toObject().value(QLatin1String(ImfDict::MultipleAudioMix));
    if (mix.isUndefined())
        return QJsonArray();
    if (!mix.isObject() || !JSON::VerifyMultiMix(mix.toObject(), false))
        return Error{sequence.path,
                     QStringLiteral("\"%1\"").arg(QLatin1String(ImfDict::MultipleAudioMix)),
                     {},
                     QStringLiteral("the audio mapping cannot be read"),
                     QStringLiteral("map its tracks again")};
    return flatAudioMapping(mix.toObject(), sequence);
}

} // namespace desk::services

#include "desk/app/AudioSettings.h"

#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/app/SoundDefaults.h"
#include "desk/services/AudioMapping.h"
#include "desk/services/DefaultMapping.h"
#include "desk/services/SoundPlan.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
QString allActiveTracks()
{
    return QLatin1String(services::allActiveTracks);
}

QString key(const char* name)
{
    return QLatin1String(name);
}

/// A composition's groups and rows while options change them.
class Mix
{
public:
    Mix(const QModelIndex& cpl, const services::BinItem& sequence) : m_sequence(sequence)
    {
        const QJsonObject audio = Model::MetadataJsonFromIndex(cpl)[key(ImfDict::Audio)].toObject();
        m_rows = audio[key(ImfDict::MultipleAudioMix)].toObject()[key(ImfDict::AudioMapping)].toArray();
        m_groups = cpl.data(Model::TrackGroupsRole).toJsonArray();
    }

    /// The rows that nobody has chosen go; see defaultMapping().
    void dropDefault(const services::OutputFormat& format);
    Status setGroup(const QString& option);
    Status setRow(const QString& option);

    QJsonObject document() const;

    const QJsonArray& groups() const { return m_groups; }

private:
    int groupCalled(const QString& name) const;
    Result<QJsonArray> tracksOf(const QString& list, const QString& option) const;
    Result<QString> sourceOf(const QString& name, const QString& option) const;
    void removeRow(int row);

    const services::BinItem& m_sequence;
    QJsonArray m_rows;
    QJsonArray m_groups;
};

Error wrong(const QString& option, const QString& what, const QString& next)
{
    return {{}, option, {}, what, next};
}

void Mix::dropDefault(const services::OutputFormat& format)
{
    const auto mapping = services::defaultMapping(m_sequence, format, {});
    if (mapping && (*mapping)[key(ImfDict::AudioMapping)] == QJsonValue(m_rows))
        m_rows = {};
}

int Mix::groupCalled(const QString& name) const
{
    for (int i = 0; i < m_groups.size(); ++i) {
        if (m_groups[i].toObject()[key(ImfDict::Name)] == QJsonValue(name))
            return i;
    }
    return -1;
}

/// "A1,A3-A5".
Result<QJsonArray> Mix::tracksOf(const QString& list, const QString& option) const
{
    static const QRegularExpression span(QStringLiteral("^A([1-9][0-9]{0,3})(?:-A([1-9][0-9]{0,3}))?$"));
    QJsonArray names;
    const QStringList parts = list.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        const auto match = span.match(part.trimmed());
        const int first = match.captured(1).toInt();
        const int last = match.captured(2).isEmpty() ? first : match.captured(2).toInt();
        if (!match.hasMatch() || last < first)
            return wrong(option, QStringLiteral("\"%1\" names no tracks").arg(part),
                         QStringLiteral("write them like \"A1,A3-A5\""));
        if (last > m_sequence.audio.size())
            return wrong(option, QStringLiteral("%1 has no track A%2").arg(m_sequence.path).arg(last),
                         QStringLiteral("it has %1 tracks").arg(m_sequence.audio.size()));
        for (int track = first; track <= last; ++track)
            names += m_sequence.audio[track - 1].name;
    }
    return names;
}

Status Mix::setGroup(const QString& option)
{
    const QString name = option.section(QLatin1Char('='), 0, 0).trimmed();
    static const QStringList taken{QStringLiteral("Untitled Group"), allActiveTracks(), QStringLiteral("----------")};
    if (name.isEmpty() || taken.contains(name) || !option.contains(QLatin1Char('=')))
        return wrong(option, QStringLiteral("it gives no group a name"),
                     QStringLiteral("write it like \"NAME=A1,A2\""));
    if (services::trackOfEntry(m_sequence, name) >= 0)
        return wrong(option, QStringLiteral("a track of the sequence is called so"),
                     QStringLiteral("give the group another name"));
    auto tracks = tracksOf(option.section(QLatin1Char('='), 1), option);
    if (!tracks)
        return tracks.error();
    const int place = groupCalled(name);
    QJsonObject group = place < 0 ? QJsonObject{{ImfDict::Name, name}, {ImfDict::IncludeMasterFader, false}}
                                  : m_groups[place].toObject();
    group[key(ImfDict::Tracks)] = *tracks;
    if (tracks->isEmpty())
        m_groups.removeAt(place);
    else if (place < 0)
        m_groups += group;
    else
        m_groups[place] = group;
    return {};
}

/// What the window's list of sources would hold: a group's name, a track's whole entry, or all of them.
Result<QString> Mix::sourceOf(const QString& name, const QString& option) const
{
    if (groupCalled(name) >= 0)
        return name;
    for (const services::BinTrack& track : m_sequence.audio) {
        if (track.name == name || track.entry() == name)
            return track.entry();
    }
    if (name == QLatin1String("all") || name == allActiveTracks())
        return allActiveTracks();
    return wrong(option, QStringLiteral("\"%1\" is neither a group nor a track of the sequence").arg(name),
                 QStringLiteral("name a group, a track like \"A1\", or \"all\""));
}

void Mix::removeRow(int row)
{
    m_rows.removeAt(row);
    for (int i = row; i < m_rows.size(); ++i) {
        QJsonObject moved = m_rows[i].toObject();
        moved[key(ImfDict::TargetTrack)] = QStringLiteral("A%1").arg(i + 1);
        m_rows[i] = moved;
    }
}

/// Where the mode stands among the parts of a row: names of sources may hold colons, what follows a mode does not.
int modeIn(const QStringList& parts)
{
    for (int i = parts.size() - 1; i >= 1 && i >= parts.size() - 3; --i) {
        if (services::findMixMode(parts[i]))
            return i;
    }
    return -1;
}

Status Mix::setRow(const QString& option)
{
    static const QRegularExpression form(QStringLiteral("^A([1-9][0-9]{0,3})=(.*)$"));
    const auto match = form.match(option);
    const int row = match.captured(1).toInt() - 1;
    if (!match.hasMatch())
        return wrong(option, QStringLiteral("it maps no IMF track"),
                     QStringLiteral("write it like \"A1=Dialogue:Stereo:en-US:DXC\""));
    if (row > m_rows.size())
        return wrong(option, QStringLiteral("there is no IMF track A%1 before it").arg(row),
                     QStringLiteral("map A%1 first").arg(m_rows.size() + 1));
    if (match.captured(2).isEmpty()) {
        removeRow(row);
        return {};
    }
    const QStringList parts = match.captured(2).split(QLatin1Char(':'));
    const int mode = modeIn(parts);
    if (mode < 0)
        return wrong(option, QStringLiteral("it names no mix mode of the output"),
                     QStringLiteral("choose one of %1").arg(services::mixModeNames().join(QStringLiteral(", "))));
    auto source = sourceOf(parts.mid(0, mode).join(QLatin1Char(':')), option);
    if (!source)
        return source.error();
    const bool hasMetadata = hasTrackMetadata();
    if (!hasMetadata && mode + 1 < parts.size())
        return wrong(option, QStringLiteral("languages and content kinds are turned off"),
                     QStringLiteral("leave them out, or turn the toggle /Stratacut/IMFMCAMetadata on"));
    QJsonObject mapped{{ImfDict::TargetTrack, QStringLiteral("A%1").arg(row + 1)},
                       {ImfDict::MixMode, parts[mode]},
                       {ImfDict::SourceTracksGroups, *source}};
    const QString kind = parts.value(mode + 2);
    if (hasMetadata)
        mapped[key(ImfDict::Metadata)] =
            QJsonObject{{ImfDict::RFC5646SpokenLanguage, parts.value(mode + 1)},
                        {ImfDict::AudioContentKind, kind.isEmpty() ? QStringLiteral("None") : kind}};
    m_rows.insert(row, mapped);
    if (row + 1 < m_rows.size())
        m_rows.removeAt(row + 1);
    return {};
}

QJsonObject Mix::document() const
{
    QJsonArray active;
    for (const services::BinTrack& track : m_sequence.audio)
        active += track.name;
    return JSON::MakeMultiMix(m_rows, m_groups, active);
}
} // namespace

AudioSettings AudioSettings::from(const QCommandLineParser& parser)
{
    return {parser.values(QStringLiteral("group")), parser.values(QStringLiteral("map"))};
}

QList<QCommandLineOption> audioOptions()
{
    return {
        {"group",
         "Names a group of the sequence's tracks: \"Dialogue=A1,A3-A5\"; without tracks the group goes. May be "
         "given several times.",
         "NAME=TRACKS"},
        {"map",
         "Maps an IMF audio track: \"A1=Dialogue:Stereo:en-US:DXC\". SOURCE is a group, a track like A3, or all; "
         "MODE one of " +
             services::mixModeNames().join(QStringLiteral(", ")) +
             "; LANGUAGE a tag of RFC 5646, KIND an audio content kind. \"A2=\" removes a row. May be given several "
             "times.",
         "A1=SOURCE:MODE[:LANGUAGE[:KIND]]"}};
}

Status applyAudio(IMF_PackageMgrQtModel& model, const QModelIndex& cpl, const services::BinItem& sequence,
                  const AudioSettings& settings)
{
    Status mapped = checkSoundIsMapped();
    if (!mapped)
        return mapped;
    auto format = services::OutputFormat::fromJson(Model::CommitSettingsJsonFromIndex(cpl));
    Mix mix(cpl, sequence);
    if (settings.rows.value(0).startsWith(QLatin1String("A1=")))
        mix.dropDefault(format);
    for (const QString& group : settings.groups) {
        Status set = mix.setGroup(group);
        if (!set)
            return set;
    }
    for (const QString& row : settings.rows) {
        Status set = mix.setRow(row);
        if (!set)
            return set;
    }
    auto mapping = services::flatAudioMapping(mix.document(), sequence);
    if (!mapping)
        return mapping.error();
    format.mapping = *mapping;
    auto plans = services::planSound(sequence, format);
    if (!plans)
        return plans.error();
    model.setData(cpl, mix.groups(), Model::TrackGroupsRole);
    model.setData(cpl, mix.document(), Model::MultiMixRole);
    return {};
}

} // namespace desk::app

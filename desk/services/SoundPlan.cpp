#include "desk/services/SoundPlan.h"

#include "StratacutUI/ImfDict.h"
#include "desk/imf/mxf/SoundLabels.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <numeric>

namespace desk::services
{

namespace
{
/// Numbered channels, ST 2067-8: chNSC001 to chNSC127.
constexpr int mostChannels = 127;

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

QString commonLanguage(const BinItem& sequence, const QVector<int>& sources)
{
    QSet<QString> languages;
    for (int source : sources)
        languages.insert(languageTag(sequence.audio[source].language));
    return languages.size() == 1 ? *languages.begin() : QString();
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

/// Whether tracks without labels may be taken for this layout.
bool isPlain(const MixMode& mode)
{
    return std::any_of(plainLayoutModes().begin(), plainLayoutModes().end(),
                       [&mode](const MixMode& plain) { return qstrcmp(plain.name, mode.name) == 0; });
}

/// Whether tracks can go one to one into a layout: their labels name just its channels, or none names a place and the
/// layout is plain or the one that was asked for. What is spoken in different languages belongs to different mixes.
bool fits(const BinItem& sequence, const QVector<int>& sources, const MixMode& mode, const MixMode& largest)
{
    bool isPlaced = false;
    QSet<QString> languages;
    for (int source : sources) {
        isPlaced = isPlaced || !placeOf(sequence.audio[source].label).isEmpty();
        languages.insert(languageTag(sequence.audio[source].language));
    }
    languages.remove(QString());
    if (languages.size() > 1)
        return false;
    return isPlaced ? isLabelledLike(sequence.audio, sources, mode)
                    : isPlain(mode) || qstrcmp(mode.name, largest.name) == 0;
}

/// The largest layout up to `largest` that the tracks from `first` on fit into; a single track is mono.
const MixMode& modeAt(const BinItem& sequence, int first, const MixMode& largest, QVector<int>& sources)
{
    for (int i = layoutModes().size() - 1; i > 0; --i) {
        const MixMode& mode = layoutModes().at(i);
        const int count = mode.channels().size();
        if (count > largest.channels().size() || first + count > sequence.audio.size())
            continue;
        sources.resize(count);
        std::iota(sources.begin(), sources.end(), first);
        if (fits(sequence, sources, mode, largest))
            return mode;
    }
    sources = {first};
    return layoutModes().first();
}

bool hasPlaceOutside(const BinItem& sequence, const MixMode& mode)
{
    return std::any_of(sequence.audio.begin(), sequence.audio.end(), [&mode](const BinTrack& track) {
        const QString place = placeOf(track.label);
        return !place.isEmpty() && !hasPlaceFor(mode, place);
    });
}

/// What is written where nobody has mapped anything: see planSound().
QVector<Row> unmappedRows(const BinItem& sequence, const OutputFormat& format)
{
    const MixMode& largest = *findMixMode(format.value(QLatin1String(ImfDict::AudioMix)));
    const int tracks = sequence.audio.size();
    if (tracks < largest.channels().size() || hasPlaceOutside(sequence, largest)) {
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

Row rowOf(const QJsonObject& entry)
{
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
    return row;
}

QVector<Row> mappedRows(const OutputFormat& format)
{
    QVector<QJsonObject> entries;
    for (const QJsonValue& value : format.mapping)
        entries += value.toObject();
    const auto number = [](const QJsonObject& entry) { return entry[QLatin1String(ImfDict::Out)].toInt(); };
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const QJsonObject& a, const QJsonObject& b) { return number(a) < number(b); });
    QVector<Row> rows;
    for (const QJsonObject& entry : qAsConst(entries))
        rows += rowOf(entry);
    return rows;
}

/// What is wrong with a row before its gains are looked at; the error names no file and no row.
Status checkRow(const BinItem& sequence, const Row& row)
{
    const auto fail = [](const QString& what, const QString& next) { return Error{{}, {}, {}, what, next}; };
    if (!findMixMode(row.mode))
        return fail(QStringLiteral("\"%1\" is no mix mode of the output").arg(row.mode),
                    QStringLiteral("choose %1").arg(mixModeNames().join(QStringLiteral(", "))));
    if (row.sources.isEmpty())
        return fail(QStringLiteral("no source track is mapped to it"), QStringLiteral("map a track or remove the row"));
    if (findMixMode(row.mode)->rule == MixRule::Number && row.sources.size() > mostChannels)
        return fail(QStringLiteral("%1 tracks are mapped to it").arg(row.sources.size()),
                    QStringLiteral("map at most %1 or choose another mix mode").arg(mostChannels));
    for (int source : row.sources) {
        if (source < 0 || source >= sequence.audio.size())
            return fail(QStringLiteral("the sequence has no track A%1").arg(source + 1),
                        sequence.audio.isEmpty()
                            ? QStringLiteral("remove the row")
                            : QStringLiteral("map one of its %1 tracks").arg(sequence.audio.size()));
    }
    if (!row.language.isEmpty() && !imf::isLanguageTag(row.language))
        return fail(QStringLiteral("\"%1\" is no language tag of RFC 5646").arg(row.language),
                    QStringLiteral("choose a language, like \"en\" or \"en-US\""));
    if (!row.contentKind.isEmpty() && !imf::soundContentKinds().contains(row.contentKind))
        return fail(QStringLiteral("\"%1\" is no audio content kind").arg(row.contentKind),
                    QStringLiteral("choose %1").arg(imf::soundContentKinds().join(QStringLiteral(", "))));
    return {};
}

enum class Origin { Mapped, Unmapped };

bool isMixed(const MixGains& gains)
{
    return std::any_of(gains.begin(), gains.end(), [](const std::vector<double>& channel) {
        return channel.size() > std::size_t(std::count(channel.begin(), channel.end(), 0.0)) + 1;
    });
}

QString labelledNames(const BinItem& sequence, const QVector<int>& sources)
{
    QStringList names;
    for (int source : sources)
        names += QStringLiteral("%1 (%2)").arg(sequence.audio[source].name, sequence.audio[source].label);
    return names.join(QStringLiteral(", "));
}

Result<SoundPlan> planRow(const BinItem& sequence, const Row& row, Origin origin)
{
    const auto named = [&](Error error) {
        error.file = sequence.path;
        error.item = row.name;
        return error;
    };
    const Status checked = checkRow(sequence, row);
    if (!checked)
        return named(checked.error());
    const MixMode& mode = *findMixMode(row.mode);
    auto gains = origin == Origin::Mapped ? mappedGains(sequence.audio, row.sources, mode)
                                          : unmappedGains(sequence.audio, row.sources, mode);
    if (!gains)
        return named(gains.error());
    SoundPlan plan{row.name, {}, row.sources, *gains, row.mode, {}};
    plan.format.soundfield = QLatin1String(mode.soundfield);
    const QVector<QString> channels = mode.channels();
    for (const QString& channel : channels)
        plan.format.channels += imf::ChannelLabel{channel};
    for (int n = 1; channels.isEmpty() && n <= row.sources.size(); ++n)
        plan.format.channels += imf::ChannelLabel{QStringLiteral("chNSC%1").arg(n, 3, 10, QLatin1Char('0'))};
    plan.format.language = row.language.isEmpty() ? commonLanguage(sequence, row.sources) : row.language;
    plan.format.contentKind = row.contentKind;
    if (origin == Origin::Unmapped && isMixed(plan.gains))
        plan.remark =
            named({{},
                   {},
                   {},
                   QStringLiteral("%1 are mixed into \"%2\"").arg(labelledNames(sequence, row.sources), row.mode),
                   QStringLiteral("map the tracks to keep them apart")})
                .sentence();
    return plan;
}
} // namespace

Result<QVector<SoundPlan>> planSound(const BinItem& sequence, const OutputFormat& format)
{
    const Origin origin = format.mapping.isEmpty() ? Origin::Unmapped : Origin::Mapped;
    QVector<SoundPlan> plans;
    if (origin == Origin::Unmapped && sequence.audio.isEmpty())
        return plans;
    const QVector<Row> rows = origin == Origin::Mapped ? mappedRows(format) : unmappedRows(sequence, format);
    for (const Row& row : rows) {
        auto plan = planRow(sequence, row, origin);
        if (!plan)
            return plan.error();
        plans += *plan;
    }
    return plans;
}

QVector<int> silentTracks(const BinItem& sequence, const QVector<SoundPlan>& plans)
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

QString defaultMixMode(const QVector<BinTrack>& tracks)
{
    QVector<int> first;
    for (auto mode = layoutModes().rbegin(); mode != layoutModes().rend() && mode->rule == MixRule::Route; ++mode) {
        first.resize(mode->channels().size());
        std::iota(first.begin(), first.end(), 0);
        if (first.size() <= tracks.size() && isLabelledLike(tracks, first, *mode))
            return QLatin1String(mode->name);
    }
    static const QSet<QString> rear{"Lrs", "Rrs"};
    const bool hasRear =
        std::any_of(tracks.begin(), tracks.end(), [](const BinTrack& track) { return rear.contains(track.label); });
    const int count = tracks.size();
    const int mode = count <= 1 ? 0 : count < 6 ? 1 : hasRear && count >= 8 ? 3 : 2;
    return QLatin1String(plainLayoutModes().at(mode).name);
}

QString losslessMixMode(const QVector<BinTrack>& tracks)
{
    const QString layout = defaultMixMode(tracks);
    const bool isFilled = tracks.size() <= 1 || findMixMode(layout)->channels().size() == tracks.size();
    return isFilled ? layout : QStringLiteral("Discrete");
}

} // namespace desk::services

#include "desk/media/OtioReader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace desk::media
{

namespace
{

// Names of the format, as OpenTimelineIO 0.15 and later write them.
namespace key
{
const QString schema = QStringLiteral("OTIO_SCHEMA");
const QString name = QStringLiteral("name");
const QString kind = QStringLiteral("kind");
const QString children = QStringLiteral("children");
const QString tracks = QStringLiteral("tracks");
const QString effects = QStringLiteral("effects");
const QString enabled = QStringLiteral("enabled");
const QString globalStart = QStringLiteral("global_start_time");
const QString sourceRange = QStringLiteral("source_range");
const QString availableRange = QStringLiteral("available_range");
const QString startTime = QStringLiteral("start_time");
const QString duration = QStringLiteral("duration");
const QString value = QStringLiteral("value");
const QString rate = QStringLiteral("rate");
const QString reference = QStringLiteral("media_reference");
const QString references = QStringLiteral("media_references");
const QString activeReference = QStringLiteral("active_media_reference_key");
const QString target = QStringLiteral("target_url");
} // namespace key

constexpr qint64 largestFile = 64 << 20;
/// Ten days: beyond it times would no longer be exact.
constexpr qint64 mostSeconds = 864000;
constexpr qint64 mostTicks = mostSeconds * ticksPerSecond;

const QString tooFar = QStringLiteral("it lies more than ten days from the start");
const QString repair = QStringLiteral("export the timeline again");

/// "Clip" of "Clip.2".
QString schemaOf(const QJsonObject& object)
{
    return object[key::schema].toString().section(QLatin1Char('.'), 0, 0);
}

/// The exact rate behind a number such as 23.976; invalid for numbers that are no usual rate.
Rational exactRate(double rate)
{
    const auto near = qint64(std::llround(rate));
    if (rate >= 1 && rate <= 192000 && std::abs(rate - double(near)) < 1e-6)
        return {near, 1};
    for (const qint64 nominal : {24, 30, 48, 60, 120}) {
        if (std::abs(rate - double(nominal) * 1000 / 1001) < 0.006)
            return {nominal * 1000, 1001};
    }
    return {};
}

struct Span {
    qint64 start = 0;
    qint64 length = 0;
};

class Reader
{
public:
    explicit Reader(const QString& path) : m_path(path) {}

    Result<OtioTimeline> read(const QJsonObject& root);

private:
    Error failure(const QString& item, const QString& what, const QString& next = repair) const
    {
        return {m_path, item, {}, what, next};
    }

    Result<qint64> ticks(const QJsonValue& time, const QString& item) const;
    Result<Span> span(const QJsonObject& range, const QString& item) const;
    Result<qint64> lengthOf(const QJsonObject& item, const QString& name) const;
    Status readTrack(const QJsonObject& track);
    Status readItem(const QJsonObject& item, OtioTrack& track);
    Status readClip(const QJsonObject& item, OtioTrack& track);
    void notice(const QString& item, const QString& what);
    void noticeEffects(const QJsonObject& item, const QString& name);
    void learnRate(const QJsonValue& time);
    Status advance(OtioTrack& track, qint64 length, const QString& name) const;

    QString m_path;
    OtioTimeline m_timeline;
};

QString nameOf(const QJsonObject& item, const OtioTrack& track)
{
    const QString name = item[key::name].toString();
    const QString kind = schemaOf(item).toLower();
    return QStringLiteral("%1 in track %2")
        .arg(name.isEmpty() ? QStringLiteral("a %1 without a name").arg(kind)
                            : QStringLiteral("%1 \"%2\"").arg(kind, name),
             track.name);
}

QJsonObject referenceOf(const QJsonObject& clip)
{
    if (!clip.contains(key::references))
        return clip[key::reference].toObject();
    const QString active = clip[key::activeReference].toString(QStringLiteral("DEFAULT_MEDIA"));
    return clip[key::references].toObject()[active].toObject();
}

void Reader::notice(const QString& item, const QString& what)
{
    m_timeline.notices += QStringLiteral("%1, %2: %3.").arg(m_path, item, what);
}

void Reader::noticeEffects(const QJsonObject& item, const QString& name)
{
    const QJsonArray effects = item[key::effects].toArray();
    for (const QJsonValue& value : effects) {
        const QJsonObject effect = value.toObject();
        const QString given = effect[key::name].toString();
        notice(name, QStringLiteral("the effect %1 is left out").arg(given.isEmpty() ? schemaOf(effect) : given));
    }
}

void Reader::learnRate(const QJsonValue& time)
{
    if (!m_timeline.rate.isValid())
        m_timeline.rate = exactRate(time.toObject()[key::rate].toDouble());
}

Result<qint64> Reader::ticks(const QJsonValue& time, const QString& item) const
{
    const double given = time.toObject()[key::rate].toDouble();
    const Rational rate = exactRate(given);
    if (!rate.isValid() || ticksPerSecond * rate.den % rate.num != 0)
        return failure(item, QStringLiteral("times at %1 frames a second cannot be kept exactly").arg(given),
                       QStringLiteral("export the timeline at a usual frame rate"));
    const double value = time.toObject()[key::value].toDouble();
    if (!(std::abs(value) / given <= double(mostSeconds)))
        return failure(item, tooFar);
    const qint64 unit = ticksPerSecond * rate.den / rate.num;
    return qint64(std::llround(value * double(unit)));
}

Result<Span> Reader::span(const QJsonObject& range, const QString& item) const
{
    const Result<qint64> start = ticks(range[key::startTime], item);
    if (!start)
        return start.error();
    const Result<qint64> length = ticks(range[key::duration], item);
    if (!length)
        return length.error();
    if (*length < 0)
        return failure(item, QStringLiteral("it lasts less than nothing"));
    return Span{*start, *length};
}

Status Reader::advance(OtioTrack& track, qint64 length, const QString& name) const
{
    if (length > mostTicks - track.length)
        return failure(name, tooFar);
    track.length += length;
    return {};
}

/// How long an item that is left out keeps its place in the track.
Result<qint64> Reader::lengthOf(const QJsonObject& item, const QString& name) const
{
    const QJsonObject reference = referenceOf(item);
    for (const QJsonValue& range : {item[key::sourceRange], reference[key::availableRange]}) {
        if (!range.isObject())
            continue;
        const Result<Span> found = span(range.toObject(), name);
        return found ? Result<qint64>(found->length) : found.error();
    }
    const bool stacked = schemaOf(item) == QLatin1String("Stack");
    qint64 length = 0;
    const QJsonArray children = item[key::children].toArray();
    for (const QJsonValue& child : children) {
        if (schemaOf(child.toObject()) == QLatin1String("Transition"))
            continue;
        const Result<qint64> one = lengthOf(child.toObject(), name);
        if (!one)
            return one;
        length = std::min(stacked ? std::max(length, *one) : length + *one, mostTicks + 1);
    }
    return length;
}

Status Reader::readClip(const QJsonObject& item, OtioTrack& track)
{
    const QString name = nameOf(item, track);
    const QJsonObject reference = referenceOf(item);
    const QString schema = schemaOf(reference);
    OtioClip clip{item[key::name].toString(), reference[key::target].toString(), track.length, 0, 0};
    if (schema.isEmpty() || schema == QLatin1String("MissingReference") ||
        (schema == QLatin1String("ExternalReference") && clip.media.isEmpty()))
        return failure(name, QStringLiteral("its media are missing"),
                       QStringLiteral("relink the clip and export again"));
    const QJsonObject available = reference[key::availableRange].toObject();
    const QJsonObject source = item[key::sourceRange].toObject();
    if (source.isEmpty() && available.isEmpty())
        return failure(name, QStringLiteral("it does not say which part of its media it shows"));
    const Result<Span> wanted = span(source.isEmpty() ? available : source, name);
    if (!wanted)
        return wanted.error();
    const Result<Span> whole = available.isEmpty() ? Span() : span(available, name);
    if (!whole)
        return whole.error();
    clip.length = wanted->length;
    clip.mediaStart = wanted->start - whole->start;
    if (track.kind == OtioTrack::Kind::Picture)
        learnRate((source.isEmpty() ? available : source)[key::duration]);
    if (const Status status = advance(track, clip.length, name); !status)
        return status;
    if (schema != QLatin1String("ExternalReference"))
        notice(name, QStringLiteral("media of the kind %1 are left out").arg(schema));
    else if (clip.length > 0 && item[key::enabled].toBool(true))
        track.clips.push_back(clip);
    noticeEffects(item, name);
    return {};
}

Status Reader::readItem(const QJsonObject& item, OtioTrack& track)
{
    const QString schema = schemaOf(item);
    const QString name = nameOf(item, track);
    if (schema == QLatin1String("Clip"))
        return readClip(item, track);
    if (schema == QLatin1String("Transition")) {
        notice(name, QStringLiteral("it is left out; a cut stands in its place"));
        return {};
    }
    const Result<qint64> length = lengthOf(item, name);
    if (!length)
        return length.error();
    if (schema != QLatin1String("Gap"))
        notice(name, QStringLiteral("it is left out; a gap stands in its place"));
    return advance(track, *length, name);
}

Status Reader::readTrack(const QJsonObject& object)
{
    OtioTrack track;
    track.kind =
        object[key::kind].toString() == QLatin1String("Audio") ? OtioTrack::Kind::Sound : OtioTrack::Kind::Picture;
    const auto alike = std::count_if(m_timeline.tracks.begin(), m_timeline.tracks.end(),
                                     [&](const OtioTrack& other) { return other.kind == track.kind; });
    track.name = object[key::name].toString();
    if (track.name.isEmpty())
        track.name =
            QStringLiteral("%1%2").arg(QLatin1Char(track.kind == OtioTrack::Kind::Sound ? 'A' : 'V')).arg(alike + 1);
    const QString name = QStringLiteral("track %1").arg(track.name);
    if (schemaOf(object) != QLatin1String("Track")) {
        notice(name, QStringLiteral("it is no track and is left out"));
        return {};
    }
    if (object[key::sourceRange].isObject())
        notice(name, QStringLiteral("its trim is left out"));
    noticeEffects(object, name);
    const QJsonArray children = object[key::children].toArray();
    for (const QJsonValue& child : children) {
        if (const Status status = readItem(child.toObject(), track); !status)
            return status;
    }
    if (!object[key::enabled].toBool(true))
        track.clips.clear();
    m_timeline.tracks.push_back(std::move(track));
    return {};
}

Result<OtioTimeline> Reader::read(const QJsonObject& root)
{
    if (schemaOf(root) != QLatin1String("Timeline"))
        return failure({}, QStringLiteral("the file holds no OpenTimelineIO timeline"),
                       QStringLiteral("export a single timeline as OpenTimelineIO JSON"));
    const QJsonValue start = root[key::globalStart];
    if (start.isObject()) {
        learnRate(start);
        const Result<qint64> time = ticks(start, QStringLiteral("start time"));
        if (!time)
            return time.error();
        m_timeline.globalStart = *time;
    }
    const QJsonObject stack = root[key::tracks].toObject();
    if (stack[key::sourceRange].isObject())
        notice(QStringLiteral("timeline"), QStringLiteral("its trim is left out"));
    noticeEffects(stack, QStringLiteral("timeline"));
    const QJsonArray tracks = stack[key::children].toArray();
    for (const QJsonValue& track : tracks) {
        if (const Status status = readTrack(track.toObject()); !status)
            return status.error();
    }
    return std::move(m_timeline);
}

} // namespace

Result<OtioTimeline> readOtio(const QString& path)
{
    const auto failure = [&](const QString& what, const QString& where = {}) {
        return Error{path, {}, where, what, repair};
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(QStringLiteral("the file cannot be read (%1)").arg(file.errorString()));
    if (file.size() > largestFile)
        return failure(QStringLiteral("the file is larger than any timeline (%1 bytes)").arg(file.size()));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        return failure(QStringLiteral("the file is no JSON that can be read (%1)").arg(error.errorString()),
                       QStringLiteral("byte %1").arg(error.offset));
    return Reader(path).read(document.object());
}

} // namespace desk::media

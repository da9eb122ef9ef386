#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// Makes OpenTimelineIO documents for tests.
namespace otio
{

inline QJsonObject time(double value, double rate)
{
    return {{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", rate}, {"value", value}};
}

inline QJsonObject range(double start, double length, double rate)
{
    return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", time(start, rate)}, {"duration", time(length, rate)}};
}

inline QJsonObject gap(double length, double rate)
{
    return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", range(0, length, rate)}};
}

/// Of "name" and a file of that name; `available` may be empty.
inline QJsonObject clip(const QString& url, const QJsonObject& source, const QJsonObject& available = {})
{
    QJsonObject reference{{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", url}};
    if (!available.isEmpty())
        reference["available_range"] = available;
    return {{"OTIO_SCHEMA", "Clip.2"},
            {"name", url.section('/', -1)},
            {"source_range", source},
            {"active_media_reference_key", "DEFAULT_MEDIA"},
            {"media_references", QJsonObject{{"DEFAULT_MEDIA", reference}}}};
}

inline QJsonObject track(const char* kind, const QJsonArray& children)
{
    return {{"OTIO_SCHEMA", "Track.1"}, {"kind", kind}, {"name", ""}, {"children", children}};
}

inline QByteArray timeline(const QJsonArray& tracks, const QJsonObject& start = {})
{
    QJsonObject root{{"OTIO_SCHEMA", "Timeline.1"},
                     {"name", "cut"},
                     {"tracks", QJsonObject{{"OTIO_SCHEMA", "Stack.1"}, {"children", tracks}}}};
    if (!start.isEmpty())
        root["global_start_time"] = start;
    return QJsonDocument(root).toJson();
}

} // namespace otio

#include "MissingAssets.h"

#include <QJsonArray>
#include <QJsonObject>

namespace
{
constexpr char missingAssetsKey[] = "MissingAssets";

template <typename Container>
QJsonValue firstIn(const Container& values);

QJsonValue missingAssets(const QJsonValue& value)
{
    if (value.isArray())
        return firstIn(value.toArray());
    if (!value.isObject())
        return QJsonValue::Null;
    const QJsonObject object = value.toObject();
    const auto found = object.constFind(missingAssetsKey);
    return found == object.constEnd() ? firstIn(object) : found.value();
}

template <typename Container>
QJsonValue firstIn(const Container& values)
{
    for (const QJsonValue& value : values) {
        const QJsonValue found = missingAssets(value);
        if (!found.isNull())
            return found;
    }
    return QJsonValue::Null;
}
} // namespace

bool namesMissingAssets(const QJsonValue& document)
{
    return !missingAssets(document).isNull();
}

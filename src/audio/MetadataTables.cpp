#include "MetadataTables.h"

#include <QFile>
#include <QJsonDocument>

namespace
{
constexpr const char* languagesFile = ":/IMF/mapping_metadata/languages.json";
constexpr const char* contentKindsFile = ":/IMF/mapping_metadata/content_kind.json";

QJsonObject read(const char* fileName)
{
    QFile file(QString::fromLatin1(fileName));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}
} // namespace

const QJsonObject& MetadataTables::languages()
{
    static const QJsonObject table = read(languagesFile);
    return table;
}

const QJsonObject& MetadataTables::contentKinds()
{
    static const QJsonObject table = read(contentKindsFile);
    return table;
}

#include "DocumentText.h"

#include "StratacutUI/ImfDict.h"

namespace
{
const QLatin1String metadataKey(ImfDict::DescriptiveMetadata);
const QLatin1String nameKey(ImfDict::Name);

bool writeWhereItDiffers(QJsonObject& object, const QString& key, const QString& text)
{
    const auto entry = object.find(key);
    if (entry == object.end() || entry.value().toString() == text)
        return false;
    entry.value() = text;
    return true;
}
} // namespace

QString DocumentText::read(const QJsonObject& document, const QString& key)
{
    const auto entry = document.constFind(key);
    if (entry != document.constEnd())
        return entry.value().toString();
    return document.value(metadataKey).toObject().value(key).toString();
}

bool DocumentText::write(QJsonObject& document, const QString& key, const QString& text)
{
    if (writeWhereItDiffers(document, key, text))
        return true;
    QJsonObject metadata = document.value(metadataKey).toObject();
    if (!writeWhereItDiffers(metadata, key, text))
        return false;
    document[metadataKey] = metadata;
    return true;
}

QString DocumentText::name(const QJsonObject& document)
{
    return document.value(nameKey).toString();
}

bool DocumentText::setName(QJsonObject& document, const QString& name)
{
    if (DocumentText::name(document) == name)
        return false;
    document[nameKey] = name;
    return true;
}

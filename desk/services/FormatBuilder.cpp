#include "desk/services/FormatBuilder.h"

#include "StratacutUI/ImfDict.h"

#include <QJsonDocument>

namespace desk::services
{

FormatBuilder::FormatBuilder(const OutputFormat& defaults) : m_format(defaults) {}

QString FormatBuilder::settings() const
{
    return QString::fromUtf8(QJsonDocument(m_format.toJson()).toJson(QJsonDocument::Compact));
}

QStringList FormatBuilder::keys() const
{
    return OutputFormat::keys();
}

QStringList FormatBuilder::choices(const QString& key) const
{
    return m_format.choices(key);
}

QString FormatBuilder::value(const QString& key) const
{
    return m_format.value(key);
}

bool FormatBuilder::setValue(const QString& key, const QString& value)
{
    return m_format.set(key, value);
}

QString FormatBuilder::frameRate() const
{
    return m_format.value(QLatin1String(ImfDict::FrameRate));
}

void FormatBuilder::setAudioMapping(const QJsonArray& mapping)
{
    m_format.mapping = mapping;
}

} // namespace desk::services

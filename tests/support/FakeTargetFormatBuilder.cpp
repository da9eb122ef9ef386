#include "support/FakeTargetFormatBuilder.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace
{
const QVector<QPair<QString, QStringList>>& independentRows()
{
    static const QVector<QPair<QString, QStringList>> rows{
        {"Application Pattern", {"App 2E", "App 2"}},
        {"Compression", {"JPEG 2000", "Reversible"}},
        {"Resolution", {}},
        {"Frame Rate", {"23.976", "24", "25", "29.97"}},
        {"Colorimetry", {}},
        {"Color Depth", {"10", "12"}},
        {"Compression Profile", {}},
        {"Stereoscopic Settings", {"Mono"}},
        {"Format", {"PCM"}},
        {"Sample Rate", {"48000", "96000"}},
        {"Bit Depth", {"24"}},
        {"Audio Mix", {"Direct", "Stereo", "5.1"}},
    };
    return rows;
}
} // namespace

support::FakeTargetFormatBuilder::FakeTargetFormatBuilder()
{
    settle();
}

QString support::FakeTargetFormatBuilder::settings() const
{
    QJsonObject settings;
    for (auto entry = m_values.constBegin(); entry != m_values.constEnd(); ++entry)
        settings[entry.key()] = entry.value();
    return QString::fromUtf8(QJsonDocument(settings).toJson(QJsonDocument::Compact));
}

QStringList support::FakeTargetFormatBuilder::keys() const
{
    QStringList keys;
    for (const auto& row : independentRows())
        keys += row.first;
    return keys;
}

QStringList support::FakeTargetFormatBuilder::choices(const QString& key) const
{
    const auto other = otherChoices.constFind(key);
    if (other != otherChoices.constEnd())
        return *other;
    const bool uhd = m_values.value("Resolution") == "3840x2160";
    if (key == "Resolution")
        return m_values.value("Application Pattern") == "App 2" ? QStringList{"1920x1080"}
                                                                : QStringList{"1920x1080", "3840x2160"};
    if (key == "Compression Profile")
        return {uhd ? "4K" : "2K", "Lossless"};
    if (key == "Colorimetry")
        return uhd ? QStringList{"BT.709", "BT.2020"} : QStringList{"BT.709"};
    const auto& rows = independentRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [&key](const auto& row) { return row.first == key; });
    return found == rows.end() ? QStringList() : found->second;
}

QString support::FakeTargetFormatBuilder::value(const QString& key) const
{
    return m_values.value(key);
}

bool support::FakeTargetFormatBuilder::setValue(const QString& key, const QString& value)
{
    calls += key + '=' + value;
    if (!choices(key).contains(value))
        return false;
    m_values[key] = value;
    settle();
    return true;
}

QString support::FakeTargetFormatBuilder::frameRate() const
{
    return value("Frame Rate");
}

void support::FakeTargetFormatBuilder::setAudioMapping(const QJsonArray& mapping)
{
    calls += QStringLiteral("audioMapping(%1)").arg(mapping.size());
    audioMapping = mapping;
}

void support::FakeTargetFormatBuilder::settle()
{
    const QStringList allKeys = keys();
    for (const QString& key : allKeys) {
        const QStringList offered = choices(key);
        if (!offered.contains(m_values.value(key)))
            m_values[key] = offered.value(0);
    }
}

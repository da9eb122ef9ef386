#pragma once

#include "StratacutUI/TargetFormatBuilder.h"

#include <QHash>
#include <QMap>
#include <QString>

namespace support
{

/// A builder whose choices depend on each other as a real output's do:
///  - "Application Pattern" "App 2E" offers the resolutions "1920x1080" and "3840x2160", "App 2" only the first;
///  - "Resolution" "3840x2160" offers the profiles "4K" and "Lossless", the other "2K" and "Lossless";
///  - "Colorimetry" offers "BT.2020" only at "3840x2160".
/// A value that is no choice any more falls back to the first.
class FakeTargetFormatBuilder : public TargetFormatBuilder
{
public:
    FakeTargetFormatBuilder();

    QString settings() const override;
    QStringList keys() const override;
    QStringList choices(const QString& key) const override;
    QString value(const QString& key) const override;
    bool setValue(const QString& key, const QString& value) override;
    QString frameRate() const override;
    void setAudioMapping(const QJsonArray& mapping) override;

    /// What was changed, in order: "Resolution=3840x2160", "audioMapping(2)" with the number of entries.
    QStringList calls;
    /// The mapping handed over last.
    QJsonArray audioMapping;
    /// Choices that take the place of the usual ones; an empty list makes the key unmanaged.
    QHash<QString, QStringList> otherChoices;

private:
    void settle();

    QMap<QString, QString> m_values;
};

} // namespace support

#pragma once

#include "StratacutUI/TargetFormatBuilder.h"
#include "desk/services/OutputFormat.h"

namespace desk::services
{

/// One composition's output format for the package manager: offers what the package output can write and nothing else.
/// User-interface thread.
class FormatBuilder : public TargetFormatBuilder
{
public:
    explicit FormatBuilder(const OutputFormat& defaults);

    /// What OutputFormat::toJson() answers, as compact text.
    QString settings() const override;
    QStringList keys() const override;
    QStringList choices(const QString& key) const override;
    QString value(const QString& key) const override;
    bool setValue(const QString& key, const QString& value) override;
    QString frameRate() const override;
    void setAudioMapping(const QJsonArray& mapping) override;

private:
    OutputFormat m_format;
};

} // namespace desk::services

#pragma once

#include "StratacutUI/ISettingsStorage.h"

#include <QByteArray>
#include <QMap>

#include <memory>

namespace support
{

/// Settings that live in a map. The map outlives the storage, so that a test can hand it from one run to the next.
class MemorySettings : public ISettingsStorage
{
public:
    using Values = QMap<QByteArray, QJsonArray>;

    explicit MemorySettings(std::shared_ptr<Values> values = std::make_shared<Values>()) : m_values(std::move(values))
    {
    }

    void reserved1() override {}

    void reserved3() override {}

    boost::optional<QJsonArray> get(const char* key) override
    {
        const auto found = m_values->constFind(key);
        return found == m_values->constEnd() ? boost::optional<QJsonArray>() : boost::optional<QJsonArray>(*found);
    }

    void set(const char* key, const QJsonArray& value) override { m_values->insert(key, value); }

private:
    std::shared_ptr<Values> m_values;
};

} // namespace support

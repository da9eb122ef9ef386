#pragma once

#include <QMetaType>
#include <QTest>

#include <any>
#include <tuple>

Q_DECLARE_METATYPE(std::any)

namespace support
{

/// The rows of a data-driven test, with values of any type: made in its _data function and called once a row.
template <class... Values>
class Rows
{
public:
    Rows() { QTest::addColumn<std::any>("row"); }

    void operator()(const char* name, const Values&... values) const
    {
        QTest::newRow(name) << std::any(std::tuple<Values...>(values...));
    }
};

/// The values of the row that the running test was given.
template <class... Values>
std::tuple<Values...> fetched()
{
    QFETCH(std::any, row);
    return std::any_cast<std::tuple<Values...>>(row);
}

} // namespace support

#pragma once

#include "NvCore/Assert.h"

#include <QStringList>

namespace support
{

/// Records failed checks instead of failing the test, as long as it lives. The program goes on after each, as a release
/// build does.
class Assertions
{
public:
    Assertions();
    ~Assertions();
    Assertions(const Assertions&) = delete;
    Assertions& operator=(const Assertions&) = delete;

    /// "source: expression" of each failed check since the last call, in order.
    QStringList take();

private:
    QStringList m_recorded;
    NvAssertHandler m_former;
};

} // namespace support

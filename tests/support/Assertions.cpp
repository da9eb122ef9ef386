#include "support/Assertions.h"

#include <utility>

support::Assertions::Assertions()
    : m_former(nvSetAssertHandler([this](const QByteArray& expression, const QByteArray& source) {
          m_recorded += QString::fromUtf8(source + ": " + expression);
      }))
{
}

support::Assertions::~Assertions()
{
    nvSetAssertHandler(m_former);
}

QStringList support::Assertions::take()
{
    return std::exchange(m_recorded, {});
}

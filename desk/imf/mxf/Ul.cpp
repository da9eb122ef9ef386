#include "desk/imf/mxf/Ul.h"

#include <cstring>

namespace desk::imf
{

Ul Ul::from(const void* data)
{
    Ul label;
    std::memcpy(label.bytes.data(), data, label.bytes.size());
    return label;
}

QByteArray Ul::urn() const
{
    QByteArray text = "urn:smpte:ul:";
    for (int i = 0; i < 16; i += 4)
        text += (i == 0 ? "" : ".") + QByteArray(reinterpret_cast<const char*>(bytes.data()) + i, 4).toHex();
    return text;
}

bool Ul::matches(const Ul& other) const
{
    Ul same = other;
    same.bytes[7] = bytes[7];
    return bytes == same.bytes;
}

} // namespace desk::imf

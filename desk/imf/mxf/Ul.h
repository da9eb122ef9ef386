#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>

namespace desk::imf
{

/// A SMPTE universal label (ST 298) or any other 16 bytes that MXF uses in its place.
struct Ul {
    std::array<std::uint8_t, 16> bytes{};

    constexpr Ul() = default;

    /// The two big-endian halves.
    constexpr Ul(std::uint64_t high, std::uint64_t low)
    {
        for (int i = 0; i < 8; ++i) {
            bytes[std::size_t(i)] = std::uint8_t(high >> (56 - 8 * i));
            bytes[std::size_t(i) + 8] = std::uint8_t(low >> (56 - 8 * i));
        }
    }

    /// The first 16 bytes of a larger buffer.
    static Ul from(const void* data);

    bool isNull() const { return bytes == std::array<std::uint8_t, 16>{}; }

    QByteArray toBytes() const { return {reinterpret_cast<const char*>(bytes.data()), 16}; }

    /// "urn:smpte:ul:060e2b34.0401010d.04010202.03010209".
    QByteArray urn() const;

    /// Equal but for the registry version, the eighth byte.
    bool matches(const Ul& other) const;

    friend bool operator==(const Ul& a, const Ul& b) { return a.bytes == b.bytes; }

    friend bool operator!=(const Ul& a, const Ul& b) { return !(a == b); }
};

} // namespace desk::imf

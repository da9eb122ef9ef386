#pragma once

#include "desk/imf/mxf/Ul.h"

#include <QByteArray>
#include <QtEndian>

namespace desk::imf
{

/// Appends `value` in big-endian order, as everything in MXF is.
template <class T>
void putBig(QByteArray& bytes, T value)
{
    const T big = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&big), sizeof(T));
}

inline void putUl(QByteArray& bytes, const Ul& label)
{
    bytes.append(reinterpret_cast<const char*>(label.bytes.data()), 16);
}

/// Reads `bytes` from front to back; past the end every value is 0 and ok() false.
class BigReader
{
public:
    explicit BigReader(const QByteArray& bytes) : m_bytes(bytes) {}

    template <class T>
    T get()
    {
        if (!has(sizeof(T)))
            return T(0);
        const T value = qFromBigEndian<T>(m_bytes.constData() + m_at);
        m_at += int(sizeof(T));
        return value;
    }

    Ul ul()
    {
        if (!has(16))
            return {};
        m_at += 16;
        return Ul::from(m_bytes.constData() + m_at - 16);
    }

    QByteArray take(qint64 count)
    {
        if (count < 0 || !has(count))
            return {};
        m_at += int(count);
        return m_bytes.mid(m_at - int(count), int(count));
    }

    qint64 left() const { return m_bytes.size() - m_at; }

    qint64 position() const { return m_at; }

    bool ok() const { return m_ok; }

private:
    bool has(qint64 count)
    {
        m_ok = m_ok && count <= left();
        return m_ok;
    }

    const QByteArray m_bytes;
    int m_at = 0;
    bool m_ok = true;
};

} // namespace desk::imf

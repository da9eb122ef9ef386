#pragma once

#include <QFile>
#include <QString>

namespace support
{

/// What a file holds; nothing where it cannot be read.
inline QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes a file anew; ends the test program where that fails.
inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qPrintable(path));
}

} // namespace support

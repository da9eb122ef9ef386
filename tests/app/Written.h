#pragma once

#include "app/Desk.h"
#include "services/Clip.h"

#include <QFile>
#include <QRegularExpression>
#include <QVector>
#include <QtEndian>

namespace support
{

/// What ffmpeg makes of an input.
inline QByteArray decoded(const QStringList& input, const QStringList& output)
{
    return run(QStringLiteral("ffmpeg"),
               QStringList{"-v", "error", "-nostdin"} + input + output + QStringList{QStringLiteral("-")});
}

/// 24-bit samples.
inline QVector<qint32> samplesOf(const QStringList& input)
{
    const QByteArray bytes = decoded(input, {"-f", "s32le", "-c:a", "pcm_s32le"});
    QVector<qint32> samples(bytes.size() / 4);
    for (int i = 0; i < samples.size(); ++i)
        samples[i] = qFromLittleEndian<qint32>(bytes.constData() + 4 * i) >> 8;
    return samples;
}

/// The sound track files of a delivery in the order in which its only composition names them.
inline QStringList soundFiles(const QString& delivery)
{
    QFile cpl(onlyFile(delivery, QStringLiteral("CPL_*.xml")));
    if (!cpl.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression id(QStringLiteral("<TrackFileId>urn:uuid:([^<]+)"));
    QStringList files;
    auto matches = id.globalMatch(QString::fromUtf8(cpl.readAll()));
    while (matches.hasNext())
        files += delivery + '/' + matches.next().captured(1) + ".mxf";
    return files.mid(1);
}

} // namespace support

#pragma once

#include <QDir>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace support
{

/// A clip that ffmpeg makes for a test.
struct Clip {
    QString rate = QStringLiteral("24");
    QString size = QStringLiteral("1920x1080");
    /// Frames; 0 makes a file without picture.
    int frames = 2;
    /// Mono tracks of 24-bit noise, each of its own, one second long.
    int tracks = 2;
    /// Peak of the noise, 1 being full scale.
    double loudness = 0.2;
    /// "testsrc2" moves and is costly to encode, "color" is not.
    QString picture = QStringLiteral("color=gray");
};

/// Runs a program to its end. Answers its standard output; fails the calling test by an empty answer.
inline QByteArray run(const QString& program, const QStringList& arguments, int* exitCode = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120000))
        process.kill();
    if (exitCode)
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    const QByteArray errors = process.readAllStandardError();
    if (!errors.isEmpty() && process.exitCode() != 0 && !exitCode)
        qInfo("%s: %s", qPrintable(program), errors.constData());
    return process.readAllStandardOutput();
}

inline QString makeClip(const QString& path, const Clip& clip)
{
    QStringList arguments{"-v", "error", "-nostdin", "-y"};
    const bool hasPicture = clip.frames > 0;
    if (hasPicture) {
        const double rate = clip.rate.section('/', 0, 0).toDouble() /
                            (clip.rate.contains('/') ? clip.rate.section('/', 1, 1).toDouble() : 1);
        // Ends within the last frame, so that it is counted and no other.
        const QString options =
            QStringLiteral("size=%1:rate=%2:d=%3").arg(clip.size, clip.rate).arg((clip.frames - 0.5) / rate);
        arguments += {"-f", "lavfi", "-i", clip.picture + (clip.picture.contains('=') ? ':' : '=') + options};
    }
    for (int track = 0; track < clip.tracks; ++track)
        arguments += {"-f", "lavfi", "-i",
                      QStringLiteral("anoisesrc=r=48000:a=%1:d=1:seed=%2").arg(clip.loudness).arg(track + 1)};
    for (int input = 0; input < clip.tracks + (hasPicture ? 1 : 0); ++input)
        arguments += {"-map", QString::number(input)};
    if (hasPicture)
        arguments += {"-pix_fmt",   "yuv422p10le", "-c:v",        "ffv1",  "-color_primaries", "bt709",
                      "-color_trc", "bt709",       "-colorspace", "bt709", "-color_range",     "tv"};
    arguments += {"-c:a", "pcm_s24le", path};
    run(QStringLiteral("ffmpeg"), arguments);
    return path;
}

} // namespace support

#pragma once

#include "desk/media/PictureReader.h"
#include "support/Files.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <vector>

/// Makes media with the ffmpeg program in a folder of its own. A failed call fails the test that makes it.
class MediaMaker
{
public:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    /// Runs ffmpeg with the words of `arguments`; "@name" stands for path(name). Quoted words may hold blanks.
    bool ffmpeg(const QString& arguments) const;

    /// "size,position" of each packet of a file's picture, as ffprobe tells.
    QStringList packets(const QString& name) const;

    /// "numbers.nut": `frames` frames of 160 x 90 at `rate` whose luma spells the frame's number in eight bars.
    bool numberedPicture(int frames, const QString& rate, const QString& name) const;

    /// A WAV file of the given bits (16 or 24).
    void writeWav(const QString& name, const std::vector<std::int32_t>& samples, int bits,
                  int sampleRate = 48000) const;

    QByteArray bytes(const QString& name) const { return support::fileBytes(path(name)); }

    void write(const QString& name, const QByteArray& bytes) const { support::writeFile(path(name), bytes); }

private:
    QTemporaryDir m_folder;
};

/// The number that a frame of numberedPicture() spells.
int spelledNumber(const desk::media::Frame& frame);

/// Noise of `bits` bits that is the same for the same seed.
std::vector<std::int32_t> noise(std::size_t count, int bits, unsigned seed);

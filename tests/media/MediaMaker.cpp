#include "media/MediaMaker.h"

#include <QProcess>
#include <QtEndian>

#include <random>

using desk::media::Frame;

bool MediaMaker::ffmpeg(const QString& arguments) const
{
    QStringList words{QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")};
    const QStringList split = QProcess::splitCommand(arguments);
    for (const QString& word : split)
        words << (word.startsWith(QLatin1Char('@')) ? path(word.mid(1)) : word);
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("ffmpeg"), words);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

QStringList MediaMaker::packets(const QString& name) const
{
    QProcess process;
    process.start(QStringLiteral("ffprobe"), {"-v", "error", "-select_streams", "v", "-show_entries", "packet=size,pos",
                                              "-of", "csv=p=0", path(name)});
    process.waitForFinished(60000);
    return QString::fromLatin1(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool MediaMaker::numberedPicture(int frames, const QString& rate, const QString& name) const
{
    return ffmpeg(QStringLiteral("-f lavfi -i color=s=160x90:r=%1,format=yuv420p,"
                                 "geq=lum='if(bitand(N\\,pow(2\\,floor(X/20))),200,50)':cb=128:cr=128 "
                                 "-frames:v %2 -c:v rawvideo @%3")
                      .arg(rate)
                      .arg(frames)
                      .arg(name));
}

namespace
{

QByteArray little(quint32 value, int bytes)
{
    const quint32 ordered = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char*>(&ordered), bytes);
}

} // namespace

void MediaMaker::writeWav(const QString& name, const std::vector<std::int32_t>& samples, int bits, int sampleRate) const
{
    const int width = bits / 8;
    QByteArray data;
    for (const std::int32_t sample : samples)
        data += little(quint32(sample), width);
    const QByteArray head = QByteArray("WAVEfmt ") + little(16, 4) + little(1, 2) + little(1, 2) +
                            little(quint32(sampleRate), 4) + little(quint32(sampleRate * width), 4) +
                            little(quint32(width), 2) + little(quint32(bits), 2) + "data" +
                            little(quint32(data.size()), 4);
    write(name, "RIFF" + little(quint32(head.size() + data.size()), 4) + head + data);
}

int spelledNumber(const Frame& frame)
{
    int number = 0;
    const std::uint16_t* line = frame.planes[0].data() + std::ptrdiff_t(frame.format.width) * (frame.format.height / 2);
    for (int bit = 0; bit < 8; ++bit)
        number |= line[(bit * 2 + 1) * frame.format.width / 16] > (125 << (frame.format.bitDepth - 8)) ? 1 << bit : 0;
    return number;
}

std::vector<std::int32_t> noise(std::size_t count, int bits, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::int32_t> samples(count);
    for (std::int32_t& sample : samples)
        sample = std::int32_t(random()) >> (32 - bits);
    return samples;
}

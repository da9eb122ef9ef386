#include "desk/app/window/MediaLoader.h"

#include "desk/media/PictureReader.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace desk::app
{

namespace
{
int clamped(double value)
{
    return std::clamp(int(value + 0.5), 0, 255);
}

/// BT.709 in narrow range at eight bits, as ITU-R BT.709-6 and BT.1361 give it.
QRgb rgbOf(int luma, int blue, int red)
{
    const double y = 255.0 / 219.0 * (luma - 16);
    const double b = 255.0 / 224.0 * (blue - 128);
    const double r = 255.0 / 224.0 * (red - 128);
    return qRgb(clamped(y + 1.5748 * r), clamped(y - 0.1873 * b - 0.4681 * r), clamped(y + 1.8556 * b));
}

QImage imageOf(const media::Frame& frame)
{
    QImage image(frame.format.width, frame.format.height, QImage::Format_RGB32);
    std::size_t sample = 0;
    for (int row = 0; row < image.height(); ++row) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int column = 0; column < image.width(); ++column, ++sample)
            line[column] = rgbOf(frame.planes[0][sample], frame.planes[1][sample], frame.planes[2][sample]);
    }
    return image;
}

/// A while into the sequence: many begin black.
QImage decode(const QString& path)
{
    const auto sequence = media::openSequence(path);
    if (!sequence || !sequence->picture)
        return {};
    // Twice the size in which it is shown, for sharp screens.
    const media::PictureTarget target{2 * Thumbnails::width, 2 * Thumbnails::height, 8, media::Sampling::YCbCr444};
    const auto reader = media::PictureReader::open(*sequence, target, {1, media::PictureReaderOptions::Access::Jump});
    if (!reader)
        return {};
    const auto frame = (*reader)->read(sequence->frames / 3);
    return frame ? imageOf(*frame) : QImage();
}

QImage load(const QString& folder, const QString& id, const QString& path)
{
    const QFileInfo media(path);
    const QString file = QStringLiteral("%1/%2-%3.png").arg(folder, id).arg(media.lastModified().toMSecsSinceEpoch());
    QImage image(file);
    if (!image.isNull() || !media.isFile())
        return image;
    image = decode(path);
    if (!image.isNull() && QDir().mkpath(folder))
        image.save(file);
    return image;
}
} // namespace

MediaLoader::MediaLoader(QObject* parent) : QObject(parent)
{
    m_pool.setMaxThreadCount(1);
}

MediaLoader::~MediaLoader()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void MediaLoader::open(const QStringList& paths)
{
    for (const QString& path : paths) {
        ++m_pending;
        m_pool.start([this, path] {
            auto sequence = media::openSequence(path);
            QMetaObject::invokeMethod(
                this, [this, sequence = std::move(sequence)] { finish(sequence); }, Qt::QueuedConnection);
        });
    }
    emit pendingChanged(m_pending);
}

void MediaLoader::finish(const Result<media::Sequence>& sequence)
{
    --m_pending;
    if (sequence)
        emit opened(*sequence);
    else
        emit failed(sequence.error());
    emit pendingChanged(m_pending);
}

Thumbnails::Thumbnails(const QString& folder, QObject* parent) : QObject(parent), m_folder(folder)
{
    m_pool.setMaxThreadCount(1);
}

Thumbnails::~Thumbnails()
{
    m_pool.clear();
    m_pool.waitForDone();
}

QImage Thumbnails::find(const QString& id, const QString& path)
{
    const auto found = m_images.constFind(id);
    if (found != m_images.constEnd() || m_wanted.contains(id))
        return found == m_images.constEnd() ? QImage() : *found;
    m_wanted += id;
    m_pool.start([this, folder = m_folder, id, path] {
        const QImage image = load(folder, id, path);
        QMetaObject::invokeMethod(
            this,
            [this, id, image] {
                m_wanted -= id;
                m_images[id] = image;
                emit ready(id);
            },
            Qt::QueuedConnection);
    });
    return {};
}

void Thumbnails::forget(const QString& id)
{
    m_images.remove(id);
}

} // namespace desk::app

#include "ViewDeckQt/NineSlice.h"

#include "ViewDeckQt/PaletteManager.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmapCache>
#include <QSet>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

namespace NineSlice
{

namespace
{
// What the drawings use for the two colours that follow the skin.
constexpr char firstKeyColor[] = "#808080";
constexpr char secondKeyColor[] = "#0080ff";
constexpr int keyLength = sizeof(firstKeyColor) - 1;

constexpr const char* missingImage = ":/ViewDeckQt/images/missing.svg";

// The least difference between the channels of an image's other colours: blends towards it fade out of recolouring.
constexpr int accentChroma = 96;

struct NumberedImage {
    int id;
    const char* name;
};

constexpr NumberedImage numberedImages[] = {
    {3, "General/status_committed.png"},
    {4, "General/status_uncommitted.png"},
    {5, "General/status_unset.png"},
};

struct Request {
    QString file;
    IconColorSubstitution colors;
    quint8 opacity = 255;
    qreal ratio = 1;

    QString cacheKey() const
    {
        return QStringLiteral("NineSlice %1 %2 %3 %4 %5")
            .arg(file, colors.first.toQColor().name(), colors.second.toQColor().name())
            .arg(opacity)
            .arg(ratio);
    }
};

QString fileOf(const QString& group, const QString& name)
{
    const QString bare = name.endsWith(QLatin1String(".png")) ? name.chopped(4) : name;
    return QStringLiteral(":/ViewDeckQt/images/%1/%2.svg").arg(group, bare);
}

QString existingFile(const QString& group, const QString& name)
{
    static QSet<QString> reported;
    const QString file = fileOf(group, name);
    if (QFile::exists(file))
        return file;
    if (!reported.contains(file)) {
        reported.insert(file);
        qWarning("NineSlice: there is no image \"%s\" in \"%s\"", qUtf8Printable(name), qUtf8Printable(group));
    }
    return QString::fromLatin1(missingImage);
}

QByteArray coloredDrawing(const Request& request)
{
    QFile file(request.file);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray drawing = file.readAll();
    const QByteArray first = request.colors.first.toQColor().name().toLatin1();
    const QByteArray second = request.colors.second.toQColor().name().toLatin1();
    // In one walk: either colour may be what the drawing uses for the other.
    for (int at = drawing.indexOf('#'); at >= 0; at = drawing.indexOf('#', at + 1)) {
        const QByteArray color = drawing.mid(at, keyLength);
        if (color == firstKeyColor)
            drawing.replace(at, keyLength, first);
        else if (color == secondKeyColor)
            drawing.replace(at, keyLength, second);
    }
    return drawing;
}

QPixmap draw(const Request& request)
{
    QSvgRenderer renderer(coloredDrawing(request));
    const QSizeF size = renderer.defaultSize();
    QImage image(QSize(int(std::ceil(size.width() * request.ratio)), int(std::ceil(size.height() * request.ratio))),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        renderer.render(&painter, QRectF({0, 0}, size * request.ratio));
        // Faded as a whole: shapes that overlap must not shine through each other.
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.fillRect(image.rect(), QColor(0, 0, 0, request.opacity));
    }
    image.setDevicePixelRatio(request.ratio);
    return QPixmap::fromImage(image);
}

QPixmap cached(const Request& request)
{
    const QString key = request.cacheKey();
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = draw(request);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

qreal usable(qreal ratio)
{
    return qBound(0.5, ratio, 8.0);
}

/// How much of a pixel is grey: 1 within the tolerance, falling to 0 where it is as colourful as an accent.
qreal greyShare(QRgb pixel, int tolerance)
{
    const auto [least, most] = std::minmax({qRed(pixel), qGreen(pixel), qBlue(pixel)});
    return 1 - qBound(0.0, qreal(most - least - tolerance) / accentChroma, 1.0);
}

int blend(int from, int to, qreal share)
{
    return qRound(from + (to - from) * share);
}
} // namespace

QPixmap GetImage(const QString& group, const QString& name)
{
    return GetImage(group, name, qGuiApp->devicePixelRatio());
}

QPixmap GetImage(const QString& group, const QString& name, qreal devicePixelRatio)
{
    return cached({existingFile(group, name), GetIconColorSubstitution(), 255, usable(devicePixelRatio)});
}

QPixmap GetImage(const ResourceData& resource)
{
    return GetImage(resource, qGuiApp->devicePixelRatio());
}

QPixmap GetImage(const ResourceData& resource, qreal devicePixelRatio)
{
    const IconColorSubstitution skin = GetIconColorSubstitution();
    return cached({existingFile(QString::fromUtf8(resource.group), QString::fromUtf8(resource.id)),
                   {resource.firstCustomColor.value_or(skin.first), resource.secondCustomColor.value_or(skin.second)},
                   resource.opacity,
                   usable(devicePixelRatio)});
}

bool HasImage(const QString& group, const QString& name)
{
    return QFile::exists(fileOf(group, name));
}

QString GetResourceIDString(int id)
{
    const auto* entry = std::find_if(std::begin(numberedImages), std::end(numberedImages),
                                     [id](const NumberedImage& image) { return image.id == id; });
    return entry == std::end(numberedImages) ? QString() : QString::fromLatin1(entry->name);
}

void ChangeFirstIconColor(QImage& image, int tolerance, const QColor& color)
{
    const QImage::Format format = image.format();
    if (image.isNull())
        return;
    image = std::move(image).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (QRgb* pixel = line; pixel != line + image.width(); ++pixel) {
            const qreal share = greyShare(*pixel, tolerance);
            *pixel = qRgba(blend(qRed(*pixel), color.red(), share), blend(qGreen(*pixel), color.green(), share),
                           blend(qBlue(*pixel), color.blue(), share), qAlpha(*pixel));
        }
    }
    image = std::move(image).convertToFormat(format);
}

ResourceData CreateCustomResourceData(const ResourceData& base, std::optional<NvRGBColor> first,
                                      std::optional<NvRGBColor> second)
{
    ResourceData custom = base;
    custom.firstCustomColor = first;
    custom.secondCustomColor = second;
    return custom;
}

IconColorSubstitution GetIconColorSubstitution()
{
    const Palette::PaletteManager& palette = Palette::PaletteManager::Instance();
    return {palette.GetNvRGBColor(QStringLiteral("IconFirstColor")).value_or(RGBgray8),
            palette.GetNvRGBColor(QStringLiteral("IconSecondColor")).value_or(RGBgray8)};
}

std::optional<NvRGBColor> GetRowColTextColorForTable()
{
    return Palette::PaletteManager::Instance().GetNvRGBColor(QStringLiteral("HighlightedTextColor"));
}

} // namespace NineSlice

#include "desk/media/PreviewMaker.h"

#include "desk/media/ColourMath.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace desk::media
{

namespace
{

/// Rows start where the scaler's vector instructions like it.
constexpr int alignment = 64;

QSize fitted(const SourceFrame& source, QSize box)
{
    const PictureTrackInfo& info = *source.media->picture;
    double shape = source.picture->width * info.pixelAspect.toDouble() / source.picture->height;
    if (info.rotation % 180 != 0)
        shape = 1 / shape;
    const bool wide = shape > double(box.width()) / box.height();
    const int width = wide ? box.width() : int(std::lround(box.height() * shape));
    const int height = wide ? int(std::lround(box.width() / shape)) : box.height();
    return {std::max(2, width), std::max(2, height)};
}

void allocate(Preview& preview, QSize size)
{
    preview.size = size;
    preview.stride = (size.width() * 4 + alignment - 1) / alignment * alignment;
    preview.pixels.resize(std::size_t(preview.stride) * std::size_t(size.height()) + alignment);
}

std::shared_ptr<Preview> turned(const Preview& lying, int clockwise)
{
    auto result = std::make_shared<Preview>();
    result->frame = lying.frame;
    const bool upright = clockwise == 180;
    allocate(*result, upright ? lying.size : lying.size.transposed());
    const int right = lying.size.width() - 1;
    const int bottom = lying.size.height() - 1;
    for (int y = 0; y < result->size.height(); ++y) {
        auto* to = reinterpret_cast<std::uint32_t*>(result->pixels.data() + std::ptrdiff_t(y) * result->stride);
        for (int x = 0; x < result->size.width(); ++x) {
            const int fromX = upright ? right - x : clockwise == 90 ? y : right - y;
            const int fromY = upright ? bottom - y : clockwise == 90 ? bottom - x : x;
            const auto* row = lying.pixels.data() + std::ptrdiff_t(fromY) * lying.stride;
            to[x] = reinterpret_cast<const std::uint32_t*>(row)[fromX];
        }
    }
    return result;
}

void tellColours(SwsContext& scaler, const AVFrame& picture)
{
    const auto [meaning, known] = colourMeaning(picture);
    int matrix = SWS_CS_ITU709;
    if (picture.colorspace == AVCOL_SPC_BT2020_NCL || picture.colorspace == AVCOL_SPC_BT2020_CL)
        matrix = SWS_CS_BT2020;
    else if (known && meaning.kr > 0.25)
        matrix = SWS_CS_ITU601;
    sws_setColorspaceDetails(&scaler, sws_getCoefficients(matrix), meaning.fullRange ? 1 : 0,
                             sws_getCoefficients(SWS_CS_ITU709), 1, 0, 1 << 16, 1 << 16);
}

} // namespace

Result<PreviewPtr> PreviewMaker::make(const SourceFrame& source, qint64 frame, QSize box)
{
    auto preview = std::make_shared<Preview>();
    preview->frame = frame;
    if (source.picture == nullptr || box.isEmpty())
        return PreviewPtr(preview);
    const AVFrame& picture = *source.picture;
    const int rotation = source.media->picture->rotation;
    const QSize shown = fitted(source, box);
    const QSize size = rotation % 180 == 0 ? shown : shown.transposed();
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), picture.width, picture.height, plainFormat(picture.format),
                                        size.width(), size.height(), AV_PIX_FMT_BGRA, SWS_FAST_BILINEAR, nullptr,
                                        nullptr, nullptr));
    if (!m_scaler)
        return Error{source.media->path,
                     QStringLiteral("picture"),
                     {},
                     QStringLiteral("the pixel format %1 cannot be shown")
                         .arg(QLatin1String(av_get_pix_fmt_name(AVPixelFormat(picture.format)))),
                     QStringLiteral("convert the media to another codec")};
    tellColours(*m_scaler, picture);
    allocate(*preview, size);
    std::uint8_t* const planes[] = {preview->pixels.data()};
    const int strides[] = {preview->stride};
    sws_scale(m_scaler.get(), picture.data, picture.linesize, 0, picture.height, planes, strides);
    return rotation == 0 ? PreviewPtr(preview) : PreviewPtr(turned(*preview, rotation));
}

} // namespace desk::media

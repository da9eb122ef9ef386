#include "desk/media/ColourMath.h"

#include <algorithm>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace desk::media
{

namespace
{

struct Weights {
    AVColorSpace space;
    double kr;
    double kb;
};

constexpr Weights weights[] = {
    {AVCOL_SPC_BT709, 0.2126, 0.0722},     {AVCOL_SPC_FCC, 0.30, 0.11},         {AVCOL_SPC_BT470BG, 0.299, 0.114},
    {AVCOL_SPC_SMPTE170M, 0.299, 0.114},   {AVCOL_SPC_SMPTE240M, 0.212, 0.087}, {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593},
    {AVCOL_SPC_BT2020_CL, 0.2627, 0.0593},
};

using Matrix = std::array<double, 9>;

/// R'G'B' in 0..1 from Y' in 0..1 and C in -0.5..0.5.
Matrix rgbFromYcc(double kr, double kb)
{
    const double kg = 1.0 - kr - kb;
    return {1.0,
            0.0,
            2.0 * (1.0 - kr),
            1.0,
            -2.0 * kb * (1.0 - kb) / kg,
            -2.0 * kr * (1.0 - kr) / kg,
            1.0,
            2.0 * (1.0 - kb),
            0.0};
}

Matrix yccFromRgb(double kr, double kb)
{
    const double kg = 1.0 - kr - kb;
    const double b = 0.5 / (1.0 - kb);
    const double r = 0.5 / (1.0 - kr);
    return {kr, kg, kb, -kr * b, -kg * b, 0.5, 0.5, -kg * r, -kb * r};
}

Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix c{};
    for (std::size_t i = 0; i < 9; ++i) {
        for (std::size_t k = 0; k < 3; ++k)
            c[i] += a[i / 3 * 3 + k] * b[k * 3 + i % 3];
    }
    return c;
}

bool isFullRangeFormat(int format)
{
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
           format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P;
}

std::uint16_t clamped(float value)
{
    return std::uint16_t(std::clamp(value, 0.0F, 65535.0F));
}

} // namespace

MeaningOf colourMeaning(const AVFrame& frame)
{
    const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(AVPixelFormat(frame.format));
    MeaningOf result;
    ColourMeaning& meaning = result.meaning;
    // The scaler is what turns X'Y'Z' into RGB.
    const bool xyz = frame.format == AV_PIX_FMT_XYZ12LE || frame.format == AV_PIX_FMT_XYZ12BE;
    meaning.rgb = xyz || (desc->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER)) != 0;
    meaning.fullRange = frame.color_range == AVCOL_RANGE_JPEG || isFullRangeFormat(frame.format) ||
                        (meaning.rgb && frame.color_range == AVCOL_RANGE_UNSPECIFIED);
    if (meaning.rgb)
        return result;
    AVColorSpace space = frame.colorspace;
    if (space == AVCOL_SPC_UNSPECIFIED || space == AVCOL_SPC_RESERVED)
        space = frame.height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    const Weights* found =
        std::find_if(std::begin(weights), std::end(weights), [&](const Weights& w) { return w.space == space; });
    result.known = found != std::end(weights);
    if (result.known) {
        meaning.kr = found->kr;
        meaning.kb = found->kb;
    }
    return result;
}

ColourMatrix::ColourMatrix(const ColourMeaning& from, int depth)
{
    const double unit = double(1 << (16 - depth)); // one code of the source
    const double peak = double((1 << depth) - 1) * unit;
    const double black = from.fullRange ? 0.0 : 16.0 * 256.0;
    const double luma = from.fullRange ? peak : 219.0 * 256.0;
    const double chroma = from.rgb ? luma : from.fullRange ? peak : 224.0 * 256.0;
    const double chromaZero = from.rgb ? black : 128.0 * 256.0;
    const Matrix toRgb = from.rgb ? Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1} : rgbFromYcc(from.kr, from.kb);
    const Matrix whole = product(yccFromRgb(0.2126, 0.0722), toRgb);

    const double inScale[3] = {1.0 / luma, 1.0 / chroma, 1.0 / chroma};
    const double inZero[3] = {black, chromaZero, chromaZero};
    const double outScale[3] = {219.0 * 256.0, 224.0 * 256.0, 224.0 * 256.0};
    const double outZero[3] = {16.0 * 256.0, 128.0 * 256.0, 128.0 * 256.0};
    for (std::size_t row = 0; row < 3; ++row) {
        double offset = outZero[row];
        for (std::size_t column = 0; column < 3; ++column) {
            const double factor = outScale[row] * whole[row * 3 + column] * inScale[column];
            m_factors[row * 3 + column] = float(factor);
            offset -= factor * inZero[column];
        }
        m_offsets[row] = float(offset + 0.5);
    }
}

void ColourMatrix::applyRange(int component, std::uint16_t* row, int width) const
{
    const float factor = m_factors[std::size_t(component) * 4];
    const float offset = m_offsets[std::size_t(component)];
    std::transform(row, row + width, row, [=](std::uint16_t value) { return clamped(factor * value + offset); });
}

void ColourMatrix::apply(const std::array<std::uint16_t*, 3>& rows, int width) const
{
    const auto& f = m_factors;
    for (int x = 0; x < width; ++x) {
        const float a = rows[0][x];
        const float b = rows[1][x];
        const float c = rows[2][x];
        rows[0][x] = clamped(f[0] * a + f[1] * b + f[2] * c + m_offsets[0]);
        rows[1][x] = clamped(f[3] * a + f[4] * b + f[5] * c + m_offsets[1]);
        rows[2][x] = clamped(f[6] * a + f[7] * b + f[8] * c + m_offsets[2]);
    }
}

void halveRow(const std::uint16_t* in, int width, std::vector<std::uint16_t>& out)
{
    out.resize(std::size_t(width + 1) / 2);
    for (int x = 0; x < width; x += 2) {
        const int left = in[std::max(0, x - 1)];
        const int right = in[std::min(width - 1, x + 1)];
        out[std::size_t(x) / 2] = std::uint16_t((left + 2 * in[x] + right + 2) >> 2);
    }
}

AVPixelFormat plainFormat(int format)
{
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        return AV_PIX_FMT_YUV411P;
    default:
        return AVPixelFormat(format);
    }
}

} // namespace desk::media

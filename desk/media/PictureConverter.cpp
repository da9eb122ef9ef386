#include "desk/media/PictureConverter.h"

#include "desk/media/ColourMath.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace desk::media
{

namespace
{

/// Three planes of 16-bit words in somebody's memory, the values in the lower `depth` bits.
struct Planes {
    int width = 0;
    int height = 0;
    int depth = 16;
    int log2ChromaW = 0;
    int log2ChromaH = 0;
    std::array<std::uint16_t*, 3> data{};
    /// Words from one row to the next.
    std::array<std::ptrdiff_t, 3> stride{};

    int planeWidth(int plane) const { return plane == 0 ? width : AV_CEIL_RSHIFT(width, log2ChromaW); }

    int planeHeight(int plane) const { return plane == 0 ? height : AV_CEIL_RSHIFT(height, log2ChromaH); }

    std::uint16_t* row(int plane, int y) const { return data[std::size_t(plane)] + y * stride[std::size_t(plane)]; }
};

/// Memory for planes that are computed, kept from frame to frame.
using Scratch = std::array<std::vector<std::uint16_t>, 3>;

/// The part of the target that the picture covers; the rest is black.
struct Fit {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

Fit fitInto(const PictureTarget& target, int width, int height, Rational pixelAspect)
{
    const double shape = double(width) * pixelAspect.toDouble() / double(height);
    Fit fit{0, 0, target.width, target.height};
    if (shape > double(target.width) / target.height)
        fit.height = std::min(target.height, std::max(1, int(std::lround(target.width / shape))));
    else
        fit.width = std::min(target.width, std::max(2, 2 * int(std::lround(target.height * shape / 2.0))));
    fit.x = (target.width - fit.width) / 2 & ~1;
    fit.y = (target.height - fit.height) / 2;
    return fit;
}

bool isXyz(int format)
{
    return format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE;
}

/// Formats that readRow() takes apart; the scaler turns the others into one of these.
bool isReadable(int format)
{
    const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(AVPixelFormat(format));
    return !isXyz(format) &&
           (desc.flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT |
                          AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM)) == 0 &&
           desc.comp[0].depth >= 8 && desc.comp[0].depth <= 16 && desc.nb_components >= 3;
}

void readRow(const AVFrame& in, const AVPixFmtDescriptor& desc, int component, int y, std::uint16_t* out, int width)
{
    const AVComponentDescriptor& comp = desc.comp[component];
    const uint8_t* line = in.data[comp.plane] + std::ptrdiff_t(y) * in.linesize[comp.plane];
    const bool alone = comp.shift == 0 && comp.offset == 0 && (desc.flags & AV_PIX_FMT_FLAG_BE) == 0;
    if (alone && comp.step == 2 && comp.depth > 8)
        std::copy_n(reinterpret_cast<const std::uint16_t*>(line), width, out);
    else if (alone && comp.step == 1)
        std::copy_n(line, width, out);
    else
        av_read_image_line2(out, const_cast<const uint8_t**>(in.data), in.linesize, &desc, 0, y, component, width, 0,
                            2);
}

Planes describe(const AVFrame& in)
{
    const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    Planes planes;
    planes.width = in.width;
    planes.height = in.height;
    planes.depth = desc.comp[0].depth;
    planes.log2ChromaW = desc.log2_chroma_w;
    planes.log2ChromaH = desc.log2_chroma_h;
    return planes;
}

/// The frame's own words, where they are such planes; they must not be written unless the frame may be.
bool isPlanarWords(const AVPixFmtDescriptor& desc)
{
    return (desc.flags & AV_PIX_FMT_FLAG_BE) == 0 && std::all_of(desc.comp, desc.comp + 3, [](const auto& comp) {
               return comp.step == 2 && comp.shift == 0 && comp.offset == 0 && comp.depth > 8;
           });
}

Planes viewOf(const AVFrame& in)
{
    const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    Planes planes = describe(in);
    for (std::size_t i = 0; i < 3; ++i) {
        planes.data[i] = reinterpret_cast<std::uint16_t*>(in.data[desc.comp[i].plane]);
        planes.stride[i] = in.linesize[desc.comp[i].plane] / 2;
    }
    return planes;
}

/// A copy of the samples as they are coded.
Planes unpacked(const AVFrame& in, Scratch& scratch)
{
    const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    Planes planes = describe(in);
    for (int plane = 0; plane < 3; ++plane) {
        std::vector<std::uint16_t>& words = scratch[std::size_t(plane)];
        words.resize(std::size_t(planes.planeWidth(plane)) * std::size_t(planes.planeHeight(plane)));
        planes.data[std::size_t(plane)] = words.data();
        planes.stride[std::size_t(plane)] = planes.planeWidth(plane);
        for (int y = 0; y < planes.planeHeight(plane); ++y)
            readRow(in, desc, plane, y, planes.row(plane, y), planes.planeWidth(plane));
    }
    return planes;
}

/// All samples at 16 bits, in the upper bits of the words.
void widen(Planes& planes)
{
    const int up = 16 - planes.depth;
    planes.depth = 16;
    for (int plane = 0; plane < 3; ++plane) {
        for (int y = 0; y < planes.planeHeight(plane); ++y) {
            std::uint16_t* row = planes.row(plane, y);
            std::transform(row, row + planes.planeWidth(plane), row,
                           [up](std::uint16_t word) { return std::uint16_t(word << up); });
        }
    }
}

/// Turned into the target's colours; chroma that has fewer samples must be of its matrix already.
void convertColours(Planes& planes, const ColourMeaning& meaning, int codedDepth)
{
    widen(planes);
    const ColourMatrix matrix(meaning, codedDepth);
    if (meaning.hasTargetMatrix()) {
        for (int plane = 0; plane < 3; ++plane) {
            for (int y = 0; y < planes.planeHeight(plane); ++y)
                matrix.applyRange(plane, planes.row(plane, y), planes.planeWidth(plane));
        }
        return;
    }
    for (int y = 0; y < planes.height; ++y)
        matrix.apply({planes.row(0, y), planes.row(1, y), planes.row(2, y)}, planes.width);
}

/// To the words of the target: exact where the depth grows, rounded where it shrinks.
void copyRow(const std::uint16_t* in, std::uint16_t* out, int width, int fromDepth, int toDepth)
{
    if (fromDepth <= toDepth) {
        for (int x = 0; x < width; ++x)
            out[x] = std::uint16_t(in[x] << (toDepth - fromDepth));
        return;
    }
    const int shift = fromDepth - toDepth;
    const int most = (1 << toDepth) - 1;
    for (int x = 0; x < width; ++x)
        out[x] = std::uint16_t(std::min((in[x] + (1 << (shift - 1))) >> shift, most));
}

AVPixelFormat planarFormat(int log2ChromaW, int depth)
{
    struct Row {
        int depth;
        AVPixelFormat half;
        AVPixelFormat whole;
    };

    static constexpr Row rows[] = {{9, AV_PIX_FMT_YUV422P9LE, AV_PIX_FMT_YUV444P9LE},
                                   {10, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE},
                                   {12, AV_PIX_FMT_YUV422P12LE, AV_PIX_FMT_YUV444P12LE},
                                   {14, AV_PIX_FMT_YUV422P14LE, AV_PIX_FMT_YUV444P14LE},
                                   {16, AV_PIX_FMT_YUV422P16LE, AV_PIX_FMT_YUV444P16LE}};
    const Row* row = std::find_if(std::begin(rows), std::end(rows) - 1, [&](const Row& r) { return r.depth == depth; });
    return log2ChromaW == 1 ? row->half : row->whole;
}

} // namespace

struct PictureConverter::Private {
    PictureTarget target;
    Rational pixelAspect;
    /// Of a whole picture the first; of the lines of a field the one of that field.
    std::array<SwsPtr, 2> scalers;
    /// What the scalers were made for: formats, sizes, place of the chroma, number of fields.
    std::array<int, 8> scalerKey{};
    FramePtr scaled{av_frame_alloc()};
    Scratch scratch;

    int targetChromaW() const { return target.sampling == Sampling::YCbCr422 ? 1 : 0; }

    Result<const AVFrame*> scale(const AVFrame& in, AVPixelFormat format, int width, int height);
    bool makeScalers(const AVFrame& in, AVPixelFormat format, int width, int height, int fields);
    Status prepare(const AVFrame& in, const Fit& fit, Planes& planes);
    Status scaleRgb(const AVFrame& in, const ColourMeaning& meaning, const Fit& fit, Planes& planes);
    void place(const Planes& planes, const Fit& fit, Frame& out) const;
};

PictureConverter::PictureConverter(const PictureTarget& target, Rational pixelAspect) : d(new Private)
{
    d->target = target;
    d->pixelAspect = pixelAspect;
}

PictureConverter::~PictureConverter() = default;

namespace
{
/// Lines that must not be mixed: 2 where the height changes of a picture that is made of fields, be it of the chroma.
int fieldsOf(const AVFrame& in, AVPixelFormat format, int height)
{
    const AVPixFmtDescriptor& from = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    const AVPixFmtDescriptor& to = *av_pix_fmt_desc_get(format);
    const bool changes = in.height != height || from.log2_chroma_h != to.log2_chroma_h;
    const bool halves = height % 2 == 0 && in.height % (2 << from.log2_chroma_h) == 0;
    return in.interlaced_frame != 0 && changes && halves ? 2 : 1;
}

/// Every `fields`-th line of a picture, from line `number` on.
struct Lines {
    std::array<uint8_t*, 4> data{};
    std::array<int, 4> stride{};

    Lines(const AVFrame& frame, int number, int fields)
    {
        for (std::size_t i = 0; i < 4 && frame.data[i] != nullptr; ++i) {
            data[i] = frame.data[i] + std::ptrdiff_t(number) * frame.linesize[i];
            stride[i] = frame.linesize[i] * fields;
        }
    }
};

SwsPtr scalerOf(const AVFrame& in, AVPixelFormat format, int width, int height, const std::array<int, 2>& field)
{
    const AVPixFmtDescriptor& from = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    const AVPixFmtDescriptor& to = *av_pix_fmt_desc_get(format);
    const bool centred = in.chroma_location == AVCHROMA_LOC_CENTER;
    const bool top = in.chroma_location == AVCHROMA_LOC_TOPLEFT;
    const auto [number, fields] = field;
    // The chroma of a field lies a quarter of its lines towards the other field.
    const int between = fields == 1 ? 128 : number == 0 ? 64 : 192;

    const struct {
        const char* name;
        int64_t value;
    } options[] = {{"srcw", in.width},
                   {"srch", in.height / fields},
                   {"src_format", plainFormat(in.format)},
                   {"dstw", width},
                   {"dsth", height / fields},
                   {"dst_format", format},
                   {"sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP},
                   {"src_h_chr_pos", from.log2_chroma_w > 0 ? (centred ? 128 : 0) : -513},
                   {"src_v_chr_pos", from.log2_chroma_h > 0 ? (top ? 0 : between) : -513},
                   {"dst_h_chr_pos", to.log2_chroma_w > 0 ? 0 : -513}};

    SwsPtr scaler(sws_alloc_context());
    for (const auto& option : options)
        av_opt_set_int(scaler.get(), option.name, option.value, 0);
    if (sws_init_context(scaler.get(), nullptr, nullptr) < 0)
        return nullptr;
    const int* table = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(scaler.get(), table, 0, table, 0, 0, 1 << 16, 1 << 16);
    return scaler;
}
} // namespace

bool PictureConverter::Private::makeScalers(const AVFrame& in, AVPixelFormat format, int width, int height, int fields)
{
    for (int number = 0; number < fields; ++number) {
        scalers[std::size_t(number)] = scalerOf(in, format, width, height, {number, fields});
        if (!scalers[std::size_t(number)])
            return false;
    }
    return true;
}

/// Size and chroma sampling only; values keep their meaning and go to the upper bits of the new depth.
Result<const AVFrame*> PictureConverter::Private::scale(const AVFrame& in, AVPixelFormat format, int width, int height)
{
    const int fields = fieldsOf(in, format, height);
    const std::array<int, 8> key{in.format, in.width, in.height, format, width, height, in.chroma_location, fields};
    if (!scalers[0] || key != scalerKey) {
        if (!makeScalers(in, format, width, height, fields))
            return Error{{},
                         {},
                         {},
                         QStringLiteral("the pixel format %1 cannot be converted")
                             .arg(QLatin1String(av_get_pix_fmt_name(AVPixelFormat(in.format)))),
                         QStringLiteral("convert the media to another codec")};
        scalerKey = key;
        av_frame_unref(scaled.get());
        scaled->format = format;
        scaled->width = width;
        scaled->height = height;
        av_frame_get_buffer(scaled.get(), 0);
    }
    for (int number = 0; number < fields; ++number) {
        const Lines from(in, number, fields);
        const Lines to(*scaled, number, fields);
        sws_scale(scalers[std::size_t(number)].get(), from.data.data(), from.stride.data(), 0, in.height / fields,
                  to.data.data(), to.stride.data());
    }
    return scaled.get();
}

/// Fills `planes` with the picture at the fitted size and in the target's colours, with the target's chroma or 4:4:4.
Status PictureConverter::Private::prepare(const AVFrame& in, const Fit& fit, Planes& planes)
{
    const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(AVPixelFormat(in.format));
    const auto [meaning, known] = colourMeaning(in);
    if (!known)
        return Error{{},
                     {},
                     {},
                     QStringLiteral("the colour matrix %1 cannot be converted")
                         .arg(QLatin1String(av_color_space_name(in.colorspace))),
                     QStringLiteral("convert the media to BT.709")};
    const bool sameSize = in.width == fit.width && in.height == fit.height;
    const bool plain = isReadable(in.format);
    if (meaning.rgb && !plain) {
        const Result<const AVFrame*> rgb = scale(in, AV_PIX_FMT_GBRP16LE, fit.width, fit.height);
        if (!rgb)
            return rgb.error();
        planes = viewOf(**rgb);
        convertColours(planes, meaning, 16);
        return {};
    }
    const bool whole = desc.log2_chroma_w == 0 && desc.log2_chroma_h == 0;
    const bool chromaFits =
        whole || (meaning.hasTargetMatrix() && desc.log2_chroma_w == targetChromaW() && desc.log2_chroma_h == 0);
    if (plain && sameSize && chromaFits) {
        const bool own = isPlanarWords(desc) && meaning.isTarget();
        planes = own ? viewOf(in) : unpacked(in, scratch);
        if (!meaning.isTarget())
            convertColours(planes, meaning, planes.depth);
        return {};
    }
    if (meaning.rgb)
        return scaleRgb(in, meaning, fit, planes);
    const AVPixelFormat format = meaning.hasTargetMatrix()
                                     ? planarFormat(targetChromaW(), meaning.isTarget() ? target.bitDepth : 16)
                                     : AV_PIX_FMT_YUV444P16LE;
    const Result<const AVFrame*> fitted = scale(in, format, fit.width, fit.height);
    if (!fitted)
        return fitted.error();
    planes = viewOf(**fitted);
    if (!meaning.isTarget())
        convertColours(planes, meaning, desc.comp[0].depth);
    return {};
}

/// Colours first: the scaler would take RGB through 8-bit chroma of its own.
Status PictureConverter::Private::scaleRgb(const AVFrame& in, const ColourMeaning& meaning, const Fit& fit,
                                           Planes& planes)
{
    Planes whole = unpacked(in, scratch);
    convertColours(whole, meaning, whole.depth);
    AVFrame view{};
    view.format = AV_PIX_FMT_YUV444P16LE;
    view.width = whole.width;
    view.height = whole.height;
    for (int plane = 0; plane < 3; ++plane) {
        view.data[plane] = reinterpret_cast<uint8_t*>(whole.row(plane, 0));
        view.linesize[plane] = int(whole.stride[std::size_t(plane)]) * 2;
    }
    const Result<const AVFrame*> fitted =
        scale(view, planarFormat(targetChromaW(), target.bitDepth), fit.width, fit.height);
    if (!fitted)
        return fitted.error();
    planes = viewOf(**fitted);
    return {};
}

void blacken(const PictureTarget& target, Frame& out)
{
    out.format = target;
    const bool halved = target.sampling == Sampling::YCbCr422;
    const std::size_t area = std::size_t(target.width) * std::size_t(target.height);
    const std::size_t chromaWidth = std::size_t(halved ? (target.width + 1) / 2 : target.width);
    const int up = target.bitDepth - 8;
    out.planes[0].assign(area, std::uint16_t(16 << up));
    out.planes[1].assign(chromaWidth * std::size_t(target.height), std::uint16_t(128 << up));
    out.planes[2] = out.planes[1];
}

void PictureConverter::Private::place(const Planes& planes, const Fit& fit, Frame& out) const
{
    std::vector<std::uint16_t> half;
    const bool halves = targetChromaW() == 1 && planes.log2ChromaW == 0;
    for (int plane = 0; plane < 3; ++plane) {
        const bool chroma = plane > 0 && targetChromaW() == 1;
        const int stride = chroma ? (target.width + 1) / 2 : target.width;
        const int width = chroma ? (fit.width + 1) / 2 : fit.width;
        std::uint16_t* line =
            out.planes[std::size_t(plane)].data() + std::ptrdiff_t(fit.y) * stride + (chroma ? fit.x / 2 : fit.x);
        for (int y = 0; y < fit.height; ++y, line += stride) {
            const std::uint16_t* source = planes.row(plane, y);
            if (chroma && halves) {
                halveRow(source, fit.width, half);
                source = half.data();
            }
            copyRow(source, line, width, planes.depth, target.bitDepth);
        }
    }
}

Status PictureConverter::convert(const AVFrame& in, Frame& out)
{
    const Fit fit = fitInto(d->target, in.width, in.height, d->pixelAspect);
    Planes planes;
    if (const Status status = d->prepare(in, fit, planes); !status)
        return status;
    blacken(d->target, out);
    d->place(planes, fit, out);
    return {};
}

} // namespace desk::media

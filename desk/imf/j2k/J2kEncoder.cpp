#include "desk/imf/j2k/J2kEncoder.h"

#include "desk/imf/j2k/Codestream.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace desk::imf
{

namespace
{

struct Delete {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }

    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};

struct DeleteStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};

using Codec = std::unique_ptr<opj_codec_t, Delete>;
using Image = std::unique_ptr<opj_image_t, Delete>;
using Stream = std::unique_ptr<opj_stream_t, DeleteStream>;

/// A seekable buffer behind the library's stream callbacks.
struct Memory {
    QByteArray bytes;
    int at = 0;
};

OPJ_SIZE_T writeMemory(void* data, OPJ_SIZE_T count, void* user)
{
    auto* memory = static_cast<Memory*>(user);
    const int end = memory->at + int(count);
    if (end > memory->bytes.size())
        memory->bytes.resize(end);
    std::memcpy(memory->bytes.data() + memory->at, data, count);
    memory->at = end;
    return count;
}

OPJ_SIZE_T readMemory(void* data, OPJ_SIZE_T count, void* user)
{
    auto* memory = static_cast<Memory*>(user);
    const int left = memory->bytes.size() - memory->at;
    if (left <= 0)
        return OPJ_SIZE_T(-1);
    const int taken = int(std::min<OPJ_SIZE_T>(count, OPJ_SIZE_T(left)));
    std::memcpy(data, memory->bytes.constData() + memory->at, std::size_t(taken));
    memory->at += taken;
    return OPJ_SIZE_T(taken);
}

OPJ_BOOL seekMemory(OPJ_OFF_T offset, void* user)
{
    auto* memory = static_cast<Memory*>(user);
    if (offset < 0 || offset > (1 << 30))
        return OPJ_FALSE;
    memory->at = int(offset);
    return OPJ_TRUE;
}

OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* user)
{
    return seekMemory(static_cast<Memory*>(user)->at + count, user) == OPJ_TRUE ? count : -1;
}

Stream memoryStream(Memory& memory, OPJ_BOOL input)
{
    Stream stream(opj_stream_create(1 << 20, input));
    opj_stream_set_user_data(stream.get(), &memory, nullptr);
    opj_stream_set_user_data_length(stream.get(), OPJ_UINT64(memory.bytes.size()));
    opj_stream_set_read_function(stream.get(), readMemory);
    opj_stream_set_write_function(stream.get(), writeMemory);
    opj_stream_set_seek_function(stream.get(), seekMemory);
    opj_stream_set_skip_function(stream.get(), skipMemory);
    return stream;
}

/// What the library said last: the reason for the user when a call fails.
void keepMessage(const char* text, void* user)
{
    *static_cast<QString*>(user) = QString::fromUtf8(text).trimmed();
}

/// Every frame with a size limit warns that the limit was applied, so warnings only count when a call fails.
void listen(opj_codec_t* codec, QString& message)
{
    opj_set_info_handler(
        codec, [](const char*, void*) {}, nullptr);
    opj_set_warning_handler(codec, keepMessage, &message);
    opj_set_error_handler(codec, keepMessage, &message);
}

Error failure(const QString& what, const QString& next)
{
    return {{}, QStringLiteral("JPEG 2000 frame"), {}, what, next};
}

Error libraryFailure(const QString& what, const QString& message)
{
    return failure(message.isEmpty() ? what : QStringLiteral("%1 (%2)").arg(what, message),
                   QStringLiteral("choose another picture format or bit rate"));
}

int planeWidth(const PictureFormat& format, int plane)
{
    return plane > 0 && format.sampling == Sampling::YCbCr422 ? (format.width + 1) / 2 : format.width;
}

Status checkPlanes(const Picture& picture, const PictureFormat& format)
{
    for (int plane = 0; plane < 3; ++plane) {
        const auto wanted = std::size_t(planeWidth(format, plane)) * std::size_t(format.height);
        if (picture.planes[std::size_t(plane)].size() != wanted)
            return failure(QStringLiteral("plane %1 has %2 samples instead of %3")
                               .arg(plane)
                               .arg(picture.planes[std::size_t(plane)].size())
                               .arg(wanted),
                           QStringLiteral("give every frame the size of its track"));
    }
    return {};
}

Image toImage(const Picture& picture, const PictureFormat& format)
{
    opj_image_cmptparm_t components[3];
    std::memset(components, 0, sizeof components);
    for (int plane = 0; plane < 3; ++plane) {
        opj_image_cmptparm_t& component = components[plane];
        component.dx = planeWidth(format, plane) == format.width ? 1 : 2;
        component.dy = 1;
        component.w = OPJ_UINT32(planeWidth(format, plane));
        component.h = OPJ_UINT32(format.height);
        component.prec = OPJ_UINT32(format.bitDepth);
    }
    const bool rgb = format.sampling == Sampling::Rgb444;
    Image image(opj_image_create(3, components, rgb ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_SYCC));
    if (!image)
        return image;
    image->x1 = OPJ_UINT32(format.width);
    image->y1 = OPJ_UINT32(format.height);
    for (std::size_t plane = 0; plane < 3; ++plane)
        std::copy(picture.planes[plane].begin(), picture.planes[plane].end(), image->comps[plane].data);
    return image;
}

opj_cparameters_t parametersFor(const PictureFormat& format, const J2kProfile& profile, qint64 cap)
{
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.rsiz = profile.rsiz;
    parameters.irreversible = profile.mode == J2kSettings::Mode::Lossy ? 1 : 0;
    parameters.tcp_mct = format.sampling == Sampling::Rgb444 ? 1 : 0;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    // A layer rate would count a 4:2:2 picture as 4:4:4; the size limits alone are exact. With the IMF profiles'
    // tile-part a component the library only budgets the first component unless the component limit is set too.
    parameters.tcp_rates[0] = 0;
    parameters.max_cs_size = int(cap);
    parameters.max_comp_size = int(cap);
    return parameters;
}

Result<QByteArray> encodeWithin(const Picture& picture, const PictureFormat& format, const J2kProfile& profile,
                                qint64 cap)
{
    QString message;
    Codec codec(opj_create_compress(OPJ_CODEC_J2K));
    listen(codec.get(), message);
    opj_cparameters_t parameters = parametersFor(format, profile, cap);
    Image image = toImage(picture, format);
    if (!image || opj_setup_encoder(codec.get(), &parameters, image.get()) == OPJ_FALSE)
        return libraryFailure(QStringLiteral("the encoder refuses the picture format"), message);
    Memory memory;
    const Stream stream = memoryStream(memory, OPJ_FALSE);
    if (opj_start_compress(codec.get(), image.get(), stream.get()) == OPJ_FALSE ||
        opj_encode(codec.get(), stream.get()) == OPJ_FALSE || opj_end_compress(codec.get(), stream.get()) == OPJ_FALSE)
        return libraryFailure(QStringLiteral("the picture cannot be encoded"), message);
    // A profile the library does not believe in only earns a warning and a codestream without profile.
    const auto header = parseCodestreamHeader(memory.bytes);
    if (!header || header->rsiz != profile.rsiz)
        return libraryFailure(QStringLiteral("the encoder does not keep to the profile"), message);
    return memory.bytes;
}

Status checkDecodable(const QByteArray& codestream)
{
    const auto header = parseCodestreamHeader(codestream);
    if (!header)
        return header.error();
    const bool sane = header->xsiz <= 16384 && header->ysiz <= 16384 && header->components.size() == 3;
    if (!sane)
        return failure(QStringLiteral("its size or its number of components is not possible"),
                       QStringLiteral("copy the file again"));
    if (!codestream.endsWith("\xff\xd9"))
        return failure(QStringLiteral("the codestream is cut"), QStringLiteral("copy the file again"));
    return {};
}

Result<Picture> toPicture(const opj_image_t& image)
{
    Picture picture;
    for (OPJ_UINT32 plane = 0; plane < 3; ++plane) {
        const opj_image_comp_t& component = image.comps[plane];
        if (component.data == nullptr || component.prec > 16 || component.sgnd != 0)
            return failure(QStringLiteral("a component is missing or has more than 16 bits"),
                           QStringLiteral("copy the file again"));
        picture.planes[plane].assign(component.data, component.data + std::size_t(component.w) * component.h);
    }
    return picture;
}

} // namespace

Result<QByteArray> encodeFrame(const Picture& picture, const PictureFormat& format, const J2kProfile& profile)
{
    if (const Status status = checkPlanes(picture, format); !status)
        return status.error();
    const qint64 limit = profile.maxFrameBytes;
    if (limit == 0)
        return encodeWithin(picture, format, profile, 0);
    // The library may overshoot its limit by a few bytes: ask for a little less, and once more for less still.
    for (const qint64 margin : {qint64(64), limit / 100 + 256, limit / 10 + 1024}) {
        auto codestream = encodeWithin(picture, format, profile, std::max<qint64>(limit - margin, 512));
        if (!codestream || codestream->size() <= limit)
            return codestream;
    }
    return failure(QStringLiteral("the picture does not fit into %1 bytes").arg(limit),
                   QStringLiteral("choose a higher bit rate"));
}

Result<Picture> decodeFrame(const QByteArray& codestream, int reduce)
{
    if (const Status status = checkDecodable(codestream); !status)
        return status.error();
    QString message;
    Codec codec(opj_create_decompress(OPJ_CODEC_J2K));
    listen(codec.get(), message);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.cp_reduce = OPJ_UINT32(std::clamp(reduce, 0, 5));
    Memory memory{codestream, 0};
    const Stream stream = memoryStream(memory, OPJ_TRUE);
    opj_image_t* raw = nullptr;
    const bool opened = opj_setup_decoder(codec.get(), &parameters) == OPJ_TRUE &&
                        opj_read_header(stream.get(), codec.get(), &raw) == OPJ_TRUE;
    const Image image(raw);
    if (!opened || opj_decode(codec.get(), stream.get(), image.get()) == OPJ_FALSE || image->numcomps != 3)
        return libraryFailure(QStringLiteral("the codestream is damaged"), message);
    return toPicture(*image);
}

} // namespace desk::imf

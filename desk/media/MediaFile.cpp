#include "desk/media/MediaFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <mutex>

namespace desk::media
{

namespace
{

const QString chooseMedia = QStringLiteral("choose a media file");

/// Whether a format names other files or addresses, or takes the file's name for a pattern.
bool isPlaylist(const QByteArray& format)
{
    static const QSet<QByteArray> names{"applehttp", "concat", "dash", "hls",   "imf",  "image2", "mpsub",
                                        "rtp",       "rtsp",   "sap",  "sdp",   "tty",  "vobsub", "webm_dash_manifest",
                                        "alias_pix", "sami",   "hdl",  "lavfi", "mmst", "rtmp",   "ffmetadata"};
    return names.contains(format);
}

void quietLibraries()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

QByteArray fileUrl(const QString& path)
{
    return "file:" + QDir::toNativeSeparators(path).toUtf8();
}

Error notMedia(const QString& path)
{
    return {path, {}, {}, QStringLiteral("the file is no media that can be read"), chooseMedia};
}

struct Probed {
    const AVInputFormat* format = nullptr;
    /// The bytes say so, not only the name.
    bool certain = false;
};

/// What the file is by its first bytes, or else by its name.
Result<Probed> probedFormat(const QString& path)
{
    const QByteArray url = fileUrl(path);
    Probed probed;
    for (const char* name : {"", url.constData()}) {
        AVIOContext* io = nullptr;
        if (const int code = avio_open2(&io, url.constData(), AVIO_FLAG_READ, nullptr, nullptr); code < 0)
            return Error{path, {}, {}, ffText(code), QStringLiteral("check that the file can be read")};
        av_probe_input_buffer2(io, &probed.format, name, nullptr, 0, 0);
        avio_closep(&io);
        probed.certain = *name == '\0';
        if (probed.format != nullptr)
            return probed;
    }
    return notMedia(path);
}

Status refusePlaylist(const QString& path, const AVInputFormat& format)
{
    const QList<QByteArray> names = QByteArray(format.name).split(',');
    const bool refused = std::any_of(names.begin(), names.end(), isPlaylist);
    if (!refused && (format.flags & AVFMT_NOFILE) == 0)
        return {};
    return Error{path,
                 {},
                 {},
                 QStringLiteral("the file is a playlist (%1) that names other files").arg(QLatin1String(format.name)),
                 QStringLiteral("choose the media files themselves")};
}

/// An index at the end of the file is lost when the end is cut off.
Error openFailure(const QString& path, const Probed& probed, int code)
{
    if (code != AVERROR_INVALIDDATA)
        return {path, {}, {}, ffText(code), QStringLiteral("check that the file can be read")};
    if (!probed.certain || !QByteArray(probed.format->name).startsWith("mov"))
        return notMedia(path);
    return {path,
            {},
            {},
            QStringLiteral("the file has no index, so it is cut or was never finished"),
            QStringLiteral("copy or render the file again")};
}

void tell(AVFormatContext& file, const KnownPicture& known)
{
    if (known.stream < 0 || unsigned(known.stream) >= file.nb_streams)
        return;
    AVCodecParameters& par = *file.streams[known.stream]->codecpar;
    if (par.codec_id == known.codec && par.format == AV_PIX_FMT_NONE)
        par.format = known.pixelFormat;
}

} // namespace

Result<QString> checkedMediaPath(const QString& path)
{
    static const QRegularExpression address(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+://"));
    const QFileInfo file(path);
    const auto refuse = [&](const QString& what, const QString& next = chooseMedia) {
        return Error{path, {}, {}, what, next};
    };
    if (address.match(path).hasMatch() && !file.exists())
        return refuse(QStringLiteral("only files of this machine can be opened"),
                      QStringLiteral("copy the media to this machine and choose the copy"));
    if (!file.exists())
        return refuse(QStringLiteral("there is no such file"));
    if (file.isDir())
        return refuse(QStringLiteral("this is a folder"));
    if (!file.isFile())
        return refuse(QStringLiteral("this is a device and not a file"));
    if (!file.isReadable())
        return refuse(QStringLiteral("the file may not be read"), QStringLiteral("change its permissions"));
    if (file.size() == 0)
        return refuse(QStringLiteral("the file is empty"), QStringLiteral("copy or render the file again"));
    return file.canonicalFilePath();
}

bool isIntraOnly(AVCodecID codec)
{
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
}

KnownPicture knownPicture(const AVStream& stream)
{
    const AVCodecParameters& par = *stream.codecpar;
    return isIntraOnly(par.codec_id) ? KnownPicture{stream.index, par.codec_id, par.format} : KnownPicture();
}

Result<FormatPtr> openMediaFile(const QString& path, const KnownPicture& known)
{
    quietLibraries();
    const Result<Probed> probed = probedFormat(path);
    if (!probed)
        return probed.error();
    if (const Status status = refusePlaylist(path, *probed->format); !status)
        return status.error();

    AVFormatContext* context = nullptr;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    const int code = avformat_open_input(&context, fileUrl(path).constData(), probed->format, &options);
    av_dict_free(&options);
    if (code < 0)
        return openFailure(path, *probed, code);
    FormatPtr file(context);
    tell(*context, known);
    if (const int found = avformat_find_stream_info(context, nullptr); found < 0)
        return openFailure(path, *probed, found);
    return file;
}

Result<CodecPtr> openDecoder(const AVFormatContext& file, int stream, DecoderThreads threads)
{
    const AVStream& st = *file.streams[stream];
    const QString name = QString::fromLatin1(avcodec_get_name(st.codecpar->codec_id));
    const auto failed = [&](const QString& what) {
        return Error{QString::fromUtf8(file.url).mid(5),
                     QStringLiteral("stream %1").arg(stream),
                     {},
                     what,
                     QStringLiteral("convert the media to another codec")};
    };
    const AVCodec* codec = avcodec_find_decoder(st.codecpar->codec_id);
    if (codec == nullptr)
        return failed(QStringLiteral("no decoder for %1 is installed").arg(name));
    CodecPtr context(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(context.get(), st.codecpar);
    context->pkt_timebase = st.time_base;
    context->thread_count = threads.threads;
    context->thread_type = threads.type;
    if (const int code = avcodec_open2(context.get(), codec, nullptr); code < 0)
        return failed(QStringLiteral("the %1 decoder does not take the stream (%2)").arg(name, ffText(code)));
    return context;
}

void keepOnlyStream(AVFormatContext& file, int stream)
{
    for (unsigned i = 0; i < file.nb_streams; ++i)
        file.streams[i]->discard = int(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

} // namespace desk::media

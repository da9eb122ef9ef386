#include "desk/media/Sequence.h"

#include "desk/media/MediaFile.h"
#include "desk/media/PictureDecoder.h"
#include "desk/media/PictureIndex.h"
#include "desk/media/Timeline.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSet>
#include <QUuid>

#include <cmath>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace desk::media
{

namespace
{

QString text(const AVDictionary* tags, const char* key)
{
    const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
    return entry != nullptr ? QString::fromUtf8(entry->value) : QString();
}

/// FFmpeg's name of a colour property; empty for "unknown" and the like.
QString named(const char* name)
{
    const QString value = QString::fromLatin1(name);
    return value == QLatin1String("unknown") || value == QLatin1String("reserved") ? QString() : value;
}

QString samplingName(const AVPixFmtDescriptor& desc)
{
    if ((desc.flags & AV_PIX_FMT_FLAG_RGB) != 0 || (desc.flags & AV_PIX_FMT_FLAG_PAL) != 0)
        return QStringLiteral("RGB");
    if (desc.nb_components < 3)
        return QStringLiteral("Grey");
    static const QString names[3][3] = {{QStringLiteral("4:4:4"), QStringLiteral("4:4:0"), QString()},
                                        {QStringLiteral("4:2:2"), QStringLiteral("4:2:0"), QString()},
                                        {QStringLiteral("4:1:1"), QString(), QStringLiteral("4:1:0")}};
    return desc.log2_chroma_w < 3 && desc.log2_chroma_h < 3 ? names[desc.log2_chroma_w][desc.log2_chroma_h] : QString();
}

int rotationOf(const AVStream& stream)
{
    const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr)
        return 0;
    const double clockwise = -av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
    return std::isnan(clockwise) ? 0 : (int(std::lround(clockwise / 90.0)) * 90 % 360 + 360) % 360;
}

bool isInterlaced(AVFieldOrder order)
{
    return order != AV_FIELD_PROGRESSIVE && order != AV_FIELD_UNKNOWN;
}

PictureTrackInfo describePicture(AVFormatContext& file, int number)
{
    AVStream& stream = *file.streams[number];
    const AVCodecParameters& par = *stream.codecpar;
    PictureTrackInfo info;
    info.stream = number;
    info.width = par.width;
    info.height = par.height;
    info.codec = QString::fromLatin1(avcodec_get_name(par.codec_id));
    if (const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(AVPixelFormat(par.format))) {
        info.bitDepth = desc->comp[0].depth;
        info.sampling = samplingName(*desc);
    }
    info.primaries = named(av_color_primaries_name(par.color_primaries));
    info.transfer = named(av_color_transfer_name(par.color_trc));
    info.matrix = named(av_color_space_name(par.color_space));
    info.range = named(av_color_range_name(par.color_range));
    const AVRational aspect = av_guess_sample_aspect_ratio(&file, &stream, nullptr);
    if (aspect.num > 0 && aspect.den > 0)
        info.pixelAspect = Rational(aspect.num, aspect.den);
    info.interlaced = isInterlaced(par.field_order);
    info.rotation = rotationOf(stream);
    return info;
}

QSet<int> channelsOf(const AVChannelLayout& layout)
{
    QSet<int> ids;
    for (int channel = 0; channel < layout.nb_channels; ++channel)
        ids += av_channel_layout_channel_from_index(&layout, unsigned(channel));
    return ids;
}

/// A surround is often kept in streams of one channel each: together they have the places of one layout.
QSet<int> singleChannels(const AVFormatContext& file)
{
    QSet<int> ids;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVCodecParameters& par = *file.streams[i]->codecpar;
        if (par.codec_type == AVMEDIA_TYPE_AUDIO && par.ch_layout.nb_channels == 1)
            ids += channelsOf(par.ch_layout);
    }
    return ids;
}

bool holdsSurround(const QSet<int>& ids)
{
    const bool isWide = ids.contains(AV_CHAN_FRONT_LEFT) && ids.contains(AV_CHAN_FRONT_RIGHT);
    return isWide &&
           (ids.contains(AV_CHAN_LOW_FREQUENCY) || ids.contains(AV_CHAN_BACK_LEFT) || ids.contains(AV_CHAN_SIDE_LEFT));
}

/// The label of a channel in the usual post-production spelling. @param together the channels of its layout.
QString channelLabel(const AVChannelLayout& layout, int channel, const QSet<int>& together)
{
    static const QHash<int, QString> labels{{AV_CHAN_FRONT_LEFT, QStringLiteral("L")},
                                            {AV_CHAN_FRONT_RIGHT, QStringLiteral("R")},
                                            {AV_CHAN_FRONT_CENTER, QStringLiteral("C")},
                                            {AV_CHAN_LOW_FREQUENCY, QStringLiteral("LFE")},
                                            {AV_CHAN_SIDE_LEFT, QStringLiteral("Ls")},
                                            {AV_CHAN_SIDE_RIGHT, QStringLiteral("Rs")},
                                            {AV_CHAN_BACK_LEFT, QStringLiteral("Lrs")},
                                            {AV_CHAN_BACK_RIGHT, QStringLiteral("Rrs")},
                                            {AV_CHAN_BACK_CENTER, QStringLiteral("Cs")},
                                            {AV_CHAN_FRONT_LEFT_OF_CENTER, QStringLiteral("Lc")},
                                            {AV_CHAN_FRONT_RIGHT_OF_CENTER, QStringLiteral("Rc")},
                                            {AV_CHAN_STEREO_LEFT, QStringLiteral("Lt")},
                                            {AV_CHAN_STEREO_RIGHT, QStringLiteral("Rt")}};
    const int id = av_channel_layout_channel_from_index(&layout, unsigned(channel));
    if (layout.nb_channels == 1 && ((id == AV_CHAN_FRONT_CENTER && !holdsSurround(together)) || id < 0))
        return QStringLiteral("Mono");
    // The five-channel layouts call their surrounds "back"; beside true side channels they are the rear ones.
    const bool hasSides = together.contains(AV_CHAN_SIDE_LEFT);
    if (!hasSides && id == AV_CHAN_BACK_LEFT)
        return QStringLiteral("Ls");
    if (!hasSides && id == AV_CHAN_BACK_RIGHT)
        return QStringLiteral("Rs");
    return labels.value(id, QStringLiteral("Ch %1").arg(channel + 1));
}

void appendAudio(const AVStream& stream, const QSet<int>& single, QVector<AudioTrackInfo>& tracks)
{
    const AVCodecParameters& par = *stream.codecpar;
    const QSet<int> together = par.ch_layout.nb_channels == 1 ? single : channelsOf(par.ch_layout);
    for (int channel = 0; channel < par.ch_layout.nb_channels; ++channel) {
        AudioTrackInfo info;
        info.name = QStringLiteral("A%1").arg(tracks.size() + 1);
        info.label = channelLabel(par.ch_layout, channel, together);
        info.title = text(stream.metadata, "title");
        info.language = text(stream.metadata, "language");
        info.language = info.language == QLatin1String("und") ? QString() : info.language;
        info.codec = QString::fromLatin1(avcodec_get_name(par.codec_id));
        info.stream = stream.index;
        info.channel = channel;
        info.sampleRate = par.sample_rate;
        tracks.append(info);
    }
}

/// The end of a stream in seconds of the file's clock, as far as headers tell.
double endOf(const AVFormatContext& file, const AVStream& stream)
{
    const qint64 start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    if (stream.duration > 0)
        return double(start + stream.duration) * av_q2d(stream.time_base);
    const qint64 fileStart = file.start_time == AV_NOPTS_VALUE ? 0 : file.start_time;
    return file.duration > 0 ? double(fileStart + file.duration) / AV_TIME_BASE : 0.0;
}

qint64 soundEnd(const AVFormatContext& file, const PictureIndex* index)
{
    const double zero = index != nullptr ? double(index->first) * av_q2d(index->timeBase) : 0.0;
    double end = 0;
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        if (file.streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            end = std::max(end, endOf(file, *file.streams[i]) - zero);
    }
    return qint64(std::llround(end * 48000));
}

/// The stream's own time code, that of a time-code track, or that of the whole file.
QString startTimecode(const AVFormatContext& file)
{
    QString code = text(file.metadata, "timecode");
    for (unsigned i = 0; i < file.nb_streams && code.isEmpty(); ++i)
        code = text(file.streams[i]->metadata, "timecode");
    return code;
}

/// The first stream of moving pictures, or -1. A cover picture of a sound file is none.
int pictureStream(const AVFormatContext& file)
{
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVStream& stream = *file.streams[i];
        const bool cover = (stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS)) != 0;
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !cover)
            return int(i);
    }
    return -1;
}

/// Sound that a MOV or MP4 index places beyond the end of the file is lost.
Status checkSoundBytes(const QString& path, AVFormatContext& file)
{
    const qint64 size = avio_size(file.pb);
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        AVStream& stream = *file.streams[i];
        const int count = avformat_index_get_entries_count(&stream);
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_AUDIO || count == 0 ||
            !QByteArray(file.iformat->name).startsWith("mov"))
            continue;
        const AVIndexEntry& last = *avformat_index_get_entry(&stream, count - 1);
        if (last.pos + last.size > size)
            return Error{path,
                         QStringLiteral("sound, stream %1").arg(i),
                         {},
                         QStringLiteral("the file is cut"),
                         QStringLiteral("copy or render the file again")};
    }
    return {};
}

QString identifier(const QString& canonicalPath)
{
    static const QUuid space(QStringLiteral("{0f4f2a86-6f0e-4d0b-9d3b-7a4f6c0d5e11}"));
    return QUuid::createUuidV5(space, canonicalPath).toString(QUuid::WithoutBraces);
}

} // namespace

Sequence describeFile(const QString& path)
{
    const QFileInfo info(path);
    Sequence sequence;
    sequence.id = identifier(path);
    sequence.name = info.completeBaseName();
    sequence.path = path;
    sequence.bytes = info.size();
    sequence.modified = info.lastModified().toMSecsSinceEpoch();
    return sequence;
}

namespace
{

Result<PictureIndex::Shape> shapeOfFirstFrame(const Sequence& sequence)
{
    if (sequence.index->shape)
        return *sequence.index->shape;
    PictureDecoder decoder(sequence.path, *sequence.index, {FF_THREAD_SLICE, 1});
    if (const Status status = decoder.open(); !status)
        return status.error();
    const Result<const AVFrame*> frame = decoder.frame(0);
    if (!frame)
        return frame.error();
    return shapeOf(**frame);
}

/// Some files leave it to the pictures to say that they are made of fields.
Status learnFromFirstFrame(Sequence& sequence)
{
    const Result<PictureIndex::Shape> shape = shapeOfFirstFrame(sequence);
    if (!shape)
        return shape.error();
    PictureTrackInfo& info = *sequence.picture;
    info.interlaced = info.interlaced || shape->interlaced;
    info.width = shape->width;
    info.height = shape->height;
    return {};
}

Status addPicture(AVFormatContext& file, int stream, Sequence& sequence)
{
    sequence.picture = describePicture(file, stream);
    Result<PictureIndex> index = indexPicture(sequence.path, file, stream);
    if (!index)
        return index.error();
    sequence.frameRate = index->rate;
    sequence.frames = index->frames;
    sequence.index = std::make_shared<const PictureIndex>(*index);
    return learnFromFirstFrame(sequence);
}

} // namespace

bool PictureTrackInfo::isHighDynamicRange() const
{
    return transfer == QLatin1String("smpte2084") || transfer == QLatin1String("arib-std-b67");
}

bool isTimelineFile(const QString& path)
{
    return path.endsWith(QLatin1String(".otio"), Qt::CaseInsensitive);
}

Result<Sequence> openSequence(const QString& path)
{
    const Result<QString> checked = checkedMediaPath(path);
    if (!checked)
        return checked.error();
    if (isTimelineFile(*checked))
        return openTimeline(*checked);
    Result<FormatPtr> file = openMediaFile(*checked);
    if (!file)
        return file.error();
    Sequence sequence = describeFile(*checked);
    const QSet<int> single = singleChannels(**file);
    for (unsigned i = 0; i < (*file)->nb_streams; ++i) {
        if ((*file)->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            appendAudio(*(*file)->streams[i], single, sequence.audio);
    }
    const int picture = pictureStream(**file);
    if (picture < 0 && sequence.audio.isEmpty())
        return Error{*checked,
                     {},
                     {},
                     QStringLiteral("the file has neither picture nor sound"),
                     QStringLiteral("choose a media file")};
    sequence.startTimecode = startTimecode(**file);
    if (picture >= 0) {
        if (const Status status = addPicture(**file, picture, sequence); !status)
            return status.error();
    }
    if (const Status status = checkSoundBytes(*checked, **file); !status)
        return status.error();
    sequence.soundSamples = soundEnd(**file, sequence.index.get());
    return sequence;
}

} // namespace desk::media

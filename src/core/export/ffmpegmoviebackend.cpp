#include "export/moviewriter.h"

#include <QIODevice>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace {

// The texts a movie reports, by what failed.
struct MovieTexts
{
    QString create;  // the file cannot be created or finished
    QString muxer;   // the container cannot be set up
    QString stream;  // the video stream cannot be added
    QString encoder; // the encoder cannot be opened
    QString header;  // the stream's header cannot be written
    QString memory;  // a frame cannot be allocated
    QString write;   // a frame cannot be encoded or written
};

const MovieTexts &movieTexts()
{
    static const MovieTexts texts{QStringLiteral("Unable to Create the Movie File"),
                                  QStringLiteral("Unable to Create the Movie File"),
                                  QStringLiteral("Unable to Create Video Stream in the Movie File"),
                                  QStringLiteral("Unable to Create Compressed Stream: Check your CODEC options"),
                                  QStringLiteral("Unable to Set Video Stream Format"),
                                  QStringLiteral("Unable to Allocate Memory on Heap"),
                                  QStringLiteral("Unable to Write Video Stream to the output Movie File")};
    return texts;
}

const MovieTexts &windowsMediaTexts()
{
    static const MovieTexts texts{QStringLiteral("Unable to Set Output Filename"),
                                  QStringLiteral("Unable to Create Media Writer Object"),
                                  QStringLiteral("Profile Does not Accept Video input"),
                                  QStringLiteral("Unable to Set Media Type"),
                                  QStringLiteral("Unable to Initialize Writing"),
                                  QStringLiteral("Unable to Allocate Memory"),
                                  QStringLiteral("Unable to Write Frame")};
    return texts;
}

struct MovieKind
{
    const char *muxer;
    const char *encoder;
    const MovieTexts &texts;
};

int writePacket(void *opaque, uint8_t *bytes, int length)
{
    auto *device = static_cast<QIODevice *>(opaque);
    return device->write(reinterpret_cast<const char *>(bytes), length) == length ? length : AVERROR(EIO);
}

int64_t seekDevice(void *opaque, int64_t offset, int whence)
{
    auto *device = static_cast<QIODevice *>(opaque);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return device->size();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += device->pos();
        break;
    case SEEK_END:
        offset += device->size();
        break;
    default:
        return AVERROR(EINVAL);
    }
    return device->seek(offset) ? offset : AVERROR(EIO);
}

// One video stream through libavformat, written through the writer's device so that the movie
// lands in the temporary file that close() commits. Frames are converted to yuv420p, whose
// chroma halves need an even size: an odd size grows by the picture's last column or row.
class FfmpegMovieBackend final : public MovieBackend
{
public:
    explicit FfmpegMovieBackend(const MovieKind &kind) : m_kind(kind)
    {
        // The encoders report statistics and their own reasons on stderr; the user gets the
        // writer's text instead. CHROMAXIS_LIBRARY_MESSAGES=1 lets them through for debugging.
        if (qEnvironmentVariableIntValue("CHROMAXIS_LIBRARY_MESSAGES") != 1)
            av_log_set_level(AV_LOG_FATAL);
    }

    ~FfmpegMovieBackend() override
    {
        sws_freeContext(m_scale);
        av_frame_free(&m_frame);
        av_packet_free(&m_packet);
        avcodec_free_context(&m_codec);
        if (m_format)
            avformat_free_context(m_format);
        if (m_io) {
            av_freep(&m_io->buffer);
            avio_context_free(&m_io);
        }
    }

    bool open(QIODevice &device, int framesPerSecond, QSize size, const Palette<uint> &, QString &error) override
    {
        const MovieTexts &texts = m_kind.texts;
        m_size = size;
        const int width = (size.width() + 1) & ~1;
        const int height = (size.height() + 1) & ~1;

        if (avformat_alloc_output_context2(&m_format, nullptr, m_kind.muxer, nullptr) < 0 || !m_format) {
            error = texts.muxer;
            return false;
        }
        const int bufferSize = 1 << 16;
        auto *buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
        m_io = buffer ? avio_alloc_context(buffer, bufferSize, 1, &device, nullptr, writePacket, seekDevice) : nullptr;
        if (!m_io) {
            av_free(buffer);
            error = texts.memory;
            return false;
        }
        m_format->pb = m_io;
        m_format->flags |= AVFMT_FLAG_CUSTOM_IO;

        const AVCodec *codec = avcodec_find_encoder_by_name(m_kind.encoder);
        m_stream = codec ? avformat_new_stream(m_format, nullptr) : nullptr;
        m_codec = m_stream ? avcodec_alloc_context3(codec) : nullptr;
        if (!m_codec) {
            error = codec ? texts.stream : texts.encoder;
            return false;
        }
        m_codec->width = width;
        m_codec->height = height;
        m_codec->pix_fmt = AV_PIX_FMT_YUV420P;
        m_codec->time_base = AVRational{1, framesPerSecond};
        m_codec->framerate = AVRational{framesPerSecond, 1};
        m_codec->gop_size = framesPerSecond;
        AVDictionary *options = nullptr;
        if (codec->id == AV_CODEC_ID_H264) {
            av_dict_set(&options, "crf", "18", 0);
            av_dict_set(&options, "preset", "fast", 0);
        } else if (codec->id == AV_CODEC_ID_VP9) {
            av_dict_set(&options, "crf", "20", 0);
            av_dict_set(&options, "b", "0", 0);
            av_dict_set(&options, "deadline", "realtime", 0);
            av_dict_set(&options, "cpu-used", "8", 0);
            av_dict_set(&options, "row-mt", "1", 0);
        } else {
            // MPEG-4 Part 2 and Windows Media Video 8 at a fixed, fine quantiser: colour cycles
            // change every pixel every frame, which rate control would smear.
            m_codec->flags |= AV_CODEC_FLAG_QSCALE;
            m_codec->global_quality = FF_QP2LAMBDA * 2;
            m_codec->bit_rate = 0;
        }
        if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
            m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        const int opened = avcodec_open2(m_codec, codec, &options);
        av_dict_free(&options);
        if (opened < 0 || avcodec_parameters_from_context(m_stream->codecpar, m_codec) < 0) {
            error = texts.encoder;
            return false;
        }
        m_stream->time_base = m_codec->time_base;
        m_stream->avg_frame_rate = m_codec->framerate;
        m_stream->r_frame_rate = m_codec->framerate;

        // The muxer may choose its own time base here (ASF counts milliseconds): packets are
        // rescaled to whatever it chose.
        if (avformat_write_header(m_format, nullptr) < 0) {
            error = texts.header;
            return false;
        }

        m_frame = av_frame_alloc();
        m_packet = av_packet_alloc();
        if (!m_frame || !m_packet) {
            error = texts.memory;
            return false;
        }
        m_frame->format = AV_PIX_FMT_YUV420P;
        m_frame->width = width;
        m_frame->height = height;
        if (av_frame_get_buffer(m_frame, 0) < 0) {
            error = texts.memory;
            return false;
        }
        m_scale = sws_getContext(width, height, AV_PIX_FMT_RGB32, width, height, AV_PIX_FMT_YUV420P, SWS_POINT,
                                 nullptr, nullptr, nullptr);
        if (!m_scale) {
            error = texts.memory;
            return false;
        }
        m_padded = QImage(width, height, QImage::Format_RGB32);
        if (m_padded.isNull()) {
            error = texts.memory;
            return false;
        }
        return true;
    }

    bool addFrame(const QImage &frame, QString &error) override
    {
        if (frame.size() != m_size) {
            error = m_kind.texts.write;
            return false;
        }
        const QImage rgb = frame.format() == QImage::Format_RGB32 || frame.format() == QImage::Format_ARGB32
                               ? frame
                               : frame.convertToFormat(QImage::Format_RGB32);
        const int w = m_size.width();
        const int h = m_size.height();
        for (int y = 0; y < m_padded.height(); ++y) {
            const auto *in = reinterpret_cast<const QRgb *>(rgb.constScanLine(std::min(y, h - 1)));
            auto *out = reinterpret_cast<QRgb *>(m_padded.scanLine(y));
            std::copy(in, in + w, out);
            if (m_padded.width() > w)
                out[w] = in[w - 1];
        }
        if (av_frame_make_writable(m_frame) < 0) {
            error = m_kind.texts.memory;
            return false;
        }
        const uint8_t *source[1] = {m_padded.constBits()};
        const int sourceStride[1] = {int(m_padded.bytesPerLine())};
        sws_scale(m_scale, source, sourceStride, 0, m_padded.height(), m_frame->data, m_frame->linesize);
        m_frame->pts = m_next++;
        if (!encode(m_frame)) {
            error = m_kind.texts.write;
            return false;
        }
        return true;
    }

    bool close(QString &error) override
    {
        if (!encode(nullptr) || av_write_trailer(m_format) < 0) {
            error = m_kind.texts.write;
            return false;
        }
        avio_flush(m_io);
        if (m_io->error < 0) {
            error = m_kind.texts.write;
            return false;
        }
        return true;
    }

    QString createFailure(const QString &) const override { return m_kind.texts.create; }

private:
    // Sends a frame (nullptr: the end) and writes every packet the encoder has ready.
    bool encode(const AVFrame *frame)
    {
        if (avcodec_send_frame(m_codec, frame) < 0)
            return false;
        for (;;) {
            const int got = avcodec_receive_packet(m_codec, m_packet);
            if (got == AVERROR(EAGAIN) || got == AVERROR_EOF)
                break;
            if (got < 0)
                return false;
            // Every frame lasts one tick of the frame rate, so the movie's length comes out right
            // whatever time base the muxer took.
            m_packet->duration = 1;
            av_packet_rescale_ts(m_packet, m_codec->time_base, m_stream->time_base);
            m_packet->stream_index = m_stream->index;
            const int written = av_interleaved_write_frame(m_format, m_packet);
            av_packet_unref(m_packet);
            if (written < 0 || m_io->error < 0)
                return false;
        }
        return true;
    }

    MovieKind m_kind;
    QSize m_size;
    AVFormatContext *m_format = nullptr;
    AVIOContext *m_io = nullptr;
    AVStream *m_stream = nullptr;
    AVCodecContext *m_codec = nullptr;
    AVFrame *m_frame = nullptr;
    AVPacket *m_packet = nullptr;
    SwsContext *m_scale = nullptr;
    QImage m_padded;
    int64_t m_next = 0;
};

} // namespace

std::unique_ptr<MovieBackend> makeFfmpegMovieBackend(const QString &suffix)
{
    if (suffix == QLatin1String("avi"))
        return std::make_unique<FfmpegMovieBackend>(MovieKind{"avi", "mpeg4", movieTexts()});
    if (suffix == QLatin1String("wmv"))
        return std::make_unique<FfmpegMovieBackend>(MovieKind{"asf", "wmv2", windowsMediaTexts()});
    if (suffix == QLatin1String("mp4"))
        return std::make_unique<FfmpegMovieBackend>(MovieKind{"mp4", "libx264", movieTexts()});
    if (suffix == QLatin1String("webm"))
        return std::make_unique<FfmpegMovieBackend>(MovieKind{"webm", "libvpx-vp9", movieTexts()});
    return nullptr;
}

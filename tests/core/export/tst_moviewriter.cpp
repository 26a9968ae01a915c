// Colour-cycling movies: the GIF byte for byte and frame by frame (read back through GIFLIB), the
// movies read back through libavformat, every failure's text, and the old file kept whenever a
// movie is not finished.

#include "export/animationexport.h"
#include "filesizelimit.h"
#include "export/moviewriter.h"
#include "palette/describedexception.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <gif_lib.h>

#include <csignal>
#include <sys/resource.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace {

using AnimationExport::Outcome;
using AnimationExport::Settings;

// Ten colours far apart, so that a lossy codec cannot mistake one for another.
const QVector<QRgb> tenColours = {0xff0000, 0x00ff00, 0x0000ff, 0xffff00, 0xff00ff,
                                  0x00ffff, 0xffffff, 0x000000, 0x808080, 0xff8000};

Palette<uint> paletteOf(const QVector<QRgb> &colours)
{
    Palette<uint> p;
    for (QRgb c : colours)
        p.append(RGBAColor<uint>(uint(qRed(c)) << 8, uint(qGreen(c)) << 8, uint(qBlue(c)) << 8, 65535));
    return p;
}

Palette<uint> greys(int n)
{
    QVector<QRgb> c;
    for (int i = 0; i < n; ++i)
        c << qRgb(i, 255 - i, (i * 7) & 255);
    return paletteOf(c);
}

// Ten vertical bands, index i in band i, each band `band` pixels wide.
DocumentImage bands(int band, int height, int extraColumns = 0)
{
    const int width = 10 * band + extraColumns;
    std::vector<uint8_t> cells(size_t(width * height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            cells[size_t(y * width + x)] = uint8_t(std::min(x / band, 9));
    return DocumentImage::fromIndexes8(width, height, cells);
}

// Every index once, 16 x 16.
DocumentImage allIndexes()
{
    std::vector<uint8_t> cells(256);
    for (int i = 0; i < 256; ++i)
        cells[size_t(i)] = uint8_t(i);
    return DocumentImage::fromIndexes8(16, 16, cells);
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int v : values)
        out += char(v);
    return out;
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

struct GifFrames
{
    bool ok = false;
    int width = 0;
    int height = 0;
    std::vector<QByteArray> frames; // the indexes of each frame
};

GifFrames readGif(const QString &path)
{
    GifFrames out;
    int error = 0;
    GifFileType *gif = DGifOpenFileName(QFile::encodeName(path).constData(), &error);
    if (!gif)
        return out;
    if (DGifSlurp(gif) == GIF_OK) {
        out.ok = true;
        out.width = gif->SWidth;
        out.height = gif->SHeight;
        for (int i = 0; i < gif->ImageCount; ++i) {
            const SavedImage &image = gif->SavedImages[i];
            out.frames.emplace_back(reinterpret_cast<const char *>(image.RasterBits),
                                    image.ImageDesc.Width * image.ImageDesc.Height);
        }
    }
    DGifCloseFile(gif, &error);
    return out;
}

struct Movie
{
    bool ok = false;
    QString codec;
    int width = 0;
    int height = 0;
    int frames = 0;
    double firstTime = -1; // seconds
    double lastTime = -1;
    double duration = -1; // the container's, seconds
    std::vector<QImage> pictures; // the first two frames as RGB
};

Movie readMovie(const QString &path)
{
    Movie movie;
    AVFormatContext *format = nullptr;
    if (avformat_open_input(&format, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        return movie;
    avformat_find_stream_info(format, nullptr);
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) {
        avformat_close_input(&format);
        return movie;
    }
    AVStream *stream = format->streams[index];
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    AVCodecContext *decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, stream->codecpar);
    avcodec_open2(decoder, codec, nullptr);
    movie.codec = QString::fromLatin1(codec->name);
    movie.width = decoder->width;
    movie.height = decoder->height;
    AVPacket *packet = av_packet_alloc();
    AVFrame *frame = av_frame_alloc();
    auto take = [&] {
        while (avcodec_receive_frame(decoder, frame) == 0) {
            const double t = double(frame->best_effort_timestamp) * av_q2d(stream->time_base);
            if (movie.frames == 0)
                movie.firstTime = t;
            movie.lastTime = t;
            if (movie.frames < 2) {
                QImage rgb(frame->width, frame->height, QImage::Format_RGB888);
                SwsContext *sws = sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format),
                                                 frame->width, frame->height, AV_PIX_FMT_RGB24, SWS_POINT, nullptr,
                                                 nullptr, nullptr);
                uint8_t *dst[1] = {rgb.bits()};
                const int stride[1] = {int(rgb.bytesPerLine())};
                sws_scale(sws, frame->data, frame->linesize, 0, frame->height, dst, stride);
                sws_freeContext(sws);
                movie.pictures.push_back(rgb);
            }
            ++movie.frames;
        }
    };
    while (av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == index && avcodec_send_packet(decoder, packet) >= 0)
            take();
        av_packet_unref(packet);
    }
    avcodec_send_packet(decoder, nullptr);
    take();
    movie.ok = true;
    movie.duration = double(format->duration) / AV_TIME_BASE;
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&format);
    return movie;
}

bool near(QRgb a, QRgb b, int tolerance)
{
    return std::abs(qRed(a) - qRed(b)) <= tolerance && std::abs(qGreen(a) - qGreen(b)) <= tolerance
           && std::abs(qBlue(a) - qBlue(b)) <= tolerance;
}

} // namespace

class TestMovieWriter : public QObject
{
    Q_OBJECT

private slots:
    void gifHeaderAndFrames_data();
    void gifHeaderAndFrames();
    void gifIndexRotation_data();
    void gifIndexRotation();
    void gifWithoutFrames();
    void paletteRotation();
    void movies_data();
    void movies();
    void writerFailures_data();
    void writerFailures();
    void refusedExports_data();
    void refusedExports();
    void cancelKeepsOldFile();
};

void TestMovieWriter::gifHeaderAndFrames_data()
{
    QTest::addColumn<int>("fps");
    QTest::addColumn<int>("delay");
    QTest::newRow("25 fps") << 25 << 4;
    QTest::newRow("30 fps") << 30 << 3;
    QTest::newRow("10 fps") << 10 << 10;
    QTest::newRow("1 fps") << 1 << 100;
    QTest::newRow("60 fps") << 60 << 1;
}

void TestMovieWriter::gifHeaderAndFrames()
{
    QFETCH(int, fps);
    QFETCH(int, delay);
    QTemporaryDir dir;
    const QString path = dir.filePath("cycle.GIF");
    // 3 x 2 pixels of indexes 0, 1, 2 / 2, 1, 0 over three colours: two frames.
    const DocumentImage image = DocumentImage::fromIndexes8(3, 2, {0, 1, 2, 2, 1, 0});
    const Palette<uint> palette = paletteOf({0x102030, 0x405060, 0xa0b0c0});
    const auto result = AnimationExport::write(path, image, palette, {0, 2, fps});
    QCOMPARE(int(result.outcome), int(Outcome::Written));
    const QByteArray gif = readAll(path);

    // The screen descriptor: 3 x 2, global table of 256 entries, colour resolution 8, background 0.
    QCOMPARE(gif.left(13), QByteArray("GIF89a") + bytes({3, 0, 2, 0, 0xf7, 0, 0}));
    QCOMPARE(gif.mid(13, 9), bytes({0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0xa0, 0xb0, 0xc0}));
    QCOMPARE(gif.mid(22, 768 - 9), QByteArray(768 - 9, '\0'));
    int at = 13 + 768;
    // Loop for ever.
    QCOMPARE(gif.mid(at, 19), bytes({0x21, 0xff, 11}) + "NETSCAPE2.0" + bytes({3, 1, 0, 0, 0}));
    at += 19;
    const QByteArray control = bytes({0x21, 0xf9, 4, 4, delay & 0xff, delay >> 8, 0, 0});
    const QByteArray descriptor = bytes({0x2c, 0, 0, 0, 0, 3, 0, 2, 0, 0});
    QCOMPARE(gif.mid(at, 8), control);
    QCOMPARE(gif.mid(at + 8, 10), descriptor);
    QCOMPARE(gif.count(control + descriptor), 2);
    QCOMPARE(gif.right(1), bytes({0x3b}));

    const GifFrames frames = readGif(path);
    QVERIFY(frames.ok);
    QCOMPARE(frames.width, 3);
    QCOMPARE(frames.height, 2);
    QCOMPARE(int(frames.frames.size()), 2);
    QCOMPARE(frames.frames[0], bytes({0, 1, 2, 2, 1, 0}));
    // Frame 1: 0 → 1, 1 → 2, and 2 → 3, past the end, less end - start: 1.
    QCOMPARE(frames.frames[1], bytes({1, 2, 1, 1, 2, 1}));
}

void TestMovieWriter::gifIndexRotation_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<int>("frame");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("expected");
    QTest::newRow("frame 0 keeps the index") << 0 << 9 << 0 << 9 << 9;
    QTest::newRow("wrap goes to 1, not 0") << 0 << 9 << 1 << 9 << 1;
    QTest::newRow("inside the range") << 0 << 9 << 1 << 3 << 4;
    QTest::newRow("outside the range") << 0 << 9 << 5 << 200 << 200;
    QTest::newRow("8-bit sum wraps before the test") << 0 << 255 << 10 << 250 << 4;
    QTest::newRow("range not at 0") << 3 << 7 << 2 << 7 << 5;
    QTest::newRow("below the range") << 3 << 7 << 2 << 2 << 2;
    QTest::newRow("last frame") << 3 << 7 << 3 << 6 << 5;
}

void TestMovieWriter::gifIndexRotation()
{
    QFETCH(int, start);
    QFETCH(int, end);
    QFETCH(int, frame);
    QFETCH(int, index);
    QFETCH(int, expected);
    QTemporaryDir dir;
    const QString path = dir.filePath("cycle.gif");
    const auto result = AnimationExport::write(path, allIndexes(), greys(256), {start, end, 25});
    QCOMPARE(int(result.outcome), int(Outcome::Written));
    const GifFrames frames = readGif(path);
    QVERIFY(frames.ok);
    QCOMPARE(int(frames.frames.size()), end - start);
    QCOMPARE(int(uint8_t(frames.frames[size_t(frame)][index])), expected);
}

void TestMovieWriter::gifWithoutFrames()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("still.gif");
    const auto result = AnimationExport::write(path, allIndexes(), greys(256), {5, 5, 10});
    QCOMPARE(int(result.outcome), int(Outcome::Written));
    const QByteArray gif = readAll(path);
    QCOMPARE(gif.size(), 13 + 768 + 19 + 1);
    QCOMPARE(gif.right(1), bytes({0x3b}));
    // The format allows a stream without images; GIFLIB's DGifSlurp refuses one, so the records
    // are walked: the loop extension, then the trailer.
    int error = 0;
    GifFileType *file = DGifOpenFileName(QFile::encodeName(path).constData(), &error);
    QVERIFY(file);
    QCOMPARE(file->SWidth, 16);
    QList<int> records;
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    while (DGifGetRecordType(file, &type) == GIF_OK) {
        records << int(type);
        if (type == TERMINATE_RECORD_TYPE)
            break;
        QCOMPARE(int(type), int(EXTENSION_RECORD_TYPE));
        int code = 0;
        GifByteType *block = nullptr;
        QCOMPARE(DGifGetExtension(file, &code, &block), GIF_OK);
        QCOMPARE(code, APPLICATION_EXT_FUNC_CODE);
        while (block)
            QCOMPARE(DGifGetExtensionNext(file, &block), GIF_OK);
    }
    DGifCloseFile(file, &error);
    QCOMPARE(records, (QList<int>{EXTENSION_RECORD_TYPE, TERMINATE_RECORD_TYPE}));
}

void TestMovieWriter::paletteRotation()
{
    const Palette<uint> p = greys(12);
    // Start 0, end 9: frame 1 shows the old entry 0 at 9 and entry 1 at 0; 10 and 11 stay.
    const Palette<uint> one = AnimationExport::rotatedPalette(p, 0, 9, 1);
    QVERIFY(one[9] == p[0]);
    QVERIFY(one[0] == p[1]);
    QVERIFY(one[10] == p[10]);
    // Start 2, end 5, frame 3: entry 2 shows the old 5, entry 3 the old 2.
    const Palette<uint> three = AnimationExport::rotatedPalette(p, 2, 5, 3);
    QVERIFY(three[2] == p[5]);
    QVERIFY(three[3] == p[2]);
    QVERIFY(three[1] == p[1]);
}

void TestMovieWriter::movies_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<int>("extraColumns"); // an odd width is padded to even
    QTest::addColumn<int>("fps");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("avi") << "avi" << "mpeg4" << 0 << 25 << 24;
    QTest::newRow("wmv, odd size") << "wmv" << "wmv2" << 1 << 30 << 24;
    QTest::newRow("mp4") << "mp4" << "h264" << 0 << 10 << 24;
    QTest::newRow("webm") << "webm" << "vp9" << 0 << 25 << 32;
}

void TestMovieWriter::movies()
{
    QFETCH(QString, suffix);
    QFETCH(QString, codec);
    QFETCH(int, extraColumns);
    QFETCH(int, fps);
    QFETCH(int, tolerance);
    QTemporaryDir dir;
    const QString path = dir.filePath("cycle." + suffix);
    const int height = 32 + extraColumns;
    const DocumentImage image = bands(32, height, extraColumns);
    const Palette<uint> palette = paletteOf(tenColours);
    const auto result = AnimationExport::write(path, image, palette, {0, 9, fps});
    QCOMPARE(result.error, QString());
    QCOMPARE(int(result.outcome), int(Outcome::Written));

    const Movie movie = readMovie(path);
    QVERIFY(movie.ok);
    QCOMPARE(movie.codec, codec);
    QCOMPARE(movie.width, (image.width() + 1) & ~1);
    QCOMPARE(movie.height, (height + 1) & ~1);
    QCOMPARE(movie.frames, 9);
    // Nine frames at the rate: the last starts eight frame times after the first.
    QVERIFY2(std::abs(movie.lastTime - movie.firstTime - 8.0 / fps) < 0.002,
             qPrintable(QString::number(movie.lastTime - movie.firstTime)));
    // And the container says nine frame times: the packets carry their durations.
    QVERIFY2(std::abs(movie.duration - 9.0 / fps) < 0.002, qPrintable(QString::number(movie.duration)));
    QCOMPARE(int(movie.pictures.size()), 2);
    // Frame 0 shows the palette; frame 1 the range turned towards lower indexes: band 9 shows the
    // old colour 0 and band 0 the old colour 1.
    for (int band = 0; band < 10; ++band) {
        const QRgb first = movie.pictures[0].pixel(band * 32 + 16, 16);
        const QRgb second = movie.pictures[1].pixel(band * 32 + 16, 16);
        QVERIFY2(near(first, tenColours[band], tolerance), qPrintable(QString::number(band)));
        QVERIFY2(near(second, tenColours[(band + 1) % 10], tolerance), qPrintable(QString::number(band)));
    }
}

void TestMovieWriter::writerFailures_data()
{
    QTest::addColumn<QString>("name");     // in the temporary folder; "missing/" has no folder
    QTest::addColumn<int>("fps");
    QTest::addColumn<int>("frameWidth");   // of the frame added after opening; 0 adds none
    QTest::addColumn<int>("sizeLimit");    // bytes a file may grow to while writing; 0 no limit
    QTest::addColumn<QString>("expected"); // %1 stands for the path
    QTest::newRow("unknown suffix") << "cycle.bmp" << 10 << 0 << 0 << "Unkown export format 'bmp'.";
    QTest::newRow("no suffix") << "cycle" << 10 << 0 << 0 << "Unkown export format ''.";
    QTest::newRow("frame rate 0") << "cycle.gif" << 0 << 0 << 0
                                  << "A movie needs at least 1 frame per second; 0 was asked for.";
    QTest::newRow("frame rate 0, movie") << "cycle.avi" << 0 << 0 << 0
                                         << "A movie needs at least 1 frame per second; 0 was asked for.";
    QTest::newRow("gif, no folder") << "missing/cycle.gif" << 10 << 0 << 0 << "Could not open destination file '%1'.";
    QTest::newRow("avi, no folder") << "missing/cycle.avi" << 10 << 0 << 0 << "Unable to Create the Movie File";
    QTest::newRow("mp4, no folder") << "missing/cycle.mp4" << 10 << 0 << 0 << "Unable to Create the Movie File";
    QTest::newRow("wmv, no folder") << "missing/cycle.wmv" << 10 << 0 << 0 << "Unable to Set Output Filename";
    QTest::newRow("avi, rate past MPEG-4") << "cycle.avi" << 70000 << 0 << 0
                                           << "Unable to Create Compressed Stream: Check your CODEC options";
    QTest::newRow("avi, wrong frame") << "cycle.avi" << 10 << 8 << 0
                                      << "Unable to Write Video Stream to the output Movie File";
    QTest::newRow("wmv, wrong frame") << "cycle.wmv" << 10 << 8 << 0 << "Unable to Write Frame";
    QTest::newRow("gif, wrong frame") << "cycle.gif" << 10 << 8 << 0
                                      << "A GIF frame must be an 8-bit index picture of 64 x 32 pixels.";
    QTest::newRow("avi, disk full") << "cycle.avi" << 10 << 64 << 2048
                                    << "Unable to Write Video Stream to the output Movie File";
    QTest::newRow("wmv, disk full") << "cycle.wmv" << 10 << 64 << 2048 << "Unable to Write Frame";
    QTest::newRow("gif, disk full") << "cycle.gif" << 10 << 64 << 900
                                    << "The GIF could not be written: Write failed (disk full?).";
}

void TestMovieWriter::writerFailures()
{
    QFETCH(QString, name);
    QFETCH(int, fps);
    QFETCH(int, frameWidth);
    QFETCH(int, sizeLimit);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    if (expected.contains("%1"))
        expected = expected.arg(path);
    const QByteArray old = "the old contents\n";
    if (!name.startsWith("missing/")) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(old);
    }
    QString error;
    {
        std::unique_ptr<FileSizeLimit> limit;
        if (sizeLimit)
            limit = std::make_unique<FileSizeLimit>(rlim_t(sizeLimit));
        MovieWriter writer;
        bool ok = writer.open(path, fps, 50, QSize(64, 32), greys(256));
        if (ok && frameWidth) {
            const QImage frame = QImage(frameWidth, 32, QImage::Format_Indexed8);
            QImage filled = frame;
            // Noise, so that no codec can squeeze 50 frames into the limit.
            for (int y = 0; y < 32; ++y)
                for (int x = 0; x < frameWidth; ++x)
                    filled.scanLine(y)[x] = uchar((x * 7919 + y * 104729) >> 3);
            filled.setColorTable(QVector<QRgb>(256, qRgb(1, 2, 3)));
            for (int i = 0; i < 50 && ok; ++i) {
                for (int y = 0; y < 32; ++y)
                    filled.scanLine(y)[i % frameWidth] ^= uchar(i * 37);
                if (filled.format() == QImage::Format_Indexed8 && !name.endsWith(".gif")) {
                    QVector<QRgb> table;
                    for (int c = 0; c < 256; ++c)
                        table << qRgb(c, (c * 3 + i) & 255, (c * 5 + i * 7) & 255);
                    filled.setColorTable(table);
                }
                ok = writer.addFrame(filled);
            }
            if (ok)
                ok = writer.close();
        }
        QVERIFY(!ok);
        error = writer.errorText();
    }
    QCOMPARE(error, expected);
    // Nothing half-written replaces the old file, and nothing is left beside it.
    if (!name.startsWith("missing/"))
        QCOMPARE(readAll(path), old);
    QCOMPARE(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files | QDir::NoDotAndDotDot).size(),
             name.startsWith("missing/") ? 0 : 1);
}

void TestMovieWriter::refusedExports_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode"); // of the image; 0 none
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");
    QTest::newRow("no image") << "a.avi" << 0 << 0 << 9 << "No image error"
                              << "You need an image to generate an animation.";
    QTest::newRow("rgb image") << "a.avi" << int(DocumentImage::RGB) << 0 << 9 << "Format error"
                               << "An image with a palette to rotate is needed.";
    QTest::newRow("gif of 32-bit indexes")
        << "a.gif" << int(DocumentImage::Indexed32) << 0 << 9 << "Format error"
        << "Only an 8-bit indexed image can be exported as a GIF animation.";
    QTest::newRow("end below start") << "a.gif" << int(DocumentImage::Indexed8) << 5 << 4
                                     << "Animation export error" << "The end index 4 lies below the start index 5.";
    QTest::newRow("end past palette") << "a.avi" << int(DocumentImage::Indexed32) << 0 << 10
                                      << "Animation export error"
                                      << "The end index 10 lies past the palette's last entry 9.";
}

void TestMovieWriter::refusedExports()
{
    QFETCH(QString, name);
    QFETCH(int, mode);
    QFETCH(int, start);
    QFETCH(int, end);
    QFETCH(QString, title);
    QFETCH(QString, message);
    DocumentImage image;
    if (mode == DocumentImage::RGB)
        image = DocumentImage::fromPicture(QImage(4, 4, QImage::Format_RGB32));
    else if (mode == DocumentImage::Indexed8)
        image = bands(1, 1);
    else if (mode == DocumentImage::Indexed32)
        image = DocumentImage::fromIndexes32(2, 2, {0, 1, 2, 3});
    try {
        AnimationExport::check(name, image, paletteOf(tenColours), {start, end, 10});
        QFAIL("not refused");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), title);
        QCOMPARE(e.message(), message);
    }
}

void TestMovieWriter::cancelKeepsOldFile()
{
    for (const QString suffix : {"gif", "avi"}) {
        QTemporaryDir dir;
        const QString path = dir.filePath("cycle." + suffix);
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("old");
        f.close();
        QList<int> asked;
        const auto result = AnimationExport::write(path, bands(2, 2), paletteOf(tenColours), {0, 9, 10},
                                                   [&](int frame) {
                                                       asked << frame;
                                                       return frame < 3;
                                                   });
        QCOMPARE(int(result.outcome), int(Outcome::Cancelled));
        QCOMPARE(asked, (QList<int>{0, 1, 2, 3}));
        QCOMPARE(readAll(path), QByteArray("old"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 1);
    }
    // Progress is told every frame and the end.
    QTemporaryDir dir;
    QList<int> asked;
    const auto result = AnimationExport::write(dir.filePath("c.gif"), bands(2, 2), paletteOf(tenColours), {0, 3, 10},
                                               [&](int frame) {
                                                   asked << frame;
                                                   return true;
                                               });
    QCOMPARE(int(result.outcome), int(Outcome::Written));
    QCOMPARE(asked, (QList<int>{0, 1, 2, 3}));
}

QTEST_GUILESS_MAIN(TestMovieWriter)
#include "tst_moviewriter.moc"

#include "export/moviewriter.h"

#include <QIODevice>

#include <gif_lib.h>

#include <vector>

namespace {

int writeToDevice(GifFileType *gif, const GifByteType *bytes, int length)
{
    auto *device = static_cast<QIODevice *>(gif->UserData);
    return int(device->write(reinterpret_cast<const char *>(bytes), length));
}

QString gifFailure(int code)
{
    const char *text = GifErrorString(code);
    return QStringLiteral("The GIF could not be written: %1.").arg(QString::fromLatin1(text ? text : "unknown error"));
}

// GIF89a that loops for ever: one global colour table, then per frame a graphic control
// extension, a full-size image descriptor and the rows.
class GifMovieBackend final : public MovieBackend
{
public:
    ~GifMovieBackend() override
    {
        if (m_gif) {
            int ignored = 0;
            EGifCloseFile(m_gif, &ignored);
        }
    }

    bool open(QIODevice &device, int framesPerSecond, QSize size, const Palette<uint> &palette,
              QString &error) override
    {
        int code = 0;
        m_gif = EGifOpen(&device, writeToDevice, &code);
        if (!m_gif) {
            error = gifFailure(code);
            return false;
        }
        m_width = size.width();
        m_height = size.height();
        m_delay = 100 / framesPerSecond;

        GifColorType colours[256] = {};
        const int n = std::min(palette.size(), 256);
        for (int i = 0; i < n; ++i) {
            const RGBAColor<uint> &c = palette[i];
            colours[i] = {GifByteType(c.r >> 8), GifByteType(c.g >> 8), GifByteType(c.b >> 8)};
        }
        ColorMapObject *map = GifMakeMapObject(256, colours);
        if (!map) {
            error = gifFailure(E_GIF_ERR_NOT_ENOUGH_MEM);
            return false;
        }
        EGifSetGifVersion(m_gif, true);
        const bool ok = EGifPutScreenDesc(m_gif, m_width, m_height, 8, 0, map) == GIF_OK;
        GifFreeMapObject(map);
        static const GifByteType loopName[] = "NETSCAPE2.0";
        static const GifByteType loopForEver[] = {1, 0, 0};
        if (!ok || EGifPutExtensionLeader(m_gif, APPLICATION_EXT_FUNC_CODE) != GIF_OK
            || EGifPutExtensionBlock(m_gif, 11, loopName) != GIF_OK
            || EGifPutExtensionBlock(m_gif, 3, loopForEver) != GIF_OK || EGifPutExtensionTrailer(m_gif) != GIF_OK) {
            error = gifFailure(m_gif->Error);
            return false;
        }
        m_row.resize(size_t(m_width));
        return true;
    }

    bool addFrame(const QImage &frame, QString &error) override
    {
        if (frame.format() != QImage::Format_Indexed8 || frame.width() != m_width || frame.height() != m_height) {
            error = QStringLiteral("A GIF frame must be an 8-bit index picture of %1 x %2 pixels.")
                        .arg(m_width)
                        .arg(m_height);
            return false;
        }
        // Disposal 1 (keep the frame), no transparency; the delay in hundredths of a second.
        const GifByteType control[4] = {4, GifByteType(m_delay & 0xff), GifByteType(m_delay >> 8), 0};
        if (EGifPutExtension(m_gif, GRAPHICS_EXT_FUNC_CODE, 4, control) != GIF_OK
            || EGifPutImageDesc(m_gif, 0, 0, m_width, m_height, false, nullptr) != GIF_OK) {
            error = gifFailure(m_gif->Error);
            return false;
        }
        for (int y = 0; y < m_height; ++y) {
            // GIFLIB wants a writable row; the frame stays untouched.
            const uchar *line = frame.constScanLine(y);
            std::copy(line, line + m_width, m_row.begin());
            if (EGifPutLine(m_gif, m_row.data(), m_width) != GIF_OK) {
                error = gifFailure(m_gif->Error);
                return false;
            }
        }
        return true;
    }

    bool close(QString &error) override
    {
        int code = 0;
        GifFileType *gif = m_gif;
        m_gif = nullptr;
        if (EGifCloseFile(gif, &code) != GIF_OK) {
            error = gifFailure(code);
            return false;
        }
        return true;
    }

    QString createFailure(const QString &fileName) const override
    {
        return QStringLiteral("Could not open destination file '%1'.").arg(fileName);
    }

private:
    GifFileType *m_gif = nullptr;
    int m_width = 0;
    int m_height = 0;
    int m_delay = 0;
    std::vector<GifByteType> m_row;
};

} // namespace

std::unique_ptr<MovieBackend> makeGifMovieBackend()
{
    return std::make_unique<GifMovieBackend>();
}

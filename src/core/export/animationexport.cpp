#include "export/animationexport.h"

#include "export/moviewriter.h"
#include "palette/describedexception.h"

#include <QFileInfo>

namespace AnimationExport {

Palette<uint> rotatedPalette(const Palette<uint> &palette, int start, int end, int frame)
{
    Palette<uint> out = palette;
    if (start < 0 || end >= palette.size() || end <= start)
        return out;
    const int length = end - start + 1;
    const int shift = frame % length;
    for (int i = start; i <= end; ++i)
        out[i] = palette[start + (i - start + shift) % length];
    return out;
}

std::array<uint8_t, 256> indexRotation(int start, int end, int frame)
{
    std::array<uint8_t, 256> table{};
    for (int v = 0; v < 256; ++v) {
        uint8_t c = uint8_t(v);
        if (v >= start && v <= end) {
            c = uint8_t(v + frame);
            if (c > end)
                c = uint8_t(c + (start - end));
        }
        table[size_t(v)] = c;
    }
    return table;
}

void gifFrame(const DocumentImage &image, int start, int end, int frame, QImage &out)
{
    const QSize size(image.width(), image.height());
    if (out.size() != size || out.format() != QImage::Format_Indexed8)
        out = QImage(size, QImage::Format_Indexed8);
    if (out.isNull())
        throw outOfMemoryFailure();
    const std::array<uint8_t, 256> table = indexRotation(start, end, frame);
    for (int y = 0; y < size.height(); ++y) {
        const uint8_t *in = image.indexRow(y);
        uchar *row = out.scanLine(y);
        for (int x = 0; x < size.width(); ++x)
            row[x] = table[in[x]];
    }
}

void movieFrame(const DocumentImage &image, const Palette<uint> &palette, int start, int end, int frame, QImage &out)
{
    image.renderInto(rotatedPalette(palette, start, end, frame), out);
}

bool isGifPath(const QString &path)
{
    return QFileInfo(path).suffix().toLower() == QLatin1String("gif");
}

void checkImage(const DocumentImage &image)
{
    if (image.isNull())
        throw DescribedException(QStringLiteral("No image error"),
                                 QStringLiteral("You need an image to generate an animation."));
    if (image.mode() == DocumentImage::RGB)
        throw DescribedException(QStringLiteral("Format error"),
                                 QStringLiteral("An image with a palette to rotate is needed."));
}

void check(const QString &path, const DocumentImage &image, const Palette<uint> &palette, const Settings &settings)
{
    checkImage(image);
    if (isGifPath(path) && image.mode() != DocumentImage::Indexed8)
        throw DescribedException(QStringLiteral("Format error"),
                                 QStringLiteral("Only an 8-bit indexed image can be exported as a GIF animation."));
    const QString title = QStringLiteral("Animation export error");
    if (settings.start < 0)
        throw DescribedException(title, QStringLiteral("The start index %1 is below 0.").arg(settings.start));
    if (settings.end < settings.start)
        throw DescribedException(title, QStringLiteral("The end index %1 lies below the start index %2.")
                                            .arg(settings.end)
                                            .arg(settings.start));
    // A GIF's colour table and indexes stop at 255.
    const int last = isGifPath(path) ? std::min(palette.size(), 256) - 1 : palette.size() - 1;
    if (settings.end > last)
        throw DescribedException(title, QStringLiteral("The end index %1 lies past the palette's last entry %2.")
                                            .arg(settings.end)
                                            .arg(last));
}

Result write(const QString &path, const DocumentImage &image, const Palette<uint> &palette, const Settings &settings,
             const Progress &progress)
{
    const int frames = settings.end - settings.start;
    const QSize size(image.width(), image.height());
    MovieWriter writer;
    if (!writer.open(path, settings.framesPerSecond, frames, size, palette))
        return {Outcome::Failed, writer.errorText()};

    const bool gif = isGifPath(path);
    QImage picture;
    for (int f = 0; f < frames; ++f) {
        if (progress && !progress(f))
            return {Outcome::Cancelled, {}};
        if (gif)
            gifFrame(image, settings.start, settings.end, f, picture);
        else
            movieFrame(image, palette, settings.start, settings.end, f, picture);
        if (!writer.addFrame(picture))
            return {Outcome::Failed, writer.errorText()};
    }
    if (!writer.close())
        return {Outcome::Failed, writer.errorText()};
    if (progress)
        progress(frames);
    return {Outcome::Written, {}};
}

} // namespace AnimationExport

#include "conversion/imageconverter.h"

namespace {

constexpr int rowsPerReport = 64;

} // namespace

DocumentImage ImageConverter::byBrightness(const QImage &picture, int paletteSize, int format,
                                           bool interpolate, const std::function<bool(int)> &progress)
{
    const int w = picture.width(), h = picture.height();
    if (w <= 0 || h <= 0)
        return {};
    const bool indexed8 = picture.format() == QImage::Format_Indexed8;
    const QImage rgb =
        indexed8 || picture.format() == QImage::Format_ARGB32 || picture.format() == QImage::Format_RGB32
            ? picture
            : picture.convertToFormat(QImage::Format_ARGB32);
    // The channel sum of every colour the picture can hold in an 8-bit picture's table.
    uint tableSums[256] = {};
    if (indexed8) {
        const QVector<QRgb> table = rgb.colorTable();
        for (int i = 0; i < 256 && i < table.size(); ++i)
            tableSums[i] = uint(qRed(table[i]) + qGreen(table[i]) + qBlue(table[i]));
    }
    const size_t pixels = size_t(w) * size_t(h);
    const auto eachSum = [&](auto store) {
        for (int y = 0; y < h; ++y) {
            const size_t base = size_t(y) * size_t(w);
            if (indexed8) {
                const uchar *row = rgb.constScanLine(y);
                for (int x = 0; x < w; ++x)
                    store(base + size_t(x), tableSums[row[x]]);
            } else {
                const auto *row = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
                for (int x = 0; x < w; ++x)
                    store(base + size_t(x), uint(qRed(row[x]) + qGreen(row[x]) + qBlue(row[x])));
            }
            if (progress && y % rowsPerReport == 0 && !progress(100 * y / h))
                return false;
        }
        return true;
    };

    if (format == Continuous) {
        std::vector<float> cells(pixels);
        if (!eachSum([&](size_t i, uint sum) { cells[i] = float(sum) * 85.666664f; }))
            return {};
        return DocumentImage::fromContinuous(w, h, std::move(cells), interpolate);
    }
    if (paletteSize <= 256) {
        std::vector<uint8_t> indexes(pixels);
        if (!eachSum([&](size_t i, uint sum) { indexes[i] = uint8_t(sum / 3); }))
            return {};
        return DocumentImage::fromIndexes8(w, h, indexes);
    }
    std::vector<uint32_t> cells(pixels);
    if (!eachSum([&](size_t i, uint sum) { cells[i] = sum; }))
        return {};
    return DocumentImage::fromIndexes32(w, h, std::move(cells));
}

DocumentImage ImageConverter::convert(const DocumentImage &image, const Palette<uint> &shownWith)
{
    m_cancelled = false;
    emit paletteChanged(m_destination);
    DocumentImage result = byBrightness(sourcePicture(image, shownWith), m_destination.size(), m_format,
                                        m_interpolate, [this](int percent) {
                                            emit progressChanged(1, percent);
                                            return !m_cancelled;
                                        });
    if (!result.isNull()) {
        result.setImagePalette(m_destination);
        emit progressChanged(1, 100);
    }
    return result;
}

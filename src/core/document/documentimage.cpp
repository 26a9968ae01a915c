#include "document/documentimage.h"

#include "document/imagelimits.h"
#include "document/imagerender.h"

#include <algorithm>
#include <cstring>

DocumentImage DocumentImage::fromPicture(QImage picture)
{
    DocumentImage img;
    if (picture.isNull() || !ImageLimits::fits(picture.width(), picture.height()))
        return img;
    img.m_width = picture.width();
    img.m_height = picture.height();
    // An 8-bit grayscale picture is one index a pixel too (PNG writers store an indexed picture
    // whose table is all grey that way), so it opens as indexed with a grey table.
    const bool grey = picture.format() == QImage::Format_Grayscale8;
    if (picture.format() == QImage::Format_Indexed8 || grey) {
        img.adoptIndexes8([&](uint8_t *dst, int stride) {
            for (int y = 0; y < img.m_height; ++y)
                std::memcpy(dst + size_t(y) * size_t(stride), picture.constScanLine(y), size_t(img.m_width));
        });
        QVector<QRgb> table = picture.colorTable();
        if (grey)
            for (int i = 0; i < 256; ++i)
                table << qRgb(i, i, i);
        for (QRgb c : table)
            img.m_imagePalette.append({uint(qRed(c)) << 8, uint(qGreen(c)) << 8, uint(qBlue(c)) << 8, 65535});
        img.m_picture = img.viewIndexes8(table);
    } else {
        // In place where the picture is ours alone: 32-bit RGB only changes its format's name.
        img.m_picture = std::move(picture).convertToFormat(QImage::Format_ARGB32);
        // Without the memory for the converted picture there is no image, rather than one that shows nothing.
        if (img.m_picture.isNull())
            return DocumentImage();
        img.m_mode = RGB;
    }
    return img;
}

DocumentImage DocumentImage::fromIndexes8(int width, int height, const std::vector<uint8_t> &indexes)
{
    DocumentImage img;
    if (!ImageLimits::fits(width, height) || indexes.size() != size_t(width) * size_t(height))
        return img;
    img.m_width = width;
    img.m_height = height;
    img.adoptIndexes8([&](uint8_t *dst, int stride) {
        for (int y = 0; y < height; ++y)
            std::memcpy(dst + size_t(y) * size_t(stride), indexes.data() + size_t(y) * size_t(width),
                        size_t(width));
    });
    img.m_picture = img.viewIndexes8({});
    return img;
}

DocumentImage DocumentImage::fromIndexes8(int width, int height, std::vector<uint8_t> &&indexes)
{
    DocumentImage img;
    if (!ImageLimits::fits(width, height) || indexes.size() != size_t(width) * size_t(height))
        return img;
    img.m_width = width;
    img.m_height = height;
    img.m_mode = Indexed8;
    img.m_stride8 = (width + 3) & ~3;
    const size_t stride = size_t(img.m_stride8), w = size_t(width);
    indexes.resize(stride * size_t(height));
    // From the last row up, each row moves to a later place or stays, over no row still to move.
    for (size_t y = size_t(height); y-- > 0;) {
        std::memmove(indexes.data() + y * stride, indexes.data() + y * w, w);
        std::fill(indexes.begin() + std::ptrdiff_t(y * stride + w),
                  indexes.begin() + std::ptrdiff_t((y + 1) * stride), uint8_t(0));
    }
    img.m_indexes8 = std::make_shared<std::vector<uint8_t>>(std::move(indexes));
    img.m_picture = img.viewIndexes8({});
    return img;
}

template <typename Fill>
void DocumentImage::adoptIndexes8(Fill fill)
{
    m_mode = Indexed8;
    m_stride8 = (m_width + 3) & ~3;
    m_indexes8 = std::make_shared<std::vector<uint8_t>>(size_t(m_stride8) * size_t(m_height), uint8_t(0));
    fill(m_indexes8->data(), m_stride8);
}

QImage DocumentImage::viewIndexes8(const QVector<QRgb> &table) const
{
    // A fresh picture over the shared bytes: being its only user, setting the table never copies them.
    // The picture holds its own reference, so it stays valid when copied out of the document.
    auto *keep = new std::shared_ptr<std::vector<uint8_t>>(m_indexes8);
    QImage view(m_indexes8->data(), m_width, m_height, m_stride8, QImage::Format_Indexed8,
                [](void *p) { delete static_cast<std::shared_ptr<std::vector<uint8_t>> *>(p); }, keep);
    view.setColorTable(table);
    return view;
}

DocumentImage DocumentImage::fromIndexes32(int width, int height, std::vector<uint32_t> cells)
{
    DocumentImage img;
    if (!ImageLimits::fits(width, height) || cells.size() != size_t(width) * size_t(height))
        return img;
    img.m_mode = Indexed32;
    img.m_width = width;
    img.m_height = height;
    img.m_indexCells = std::move(cells);
    return img;
}

DocumentImage DocumentImage::fromContinuous(int width, int height, std::vector<float> cells, bool interpolate)
{
    DocumentImage img;
    if (!ImageLimits::fits(width, height) || cells.size() != size_t(width) * size_t(height))
        return img;
    img.m_mode = Continuous;
    img.m_width = width;
    img.m_height = height;
    img.m_interpolate = interpolate;
    img.m_realCells = std::move(cells);
    return img;
}

void DocumentImage::render(const Palette<uint> &palette)
{
    renderInto(palette, m_picture);
    if (m_mode == Indexed32 || m_mode == Continuous)
        m_imagePalette = palette;
}

void DocumentImage::renderInto(const Palette<uint> &palette, QImage &out) const
{
    switch (m_mode) {
    case Indexed8: {
        QVector<QRgb> table = paletteColourTable(palette);
        // An indexed picture needs a table entry for every byte value it may hold; pixels past
        // the palette show the last colour, as 32-bit indexed pictures do.
        const QRgb pad = table.isEmpty() ? 0xFF000000u : table.last();
        if (table.size() > 256)
            table.resize(256);
        while (table.size() < 256)
            table.append(pad);
        out = viewIndexes8(table);
        break;
    }
    case Indexed32:
        renderIndexed32(m_indexCells.data(), m_width, m_height, palette, out);
        break;
    case Continuous:
        renderContinuous(m_realCells.data(), m_width, m_height, palette, m_interpolate, out);
        break;
    default:
        // RGB pixels do not go through a palette; there is nothing else to show.
        if (&out != &m_picture)
            out = m_picture;
        break;
    }
}

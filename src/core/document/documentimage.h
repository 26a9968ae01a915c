#pragma once

#include "palette/palette.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

// The document's image in one of its modes, with the picture the image view shows.
//   1 RGB:          32-bit ARGB pixels in the picture; the palette is not applied
//   2 indexed 8bit: one byte a pixel in an indexed picture; rendering only swaps its colour table
//   3 indexed 32bit: one unsigned index a cell; indexes past the palette show the last colour
//   4 continuous:   one float a cell, 0..65535 across the palette
// A plain value: copies duplicate the cells and the picture. The factories give a null image for a
// size past ImageLimits, so no image of the program is larger.
class DocumentImage
{
public:
    enum Mode : int { None = 0, RGB = 1, Indexed8 = 2, Indexed32 = 3, Continuous = 4 };

    DocumentImage() = default;

    // A loaded picture: an 8-bit indexed picture becomes mode 2 with its colour table as the image
    // palette; anything else is converted to 32-bit ARGB and becomes mode 1 (without a copy when
    // the picture is handed over and already holds 32-bit pixels).
    static DocumentImage fromPicture(QImage picture);
    // Mode 2 from one byte a pixel (row-major, top row first).
    static DocumentImage fromIndexes8(int width, int height, const std::vector<uint8_t> &indexes);
    // The same taking the bytes over: rows are spread to their 32-bit stride where they lie.
    static DocumentImage fromIndexes8(int width, int height, std::vector<uint8_t> &&indexes);
    static DocumentImage fromIndexes32(int width, int height, std::vector<uint32_t> cells);
    static DocumentImage fromContinuous(int width, int height, std::vector<float> cells, bool interpolate = false);

    int mode() const { return m_mode; }
    bool isNull() const { return m_mode == None; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    bool interpolate() const { return m_interpolate; }
    void setInterpolate(bool on) { m_interpolate = on; }

    // The picture the image view shows; for modes 1 and 2 it also holds the pixels.
    const QImage &picture() const { return m_picture; }
    // Mode 2 pixels, one byte each; rows are indexStride() bytes apart.
    const uint8_t *indexRow(int y) const { return m_indexes8->data() + size_t(y) * size_t(m_stride8); }
    int indexStride() const { return m_stride8; }
    const std::vector<uint32_t> &indexCells() const { return m_indexCells; }
    const std::vector<float> &continuousCells() const { return m_realCells; }
    // For mode 2 loaded from a file: the file's colour table; otherwise the palette last rendered.
    const Palette<uint> &imagePalette() const { return m_imagePalette; }
    void setImagePalette(const Palette<uint> &p) { m_imagePalette = p; }

    // Rebuilds the picture through palette. Mode 2 changes only the colour table; no pixel is touched.
    void render(const Palette<uint> &palette);
    // The picture through palette, written into out (whose buffer is reused when it fits) while
    // the image itself stays as it is: how a palette is shown before it is chosen.
    void renderInto(const Palette<uint> &palette, QImage &out) const;

private:
    template <typename Fill>
    void adoptIndexes8(Fill fill);
    QImage viewIndexes8(const QVector<QRgb> &table) const;

    int m_mode = None;
    int m_width = 0;
    int m_height = 0;
    bool m_interpolate = false;
    QImage m_picture;
    // Mode 2 pixels, shared by copies and never written after creation: the picture is a view
    // over them, so a new colour table costs 256 entries whatever the image size.
    std::shared_ptr<std::vector<uint8_t>> m_indexes8;
    int m_stride8 = 0;
    std::vector<uint32_t> m_indexCells;
    std::vector<float> m_realCells;
    Palette<uint> m_imagePalette;
};

#pragma once

// GIF files for the tests, written with GIFLIB's own encoder so that the reader is tried on files
// it did not write itself: global and local colour tables, transparent indexes, interlaced frames,
// frames smaller than the screen, several frames.

#include <QByteArray>
#include <QVector>
#include <QtGui/qrgb.h>

#include <gif_lib.h>

#include <cstdint>
#include <vector>

struct GifFrame
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels; // row-major, top row first
    QVector<QRgb> localTable;    // a power of two entries; empty for none
    int transparent = -1;        // the index a graphic control block before the frame names
    bool interlace = false;
};

namespace GifBuilderDetail {

inline int appendTo(GifFileType *gif, const GifByteType *bytes, int length)
{
    static_cast<QByteArray *>(gif->UserData)->append(reinterpret_cast<const char *>(bytes), length);
    return length;
}

inline ColorMapObject *mapOf(const QVector<QRgb> &table)
{
    if (table.isEmpty())
        return nullptr;
    std::vector<GifColorType> colours;
    for (QRgb c : table)
        colours.push_back({GifByteType(qRed(c)), GifByteType(qGreen(c)), GifByteType(qBlue(c))});
    return GifMakeMapObject(table.size(), colours.data());
}

} // namespace GifBuilderDetail

// Empty when GIFLIB refuses what it is given.
inline QByteArray buildGif(int screenWidth, int screenHeight, const QVector<QRgb> &globalTable,
                           const std::vector<GifFrame> &frames, int background = 0)
{
    QByteArray out;
    int error = 0;
    GifFileType *gif = EGifOpen(&out, GifBuilderDetail::appendTo, &error);
    if (!gif)
        return {};
    EGifSetGifVersion(gif, true);
    ColorMapObject *global = GifBuilderDetail::mapOf(globalTable);
    bool ok = EGifPutScreenDesc(gif, screenWidth, screenHeight, 8, background, global) == GIF_OK;
    GifFreeMapObject(global);
    for (const GifFrame &frame : frames) {
        if (ok && frame.transparent >= 0) {
            GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, frame.transparent};
            GifByteType block[4];
            const size_t length = EGifGCBToExtension(&control, block);
            ok = EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, int(length), block) == GIF_OK;
        }
        ColorMapObject *local = GifBuilderDetail::mapOf(frame.localTable);
        // GIFLIB drops the previous frame's local table without freeing it when a frame has none.
        if (!local && gif->Image.ColorMap) {
            GifFreeMapObject(gif->Image.ColorMap);
            gif->Image.ColorMap = nullptr;
        }
        ok = ok && EGifPutImageDesc(gif, frame.left, frame.top, frame.width, frame.height, frame.interlace,
                                    local) == GIF_OK;
        GifFreeMapObject(local);
        // Interlaced rows go out in four passes.
        std::vector<int> rows;
        const int starts[] = {0, 4, 2, 1}, steps[] = {8, 8, 4, 2};
        for (int pass = 0; pass < (frame.interlace ? 4 : 1); ++pass)
            for (int y = frame.interlace ? starts[pass] : 0; y < frame.height;
                 y += frame.interlace ? steps[pass] : 1)
                rows.push_back(y);
        for (int y : rows) {
            std::vector<GifPixelType> line(frame.pixels.begin() + y * frame.width,
                                           frame.pixels.begin() + (y + 1) * frame.width);
            ok = ok && EGifPutLine(gif, line.data(), frame.width) == GIF_OK;
        }
    }
    ok = EGifCloseFile(gif, &error) == GIF_OK && ok;
    return ok ? out : QByteArray();
}

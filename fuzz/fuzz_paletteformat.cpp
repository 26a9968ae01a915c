// One palette reader on arbitrary bytes; CHROMAXIS_FUZZ_FORMAT is the format number. A palette that
// reads must also survive its own format's writer and read back with the same colours, so the
// target checks the writers and the agreement of both sides as well as the reader's safety.

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#ifndef CHROMAXIS_FUZZ_FORMAT
#error "CHROMAXIS_FUZZ_FORMAT must name the format to read"
#endif

namespace {

constexpr int format = CHROMAXIS_FUZZ_FORMAT;

[[noreturn]] void disagree(const char *what, int index)
{
    std::fprintf(stderr, "format %d: %s (entry %d)\n", format, what, index);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    const QString path = QStringLiteral("fuzz-input");
    Palette<uint> palette;
    try {
        PaletteFormatIO::readPaletteBytes(format, bytes, path, palette);
    } catch (const DescribedException &) {
        return 0;
    }

    QByteArray written;
    try {
        written = PaletteFormatIO::paletteBytes(format, palette, path, ExportOptions());
    } catch (const DescribedException &) {
        // The writers refuse only palettes their format cannot hold.
        if (!(format == FormatGif && palette.size() == 0))
            disagree("the writer refused a palette its reader produced", -1);
        return 0;
    }
    Palette<uint> again;
    try {
        PaletteFormatIO::readPaletteBytes(format, written, path, again);
    } catch (const DescribedException &e) {
        std::fprintf(stderr, "%s\n", e.what());
        disagree("the reader refused what the writer wrote", -1);
    }
    if (again.size() != palette.size())
        disagree("the colour count changed", again.size());
    // Photoshop swatches keep 16 bits; every other format keeps the high byte of red, green and blue.
    const uint mask = format == FormatPhotoshop ? 0xFFFFu : 0xFF00u;
    for (int i = 0; i < palette.size(); ++i) {
        const auto &a = palette[i];
        const auto &b = again[i];
        if ((a.r & mask) != b.r || (a.g & mask) != b.g || (a.b & mask) != b.b)
            disagree("a colour changed", i);
    }
    return 0;
}

#include "palette/describedexception.h"
#include "storage/gifimage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Any input either reads as an 8-bit indexed image, which then survives a write and a second read
// with its size, pixels and colours, or throws DescribedException; nothing else is allowed.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
    DocumentImage img;
    try {
        img = GifImage::fromBytes(bytes, QStringLiteral("fuzz.gif"));
    } catch (const DescribedException &) {
        return 0;
    }
    if (img.mode() != DocumentImage::Indexed8 || img.imagePalette().isEmpty())
        std::abort();
    const DocumentImage again = GifImage::fromBytes(GifImage::toBytes(img), QStringLiteral("again.gif"));
    if (again.width() != img.width() || again.height() != img.height())
        std::abort();
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            if (again.indexRow(y)[x] != img.indexRow(y)[x] ||
                again.picture().pixel(x, y) != img.picture().pixel(x, y))
                std::abort();
    return 0;
}

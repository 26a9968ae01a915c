#include "palette/describedexception.h"
#include "storage/numpyimage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Any input either reads as an image, which then survives a write and a second read unchanged in
// size and mode, or throws DescribedException; nothing else is allowed.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
    DocumentImage img;
    try {
        img = NumpyImage::fromBytes(bytes, QStringLiteral("fuzz"));
    } catch (const DescribedException &) {
        return 0;
    }
    const DocumentImage again = NumpyImage::fromBytes(
        NumpyImage::toNpz(img, NumpyImage::Compression::Deflated), QStringLiteral("again"));
    if (again.mode() != img.mode() || again.width() != img.width() || again.height() != img.height())
        std::abort();
    return 0;
}

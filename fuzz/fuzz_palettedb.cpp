#include "storage/palettedatabase.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    PaletteDatabase db;
    db.loadFromText(QByteArray(reinterpret_cast<const char *>(data), int(size)));
    for (const QString &name : db.names())
        (void)db.lookup(name);
    return 0;
}

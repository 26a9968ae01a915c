#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Any input, compressed or not, either reads as a project or throws DescribedException. A project
// that reads writes bytes that read back to the very same bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
    ProjectData project;
    try {
        project = ProjectFile::decode(ProjectFile::gunzip(bytes, QStringLiteral("fuzz"), qint64(16) << 20),
                                      QStringLiteral("fuzz"));
    } catch (const DescribedException &) {
        return 0;
    }
    const QByteArray written = ProjectFile::encode(project);
    const QByteArray again = ProjectFile::encode(ProjectFile::decode(written, QStringLiteral("again")));
    if (again != written)
        std::abort();
    return 0;
}

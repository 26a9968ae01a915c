#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <set>

// The whole working state of the main window as a project file holds it.
struct ProjectData
{
    Palette<uint> palette; // with its "name", "file" and "comment" properties
    QString paletteFileName;
    bool paletteModified = false;
    bool fixedPaletteSize = false;
    RGBAColor<uint> fillColor{0, 0, 0, 65535}; // only the high byte of red, green and blue is kept
    quint32 builtinIndex = 0;
    DocumentImage image; // a null image is "no image"; it is not rendered
    QString imageFileName;
    bool imageModified = false;
    std::set<int> selection;
    // The version text a file was read with; writing always stores the current version.
    QString version;
};

// Reading and writing Chromaxis project files (*.cxw): a gzip stream around a fixed sequence of
// strings, big-endian integers and raw pixel cells. Every failure is a DescribedException; reading
// builds a fresh ProjectData, so nothing of a bad file reaches the document. Reading inflates the
// file as it parses it: a wrong header is refused after its first bytes, each claim is weighed
// before anything is allocated for it, memory grows only with the data that is really there, and
// the checksum and length of every gzip member are checked.
class ProjectFile
{
public:
    // The version text written into every project.
    static QString currentVersion();
    // What a project may hold, on reading and on writing alike, so that whatever is written reads
    // back. Images are bound by ImageLimits; no real palette or text comes near these.
    static constexpr int maxPaletteEntries = 1 << 24;
    static constexpr int maxTextBytes = 1 << 24;
    // Bound on the uncompressed project, above the largest image, palette and texts together: a
    // hostile gzip stream stops there.
    static constexpr qint64 maxUncompressedSize = qint64(1) << 30;

    // The uncompressed bytes of a project. Throws "Could not save" for a negative selection index,
    // a selection of more than SelectionList::maximumCount indexes or anything past the limits
    // above. Indexes at or past the palette's end are written; reading keeps them.
    static QByteArray encode(const ProjectData &data);
    // Parses uncompressed bytes; fileName goes into the messages. Data that ends early reads as
    // empty strings and zeros and so fails at the next section tag.
    static ProjectData decode(const QByteArray &uncompressed, const QString &fileName);

    // The pixel bytes of an image exactly as a project stores them (empty for no image).
    static QByteArray pixelBytes(const DocumentImage &image);

    // A gzip stream of bytes, as the file holds it.
    static QByteArray gzip(const QByteArray &bytes);
    // The uncompressed contents of a file: concatenated gzip members are joined, data after the
    // last member is ignored, and data that is not gzip-compressed comes back unchanged. A damaged
    // or cut stream, a checksum or length that does not match, and a result of more than limit
    // bytes throw the project load message with the reason.
    static QByteArray gunzip(const QByteArray &bytes, const QString &fileName,
                             qint64 limit = maxUncompressedSize);

    // Encodes, compresses and saves whole or not at all; an existing file is replaced only on success.
    static void write(const QString &path, const ProjectData &data);
    // Reads and decodes path. A file that cannot be opened reads as empty and so fails at the magic.
    static ProjectData read(const QString &path);
    // Reads a device opened for reading as it comes; fileName goes into the messages.
    static ProjectData read(QIODevice &device, const QString &fileName);
};

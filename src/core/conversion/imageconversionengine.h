#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"

#include <QImage>
#include <QObject>
#include <QStringList>

#include <atomic>

class PaletteDatabase;

// What the image converter and the image quantiser share: the destination palette and where it
// comes from, the destination format, and the palettes that could not be found. A palette source
// that fails (an unknown database name, an unreadable file) never stops a run: the grayscale
// palette stands in and the name or path is kept in the missing list for the caller to report.
class ImageConversionEngine : public QObject
{
    Q_OBJECT
public:
    enum Format : int
    {
        Indexed = 2,
        Continuous = 4
    };

    explicit ImageConversionEngine(const PaletteDatabase *paletteList = nullptr, QObject *parent = nullptr);

    // 256 greys, entry i = (i, i, i) widened by 256, opaque.
    static Palette<uint> grayscale();
    // 766 entries so that entry k has the channel sum k: (i, i, i), (i + 1, i, i), (i + 1, i + 1, i)
    // for i = 0..254, then (255, 255, 255); widened by 256 with the alpha 65280 (not 65535).
    static Palette<uint> extendedGrayscale();
    // Black and white widened to 65280, opaque.
    static Palette<uint> blackAndWhite();

    // ---- Palette sources; each first resets the destination palette.
    void setGrayscale();
    void setExtendedGrayscale();
    // The current or the last palette, as the caller hands it over.
    void setGivenPalette(const Palette<uint> &palette);
    // A database palette by its exact full name; an empty name keeps grayscale quietly.
    void setDatabasePalette(const QString &name);
    // A palette file, its format told by the text after the last "."; an empty path keeps grayscale.
    void setFilePalette(const QString &path);

    void setFormat(int format, bool interpolate);
    void setPaletteList(const PaletteDatabase *list) { m_paletteList = list; }

    const Palette<uint> &destinationPalette() const { return m_destination; }
    int paletteSource() const { return m_source; }
    int format() const { return m_format; }
    bool interpolate() const { return m_interpolate; }
    const QStringList &missingPalettes() const { return m_missing; }
    void clearMissingPalettes() { m_missing.clear(); }

    // Asks a running conversion to stop; it then returns a null image. Safe from any thread.
    void cancel() { m_cancelled = true; }
    bool wasCancelled() const { return m_cancelled; }

    // The image as 8-bit colours: an RGB image's picture, an 8-bit indexed picture whose colour
    // table is shownWith (or, when that is empty, the image's own palette), or the picture that
    // 32-bit and continuous images show through shownWith.
    static QImage sourcePicture(const DocumentImage &image, const Palette<uint> &shownWith);

signals:
    // Once a run with the destination palette, before the image is produced.
    void paletteChanged(Palette<uint> palette);
    // step 0 computing the palette, 1 mapping the pixels; progress 0..100.
    void progressChanged(int step, int progress);

protected:
    // The source number that stands for a given palette: 2 for the converter, 3 for the quantiser.
    virtual int givenSource() const = 0;
    // Resets the destination palette and the cancel request for a new source.
    void resetTo(int source, const Palette<uint> &palette);

    Palette<uint> m_destination;
    int m_source = 0;
    int m_format = Indexed;
    bool m_interpolate = false;
    const PaletteDatabase *m_paletteList = nullptr;
    QStringList m_missing;
    std::atomic<bool> m_cancelled{false};
};

#include "chromaxisdocument.h"

#include "describedexception.h"
#include "standardpalettes.h"

#include <QFile>
#include <QSaveFile>
#include <QTextStream>

ChromaxisDocument::ChromaxisDocument() : m_palette(grayscalePalette()) {}

void ChromaxisDocument::setPalette(const Palette<uint> &palette)
{
    m_lastPalette = m_palette;
    m_palette = palette;
    m_image.render(m_palette);
}

void ChromaxisDocument::previewPalette(const Palette<uint> &palette)
{
    m_palette = palette;
    m_image.render(m_palette);
}

void ChromaxisDocument::setImage(const DocumentImage &image)
{
    m_image = image;
    m_image.render(m_palette);
}

void ChromaxisDocument::closeImage()
{
    m_image = DocumentImage();
    m_imageFileName.clear();
    m_imageModified = false;
}

QString ChromaxisDocument::modeText(int mode, bool interpolate)
{
    switch (mode) {
    case 1:
        return QStringLiteral("RGB");
    case 2:
        return QStringLiteral("indexed 8bit");
    case 3:
        return QStringLiteral("indexed 32bit");
    case 4:
        return interpolate ? QStringLiteral("continuous (interpolated)") : QStringLiteral("continuous");
    default:
        return QStringLiteral("N/A");
    }
}

namespace BuiltinList {

int next(int index, int count)
{
    if (count <= 0)
        return 0;
    return index >= count - 1 ? 0 : index + 1;
}

int prior(int index, int count)
{
    if (count <= 0)
        return 0;
    if (index < 1 || index > count)
        index = count;
    return index - 1;
}

int random(int r, int count)
{
    const int i = int(float(r * (1 / 32768.0)) * float(count));
    return count > 0 ? qBound(0, i, count - 1) : 0;
}

} // namespace BuiltinList

std::set<int> readSelectionFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Could not open file '%1'.").arg(path));
    std::set<int> selection;
    QTextStream in(&f);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        for (const QString &token : line.split(QRegExp(QStringLiteral("\\s+")), Qt::SkipEmptyParts)) {
            bool ok = false;
            const int v = token.toInt(&ok);
            if (!ok)
                throw DescribedException(
                    QStringLiteral("Could not load"),
                    QStringLiteral("Could not parse file '%1'.\nA non-integer value occured.").arg(path));
            if (v >= 0) // a negative index names no entry
                selection.insert(v);
        }
    }
    return selection;
}

void writeSelectionFile(const QString &path, const std::set<int> &selection)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Could not open file '%1'.").arg(path));
    QByteArray text;
    for (int i : selection)
        text += QByteArray::number(i) + '\n';
    if (f.write(text) != text.size() || !f.commit())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Could not open file '%1'.").arg(path));
}

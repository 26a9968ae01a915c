#include "storage/palettedatabase.h"

#include <QFile>

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool parseColours(const QByteArray &hex, Palette<uint> &out)
{
    if (hex.size() % 6 != 0)
        return false;
    out.reserve(hex.size() / 6);
    for (int i = 0; i < hex.size(); i += 6) {
        uint ch[3];
        for (int c = 0; c < 3; ++c) {
            const int hi = hexDigit(hex[i + 2 * c]);
            const int lo = hexDigit(hex[i + 2 * c + 1]);
            if (hi < 0 || lo < 0)
                return false;
            ch[c] = uint(hi * 16 + lo) << 8;
        }
        out.append({ch[0], ch[1], ch[2], 65535});
    }
    return true;
}

} // namespace

void PaletteDatabase::loadFromText(const QByteArray &text)
{
    m_names.clear();
    m_palettes.clear();
    for (QByteArray line : text.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (line.isEmpty())
            continue;
        const int first = line.indexOf(';');
        if (first <= 0)
            continue;
        const int second = line.indexOf(';', first + 1);
        if (second < 0)
            continue;
        const QString name = QString::fromUtf8(line.left(first));
        Palette<uint> palette;
        if (!parseColours(line.mid(first + 1, second - first - 1), palette))
            continue;
        const int slash = name.indexOf('/');
        palette.setProperty(PaletteName, slash >= 0 ? name.mid(slash + 1) : name);
        if (m_palettes.find(name) == m_palettes.end())
            m_names.append(name);
        m_palettes[name] = std::move(palette);
    }
}

bool PaletteDatabase::loadFromFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        loadFromText({});
        return false;
    }
    loadFromText(f.readAll());
    return true;
}

const PaletteDatabase &PaletteDatabase::shipped()
{
    static const PaletteDatabase db = [] {
        PaletteDatabase d;
        d.loadFromFile(QStringLiteral(":res/texts/db.txt"));
        return d;
    }();
    return db;
}

std::optional<Palette<uint>> PaletteDatabase::lookup(const QString &fullName) const
{
    const auto it = m_palettes.find(fullName);
    if (it == m_palettes.end())
        return std::nullopt;
    return it->second;
}

QString PaletteDatabase::subsetOf(const QString &fullName)
{
    const int slash = fullName.indexOf('/');
    return slash >= 0 ? fullName.left(slash) : QString();
}

#include "operations/selectionlist.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include "refusal.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <functional>

namespace {

// --- hand-assembled bytes -----------------------------------------------------------------------

QByteArray str(const QByteArray &text)
{
    return text + '\0';
}

QByteArray be32(quint32 v)
{
    uchar b[4];
    qToBigEndian(v, b);
    return QByteArray(reinterpret_cast<const char *>(b), 4);
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (const int v : values)
        out += char(v);
    return out;
}

// Everything before the image section of the sample project, or of an empty one.
QByteArray headerBytes(bool empty)
{
    QByteArray out =
        str("Chromaxis") + str("2.0.0") + str("settings") + be32(0) + be32(empty ? 0 : 0x01020304);
    out += str("palette");
    if (empty)
        return out + be32(0) + str("") + str("") + str("") + str("") + bytes({0, 0}) + be32(0);
    out += be32(2);
    out += be32(0x1234) + be32(0xABCD) + be32(0xFFFF) + be32(0xFFFF);
    out += be32(0) + be32(1) + be32(2) + be32(0xFFFE0001);
    out += str("Duo") + str("duo") + str("two") + str("/data/duo.gpl");
    return out + bytes({1, 0}) + be32(0x0012ABFF);
}

QByteArray selectionBytes(bool empty)
{
    return str("selection") + (empty ? be32(0) : be32(1) + be32(1));
}

// --- sample projects ----------------------------------------------------------------------------

// A 2x1 image of each mode whose cells tell byte order apart.
DocumentImage sampleImage(int mode)
{
    switch (mode) {
    case DocumentImage::RGB: {
        QImage picture(2, 1, QImage::Format_ARGB32);
        picture.setPixel(0, 0, 0x80102030u);
        picture.setPixel(1, 0, 0xFF0000FFu);
        return DocumentImage::fromPicture(picture);
    }
    case DocumentImage::Indexed8:
        return DocumentImage::fromIndexes8(2, 1, {7, 200});
    case DocumentImage::Indexed32: {
        DocumentImage image = DocumentImage::fromIndexes32(2, 1, {0x11223344u, 5u});
        image.setInterpolate(true);
        return image;
    }
    case DocumentImage::Continuous:
        return DocumentImage::fromContinuous(2, 1, {1.0f, 65535.0f}, true);
    default:
        return {};
    }
}

ProjectData sampleProject(int mode, bool empty = false)
{
    ProjectData data;
    if (!empty) {
        // 65535 * 65535 in the last alpha: a word the hue rotation really produces.
        data.palette = Palette<uint>({{0x1234, 0xABCD, 0xFFFF, 0xFFFF}, {0, 1, 2, 0xFFFE0001u}});
        data.palette.setProperty(PaletteName, "Duo");
        data.palette.setProperty(PaletteFile, "duo");
        data.palette.setProperty(PaletteComment, "two");
        data.paletteFileName = "/data/duo.gpl";
        data.paletteModified = true;
        data.fillColor = {0x1234, 0xABCD, 0xFF00, 7};
        data.builtinIndex = 0x01020304;
        data.selection = {1};
    }
    data.image = sampleImage(mode);
    if (!data.image.isNull()) {
        data.imageFileName = "pic.png";
        data.imageModified = mode != DocumentImage::Indexed8;
    }
    return data;
}

// A larger image, so the streams run through many blocks of the compressor.
DocumentImage largeImage(int mode)
{
    const int w = 301, h = 217;
    const size_t n = size_t(w) * h;
    switch (mode) {
    case DocumentImage::RGB: {
        QImage picture(w, h, QImage::Format_ARGB32);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                picture.setPixel(x, y, quint32(x * 2654435761u) ^ quint32(y * 40503u));
        return DocumentImage::fromPicture(picture);
    }
    case DocumentImage::Indexed8: {
        std::vector<uint8_t> cells(n);
        for (size_t i = 0; i < n; ++i)
            cells[i] = uint8_t((i * 131) >> 3);
        return DocumentImage::fromIndexes8(w, h, cells);
    }
    case DocumentImage::Indexed32: {
        std::vector<uint32_t> cells(n);
        for (size_t i = 0; i < n; ++i)
            cells[i] = uint32_t(i * 2654435761u);
        return DocumentImage::fromIndexes32(w, h, cells);
    }
    case DocumentImage::Continuous: {
        std::vector<float> cells(n);
        for (size_t i = 0; i < n; ++i)
            cells[i] = float(i) * 0.37f - 1000.0f;
        return DocumentImage::fromContinuous(w, h, cells, false);
    }
    default:
        return {};
    }
}

void compareProjects(const ProjectData &actual, const ProjectData &expected)
{
    QCOMPARE(actual.palette.entries(), expected.palette.entries());
    for (int key : {PaletteName, PaletteFile, PaletteComment})
        QCOMPARE(actual.palette.property(key), expected.palette.property(key));
    QCOMPARE(actual.paletteFileName, expected.paletteFileName);
    QCOMPARE(actual.paletteModified, expected.paletteModified);
    QCOMPARE(actual.fixedPaletteSize, expected.fixedPaletteSize);
    QCOMPARE(actual.fillColor, expected.fillColor);
    QCOMPARE(actual.builtinIndex, expected.builtinIndex);
    QCOMPARE(actual.image.mode(), expected.image.mode());
    QCOMPARE(actual.image.width(), expected.image.width());
    QCOMPARE(actual.image.height(), expected.image.height());
    QCOMPARE(actual.image.interpolate(), expected.image.interpolate());
    QCOMPARE(ProjectFile::pixelBytes(actual.image), ProjectFile::pixelBytes(expected.image));
    QCOMPARE(actual.imageFileName, expected.imageFileName);
    QCOMPARE(actual.imageModified, expected.imageModified);
    QCOMPARE(actual.selection, expected.selection);
}

QString mismatch(const QString &file, const QString &tag)
{
    return QStringLiteral("Cannot load project %1.\nThe file does not match the format.\nExpected '%2'.")
        .arg(file, tag);
}

const QString cannotLoad = QStringLiteral("Could not load: ");

// The message of a failed decode, or "loaded" when it succeeded.
QString decodeMessage(const QByteArray &data, const QString &file = "t.cxw")
{
    const QString got = refusal([&] { ProjectFile::decode(data, file); });
    if (got == QLatin1String("accepted"))
        return QStringLiteral("loaded");
    return got.startsWith(cannotLoad) ? got.mid(cannotLoad.size()) : got;
}

void writeFile(const QString &file, const QByteArray &bytes)
{
    QFile f(file);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file));
}

} // namespace

class TestProjectFile : public QObject
{
    Q_OBJECT
private slots:
    void layout_data();
    void layout();
    void roundTrip_data();
    void roundTrip();
    void readRefused_data();
    void readRefused();
    void truncated_data();
    void truncated();
    void truncatedGzip();
    void hugeClaims_data();
    void hugeClaims();
    void gzipStreams();
    void everyChangedByte();
    void bombsStopAtTheirHeader_data();
    void bombsStopAtTheirHeader();
    void lenientReading();
    void failedWritesKeepTheOldFile();
    void selectionPastThePalette_data();
    void selectionPastThePalette();
    void selectionTooLargeToWrite();

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

void TestProjectFile::layout_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("empty");
    QTest::addColumn<QByteArray>("imageSection"); // after the "image" tag
    const QByteArray size = be32(2) + be32(1);
    QTest::newRow("no image: one 0 byte") << 0 << false << bytes({0});
    QTest::newRow("empty palette, selection and image") << 0 << true << bytes({0});
    QTest::newRow("rgb: ARGB least significant byte first")
        << 1 << false
        << bytes({1}) + size + bytes({0, 0x30, 0x20, 0x10, 0x80, 0xFF, 0x00, 0x00, 0xFF}) + str("pic.png") +
               bytes({1});
    QTest::newRow("indexed 8bit: a byte a pixel")
        << 2 << false << bytes({2}) + size + bytes({0, 7, 200}) + str("pic.png") + bytes({0});
    QTest::newRow("indexed 32bit: little-endian cells")
        << 3 << false
        << bytes({3}) + size + bytes({1, 0x44, 0x33, 0x22, 0x11, 5, 0, 0, 0}) + str("pic.png") + bytes({1});
    QTest::newRow("continuous: float bits little-endian")
        << 4 << false
        << bytes({4}) + size + bytes({1, 0x00, 0x00, 0x80, 0x3F, 0x00, 0xFF, 0x7F, 0x47}) + str("pic.png") +
               bytes({1});
    QTest::newRow("image with an empty palette")
        << 2 << true << bytes({2}) + size + bytes({0, 7, 200}) + str("pic.png") + bytes({0});
}

void TestProjectFile::layout()
{
    QFETCH(int, mode);
    QFETCH(bool, empty);
    QFETCH(QByteArray, imageSection);
    const ProjectData data = sampleProject(mode, empty);
    const QByteArray expected = headerBytes(empty) + str("image") + imageSection + selectionBytes(empty);
    QCOMPARE(ProjectFile::encode(data), expected);

    ProjectData back = ProjectFile::decode(expected, "t.cxw");
    QCOMPARE(back.version, QString("2.0.0"));
    // Only the high bytes of the fill colour are kept, and it comes back opaque.
    const RGBAColor<uint> fill =
        empty ? RGBAColor<uint>{0, 0, 0, 65535} : RGBAColor<uint>{0x1200, 0xAB00, 0xFF00, 65535};
    QCOMPARE(back.fillColor, fill);
    back.fillColor = data.fillColor;
    compareProjects(back, data);
}

void TestProjectFile::roundTrip_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("large");
    QTest::addColumn<bool>("compressed");
    for (int mode = 0; mode <= 4; ++mode)
        for (const bool compressed : {true, false}) {
            const char *how = compressed ? "gzip" : "uncompressed";
            QTest::addRow("mode %d %s", mode, how) << mode << false << compressed;
            if (mode != 0)
                QTest::addRow("mode %d large %s", mode, how) << mode << true << compressed;
        }
}

void TestProjectFile::roundTrip()
{
    QFETCH(int, mode);
    QFETCH(bool, large);
    QFETCH(bool, compressed);
    ProjectData data = sampleProject(mode);
    data.fillColor = {0x1200, 0xAB00, 0xFF00, 65535};
    data.fixedPaletteSize = true;
    if (large)
        data.image = largeImage(mode);
    const QString file = path(QStringLiteral("round%1%2%3.cxw").arg(mode).arg(large).arg(compressed));
    if (compressed) {
        ProjectFile::write(file, data);
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray stored = f.readAll();
        QVERIFY(stored.startsWith("\x1f\x8b"));
        QCOMPARE(ProjectFile::gunzip(stored, "x"), ProjectFile::encode(data));
    } else {
        writeFile(file, ProjectFile::encode(data));
    }
    const ProjectData back = ProjectFile::read(file);
    compareProjects(back, data);
    QCOMPARE(back.version, QString("2.0.0"));
}

// Whatever keeps a file from being read says so under one title: a word of the layout that is not
// there, a gzip stream whose checksum or length does not vouch for it, a path that is no file.
void TestProjectFile::readRefused_data()
{
    QTest::addColumn<QString>("name"); // in the test folder
    QTest::addColumn<bool>("write");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    const QByteArray sample = ProjectFile::encode(sampleProject(DocumentImage::Indexed32));
    for (const char *tag : {"Chromaxis", "settings", "palette", "image", "selection"}) {
        QByteArray data = sample;
        const int at = data.indexOf(str(tag));
        QVERIFY(at >= 0);
        data[at] = char(data[at] ^ 0x20); // the same word in the other case
        for (const bool compressed : {false, true})
            QTest::addRow("tag %s %s", tag, compressed ? "gzip" : "plain")
                << "broken.cxw" << true << (compressed ? ProjectFile::gzip(data) : data)
                << mismatch("broken.cxw", tag);
    }
    const QByteArray packed = ProjectFile::gzip(ProjectFile::encode(sampleProject(DocumentImage::Indexed8)));
    const auto flipped = [&](int at) { // from the end when negative
        QByteArray b = packed;
        const int pos = at < 0 ? b.size() + at : at;
        b[pos] = char(b[pos] ^ 0x01);
        return b;
    };
    const QString damaged = "Cannot load project damaged.cxw.\nThe file is damaged: ";
    QTest::newRow("gzip checksum") << "damaged.cxw" << true << flipped(-8)
                                   << damaged + "its checksum does not match its contents.";
    QTest::newRow("gzip length") << "damaged.cxw" << true << flipped(-4)
                                 << damaged + "its recorded length does not match its contents.";
    QTest::newRow("gzip compression method")
        << "damaged.cxw" << true << flipped(2)
        << damaged + "its compressed data is invalid (unknown compression method).";
    QTest::newRow("missing") << "none/missing.cxw" << false << QByteArray()
                             << mismatch("missing.cxw", "Chromaxis");
    QTest::newRow("directory") << "sub.cxw" << false << QByteArray() << mismatch("sub.cxw", "Chromaxis");
    QTest::newRow("empty file") << "empty.cxw" << true << QByteArray() << mismatch("empty.cxw", "Chromaxis");
}

void TestProjectFile::readRefused()
{
    QFETCH(QString, name);
    QFETCH(bool, write);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QDir(m_dir.path()).mkdir("sub.cxw");
    if (write)
        writeFile(path(name), content);
    QCOMPARE(refusal([&] { ProjectFile::read(path(name)); }), cannotLoad + message);
}

void TestProjectFile::truncated_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode <= 4; ++mode)
        QTest::addRow("mode %d", mode) << mode;
}

// Cut at every byte, a file fails at the first tag it did not read whole; a cut after the last
// tag has its own message. Nothing is ever read past the cut.
void TestProjectFile::truncated()
{
    QFETCH(int, mode);
    const QByteArray data = ProjectFile::encode(sampleProject(mode));
    QVector<QPair<int, QString>> tagEnds;
    int from = 0;
    for (const char *tag : {"Chromaxis", "settings", "palette", "image", "selection"}) {
        const int at = data.indexOf(str(tag), from);
        QVERIFY(at >= 0);
        from = at + int(qstrlen(tag)) + 1;
        tagEnds.append({from, QString::fromLatin1(tag)});
    }
    for (int cut = 0; cut < data.size(); ++cut) {
        // A detached copy, so a read past the cut would meet freed or foreign memory under sanitizers.
        const QByteArray part(data.constData(), cut);
        QString expected = QStringLiteral("Cannot load project t.cxw.\nThe file ends inside the selection.");
        for (const auto &[end, tag] : tagEnds)
            if (cut < end) {
                expected = mismatch("t.cxw", tag);
                break;
            }
        QCOMPARE(decodeMessage(part), expected);
    }
    QCOMPARE(decodeMessage(data), QString("loaded"));
}

// A gzip stream cut anywhere is refused as cut short: without its trailer nothing can vouch for
// the data. Cut inside the magic, the bytes are no gzip stream and pass as they are.
void TestProjectFile::truncatedGzip()
{
    const QByteArray data = ProjectFile::encode(sampleProject(DocumentImage::RGB));
    const QByteArray packed = ProjectFile::gzip(data);
    QCOMPARE(ProjectFile::gunzip(packed, "cut.cxw"), data);
    for (int cut = 0; cut < packed.size(); ++cut) {
        if (cut < 2) {
            QCOMPARE(ProjectFile::gunzip(packed.left(cut), "cut.cxw"), packed.left(cut));
            continue;
        }
        QCOMPARE(refusal([&] { ProjectFile::gunzip(packed.left(cut), "cut.cxw"); }),
                 cannotLoad +
                     "Cannot load project cut.cxw.\nThe file is cut short: its compressed data ends early.");
    }
}

void TestProjectFile::hugeClaims_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const QByteArray &data, const QString &message) {
        QTest::newRow(tag) << data << message;
    };
    const QByteArray head =
        str("Chromaxis") + str("2.0.0") + str("settings") + be32(0) + be32(0) + str("palette");
    const QByteArray palette = head + be32(1) + be32(1) + be32(2) + be32(3) + be32(4) + str("") + str("") +
                               str("") + str("") + bytes({0, 0}) + be32(0) + str("image");
    const QByteArray tail = QByteArray(64, '\x11') + str("") + bytes({0}) + selectionBytes(true);
    const auto image = [&](int mode, quint32 w, quint32 h) {
        return palette + char(mode) + be32(w) + be32(h) + char(0) + tail;
    };
    const QString tooManyEntries = "Cannot load project t.cxw.\nThe palette has %1 entries; a project holds at "
                                   "most 16777216.";
    row("2^31 entries", head + be32(0x80000000u) + QByteArray(40, '\0'), tooManyEntries.arg(0x80000000u));
    row("2^32-1 entries", head + be32(0xFFFFFFFFu) + QByteArray(40, '\0'), tooManyEntries.arg(0xFFFFFFFFu));
    row("2^24 entries, 40 bytes of them", head + be32(1u << 24) + QByteArray(40, '\0'),
        mismatch("t.cxw", "image"));
    row("entries one short", head + be32(3) + QByteArray(47, '\0'), mismatch("t.cxw", "image"));
    const QString tooLarge = "Cannot load project t.cxw.\nThe image is %1 x %2 pixels; at most 134217728 pixels, "
                             "262144 a side, can be opened.";
    row("65535x65535 indexed 32bit", image(3, 65535, 65535), tooLarge.arg(65535).arg(65535));
    row("65535x65535 rgb", image(1, 65535, 65535), tooLarge.arg(65535).arg(65535));
    row("65535x65535 continuous", image(4, 65535, 65535), tooLarge.arg(65535).arg(65535));
    row("2^32-1 squared 8bit", image(2, 0xFFFFFFFFu, 0xFFFFFFFFu),
        tooLarge.arg(0xFFFFFFFFu).arg(0xFFFFFFFFu));
    row("2^30 x 4 cells of 4 bytes", image(4, 0x40000000u, 4), tooLarge.arg(0x40000000u).arg(4));
    row("one pixel past the limit", image(3, 1u << 14, (1u << 13) + 1),
        tooLarge.arg(1u << 14).arg((1u << 13) + 1));
    row("one pixel past the side", image(2, (1u << 18) + 1, 1), tooLarge.arg((1u << 18) + 1).arg(1));
    // Within the limits, claims still cost nothing until the pixels are there.
    row("largest continuous image, 64 bytes of it", image(4, 1u << 14, 1u << 13),
        mismatch("t.cxw", "selection"));
    row("widest rgb image, 64 bytes of it", image(1, 1u << 18, 512), mismatch("t.cxw", "selection"));
    row("2^32-1 selected", palette + char(0) + str("selection") + be32(0xFFFFFFFFu) + be32(0),
        "Cannot load project t.cxw.\nThe selection holds 4294967295 indexes; a "
        "selection holds at most 1048576.");
    row("zero width", image(3, 0, 5), "Cannot load project t.cxw.\nThe image size 0 x 5 is not supported.");
    row("zero height", image(1, 7, 0), "Cannot load project t.cxw.\nThe image size 7 x 0 is not supported.");
    row("wider than any picture",
        palette + char(2) + be32(1u << 26) + be32(1) + char(0) + QByteArray(1 << 26, '\0') + tail,
        tooLarge.arg(1u << 26).arg(1));
    row("unknown mode", image(5, 1, 1), "Cannot load project t.cxw.\nUnknown image mode 5.");
    row("selection index beyond any int",
        palette + char(0) + str("selection") + be32(2) + be32(0) + be32(0x80000000u),
        "Cannot load project t.cxw.\nThe selection names entry 2147483648, which no palette holds.");
    const quint32 tooMany = quint32(SelectionList::maximumCount) + 1;
    row("more indexes than a selection holds",
        palette + char(0) + str("selection") + be32(tooMany) + QByteArray(int(tooMany) * 4, '\0'),
        "Cannot load project t.cxw.\nThe selection holds 1048577 indexes; a selection holds at most "
        "1048576.");
}

// Claims are weighed against the bytes that are there before anything is allocated for them.
void TestProjectFile::hugeClaims()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, message);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(decodeMessage(data), message);
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
}

void TestProjectFile::gzipStreams()
{
    const QByteArray a = ProjectFile::encode(sampleProject(DocumentImage::Indexed8));
    const QByteArray b = ProjectFile::encode(sampleProject(DocumentImage::Continuous));
    // Members are joined, trailing data that is no member is ignored, plain data passes unchanged.
    QCOMPARE(ProjectFile::gunzip(ProjectFile::gzip(a) + ProjectFile::gzip(b), "x"), a + b);
    QCOMPARE(ProjectFile::gunzip(ProjectFile::gzip(a) + "trailing junk", "x"), a);
    QCOMPARE(ProjectFile::gunzip(a, "x"), a);
    QCOMPARE(ProjectFile::gunzip(QByteArray(), "x"), QByteArray());
    QCOMPARE(ProjectFile::gunzip(QByteArray("\x1f"), "x"), QByteArray("\x1f"));

    // A stream that inflates past the bound stops there, long before it is all unpacked.
    const QByteArray bomb = ProjectFile::gzip(QByteArray(16 << 20, '\0'));
    QVERIFY(bomb.size() < 100000);
    for (const QByteArray &input : {bomb, QByteArray((1 << 20) + 1, 'x')})
        QCOMPARE(refusal([&] { ProjectFile::gunzip(input, "bomb.cxw", 1 << 20); }),
                 cannotLoad +
                     "Cannot load project bomb.cxw.\nThe uncompressed project is larger than 1048576 bytes.");
    QCOMPARE(ProjectFile::gunzip(bomb, "x", 16 << 20).size(), 16 << 20);

    // Damage inside any member is refused, wherever it is.
    QByteArray damaged = ProjectFile::gzip(a) + ProjectFile::gzip(b);
    damaged[damaged.size() - 6] = char(damaged[damaged.size() - 6] ^ 0x01);
    const QString got = refusal([&] { ProjectFile::gunzip(damaged, "x"); });
    QVERIFY2(got.startsWith(cannotLoad + "Cannot load project x.\nThe file is damaged: "), qPrintable(got));
}

// Any single changed byte of the compressed file either is refused or changes nothing that is read
// (the time stamp and the operating system of the gzip header): never a different project.
void TestProjectFile::everyChangedByte()
{
    ProjectData data = sampleProject(DocumentImage::Continuous);
    data.palette.resize(40, {1000, 2000, 3000, 65535});
    const QByteArray plain = ProjectFile::encode(data);
    const QByteArray packed = ProjectFile::gzip(plain);
    int refused = 0;
    for (int pos = 0; pos < packed.size(); ++pos) {
        for (const int flip : {0x01, 0x80, 0xFF}) {
            QByteArray changed = packed;
            changed[pos] = char(changed[pos] ^ flip);
            QBuffer device(&changed);
            device.open(QIODevice::ReadOnly);
            try {
                const ProjectData back = ProjectFile::read(device, "x.cxw");
                QVERIFY2(ProjectFile::encode(back) == plain,
                         qPrintable(QString("byte %1 ^ %2 loaded a different project").arg(pos).arg(flip)));
            } catch (const DescribedException &e) {
                QVERIFY2(e.message().startsWith("Cannot load project x.cxw.\n"), qPrintable(e.message()));
                ++refused;
            }
        }
    }
    // What may change freely is the header's time stamp, extra flags, operating system and text flag,
    // and the padding bits of the last deflate byte: nearly every change is refused.
    QVERIFY2(refused >= 3 * (packed.size() - 6) - 8, qPrintable(QString::number(refused)));
}

// A file is inflated as it is parsed: a bomb with a wrong header costs the first block, not the bomb.
void TestProjectFile::bombsStopAtTheirHeader_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QString>("message");
    QTest::newRow("zeros") << QByteArray() << mismatch("bomb.cxw", "Chromaxis");
    QTest::newRow("an endless version text")
        << str("Chromaxis") + QByteArray(32 << 20, 'v')
        << "Cannot load project bomb.cxw.\nA text in the file is longer than 16777216 bytes.";
    QTest::newRow("a huge palette")
        << str("Chromaxis") + str("2.0.0") + str("settings") + be32(0) + be32(0) + str("palette") + be32(1u << 28)
        << "Cannot load project bomb.cxw.\nThe palette has 268435456 entries; a project holds at most 16777216.";
}

void TestProjectFile::bombsStopAtTheirHeader()
{
    QFETCH(QByteArray, start);
    QFETCH(QString, message);
    QByteArray bomb = ProjectFile::gzip(start + QByteArray(128 << 20, '\0'));
    QBuffer device(&bomb);
    device.open(QIODevice::ReadOnly);
    QCOMPARE(refusal([&] { ProjectFile::read(device, "bomb.cxw"); }), cannotLoad + message);
    // Of about 130 KB of compressed zeros, the reader took what covers the header and little more.
    const qint64 needed = ProjectFile::gzip(start).size();
    QVERIFY2(device.pos() <= needed + (64 << 10), qPrintable(QString("%1 of %2").arg(device.pos()).arg(bomb.size())));
}

void TestProjectFile::lenientReading()
{
    QByteArray data = ProjectFile::encode(sampleProject(DocumentImage::Indexed8));
    // Any version is read, flags other than 0 mean set, the top byte of the fill colour and the
    // reserved word are ignored, indexes may come in any order and trailing bytes are not read.
    data.replace(str("2.0.0"), str("9.1-beta"));
    const int settings = data.indexOf(str("settings")) + 9;
    data.replace(settings, 4, be32(0xDEADBEEF));
    const int fill = data.indexOf(str("image")) - 4;
    QCOMPARE(data.mid(fill - 2, 6), bytes({1, 0}) + be32(0x0012ABFF));
    data.replace(fill - 1, 5, bytes({7}) + be32(0xFF0012AB));
    const int selection = data.indexOf(str("selection")) + 10;
    data.truncate(selection);
    data += be32(3) + be32(1) + be32(0) + be32(1) + "whatever follows";
    const ProjectData back = ProjectFile::decode(data, "t.cxw");
    QCOMPARE(back.version, QString("9.1-beta"));
    QCOMPARE(back.builtinIndex, quint32(0x01020304));
    QVERIFY(back.fixedPaletteSize);
    QCOMPARE(back.fillColor, RGBAColor<uint>(0, 0x1200, 0xAB00, 65535));
    QCOMPARE(back.selection, (std::set<int>{0, 1}));
    QCOMPARE(back.image.mode(), int(DocumentImage::Indexed8));
}

void TestProjectFile::failedWritesKeepTheOldFile()
{
    const QString file = path("keep.cxw");
    const ProjectData good = sampleProject(DocumentImage::RGB);
    ProjectFile::write(file, good);
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray before = f.readAll();
    f.close();

    ProjectData bad = good;
    bad.selection = {-1, 0};
    QCOMPARE(refusal([&] { ProjectFile::write(file, bad); }),
             QString("Could not save: The selection names entry -1, which no palette holds."));
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), before);

    QCOMPARE(refusal([&] { ProjectFile::write(path("no/such/dir/x.cxw"), good); }),
             QString("Could not save: Cannot save project x.cxw.\nCould not open the file for writing.\n"
                     "No such file or directory"));
}

void TestProjectFile::selectionPastThePalette_data()
{
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<QList<int>>("selection");
    QTest::newRow("one past the end") << 6 << QList<int>{0, 2, 4, 6};
    QTest::newRow("far past the end") << 2 << QList<int>{1, 1000, 65535, INT_MAX};
    QTest::newRow("empty palette") << 0 << QList<int>{0, 3};
}

// Indexes that name no entry are kept as they are: the palette view ignores them.
void TestProjectFile::selectionPastThePalette()
{
    QFETCH(int, paletteSize);
    QFETCH(QList<int>, selection);
    ProjectData data = sampleProject(DocumentImage::Indexed8);
    data.fillColor = {0x1200, 0xAB00, 0xFF00, 65535};
    data.palette.resize(paletteSize, {1, 2, 3, 4});
    data.selection = std::set<int>(selection.begin(), selection.end());
    const QByteArray encoded = ProjectFile::encode(data);
    QByteArray indexes;
    for (int i : selection)
        indexes += be32(quint32(i));
    QVERIFY(encoded.endsWith(str("selection") + be32(quint32(selection.size())) + indexes));
    const ProjectData back = ProjectFile::decode(encoded, "t.cxw");
    compareProjects(back, data);
    QCOMPARE(ProjectFile::encode(back), encoded);
}

// What could not be read back is not written.
void TestProjectFile::selectionTooLargeToWrite()
{
    ProjectData data = sampleProject(DocumentImage::None);
    for (int i = 0; i <= SelectionList::maximumCount; ++i)
        data.selection.insert(data.selection.end(), i);
    QCOMPARE(refusal([&] { ProjectFile::encode(data); }),
             QString("Could not save: The selection holds 1048577 indexes; a selection holds at most 1048576."));
    data.selection.erase(std::prev(data.selection.end()));
    QCOMPARE(ProjectFile::decode(ProjectFile::encode(data), "t.cxw").selection.size(),
             size_t(SelectionList::maximumCount));
}

QTEST_GUILESS_MAIN(TestProjectFile)
#include "tst_projectfile.moc"

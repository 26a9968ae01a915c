#include "palette/describedexception.h"
#include "storage/numpyimage.h"

#include "refusal.h"

#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <cmath>
#include <cstring>

namespace {

// --- hand-built files ---------------------------------------------------------------------------

QByteArray le16(quint16 v)
{
    uchar b[2];
    qToLittleEndian(v, b);
    return QByteArray(reinterpret_cast<const char *>(b), 2);
}

QByteArray le32(quint32 v)
{
    uchar b[4];
    qToLittleEndian(v, b);
    return QByteArray(reinterpret_cast<const char *>(b), 4);
}

QByteArray be32(quint32 v)
{
    uchar b[4];
    qToBigEndian(v, b);
    return QByteArray(reinterpret_cast<const char *>(b), 4);
}

QByteArray le64(quint64 v)
{
    uchar b[8];
    qToLittleEndian(v, b);
    return QByteArray(reinterpret_cast<const char *>(b), 8);
}

QByteArray dict(const QByteArray &descr, const QByteArray &shape, bool fortran = false)
{
    return "{'descr': '" + descr + "', 'fortran_order': " + (fortran ? "True" : "False") +
           ", 'shape': " + shape + ", }";
}

// A .npy file of the given version around a header text, padded as NumPy pads it.
QByteArray npy(const QByteArray &header, const QByteArray &payload, int major = 1)
{
    QByteArray text = header;
    const int prefix = major == 1 ? 10 : 12;
    text += QByteArray((64 - (prefix + text.size() + 1) % 64) % 64, ' ') + '\n';
    QByteArray out("\x93NUMPY", 6);
    out += char(major);
    out += char(0);
    out += major == 1 ? le16(quint16(text.size())) : le32(quint32(text.size()));
    return out + text + payload;
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int v : values)
        out += char(v);
    return out;
}

quint32 crc32Of(const QByteArray &data)
{
    quint32 crc = 0xFFFFFFFF;
    for (char ch : data) {
        crc ^= uchar(ch);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1)));
    }
    return ~crc;
}

// Raw deflate data: qCompress gives a 4-byte length, a 2-byte zlib header and a 4-byte checksum around it.
QByteArray rawDeflate(const QByteArray &data)
{
    const QByteArray z = qCompress(data);
    return z.mid(6, z.size() - 10);
}

struct ZipMember
{
    QByteArray name;
    QByteArray data;
    int method = 0; // 0 stored, 8 deflated
    quint16 flags = 0;
    bool zip64 = false;   // saturated sizes with a zip64 extra field, as NumPy's savez writes them
    qint64 crcDelta = 0;  // damages the checksum
    qint64 sizeDelta = 0; // damages the stated uncompressed size
};

QByteArray zip(const QList<ZipMember> &members)
{
    QByteArray out, directory;
    for (const ZipMember &m : members) {
        const QByteArray packed = m.method == 8 ? rawDeflate(m.data) : m.data;
        const quint32 crc = crc32Of(m.data) + quint32(m.crcDelta);
        const quint64 size = quint64(m.data.size() + m.sizeDelta);
        const QByteArray extra =
            m.zip64 ? le16(1) + le16(16) + le64(size) + le64(quint64(packed.size())) : QByteArray();
        auto fields = [&] {
            return le16(45) + le16(m.flags) + le16(quint16(m.method)) + le16(0) + le16(0x21) + le32(crc) +
                   le32(m.zip64 ? 0xFFFFFFFF : quint32(packed.size())) +
                   le32(m.zip64 ? 0xFFFFFFFF : quint32(size)) + le16(quint16(m.name.size())) +
                   le16(quint16(extra.size()));
        };
        const quint32 offset = quint32(out.size());
        out += QByteArray("PK\x03\x04", 4) + fields() + m.name + extra + packed;
        directory += QByteArray("PK\x01\x02", 4) + le16(45) + fields() + le16(0) + le16(0) + le16(0) +
                     le32(0) + le32(offset) + m.name + extra;
    }
    const quint32 directoryOffset = quint32(out.size());
    out += directory;
    out += QByteArray("PK\x05\x06", 4) + le16(0) + le16(0) + le16(quint16(members.size())) +
           le16(quint16(members.size())) + le32(quint32(directory.size())) + le32(directoryOffset) + le16(0);
    return out;
}

// --- comparing images ---------------------------------------------------------------------------

// The pixel data of an image whatever its mode: bytes, cells, float bits or ARGB values.
QVector<quint64> pixels(const DocumentImage &img)
{
    QVector<quint64> out;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            const size_t i = size_t(y) * size_t(img.width()) + size_t(x);
            switch (img.mode()) {
            case DocumentImage::Indexed8:
                out << img.indexRow(y)[x];
                break;
            case DocumentImage::Indexed32:
                out << img.indexCells()[i];
                break;
            case DocumentImage::Continuous: {
                quint32 bits;
                std::memcpy(&bits, &img.continuousCells()[i], 4);
                out << bits;
                break;
            }
            case DocumentImage::RGB:
                out << img.picture().convertToFormat(QImage::Format_ARGB32).pixel(x, y);
                break;
            default:
                break;
            }
        }
    return out;
}

quint64 floatBits(float f)
{
    quint32 bits;
    std::memcpy(&bits, &f, 4);
    return bits;
}

QImage rgbaPicture()
{
    QImage picture(3, 2, QImage::Format_ARGB32);
    const QRgb values[6] = {qRgba(255, 0, 0, 255), qRgba(0, 255, 0, 128),     qRgba(0, 0, 255, 0),
                            qRgba(1, 2, 3, 4),     qRgba(250, 251, 252, 253), qRgba(17, 34, 51, 255)};
    for (int i = 0; i < 6; ++i)
        picture.setPixel(i % 3, i / 3, values[i]);
    return picture;
}

DocumentImage sampleImage(int mode)
{
    switch (mode) {
    case DocumentImage::Indexed8: {
        std::vector<uint8_t> v(15);
        for (size_t i = 0; i < v.size(); ++i)
            v[i] = uint8_t(i * 17);
        return DocumentImage::fromIndexes8(5, 3, v);
    }
    case DocumentImage::Indexed32:
        return DocumentImage::fromIndexes32(
            4, 3, {0, 1, 2, 3, 255, 256, 65535, 65536, 0x12345678, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF});
    case DocumentImage::Continuous:
        return DocumentImage::fromContinuous(3, 2, {0.0f, 1.5f, 65535.0f, -1.0f, std::nanf(""), 1e-7f});
    case DocumentImage::RGB:
        return DocumentImage::fromPicture(rgbaPicture());
    default:
        return {};
    }
}

const QString readTitle = QStringLiteral("Error on reading NumPy array: ");
const QString writeTitle = QStringLiteral("Error on writing NumPy array: ");

} // namespace

class TestNumpyImage : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void writesNumpyLayout();
    void writesDeterministicArchives();
    void readsHandBuiltArrays_data();
    void readsHandBuiltArrays();
    void archivePicksFirstArray();
    void rejectsBadInput_data();
    void rejectsBadInput();
    void fileErrors();
    void fileNames();
};

void TestNumpyImage::roundTrip_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("compression");
    const int modes[] = {DocumentImage::RGB, DocumentImage::Indexed8, DocumentImage::Indexed32,
                         DocumentImage::Continuous};
    for (int mode : modes) {
        const QByteArray m = QByteArray::number(mode);
        QTest::newRow(("npy mode " + m).constData())
            << mode << "a.npy" << int(NumpyImage::Compression::Deflated);
        QTest::newRow(("npz stored mode " + m).constData())
            << mode << "a.npz" << int(NumpyImage::Compression::Stored);
        QTest::newRow(("npz deflated mode " + m).constData())
            << mode << "a.NPZ" << int(NumpyImage::Compression::Deflated);
    }
}

void TestNumpyImage::roundTrip()
{
    QFETCH(int, mode);
    QFETCH(QString, suffix);
    QFETCH(int, compression);
    const DocumentImage original = sampleImage(mode);
    QCOMPARE(original.mode(), mode);
    QTemporaryDir dir;
    const QString path = dir.filePath(suffix);
    NumpyImage::write(original, path, NumpyImage::Compression(compression));
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray head = f.read(4);
    QCOMPARE(head, suffix.endsWith("npy") ? QByteArray("\x93NUM") : QByteArray("PK\x03\x04"));
    f.close();

    const DocumentImage back = NumpyImage::read(path);
    QCOMPARE(back.mode(), mode);
    QCOMPARE(back.width(), original.width());
    QCOMPARE(back.height(), original.height());
    QCOMPARE(pixels(back), pixels(original));
}

void TestNumpyImage::writesNumpyLayout()
{
    const QByteArray out =
        NumpyImage::toNpy(DocumentImage::fromIndexes32(4, 3, std::vector<uint32_t>(12, 0x01020304)));
    QVERIFY(out.startsWith(QByteArray("\x93NUMPY\x01\x00", 8)));
    const int length = qFromLittleEndian<quint16>(reinterpret_cast<const uchar *>(out.constData()) + 8);
    QCOMPARE((10 + length) % 64, 0);
    const QByteArray header = out.mid(10, length);
    QVERIFY(header.startsWith("{'descr': '<u4', 'fortran_order': False, 'shape': (3, 4), }"));
    QVERIFY(header.endsWith('\n'));
    QCOMPARE(out.size(), 10 + length + 48);
    QCOMPARE(out.mid(10 + length, 4), bytes({4, 3, 2, 1}));

    const QByteArray rgb = NumpyImage::toNpy(DocumentImage::fromPicture(rgbaPicture()));
    QVERIFY(rgb.contains("{'descr': '|u1', 'fortran_order': False, 'shape': (2, 3, 4), }"));
    // RGBA, row by row: the second pixel is green at half opacity.
    QCOMPARE(rgb.right(24).left(8), bytes({255, 0, 0, 255, 0, 255, 0, 128}));

    const QByteArray real = NumpyImage::toNpy(DocumentImage::fromContinuous(1, 1, {1.5f}));
    QVERIFY(real.contains("'descr': '<f4'"));
    QCOMPARE(real.right(4), le32(0x3FC00000));
}

void TestNumpyImage::writesDeterministicArchives()
{
    const DocumentImage img = sampleImage(DocumentImage::Indexed32);
    const QByteArray stored = NumpyImage::toNpz(img, NumpyImage::Compression::Stored);
    QCOMPARE(stored, NumpyImage::toNpz(img, NumpyImage::Compression::Stored));
    // One member named image.npy holding exactly the plain array.
    QCOMPARE(stored.mid(30, 9), QByteArray("image.npy"));
    QCOMPARE(stored.mid(39, NumpyImage::toNpy(img).size()), NumpyImage::toNpy(img));
    QCOMPARE(qFromLittleEndian<quint16>(reinterpret_cast<const uchar *>(stored.constData()) + 8), quint16(0));
    const QByteArray deflated = NumpyImage::toNpz(img, NumpyImage::Compression::Deflated);
    QCOMPARE(qFromLittleEndian<quint16>(reinterpret_cast<const uchar *>(deflated.constData()) + 8),
             quint16(8));
    QCOMPARE(qFromLittleEndian<quint32>(reinterpret_cast<const uchar *>(deflated.constData()) + 14),
             crc32Of(NumpyImage::toNpy(img)));
}

void TestNumpyImage::readsHandBuiltArrays_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QVector<quint64>>("expected");
    const auto row = [](const char *tag, const QByteArray &data, int mode, int width, int height,
                        const QVector<quint64> &expected) {
        QTest::newRow(tag) << data << mode << width << height << expected;
    };

    const QByteArray six = bytes({0, 1, 2, 3, 4, 5});
    const QVector<quint64> sixValues{0, 1, 2, 3, 4, 5};
    row("v1 uint8", npy(dict("|u1", "(2, 3)"), six), 2, 3, 2, sixValues);
    row("v2 uint8", npy(dict("|u1", "(2, 3)"), six, 2), 2, 3, 2, sixValues);
    row("v3 uint8", npy(dict("<u1", "(3, 2)"), six, 3), 2, 2, 3, sixValues);
    row("one row", npy(dict("|u1", "(1, 6)"), six), 2, 6, 1, sixValues);
    row("big-endian uint8", npy(dict(">u1", "(6, 1)"), six), 2, 1, 6, sixValues);
    row("double quotes, other order, no trailing comma",
        npy("{ \"shape\" : (2,3) ,\"fortran_order\":False,\"descr\":\"|u1\"}", six), 2, 3, 2, sixValues);
    row("Python 2 long dimensions", npy(dict("|u1", "(2L, 3L)"), six), 2, 3, 2, sixValues);
    row("data after the array", npy(dict("|u1", "(2, 3)"), six + "xyz"), 2, 3, 2, sixValues);
    // Fortran order: the first column comes first.
    row("fortran uint8", npy(dict("|u1", "(2, 3)", true), bytes({0, 3, 1, 4, 2, 5})), 2, 3, 2, sixValues);

    row("little-endian uint32", npy(dict("<u4", "(1, 2)"), le32(0x11223344) + le32(0xFFFFFFFF)), 3, 2, 1,
        {0x11223344, 0xFFFFFFFF});
    row("big-endian uint32", npy(dict(">u4", "(2, 1)"), be32(0x11223344) + be32(7)), 3, 1, 2,
        {0x11223344, 7});
    row("native uint32",
        npy(dict("=u4", "(1, 1)"), QSysInfo::ByteOrder == QSysInfo::BigEndian ? be32(9) : le32(9)), 3, 1, 1,
        {9});
    row("fortran uint32", npy(dict("<u4", "(2, 2)", true), le32(1) + le32(3) + le32(2) + le32(4)), 3, 2, 2,
        {1, 2, 3, 4});

    row("little-endian float32",
        npy(dict("<f4", "(1, 2)"), le32(floatBits(1.5f)) + le32(floatBits(65535.0f))), 4, 2, 1,
        {floatBits(1.5f), floatBits(65535.0f)});
    row("big-endian float32", npy(dict(">f4", "(1, 2)"), be32(floatBits(-2.25f)) + be32(floatBits(300.0f))),
        4, 2, 1, {floatBits(-2.25f), floatBits(300.0f)});

    row("rgb", npy(dict("|u1", "(1, 2, 3)"), bytes({10, 20, 30, 40, 50, 60})), 1, 2, 1,
        {qRgba(10, 20, 30, 255), qRgba(40, 50, 60, 255)});
    row("rgba", npy(dict("|u1", "(2, 1, 4)"), bytes({10, 20, 30, 40, 50, 60, 70, 80})), 1, 1, 2,
        {qRgba(10, 20, 30, 40), qRgba(50, 60, 70, 80)});
    // Fortran order (1, 2, 3): channel planes, each column-major.
    row("fortran rgb", npy(dict("|u1", "(1, 2, 3)", true), bytes({10, 40, 20, 50, 30, 60})), 1, 2, 1,
        {qRgba(10, 20, 30, 255), qRgba(40, 50, 60, 255)});

    const QByteArray plain = npy(dict("<u4", "(1, 3)"), le32(5) + le32(6) + le32(7));
    const QVector<quint64> plainValues{5, 6, 7};
    row("npz stored", zip({{"arr_0.npy", plain}}), 3, 3, 1, plainValues);
    ZipMember deflated{"arr_0.npy", plain};
    deflated.method = 8;
    row("npz deflated", zip({deflated}), 3, 3, 1, plainValues);
    ZipMember wide = deflated;
    wide.zip64 = true;
    row("npz zip64 sizes", zip({wide}), 3, 3, 1, plainValues);
    ZipMember tail = deflated;
    tail.data += QByteArray(1000, 'x');
    row("npz with data after the array", zip({tail}), 3, 3, 1, plainValues);
}

void TestNumpyImage::readsHandBuiltArrays()
{
    QFETCH(QByteArray, data);
    QFETCH(int, mode);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QVector<quint64>, expected);
    // The same from memory and from a file, which is read as it comes.
    QTemporaryDir dir;
    const QString file = dir.filePath(data.startsWith("PK") ? "a.npz" : "a.npy");
    QFile f(file);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(data);
    f.close();
    for (const DocumentImage &img : {NumpyImage::fromBytes(data, "hand-built"), NumpyImage::read(file)}) {
        QCOMPARE(img.mode(), mode);
        QCOMPARE(img.width(), width);
        QCOMPARE(img.height(), height);
        QCOMPARE(pixels(img), expected);
    }
}

void TestNumpyImage::archivePicksFirstArray()
{
    const QByteArray a = npy(dict("|u1", "(1, 1)"), bytes({1}));
    const QByteArray b = npy(dict("|u1", "(1, 1)"), bytes({2}));
    const DocumentImage img = NumpyImage::fromBytes(
        zip({{"notes.txt", "not an array"}, {"a.npy", a}, {"b.npy", b}}), "archive.npz");
    QCOMPARE(pixels(img), QVector<quint64>{1});
}

void TestNumpyImage::rejectsBadInput_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const QByteArray &data, const QString &message) {
        QTest::newRow(tag) << data << message;
    };

    const QByteArray six = bytes({0, 1, 2, 3, 4, 5});
    auto u8 = [&](const QByteArray &shape) { return npy(dict("|u1", shape), six); };
    row("empty file", QByteArray(), "neither a NumPy array");
    row("text file", QByteArray("hello, world"), "neither a NumPy array");
    row("magic only", QByteArray("\x93NUMPY", 6), "is not a NumPy array file");
    row("no header length", QByteArray("\x93NUMPY\x01\x00\x10", 9), "Unexpected end of file");
    row("version 4.0", npy(dict("|u1", "(2, 3)"), six, 4), "version 4.0");
    QByteArray minor = u8("(2, 3)");
    minor[7] = 1;
    row("version 1.1", minor, "version 1.1");
    QByteArray longHeader = u8("(2, 3)");
    longHeader[8] = char(0xFF);
    longHeader[9] = char(0xFF);
    row("header past the end", longHeader, "Unexpected end of file");
    row("header of 2 GiB", QByteArray("\x93NUMPY\x02\x00", 8) + le32(0x7FFFFFFF) + "{", "2147483647 bytes");

    row("not a dictionary", npy("['descr', '|u1']", six), "'{' expected");
    row("missing shape", npy("{'descr': '|u1', 'fortran_order': False}", six), "all required");
    row("repeated key", npy("{'descr': '|u1', 'descr': '|u1', 'fortran_order': False, 'shape': (2, 3)}", six),
        "repeated");
    row("unknown key", npy("{'descr': '|u1', 'fortran_order': False, 'shape': (2, 3), 'x': 1}", six),
        "unknown key 'x'");
    row("lower-case false", npy("{'descr': '|u1', 'fortran_order': false, 'shape': (2, 3)}", six),
        "True or False");
    row("shape not a tuple", u8("(6)"), "not a tuple");
    row("negative dimension", u8("(-2, 3)"), "non-negative whole number");
    row("fractional dimension", u8("(2.0, 3)"), "',' expected");
    row("missing comma", u8("(2 3)"), "',' expected");
    row("unterminated string", npy("{'descr: '|u1'", six), "':' expected");
    row("open string", npy("{'descr", six), "unterminated string");
    row("text after the dictionary", npy(dict("|u1", "(2, 3)") + " junk", six), "text after");
    row("record type", npy("{'descr': [('a', '|u1')], 'fortran_order': False, 'shape': (2, 3)}", six),
        "records");
    row("dimension overflow", u8("(4294967296, 2)"), "too large");

    row("int32", npy(dict("<i4", "(1, 1)"), le32(1)), "'<i4'");
    row("float64", npy(dict("<f8", "(1, 1)"), le32(1) + le32(1)), "'<f8'");
    row("uint16", npy(dict("<u2", "(1, 1)"), bytes({1, 2})), "'<u2'");
    row("uint32 without byte order", npy(dict("|u4", "(1, 1)"), le32(1)), "'|u4'");
    row("type without byte order", npy(dict("u1", "(2, 3)"), six), "'u1'");
    row("one dimension", u8("(6,)"), "shape (6)");
    row("scalar", u8("()"), "shape ()");
    row("two channels", u8("(1, 3, 2)"), "shape (1, 3, 2)");
    row("float rgb", npy(dict("<f4", "(1, 1, 3)"), QByteArray(12, 0)), "'<f4'");
    row("four dimensions", u8("(1, 1, 2, 3)"), "shape (1, 1, 2, 3)");
    row("no rows", u8("(0, 3)"), "is empty");
    row("no columns", u8("(3, 0)"), "is empty");
    row("too many pixels", u8("(100000, 100000)"), "too large for an image");
    // Sizes are weighed against the one image limit before the data is looked at: these hold six bytes.
    const QString limit =
        "too large for an image.\nThe image is %1 x %2 pixels; at most 134217728 pixels, 262144 "
        "a side, can be opened.";
    row("a row wider than any picture, uint32", npy(dict("<u4", "(1, 67108864)"), six),
        limit.arg(67108864).arg(1));
    row("a row wider than any picture, float32", npy(dict("<f4", "(1, 67108864)"), six),
        limit.arg(67108864).arg(1));
    row("one pixel past the limit", u8("(8193, 16384)"), limit.arg(16384).arg(8193));
    row("one pixel past the side", u8("(1, 262145)"), limit.arg(262145).arg(1));
    row("largest image, six bytes of it", u8("(8192, 16384)"), "Unexpected end of file");
    row("largest rgba image, six bytes of it", npy(dict("|u1", "(8192, 16384, 4)"), six),
        "Unexpected end of file");
    row("truncated data", npy(dict("<u4", "(2, 3)"), QByteArray(20, 0)), "Unexpected end of file");
    row("truncated rgb", npy(dict("|u1", "(2, 2, 4)"), QByteArray(15, 0)), "Unexpected end of file");

    const QByteArray plain = npy(dict("|u1", "(2, 3)"), six);
    row("zip without directory", QByteArray("PK\x03\x04 truncated"), "not a zip archive");
    row("zip without arrays", zip({{"notes.txt", "text"}}), "no member named *.npy");
    row("empty zip", zip({}), "no member named *.npy");
    ZipMember bzip{"a.npy", plain};
    bzip.method = 12;
    row("bzip2 member", zip({bzip}), "method 12");
    ZipMember locked{"a.npy", plain};
    locked.flags = 1;
    row("encrypted member", zip({locked}), "encrypted");
    ZipMember badCrc{"a.npy", plain};
    badCrc.crcDelta = 1;
    row("checksum mismatch", zip({badCrc}), "checksum");
    ZipMember badSize{"a.npy", plain};
    badSize.sizeDelta = 1;
    row("stored sizes differ", zip({badSize}), "sizes differ");
    ZipMember deflatedLong{"a.npy", plain};
    deflatedLong.method = 8;
    deflatedLong.sizeDelta = 1;
    row("deflated size too big", zip({deflatedLong}), "does not decompress");
    ZipMember deflatedShort = deflatedLong;
    deflatedShort.sizeDelta = -1;
    // The directory promises less than the array needs: refused before anything is allocated.
    row("deflated size too small", zip({deflatedShort}), "Unexpected end of file in\n'bad.npy/a.npy'");
    ZipMember bomb{"a.npy", plain};
    bomb.method = 8;
    bomb.sizeDelta = 100000000;
    row("claims a huge size", zip({bomb}), "claims more data");
    ZipMember garbage{"a.npy", plain};
    garbage.method = 8;
    QByteArray corrupt = zip({garbage});
    corrupt[30 + 5] = char(0xFF); // the first bytes of the deflate stream
    corrupt[30 + 6] = char(0xFF);
    row("corrupt deflate data", corrupt, "does not decompress");
    QByteArray cut = zip({{"a.npy", plain}});
    row("directory cut", cut.left(cut.size() - 30), "not a zip archive");
    QByteArray moved = zip({{"a.npy", plain}});
    moved[moved.size() - 3] = char(0x7F); // directory offset far past the end
    row("directory offset past the end", moved, "is not a zip archive");
    ZipMember longer{"a.npy", plain + QByteArray((1 << 20) + 1, '\0')};
    longer.method = 8;
    row("member far longer than its array", zip({longer}), "holds 1048577 bytes past its contents");
    ZipMember largeArchived{"a.npy", npy(dict("<f4", "(8192, 16384)"), six)};
    largeArchived.method = 8;
    largeArchived.sizeDelta = 1 << 20;
    row("archived claim past the deflate ratio", zip({largeArchived}), "claims more data");
    ZipMember inner{"a.npy", npy(dict("<i4", "(1, 1)"), le32(1))};
    row("bad array inside", zip({inner}), "a.npy");
}

void TestNumpyImage::rejectsBadInput()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, message);
    const QString got = refusal([&] { NumpyImage::fromBytes(data, "bad.npy"); });
    QVERIFY2(got.startsWith(readTitle) && got.contains(message), qPrintable(got));
    // Every prefix of a bad file is bad too, and none may read out of bounds.
    for (int n = 0; n < data.size(); n += qMax(1, data.size() / 64))
        refusal([&] { NumpyImage::fromBytes(data.left(n), "cut.npy"); });
}

// A file that is not there, nothing to write, a folder that is not there: the messages name the file.
void TestNumpyImage::fileErrors()
{
    QTemporaryDir dir;
    QString got = refusal([&] { NumpyImage::read(dir.filePath("absent.npy")); });
    QVERIFY2(got.startsWith(readTitle) && got.contains("absent.npy"), qPrintable(got));
    QCOMPARE(refusal([&] { NumpyImage::write(DocumentImage(), dir.filePath("none.npy")); }),
             writeTitle + "There is no image to write.");
    QVERIFY(!QFile::exists(dir.filePath("none.npy")));
    got = refusal([&] { NumpyImage::write(sampleImage(DocumentImage::Indexed8), dir.filePath("missing/dir/a.npz")); });
    QVERIFY2(got.startsWith(writeTitle) && got.contains("a.npz"), qPrintable(got));
}

void TestNumpyImage::fileNames()
{
    QVERIFY(NumpyImage::isNumpyFileName("a.npy"));
    QVERIFY(NumpyImage::isNumpyFileName("/x/b.NPZ"));
    QVERIFY(!NumpyImage::isNumpyFileName("c.png"));
    QVERIFY(!NumpyImage::isNumpyFileName("npy"));
}

QTEST_GUILESS_MAIN(TestNumpyImage)
#include "tst_numpyimage.moc"

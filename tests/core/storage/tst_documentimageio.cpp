// Loading and saving document images: a file opens by what it holds whatever its name says, the
// saved file holds what the format's writer makes of the picture, whatever the format does with
// the device, and a failed save leaves the old file alone.

#include "palette/describedexception.h"
#include "storage/documentimageio.h"

#include "gifbuilder.h"

#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QImage picture()
{
    QImage image(37, 21, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 7, y * 12, (x * y) % 256));
    return image;
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestDocumentImageIO : public QObject
{
    Q_OBJECT
private slots:
    void loadsByContent_data();
    void loadsByContent();
    void unreadableFiles_data();
    void unreadableFiles();
    void savesAsTheWriterWrites_data();
    void savesAsTheWriterWrites();
    void failedSaveKeepsTheFile_data();
    void failedSaveKeepsTheFile();
    void pictureThatCouldNotBeBuilt();
    void gifOpensIndexedWhateverItsName_data();
    void gifOpensIndexedWhateverItsName();
    void indexedImagesSaveAsGif();
    void gifOfferedForIndexedImagesOnly_data();
    void gifOfferedForIndexedImagesOnly();
};

void TestDocumentImageIO::loadsByContent_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QString>("name");
    QTest::newRow("PNG") << QByteArray("png") << "a.png";
    QTest::newRow("PNG named as JPEG") << QByteArray("png") << "a.jpg";
    QTest::newRow("PNG without a suffix") << QByteArray("png") << "a";
    QTest::newRow("BMP named as PNG") << QByteArray("bmp") << "a.png";
    QTest::newRow("PPM named as BMP") << QByteArray("ppm") << "a.bmp";
}

void TestDocumentImageIO::loadsByContent()
{
    QFETCH(QByteArray, format);
    QFETCH(QString, name);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QImageWriter(&file, format).write(picture()));
    }
    const DocumentImage image = DocumentImageIO::load(path);
    QCOMPARE(image.mode(), 1);
    QCOMPARE(image.picture(), picture().convertToFormat(QImage::Format_ARGB32));
}

void TestDocumentImageIO::unreadableFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("not a picture") << QByteArray("no picture here")
                                   << "Cannot load x.png.\nUnknown image format.";
    QTest::newRow("a PNG cut short") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)
                                     << "Cannot load x.png.\nUnknown error.";
    QTest::newRow("empty") << QByteArray() << "Cannot load x.png.\nUnknown image format.";
}

void TestDocumentImageIO::unreadableFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QTemporaryDir dir;
    const QString path = dir.filePath("x.png");
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    try {
        DocumentImageIO::load(path);
        QFAIL("loaded");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QStringLiteral("Could not load"));
        QCOMPARE(e.message(), message);
    }
}

void TestDocumentImageIO::savesAsTheWriterWrites_data()
{
    QTest::addColumn<QString>("suffix");
    // Every writable format; some (TIFF, ICO) seek back to fill in what they wrote first.
    for (const QByteArray &format : QImageWriter::supportedImageFormats())
        QTest::newRow(format.constData()) << QString::fromLatin1(format);
}

void TestDocumentImageIO::savesAsTheWriterWrites()
{
    QFETCH(QString, suffix);
    QTemporaryDir dir;
    const DocumentImage image = DocumentImage::fromPicture(picture());
    const QString direct = dir.filePath("direct." + suffix);
    {
        QFile file(direct);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QImageWriter writer(&file, suffix.toLatin1());
        if (!writer.write(image.picture()))
            QSKIP("the format does not take this picture");
    }
    const QString saved = dir.filePath("saved." + suffix);
    DocumentImageIO::save(saved, image);
    const QByteArray expected = readAll(direct);
    QVERIFY(!expected.isEmpty());
    QCOMPARE(readAll(saved), expected);
}

void TestDocumentImageIO::failedSaveKeepsTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such folder") << "none/out.png"
                                    << "Unable to save out.png.\nNo such file or directory";
    QTest::newRow("no writer for the suffix") << "old.nosuchformat"
                                              << "Unable to save old.nosuchformat.\nUnsupported image format";
    QTest::newRow("RGB as GIF") << "old.gif"
                                << "Unable to save RGB image as .gif.";
}

void TestDocumentImageIO::failedSaveKeepsTheFile()
{
    QFETCH(QString, name);
    QFETCH(QString, message);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    const QByteArray old = "old contents";
    {
        QFile f(path);
        if (f.open(QIODevice::WriteOnly))
            f.write(old);
    }
    try {
        DocumentImageIO::save(path, DocumentImage::fromPicture(picture()));
        QFAIL("no exception");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Could not save"));
        QCOMPARE(e.message(), message);
    }
    if (QFile::exists(path))
        QCOMPARE(readAll(path), old);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), QFile::exists(path) ? 1 : 0);
}

// A picture too large for memory comes out null; the message said "Unable to save out.png." as if
// the file were to blame.
void TestDocumentImageIO::pictureThatCouldNotBeBuilt()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("out.png");
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly) && f.write("old") == 3);
    f.close();
    try {
        DocumentImageIO::savePicture(path, QImage(), QSize(70000, 40000), "png");
        QFAIL("no exception");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Could not save"));
        QCOMPARE(e.message(), QString("Unable to save out.png.\nThe picture of 70000 x 40000 pixels could not be "
                                      "built: there is not enough memory for it."));
    }
    QCOMPARE(readAll(path), QByteArray("old"));
}

void TestDocumentImageIO::gifOpensIndexedWhateverItsName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("gif") << "picture.gif";
    QTest::newRow("upper case") << "PICTURE.GIF";
    QTest::newRow("named as PNG") << "picture.png";
    QTest::newRow("no suffix") << "picture";
}

// The contents decide: a GIF opens as 8-bit indexed in its own colours under any name.
void TestDocumentImageIO::gifOpensIndexedWhateverItsName()
{
    QFETCH(QString, name);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    GifFrame frame;
    frame.width = 2;
    frame.height = 1;
    frame.pixels = {1, 0};
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(buildGif(2, 1, {qRgb(255, 0, 0), qRgb(0, 0, 255)}, {frame}));
    f.close();
    const DocumentImage image = DocumentImageIO::load(path);
    QCOMPARE(image.mode(), int(DocumentImage::Indexed8));
    QCOMPARE(image.imagePalette().size(), 2);
    QCOMPARE(image.imagePalette()[1], (RGBAColor<uint>{0, 0, 65280, 65535}));
    QCOMPARE(image.picture().pixel(0, 0), qRgb(0, 0, 255));
    QCOMPARE(image.picture().pixel(1, 0), qRgb(255, 0, 0));
}

// What is saved is the picture as shown: the indexes with the colours of the palette they are
// shown through.
void TestDocumentImageIO::indexedImagesSaveAsGif()
{
    QTemporaryDir dir;
    DocumentImage image = DocumentImage::fromIndexes8(3, 2, {0, 1, 2, 2, 1, 0});
    image.render(Palette<uint>({{65280, 0, 0, 65535}, {0, 65280, 0, 65535}, {0, 0, 65280, 0}}));
    const QString path = dir.filePath("saved.gif");
    DocumentImageIO::save(path, image);
    const DocumentImage back = DocumentImageIO::load(path);
    QCOMPARE(back.mode(), int(DocumentImage::Indexed8));
    QCOMPARE(back.width(), 3);
    QCOMPARE(back.height(), 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            QCOMPARE(back.picture().pixel(x, y), image.picture().pixel(x, y));
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(back.indexRow(1)), 3), QByteArray("\2\1\0", 3));

    // GIF holds no 32-bit or continuous cells; the old file stays.
    const QString old = dir.filePath("cells.gif");
    QFile f(old);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("old contents");
    f.close();
    for (const DocumentImage &cells :
         {DocumentImage::fromIndexes32(2, 1, {0, 1}), DocumentImage::fromContinuous(2, 1, {0.0f, 9.0f})}) {
        try {
            DocumentImageIO::save(old, cells);
            QFAIL("no exception");
        } catch (const DescribedException &e) {
            QCOMPARE(e.title(), QString("Could not save"));
            QCOMPARE(e.message(), QString("Unable to save cells.gif."));
        }
        QCOMPARE(readAll(old), QByteArray("old contents"));
    }
}

void TestDocumentImageIO::gifOfferedForIndexedImagesOnly_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("offered");
    QTest::newRow("none") << int(DocumentImage::None) << false;
    QTest::newRow("rgb") << int(DocumentImage::RGB) << false;
    QTest::newRow("indexed 8bit") << int(DocumentImage::Indexed8) << true;
    QTest::newRow("indexed 32bit") << int(DocumentImage::Indexed32) << false;
    QTest::newRow("continuous") << int(DocumentImage::Continuous) << false;
}

void TestDocumentImageIO::gifOfferedForIndexedImagesOnly()
{
    QFETCH(int, mode);
    QFETCH(bool, offered);
    const QStringList filters = DocumentImageIO::saveFilters(mode);
    QCOMPARE(filters.contains("GIF images (*.gif)"), offered);
    // The formats stay in alphabetical order, NumPy last.
    QStringList formats = filters.mid(0, filters.size() - 2);
    QStringList sorted = formats;
    sorted.sort();
    QCOMPARE(formats, sorted);
    QCOMPARE(filters.last(), QString("Zipped NumPy arrays (*.npz)"));
    QVERIFY(DocumentImageIO::openFilters().first().contains("*.gif"));
}

QTEST_GUILESS_MAIN(TestDocumentImageIO)
#include "tst_documentimageio.moc"

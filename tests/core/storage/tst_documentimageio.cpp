// Loading and saving document images: a file opens by what it holds whatever its name says, the
// saved file holds what the format's writer makes of the picture, whatever the format does with
// the device, and a failed save leaves the old file alone.

#include "palette/describedexception.h"
#include "storage/documentimageio.h"

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
                                    << "Unable to save out.png.";
    QTest::newRow("no writer for the suffix") << "old.nosuchformat"
                                              << "Unable to save old.nosuchformat.";
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

QTEST_GUILESS_MAIN(TestDocumentImageIO)
#include "tst_documentimageio.moc"

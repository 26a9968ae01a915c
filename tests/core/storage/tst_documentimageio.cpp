// Saving document images: the file holds what the format's writer makes of the picture, whatever
// the format does with the device, and a failed save leaves the old file alone.

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
    void savesAsTheWriterWrites_data();
    void savesAsTheWriterWrites();
    void failedSaveKeepsTheFile_data();
    void failedSaveKeepsTheFile();
    void pictureThatCouldNotBeBuilt();
};

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

QTEST_GUILESS_MAIN(TestDocumentImageIO)
#include "tst_documentimageio.moc"

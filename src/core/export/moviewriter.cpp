#include "export/moviewriter.h"

#include <QFileInfo>
#include <QSaveFile>

MovieWriter::MovieWriter() = default;

MovieWriter::~MovieWriter()
{
    // An unclosed movie is dropped: the destination keeps whatever it held before.
    m_backend.reset();
    if (m_file)
        m_file->cancelWriting();
}

QStringList MovieWriter::suffixes()
{
    return {QStringLiteral("gif"), QStringLiteral("avi"), QStringLiteral("wmv"), QStringLiteral("mp4"),
            QStringLiteral("webm")};
}

bool MovieWriter::open(const QString &fileName, int framesPerSecond, int frameCount, QSize size,
                       const Palette<uint> &palette)
{
    m_fileName = fileName;
    m_suffix = QFileInfo(fileName).suffix().toLower();
    m_fps = framesPerSecond;
    m_frameCount = frameCount;
    m_size = size;
    m_error.clear();

    if (m_suffix == QLatin1String("gif"))
        m_backend = makeGifMovieBackend();
    else
        m_backend = makeFfmpegMovieBackend(m_suffix);
    if (!m_backend) {
        m_error = QStringLiteral("Unkown export format '%1'.").arg(m_suffix);
        return false;
    }
    // A GIF delay of 100 / 0 and a movie time base of 1 / 0 mean nothing.
    if (framesPerSecond < 1) {
        m_error = QStringLiteral("A movie needs at least 1 frame per second; %1 was asked for.").arg(framesPerSecond);
        m_backend.reset();
        return false;
    }
    if (size.width() < 1 || size.height() < 1 || size.width() > 65535 || size.height() > 65535) {
        m_error = QStringLiteral("A movie of %1 x %2 pixels cannot be written.").arg(size.width()).arg(size.height());
        m_backend.reset();
        return false;
    }
    m_file = std::make_unique<QSaveFile>(fileName);
    m_file->setDirectWriteFallback(false);
    const QFileInfo info(fileName);
    if ((info.exists() && !info.isFile()) || !m_file->open(QIODevice::WriteOnly)) {
        m_error = m_backend->createFailure(fileName);
        m_file.reset();
        m_backend.reset();
        return false;
    }
    if (!m_backend->open(*m_file, framesPerSecond, size, palette, m_error)) {
        m_backend.reset();
        m_file->cancelWriting();
        m_file.reset();
        return false;
    }
    return true;
}

bool MovieWriter::addFrame(const QImage &frame)
{
    if (!m_backend)
        return false;
    return m_backend->addFrame(frame, m_error);
}

bool MovieWriter::close()
{
    if (!m_backend)
        return false;
    const bool written = m_backend->close(m_error);
    const QString createFailure = m_backend->createFailure(m_fileName);
    m_backend.reset();
    if (!written) {
        m_file->cancelWriting();
        m_file.reset();
        return false;
    }
    if (!m_file->commit()) {
        m_error = createFailure;
        m_file.reset();
        return false;
    }
    m_file.reset();
    return true;
}

#pragma once

#include "palette/palette.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

class MovieBackend;
class QSaveFile;

// One colour-cycling movie, written whole or not at all: the frames go to a temporary file that
// replaces the destination only when close() succeeds, so a cancelled or failed export never
// leaves a broken movie in place of an old file. Used once: open, addFrame for every frame, close.
//
// The back-end follows the file's suffix in lower case: "gif" (an animated GIF that loops for
// ever, through GIFLIB), "avi" (MPEG-4 Part 2), "wmv" (ASF with Windows Media Video 8), "mp4"
// (H.264) and "webm" (VP9); the last four through FFmpeg. Every failure leaves its text in
// errorText().
class MovieWriter
{
public:
    MovieWriter();
    ~MovieWriter();
    MovieWriter(const MovieWriter &) = delete;
    MovieWriter &operator=(const MovieWriter &) = delete;

    // size is the frames' size; palette gives a GIF its global colour table (the first 256
    // entries, their channels' high bytes). frameCount is what the caller means to add.
    bool open(const QString &fileName, int framesPerSecond, int frameCount, QSize size, const Palette<uint> &palette);
    // A GIF takes the 8-bit index picture itself (Format_Indexed8, its colour table ignored); the
    // movies take any picture of the movie's size, shown as it looks (colour tables applied).
    bool addFrame(const QImage &frame);
    bool close();
    const QString &errorText() const { return m_error; }

    // The lower-case suffixes open() accepts.
    static QStringList suffixes();

private:
    QString m_fileName;
    QString m_suffix;
    int m_fps = 0;
    int m_frameCount = 0;
    QSize m_size;
    std::unique_ptr<QSaveFile> m_file;
    std::unique_ptr<MovieBackend> m_backend;
    QString m_error;
};

// What a back-end does; the writer owns the file and hands the back-end its device.
class MovieBackend
{
public:
    virtual ~MovieBackend() = default;
    // error receives the back-end's own text on failure.
    virtual bool open(QIODevice &device, int framesPerSecond, QSize size, const Palette<uint> &palette,
                      QString &error) = 0;
    virtual bool addFrame(const QImage &frame, QString &error) = 0;
    // Writes what remains; the writer commits the file afterwards.
    virtual bool close(QString &error) = 0;
    // The text for a file that could not be created or committed.
    virtual QString createFailure(const QString &fileName) const = 0;
};

std::unique_ptr<MovieBackend> makeGifMovieBackend();
// nullptr for a suffix that is not one of FFmpeg's movies here.
std::unique_ptr<MovieBackend> makeFfmpegMovieBackend(const QString &suffix);

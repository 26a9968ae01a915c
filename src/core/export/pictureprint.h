#pragma once

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>

class QPainter;
class QPrinter;

// Puts a picture on a printed page: the palette picture of "Print palette", the shown image of
// "Print image...", and the command line's prints to PDF all go through here.
namespace PicturePrint {

// Where the picture lands on a page whose printable area is viewport: its size scaled into the
// viewport with the aspect ratio kept, at the viewport's origin.
QRect fittedViewport(const QSize &picture, const QRect &viewport);

// Draws picture with painter scaled to the painter's viewport, aspect ratio kept: the viewport
// becomes fittedViewport, the window the picture's rectangle, and the picture is drawn at 0, 0.
void paint(QPainter &painter, const QImage &picture);

// Prints picture as one page on printer. A null picture (an empty palette, no image) or a printer
// that cannot start throws DescribedException "Could not print".
void print(QPrinter &printer, const QImage &picture);

// What print() puts on an A4 page, as a PDF file written whole or not at all.
void printToPdf(const QImage &picture, const QString &path);

} // namespace PicturePrint

#ifndef PDFTOOLS_H
#define PDFTOOLS_H

#include <QImage>
#include <QList>
#include <QRectF>
#include <QStringList>

// Reads PDF files back with poppler's command-line tools.
namespace PdfTools {

// The output of a tool; empty with a warning when it fails.
QByteArray run(const QString& program, const QStringList& arguments);
QString info(const QString& fileName);
int pageCount(const QString& fileName); // -1 when pdfinfo fails
// pdftotext -layout of one page (from 1) or of all (0), no-break spaces as plain ones.
QString text(const QString& fileName, int page = 0);
QImage renderPage(const QString& fileName, int page, int dpi); // in grey scale
// The texts of the QR codes that zbarimg reads on a page rendered at dpi; empty when none.
QStringList qrCodes(const QString& fileName, int page, int dpi);

// A word as pdftotext -bbox finds it; lengths in millimetres from the top-left corner.
struct Word
{
    QString text;
    QRectF box;
};

struct Page
{
    QSizeF size;
    QList<Word> words;
};

// Every page with its words in reading order; empty when pdftotext fails.
QList<Page> pages(const QString& fileName);
QStringList texts(const QList<Word>& words);

} // namespace PdfTools

#endif // PDFTOOLS_H

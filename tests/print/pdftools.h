#ifndef PDFTOOLS_H
#define PDFTOOLS_H

#include <QImage>
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

} // namespace PdfTools

#endif // PDFTOOLS_H

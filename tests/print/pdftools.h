#ifndef PDFTOOLS_H
#define PDFTOOLS_H

#include <QImage>
#include <QStringList>

// Reads PDF files back with poppler's command-line tools.
namespace PdfTools {

// Page count from pdfinfo, -1 when it fails.
int pageCount(const QString& fileName);
// What pdfinfo tells (title, creator, page size).
QString info(const QString& fileName);
// pdftotext -layout of one page (from 1) or of all pages (0), with no-break
// spaces as plain ones.
QString text(const QString& fileName, int page = 0);
// One page rendered by pdftoppm at dpi, in grey scale or in colour.
QImage renderPage(const QString& fileName, int page, int dpi, bool gray = true);
// The run of a tool; empty output and a warning when it fails.
QByteArray run(const QString& program, const QStringList& arguments);

} // namespace PdfTools

#endif // PDFTOOLS_H

#ifndef EXPECTED_H
#define EXPECTED_H

#include "domain/invoiceitem.h"

#include <QList>
#include <QString>
#include <QStringList>

// What the program should write, computed here independently of its own
// arithmetic, and CSV files read back as a spreadsheet would.
namespace Expected {

long long roundHalfAway(long double value);
// A row's total in cents, with or without VAT, rounded once per row.
long long rowTotal(const InvoiceItem& item, bool vatIncluded = true);
long long total(const QList<InvoiceItem>& items);
// "1 398,04" with a plain space; "-12,50" for negatives.
QString euros(long long cents);
// The same without grouping, as in CSV files.
QString plainEuros(long long cents);
// A reference number as printed: groups of five digits from the right.
QString groupedReference(const QString& digits);

// The rows of a CSV file: quoted fields may hold delimiters, doubled
// quotes and line breaks. *bom tells whether the file starts with the
// UTF-8 byte order mark.
QList<QStringList> readCsv(const QString& fileName, QChar delimiter, bool* bom = nullptr);

} // namespace Expected

#endif // EXPECTED_H

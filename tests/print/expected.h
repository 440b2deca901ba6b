#ifndef EXPECTED_H
#define EXPECTED_H

#include "domain/invoiceitem.h"

#include <QList>
#include <QString>
#include <QStringList>

// What the program should write, computed independently, and CSV read back as a spreadsheet would.
namespace Expected {

long long roundHalfAway(long double value);
// A row's total in cents, with or without VAT, rounded once per row.
long long rowTotal(const InvoiceItem& item, bool vatIncluded = true);
long long total(const QList<InvoiceItem>& items);
QString euros(long long cents); // "1 398,04", "-12,50"
QString plainEuros(long long cents); // without grouping, as in CSV files
QString groupedReference(const QString& digits); // groups of five from the right
// *bom tells whether the file starts with the UTF-8 byte order mark.
QList<QStringList> readCsv(const QString& fileName, QChar delimiter, bool* bom = nullptr);

} // namespace Expected

#endif // EXPECTED_H

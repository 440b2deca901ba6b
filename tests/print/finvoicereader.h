#ifndef FINVOICEREADER_H
#define FINVOICEREADER_H

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// A Finvoice file read back with QXmlStreamReader, part by part (an envelope and a document are
// two parts; a file of several invoices has more). Each part maps element paths such as
// "Finvoice/InvoiceRow/RowAmount" and attribute paths such as
// "Finvoice/SellerInformationDetails/SellerAccountDetails/SellerBic@IdentificationSchemeName"
// to their texts in document order.
class FinvoiceReader
{
public:
    // False with error() when a part is not well-formed XML.
    bool readFile(const QString& fileName);
    bool read(const QByteArray& bytes);

    int partCount() const { return int(m_parts.size()); }
    QStringList values(int part, const QString& path) const;
    // The first value, empty when there is none.
    QString value(int part, const QString& path) const;
    // The root element of a part.
    QString root(int part) const;
    QString error() const { return m_error; }
    QByteArray bytes() const { return m_bytes; }

private:
    QList<QMap<QString, QStringList>> m_parts;
    QStringList m_roots;
    QByteArray m_bytes;
    QString m_error;
};

#endif // FINVOICEREADER_H

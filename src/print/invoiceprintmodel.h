#ifndef INVOICEPRINTMODEL_H
#define INVOICEPRINTMODEL_H

#include "domain/invoicecriteria.h"
#include "domain/vat.h"
#include "printmodel.h"

#include <QImage>
#include <QList>

class BankAccount;
class Customer;
class Invoice;
class InvoiceItem;
class Registry;

// The data behind invoice printing, invoice PDFs and the Finvoice XML: one or
// more invoices with their rows, the seller and the invoice-form settings,
// read by scripts through paths such as "invoices/0/items/2/totalAmount".
// Amounts are Decimals in their stored scale (cents, or 1/10000 for unit
// prices and quantities, 1/100 % for rates).
class InvoicePrintModel : public PrintModel
{
    Q_OBJECT
public:
    explicit InvoicePrintModel(Registry* registry, QObject* parent = nullptr);
    ~InvoicePrintModel() override;

    // Loads the invoices matching criteria() with their rows and the seller's data.
    bool run() override;
    QString title() const override { return m_title; }
    void setTitle(const QString& title) { m_title = title; }
    using PrintModel::image;
    using PrintModel::value;
    QVariant value(QStringList& path) override;
    QImage image(QStringList& path) override;
    // One section of invoices and one of their rows, delimited by format.
    bool exportToCSV(const QString& fileName, const QString& format) override;

    void clear();
    int invoiceCount() const { return m_invoices.size(); }
    Invoice* invoice(int index) const;
    // The rows of invoice index, in row order.
    QList<InvoiceItem*> invoiceItems(int index);
    // Adds a copy of source's invoice index and its rows (and the seller's
    // data when this model has none yet).
    void copyInvoice(InvoicePrintModel* source, int index);

    // 0 prints each invoice as its own type; 3, 4 or 5 force reminder,
    // receipt or delivery note.
    void setPrintType(int type) { m_printType = type; }
    int printType() const { return m_printType; }
    // The type the script sees: stored types 3 and above move up by two.
    int printedType(const Invoice* invoice) const;
    InvoiceCriteria& criteria() { return m_criteria; }

    // The bank barcode for the seller's first bank account; empty without one.
    QString createBarcode(Invoice* invoice, int version, bool useBalance) const;
    // The payment QR code's text for the same account and the amount the
    // barcode carries; empty without an account or a positive amount.
    QString createQrCode(Invoice* invoice, bool useBalance) const;
    static QString typeName(int printedType);

private:
    bool loadSellerData();
    void locateItems(int index);
    QVariant invoiceValue(const QStringList& path);
    QVariant invoiceField(int index, const QString& key, const QStringList& path);
    QVariant customerValue(const Invoice* invoice, const QString& key) const;
    QVariant itemValue(const InvoiceItem* item, const QString& key) const;
    QVariant vatValue(int rate, const QString& key) const;
    QVariant sellerValue(const QStringList& path) const;
    QVariant bankAccountValue(const QList<BankAccount*>& accounts, const QStringList& path) const;
    QVariant settingsValue(const QStringList& path) const;
    QVariant setting(const QString& key) const;
    const Customer* customerOf(const Invoice* invoice) const;
    QList<BankAccount*> visibleBankAccounts() const;

    Registry* m_registry;
    InvoiceCriteria m_criteria;
    int m_printType = 0;
    QString m_title;
    QList<Invoice*> m_invoices;
    QList<InvoiceItem*> m_items;
    QList<BankAccount*> m_bankAccounts;
    QImage m_logo;
    bool m_sellerLoaded = false;
    int m_roundingMode = 1;

    int m_cacheIndex = -1;
    int m_cacheOffset = 0;
    int m_cacheCount = 0;
    Vat m_cacheVat;
};

#endif // INVOICEPRINTMODEL_H

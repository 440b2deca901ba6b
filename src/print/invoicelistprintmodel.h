#ifndef INVOICELISTPRINTMODEL_H
#define INVOICELISTPRINTMODEL_H

#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/vat.h"
#include "listprintmodel.h"

#include <QList>

// The invoice list report ("Laskuluettelo"): the invoices matching the
// search criteria with their VAT-excluded, VAT and VAT-included totals, open
// balances (at the criteria's balance date when it has one), the totals of
// the list and its VAT breakdown ("vat/length", "vat/M/..."). Amounts are
// Decimals in cents. Its choices are kept in the group "invoiceListPrint".
class InvoiceListPrintModel : public ListPrintModel
{
    Q_OBJECT
public:
    // The report's columns, in the order of their bits in columnFlags().
    enum Column
    {
        NumberColumn,
        DateColumn,
        DueDateColumn,
        DeliveryDateColumn,
        CustomerNumberColumn,
        CustomerNameColumn,
        TotalAmountVatExcludedColumn,
        TotalVatAmountColumn,
        TotalAmountVatIncludedColumn,
        BalanceColumn,
        ReferenceNumberColumn,
        ColumnCount
    };

    explicit InvoiceListPrintModel(Registry* registry, QObject* parent = nullptr);
    ~InvoiceListPrintModel() override;

    bool run() override;
    QString title() const override;
    using ListPrintModel::value;
    QVariant value(QStringList& path) override;
    bool exportToCSV(const QString& fileName, const QString& format) override;
    QStringList columnHeadings() const override;
    // Sorts by the column, ties by invoice number.
    void sort(int column) override;

    InvoiceCriteria& criteria() { return m_criteria; }
    int invoiceCount() const { return m_rows.size(); }
    const Invoice& invoiceAt(int index) const { return m_rows.at(index).invoice; }
    const Vat& vatBreakdown() const { return m_vat; }
    long long totalBalance() const { return m_totalBalance; }

    // The criteria texts of the given criteria; customerName fills the
    // customer line.
    static QStringList buildCriteriaTexts(
        const InvoiceCriteria& criteria, const QString& customerName = QString());

protected:
    int rowCount() const override { return m_rows.size(); }
    QVariant rowValue(int row, const QStringList& path) const override;
    QVariant totalValue(const QString& key) const override;

private:
    struct Row
    {
        Invoice invoice;
        Vat vat;
    };

    void clear();
    QVariant vatValue(const QStringList& path) const;

    InvoiceCriteria m_criteria;
    QList<Row> m_rows;
    Vat m_vat;
    long long m_totalBalance = 0;
};

#endif // INVOICELISTPRINTMODEL_H

#ifndef INVOICELISTPRINTMODEL_H
#define INVOICELISTPRINTMODEL_H

#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/vat.h"
#include "printmodel.h"

#include <QList>
#include <QStringList>

class Customer;
class Registry;

// The invoice list report ("Laskuluettelo"): the invoices matching the
// search criteria with their VAT-excluded, VAT and VAT-included totals, open
// balances (at the criteria's balance date when it has one), the totals of
// the list and its VAT breakdown. Amounts are Decimals in cents.
class InvoiceListPrintModel : public PrintModel
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
    using PrintModel::value;
    QVariant value(QStringList& path) override;
    bool exportToCSV(const QString& fileName, const QString& format) override;

    InvoiceCriteria& criteria() { return m_criteria; }
    // The lines printed under the title, built from the criteria by run().
    QStringList criteriaTexts() const { return m_criteriaTexts; }
    int columnFlags() const { return m_columnFlags; }
    void setColumnFlags(int flags) { m_columnFlags = flags; }
    static int allColumns() { return (1 << ColumnCount) - 1; }
    // Names used by the script ("columns/NAME") and the dialog's headings.
    static QString columnName(int column);
    static QString columnHeading(int column);

    int sortColumn() const { return m_sortColumn; }
    // Sorts by the column, ties by invoice number.
    void sort(int column);

    // The words of "extraFields"; read from the configuration's group
    // "invoiceListPrint" by exportToCSV() unless set here.
    void setExtraFields(const QStringList& fields);

    int invoiceCount() const { return m_rows.size(); }
    const Invoice& invoiceAt(int index) const { return m_rows.at(index).invoice; }
    const Vat& vatBreakdown() const { return m_vat; }
    long long totalBalance() const { return m_totalBalance; }

    // The criteria texts of the given criteria; customerName fills the
    // customer line.
    static QStringList buildCriteriaTexts(
        const InvoiceCriteria& criteria, const QString& customerName = QString());

private:
    struct Row
    {
        Invoice invoice;
        Vat vat;
    };

    void clear();
    const Customer* customerOf(const Invoice& invoice) const;
    QVariant rowValue(const Row& row, const QStringList& path) const;
    QVariant vatValue(const QStringList& path) const;
    QString customerField(const Customer* customer, const QString& word) const;

    Registry* m_registry;
    InvoiceCriteria m_criteria;
    QList<Row> m_rows;
    Vat m_vat;
    long long m_totalBalance = 0;
    QStringList m_criteriaTexts;
    int m_columnFlags;
    int m_sortColumn = NumberColumn;
    QStringList m_extraFields;
    bool m_extraFieldsSet = false;
};

#endif // INVOICELISTPRINTMODEL_H

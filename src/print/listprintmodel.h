#ifndef LISTPRINTMODEL_H
#define LISTPRINTMODEL_H

#include "printmodel.h"

#include <QDate>
#include <QStringList>

class Database;
class Invoice;
class QCollator;

// What the list reports share. Scripts read the seller's name at "name",
// the number of rows at "ROWS/length" and the rows at "ROWS/N/...". The
// reports whose columns the user chooses also answer "criteria/length" and
// "criteria/K" (the lines under the title) and "columns/NAME" (whether the
// column is shown), and read the words of their CSV's extra columns from
// "GROUP/extraFields" of the configuration file, GROUP being settingsGroup().
class ListPrintModel : public PrintModel
{
    Q_OBJECT
public:
    using PrintModel::value;
    QVariant value(QStringList& path) override;

    int sortColumn() const { return m_sortColumn; }
    // Sorts the rows by the column; an unknown column sorts by the default one.
    virtual void sort(int column) = 0;

    // The columns the user chooses from, as bits of columnFlags() in this order.
    int columnCount() const { return m_columnNames.size(); }
    QString columnName(int column) const { return m_columnNames.value(column); }
    // The column's headings in the preview's menu.
    virtual QStringList columnHeadings() const { return QStringList(); }
    int allColumns() const { return (1 << columnCount()) - 1; }
    int columnFlags() const { return m_columnFlags; }
    void setColumnFlags(int flags) { m_columnFlags = flags; }
    bool isColumnVisible(int column) const { return (m_columnFlags & (1 << column)) != 0; }
    QString settingsGroup() const { return m_settingsGroup; }

    // The lines printed under the title, built from the criteria by run().
    QStringList criteriaTexts() const { return m_criteriaTexts; }
    // The words of "extraFields", instead of those of the configuration.
    void setExtraFields(const QStringList& fields);

protected:
    ListPrintModel(Registry* registry, const QString& rowsName, const QStringList& columnNames,
        const QString& settingsGroup, int sortColumn, QObject* parent);

    virtual int rowCount() const = 0;
    // The value of a path of at least three parts whose second is the row.
    virtual QVariant rowValue(int row, const QStringList& path) const = 0;
    // The value of a one-part path other than "name".
    virtual QVariant totalValue(const QString& key) const;

    // The open database, with lastError() set when there is none.
    Database* database();
    const Customer* customerOf(int customerId) const;
    // Compares the customers of these ids by number, or by name.
    int compareCustomers(int a, int b, bool byName, const QCollator& collator) const;
    // The invoice's "type", "number", "date", "dueDate", "hasDeliveryDate",
    // "deliveryDate" and "balance"; invalid for any other key.
    static QVariant invoiceValue(const Invoice& invoice, const QString& key);
    QStringList extraFields() const;
    // The CSV heading of a customer field of "extraFields"; empty for a word
    // that names none.
    static QString customerFieldHeading(const QString& word);
    static QString customerField(const Customer* customer, const QString& word);

    static int compare(long long a, long long b) { return a < b ? -1 : (b < a ? 1 : 0); }
    // Rows without the date come last.
    static int compare(const QDate& a, const QDate& b);

    Registry* m_registry;
    int m_sortColumn;
    QStringList m_criteriaTexts;

private:
    QString m_rowsName;
    QStringList m_columnNames;
    QString m_settingsGroup;
    int m_columnFlags;
    QStringList m_extraFields;
    bool m_extraFieldsSet = false;
};

#endif // LISTPRINTMODEL_H

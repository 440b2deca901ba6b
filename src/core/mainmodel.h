#ifndef MAINMODEL_H
#define MAINMODEL_H

#include "domain/invoice.h"
#include "domain/invoicecriteria.h"

#include <QObject>
#include <QString>

class InvoiceTableModel;
class Registry;

// The non-visual core behind the main window: opens the configured database,
// loads its reference data into the registry and keeps the invoice list.
// Failures are reported by return value with the text in lastError().
class MainModel : public QObject
{
    Q_OBJECT
public:
    explicit MainModel(Registry* registry, QObject* parent = nullptr);
    ~MainModel() override;

    // Opens entry `index` of the configured databases. Returns 0 when opened,
    // -1 when the open failed, -2 when the database does not exist (open
    // again with create = true to create it) and -3 when the database
    // driver is missing. The registry is connected in every case, so a
    // failed open is followed by closeDatabase().
    int openDatabase(int index, bool create);
    bool closeDatabase();
    // Company settings, customers, products, bank accounts, print scripts
    // and then the invoice list.
    bool fetchData();

    QString lastError() const { return m_lastError; }

    InvoiceTableModel* invoiceTableModel() const { return m_invoiceTableModel; }
    int invoiceCount() const;
    Invoice* invoice() { return &m_invoice; }
    int invoiceIndex() const { return m_invoiceIndex; }
    bool isEditable() const { return m_editable; }
    void setEditable(bool editable);
    int lastInvoiceId() const { return m_lastInvoiceId; }
    void setLastInvoiceId(int id) { m_lastInvoiceId = id; }

    // The criteria of the search dialog.
    InvoiceCriteria* criteria() { return &m_criteria; }
    // The criteria whose result the invoice list shows.
    InvoiceCriteria* lastCriteria() const { return m_lastCriteria; }

private:
    Registry* m_registry;
    InvoiceTableModel* m_invoiceTableModel;
    QString m_lastError;
    Invoice m_invoice;
    int m_invoiceIndex = -1;
    int m_lastInvoiceId = -1;
    bool m_editable = false;
    InvoiceCriteria m_criteria;
    InvoiceCriteria* m_lastCriteria;
};

#endif // MAINMODEL_H

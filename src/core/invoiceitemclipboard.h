#ifndef INVOICEITEMCLIPBOARD_H
#define INVOICEITEMCLIPBOARD_H

#include <QList>

class InvoiceItemTableModel;

// Copies, cuts and pastes invoice rows through the system clipboard as
// plain text, one tab-separated line per row.
class InvoiceItemClipboard
{
public:
    explicit InvoiceItemClipboard(InvoiceItemTableModel* model);

    // Rows are taken in ascending order whatever the order of the list;
    // returns the number of rows copied.
    int copyRowsToClipboard(const QList<int>& rows) const;
    // Copies the rows and then removes them from the model.
    int cutRowsToClipboard(const QList<int>& rows);
    // Appends the rows of the clipboard text; returns the number added.
    int pasteRowsFromClipboard();

private:
    static QList<int> validRows(const QList<int>& rows, int rowCount);

    InvoiceItemTableModel* m_model;
};

#endif // INVOICEITEMCLIPBOARD_H

#include "invoiceitemclipboard.h"

#include "core/invoiceitemtablemodel.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

InvoiceItemClipboard::InvoiceItemClipboard(InvoiceItemTableModel* model) : m_model(model) { }

QList<int> InvoiceItemClipboard::validRows(const QList<int>& rows, int rowCount)
{
    QList<int> result;
    for (int row : rows) {
        if (row >= 0 && row < rowCount && !result.contains(row))
            result.append(row);
    }
    std::sort(result.begin(), result.end());
    return result;
}

int InvoiceItemClipboard::copyRowsToClipboard(const QList<int>& rows) const
{
    const QList<int> sorted = validRows(rows, m_model->rowCount());
    if (sorted.isEmpty())
        return 0;
    QString text;
    for (int row : sorted)
        m_model->invoiceItemToString(row, text);
    QGuiApplication::clipboard()->setText(text);
    return sorted.size();
}

int InvoiceItemClipboard::cutRowsToClipboard(const QList<int>& rows)
{
    const QList<int> sorted = validRows(rows, m_model->rowCount());
    const int copied = copyRowsToClipboard(sorted);
    // From the bottom up, so that the remaining row numbers stay valid.
    for (auto it = sorted.crbegin(); it != sorted.crend(); ++it)
        m_model->removeRow(*it);
    return copied;
}

int InvoiceItemClipboard::pasteRowsFromClipboard()
{
    return m_model->invoiceItemsFromString(QGuiApplication::clipboard()->text());
}

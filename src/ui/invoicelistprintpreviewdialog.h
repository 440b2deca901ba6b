#ifndef INVOICELISTPRINTPREVIEWDIALOG_H
#define INVOICELISTPRINTPREVIEWDIALOG_H

#include "printpreviewdialog.h"

#include <QList>

class InvoiceListPrintModel;
class InvoiceCriteria;
class QAction;
class QComboBox;
class QMenu;

// The preview of the invoice list: search criteria, visible columns and
// sort order. Columns, sort column and orientation are kept in the
// configuration file, group "invoiceListPrint".
class InvoiceListPrintPreviewDialog : public PrintPreviewDialog
{
    Q_OBJECT
public:
    explicit InvoiceListPrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);
    ~InvoiceListPrintPreviewDialog() override;

    InvoiceListPrintModel* listModel() const { return m_listModel; }
    QAction* searchAction() const { return m_searchAction; }
    QMenu* columnMenu() const { return m_columnMenu; }
    QList<QAction*> columnActions() const { return m_columnActions; }
    QComboBox* sortComboBox() const { return m_sortCombo; }

    // Shows the report of these criteria on the reports printer; false
    // when the report could not be made.
    static bool showReport(Registry* registry, const InvoiceCriteria& criteria, QWidget* parent);

public slots:
    // Opens the search; accepting it runs the report again.
    void openSearchDialog();
    void setColumnVisible(int column, bool visible);
    void sortBy(int column);

protected:
    void saveSettings() override;

private:
    InvoiceListPrintModel* m_listModel;
    QAction* m_searchAction;
    QMenu* m_columnMenu;
    QList<QAction*> m_columnActions;
    QComboBox* m_sortCombo;
};

#endif // INVOICELISTPRINTPREVIEWDIALOG_H

#ifndef INVOICEPRINTPREVIEWDIALOG_H
#define INVOICEPRINTPREVIEWDIALOG_H

#include "printpreviewdialog.h"

#include <QList>

class InvoiceCriteria;
class InvoicePrintModel;
class QAction;
class QActionGroup;
class QMenu;

// The preview of invoices, reminders, receipts and delivery notes. The menu
// "Laskupohja" switches between the built-in and the stored invoice layouts
// for this preview only; the company setting "printScripts/invoice" picks
// the one shown first.
class InvoicePrintPreviewDialog : public PrintPreviewDialog
{
    Q_OBJECT
public:
    explicit InvoicePrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);
    ~InvoicePrintPreviewDialog() override;

    // The model the dialog owns: set its criteria and print type, then
    // hand it to updatePrintPreview().
    InvoicePrintModel* invoicePrintModel() const { return m_invoiceModel; }
    QMenu* layoutMenu() const { return m_layoutMenu; }
    QList<QAction*> layoutActions() const;
    QAction* sendAction() const { return m_sendAction; }
    int printScriptId() const { return m_printScriptId; }

    // The invoice print commands of the main window: loads the invoices of
    // criteria printed as kind (an InvoiceType: invoice, reminder, receipt or delivery note),
    // cautions and asks as InvoicePrintJob decides, then shows the preview (when preview is set or
    // the company setting asks for it) or prints straight away on the configured printers. False
    // when nothing was shown or printed.
    static bool printInvoices(Registry* registry, const InvoiceCriteria& criteria, int kind,
        bool preview, QWidget* parent);

public slots:
    // Loads the layout with this id (built-in ids are 0 or below) and redraws.
    bool setPrintScript(int id);
    // Hands the invoice shown to the mail program; a refusal is shown.
    bool sendInvoice();

protected:
    virtual void showMessage(const QString& title, const QString& message);

private:
    void fillLayoutMenu();

    InvoicePrintModel* m_invoiceModel;
    QMenu* m_layoutMenu;
    QActionGroup* m_layoutGroup;
    QAction* m_sendAction;
    int m_printScriptId = -1;
};

#endif // INVOICEPRINTPREVIEWDIALOG_H

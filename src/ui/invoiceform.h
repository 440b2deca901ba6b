#ifndef INVOICEFORM_H
#define INVOICEFORM_H

#include "core/invoicesavecheck.h"
#include "domain/decimalformat.h"

#include <QList>
#include <QWidget>

class MainModel;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QModelIndex;
class QTableView;
class QTableWidget;
class Registry;

// The current invoice of the main model as the user sees and edits it: the
// fields of its head (customer, type, number, dates, terms, references),
// its rows and payments, the notice texts and free attributes, and the
// sums. The form fills its fields from the invoice, hands their texts to
// the save check, copies them back into the invoice before it is saved, and
// runs the commands on rows, payments and attributes.
class InvoiceForm : public QWidget
{
    Q_OBJECT
public:
    InvoiceForm(Registry* registry, MainModel* model, QWidget* parent = nullptr);
    ~InvoiceForm() override;

    QTableView* invoiceItemTableView() const { return m_invoiceItemTableView; }
    QTableView* paymentTableView() const { return m_paymentTableView; }
    // buttons stand beside the rows' title; menu is the rows' context menu.
    void setRowActions(const QList<QAction*>& buttons, const QList<QAction*>& menu);

    // The model's current invoice, or empty fields when none is shown.
    void load(bool shown);
    bool isEditMode() const;
    // The fields take input in edit mode only; payments can be recorded on
    // any shown invoice.
    void updateEditable();
    void updateAmounts();
    void updateReferenceField();
    // The customers of the registry; a removed one only on its invoices.
    void updateCustomers();
    void focusCustomer();
    // A customer name typed but not confirmed counts as chosen: the one
    // customer whose name holds it. Anything else shows the chosen one again.
    void confirmCustomer();

    // Commits what is being typed into a cell and returns the texts of the
    // fields; a customer name typed but not confirmed counts as chosen.
    InvoiceSaveCheck::Texts prepareSave();
    // The number the check left to the invoice, and where a refusal can be
    // fixed.
    void showCheck(const InvoiceSaveCheck::Result& check);
    // Copies the fields into the invoice, with the dates the check read.
    void apply(const InvoiceSaveCheck::Result& check);
    // The notice texts between the form and the invoice.
    void applyNoticeTexts();
    void loadNoticeTexts();

    // The rows chosen in the rows table, or the current one.
    QList<int> selectedInvoiceItemRows() const;
    // -1 when no row is current.
    int currentInvoiceItemRow() const;

public slots:
    void addInvoiceItem();
    void removeInvoiceItems();
    void moveInvoiceItemUp();
    void moveInvoiceItemDown();
    void copyInvoiceItems();
    void cutInvoiceItems();
    void pasteInvoiceItems();
    void addPayment();
    void removePayment();
    void addAttribute();
    void removeAttribute();

signals:
    // The customer, the payments or the current row changed: what the
    // commands can do may have changed with them.
    void commandsChanged();

private:
    QWidget* createHead();
    QWidget* createRows();
    QWidget* createBottom();
    void loadAttributes();
    void selectCustomer(int customerId);
    void customerChosen();
    void dateEdited(QLineEdit* edit);
    void updateDueDate();
    void moveInvoiceItem(int step);
    // Puts the keyboard into a table cell and opens its editor.
    void editCell(QTableView* view, const QModelIndex& cell);

    Registry* m_registry;
    MainModel* m_model;
    bool m_shown = false;
    bool m_loading = false;
    DecimalFormat m_moneyFormat;
    DecimalFormat m_percentageFormat;

    QComboBox* m_customerCombo;
    QComboBox* m_typeCombo;
    QLineEdit* m_numberEdit;
    QLineEdit* m_dateEdit;
    QLineEdit* m_dueDateEdit;
    QLineEdit* m_paymentTermsEdit;
    QLineEdit* m_deliveryEdit;
    QLineEdit* m_deliveryDateEdit;
    QLineEdit* m_buyerRefEdit;
    QLineEdit* m_sellerRefEdit;
    QLineEdit* m_interestEdit;
    QLineEdit* m_referenceNumberEdit;
    QLineEdit* m_noticeText1Edit;
    QLineEdit* m_noticeText2Edit;
    QTableWidget* m_attributeTable;
    QWidget* m_attributeButtons;
    QTableView* m_invoiceItemTableView;
    QWidget* m_rowButtons;
    QTableView* m_paymentTableView;
    QWidget* m_paymentButtons;
    QLabel* m_vatExcludedLabel;
    QLabel* m_vatLabel;
    QLabel* m_totalLabel;
    QLabel* m_paidLabel;
    QLabel* m_balanceLabel;
};

#endif // INVOICEFORM_H

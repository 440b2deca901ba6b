#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "core/invoicesavecheck.h"
#include "domain/decimalformat.h"

#include <QAction>
#include <QDate>
#include <QMainWindow>
#include <QMap>

class MainModel;
class QActionGroup;
class QComboBox;
class QDialog;
class QDockWidget;
class QLabel;
class QLineEdit;
class QMenu;
class QModelIndex;
class QTableView;
class QTableWidget;
class QUrl;
class Registry;

// The main window: one invoice of the open database with its rows and
// payments, the list of invoices found by the active search, and every
// command of the program. The data lives in the MainModel; the window hands
// the typed fields to the save check and shows what the model reports.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    // The print kinds of printInvoices().
    enum PrintKind
    {
        PrintInvoice = 0,
        PrintReminder = 3,
        PrintReceipt = 4,
        PrintDeliveryNote = 5
    };

    explicit MainWindow(Registry* registry, QWidget* parent = nullptr);
    ~MainWindow() override;

    MainModel* model() const { return m_model; }
    QTableView* invoiceTableView() const { return m_invoiceTableView; }
    QTableView* invoiceItemTableView() const { return m_invoiceItemTableView; }
    QTableView* paymentTableView() const { return m_paymentTableView; }

    // Opens database `number` once the event loop runs.
    void openDatabaseLater(int number);
    // number: the configured database's number; 0 or less opens the one used
    // last. Returns whether the database was opened and its data fetched.
    bool openDatabase(int number);

    // Checks the current invoice and saves it; false after telling the user
    // why not. True when there is nothing to save.
    bool saveInvoice();
    // Starts a new invoice without saving the current one.
    bool doCreateInvoice();
    // Edit mode makes the current invoice editable; switching it off saves
    // the invoice first and stays on when that fails.
    bool toggleEditMode(bool on);
    bool isEditMode() const;
    // The invoice that stays editable when navigated to; -1 for none.
    int lastInvoiceId() const;
    // Saves the current invoice, then shows row `index` of the invoice list
    // model (not of the sorted view).
    bool goToInvoice(int index);
    // Whether an invoice (new or loaded) is shown.
    bool hasInvoice() const { return m_hasInvoice; }
    // The one entry point of printing: preview or print the current
    // invoice as kind (0 invoice, 3 reminder, 4 receipt, 5 delivery note).
    bool printInvoices(bool preview, int kind);
    // The invoices of a range of numbers chosen in a dialog, as kind.
    bool printSeveralInvoices(int kind);

    void showErrorMessage(const QString& message);

public slots:
    void newInvoice();
    void copyInvoice();
    void removeInvoice();
    void addInvoiceItem();
    void removeInvoiceItems();
    void moveInvoiceItemUp();
    void moveInvoiceItemDown();
    void copyInvoiceItems();
    void cutInvoiceItems();
    void pasteInvoiceItems();
    void addPayment();
    void removePayment();
    void search();
    void showSearchResults();
    void quickSearch(int n);
    void goToPreviousInvoice();
    void goToNextInvoice();
    void goToFirstInvoice();
    void goToLastInvoice();
    void refresh();
    void showHelp();
    void chooseDatabase();
    void editReferenceNumber();
    void editSettings();
    void editCustomers();
    void editProducts();
    void editBankAccounts();
    void editPrintScripts();
    void showAbout();
    void setVatIncluded(bool vatIncluded);

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

    // Every question, message, dialog and web page goes through these, so
    // that tests can answer and record them without modal boxes.
    virtual bool askQuestion(const QString& question);
    virtual void showCriticalMessage(const QString& message);
    virtual void showWarningMessage(const QString& message);
    virtual int execDialog(QDialog* dialog);
    virtual bool openUrl(const QUrl& url);

private slots:
    void openDatabaseSlot();

private:
    void createActions();
    void createMenus();
    void createForm();
    void createInvoiceList();
    QAction* createAction(const QString& name, const QString& text, const QKeySequence& shortcut);
    // handler: a slot of the window or a function object.
    template<typename Handler>
    QAction* createAction(
        const QString& name, const QString& text, const QKeySequence& shortcut, Handler handler)
    {
        QAction* action = createAction(name, text, shortcut);
        connect(action, &QAction::triggered, this, handler);
        return action;
    }
    QAction* action(const char* name) const;

    // Shows list row `index` without saving what was shown before.
    bool loadInvoice(int index);
    // Copies the fields into the invoice, with the dates the save check read.
    void applyForm(const InvoiceSaveCheck::Result& check);
    // Puts the cursor where a refused save can be fixed.
    void focusField(int field, int row);
    void loadForm();
    void clearForm();
    void loadAttributes();
    void updateFieldsEditable();
    void updateAmounts();
    void updateReferenceField();
    void updateDueDate();
    void updatePosition();
    void updateActions();
    void updateWindowTitle();
    void updateQuickSearchChecks();
    void updateColumnActions();
    void updateCustomers();
    void selectCustomer(int customerId);
    void customerChosen();
    void customerTextEdited();
    void dateEdited(QLineEdit* edit);
    void invoiceActivated(const QModelIndex& index);
    void goToProxyRow(int row);
    int currentProxyRow() const;
    void tooLargeAmountEntered();
    void applyVatMode();
    void addAttribute();
    void removeAttribute();
    void moveInvoiceItem(int step);
    // Shows what a search found, or why it failed.
    void showFound(bool ok);
    void showVatMode(bool vatIncluded);
    void saveSettings();
    // Puts the keyboard into a table cell and opens its editor.
    void editCell(QTableView* view, const QModelIndex& cell);
    // text with the model's last error in place of "%1".
    void showModelError(const QString& text);
    void showFetchError();
    // The tables whose column layout is kept, by their configuration group.
    QMap<QString, QTableView*> layoutTables() const;
    QList<int> selectedInvoiceItemRows() const;
    QDate today() const;
    void saveLayout();
    void restoreLayout();

    Registry* m_registry;
    MainModel* m_model;
    int m_numberToOpen = -1;
    QString m_databaseTitle;
    bool m_hasInvoice = false;
    bool m_loading = false;
    bool m_layoutRestored = false;
    DecimalFormat m_moneyFormat;
    DecimalFormat m_percentageFormat;

    QMap<QString, QAction*> m_actions;
    QActionGroup* m_quickSearchGroup;
    QActionGroup* m_vatGroup;
    QMenu* m_quickSearchMenu;

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
    QTableView* m_paymentTableView;
    QWidget* m_paymentButtons;
    QLabel* m_vatExcludedLabel;
    QLabel* m_vatLabel;
    QLabel* m_totalLabel;
    QLabel* m_paidLabel;
    QLabel* m_balanceLabel;
    QLabel* m_positionLabel;
    QDockWidget* m_invoiceDock;
    QTableView* m_invoiceTableView;
};

#endif // MAINWINDOW_H

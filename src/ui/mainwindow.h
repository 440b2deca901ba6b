#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QMainWindow>
#include <QMap>

#include <memory>

class InterestOnArrearsPanel;
class InvoiceForm;
class MainModel;
class MainWindowActions;
class QDialog;
class QDockWidget;
class QLabel;
class QModelIndex;
class QTableView;
class Product;
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
    explicit MainWindow(Registry* registry, QWidget* parent = nullptr);
    ~MainWindow() override;

    MainModel* model() const { return m_model; }
    QTableView* invoiceTableView() const { return m_invoiceTableView; }
    QTableView* invoiceItemTableView() const;
    QTableView* paymentTableView() const;

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
    // Saves the current invoice and hands it to the mail program.
    bool sendInvoice();

    void showErrorMessage(const QString& message);

    // The product of interest rows from the company settings. Without one
    // the user is told so and gets the settings to choose it; found is
    // false then.
    const Product* findProductForInterestOnArrears(bool& found);
    InterestOnArrearsPanel* interestPanel() const { return m_interestPanel; }

public slots:
    void newInvoice();
    void copyInvoice();
    void removeInvoice();
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
    void editEmailSettings();
    // Writes invoices as PDF and Finvoice files; the one shown names the examples.
    void exportInvoices();
    // Invoices from the time entries of the time-tracking program.
    void importTimeEntries();
    // The interest panel and its buttons.
    void showInterestPanel();
    void calculateInterest();
    void removeInterestRow();
    void clearInterest();
    void createInterestInvoice();
    void addInterestRows();
    // Copies the current invoice to a group of customers, or undoes the
    // last such run.
    void groupInvoicing();
    // Imports a bank file; the window reloads when payments were saved.
    void importPayments();
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
    virtual void showInformationMessage(const QString& title, const QString& message);
    virtual int execDialog(QDialog* dialog);
    virtual bool openUrl(const QUrl& url);

private slots:
    void openDatabaseSlot();

private:
    void createInvoiceList();
    void createInterestPanel();
    void updateInterestButtons();
    void editSettingsPage(int page);
    // Shows list row `index` without saving what was shown before.
    bool loadInvoice(int index);
    // Shows the invoice that createInvoice() or createInvoiceCopy() of the
    // model started; highest is what they returned.
    bool showCreatedInvoice(int highest);
    void loadForm();
    void updatePosition();
    void updateActions();
    void updateWindowTitle();
    void updateCustomers();
    void invoiceActivated(const QModelIndex& index);
    void goToProxyRow(int row);
    int currentProxyRow() const;
    void tooLargeAmountEntered();
    void applyVatMode();
    // Shows what a search found, or why it failed.
    void showFound(bool ok);
    void showVatMode(bool vatIncluded);
    void saveSettings();
    // text with the model's last error in place of "%1".
    void showModelError(const QString& text);
    void showFetchError();
    // The tables whose column layout is kept, by their configuration group.
    QMap<QString, QTableView*> layoutTables() const;
    void saveLayout();
    void restoreLayout();

    Registry* m_registry;
    MainModel* m_model;
    int m_numberToOpen = -1;
    QString m_databaseTitle;
    bool m_hasInvoice = false;
    bool m_layoutRestored = false;

    InvoiceForm* m_form;
    std::unique_ptr<MainWindowActions> m_actions;
    QLabel* m_positionLabel;
    QDockWidget* m_invoiceDock;
    QTableView* m_invoiceTableView;
    QDockWidget* m_interestDock;
    InterestOnArrearsPanel* m_interestPanel;
    bool m_interestDockSized = false;
};

#endif // MAINWINDOW_H

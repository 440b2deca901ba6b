#ifndef IRPDIALOG_H
#define IRPDIALOG_H

#include <QDialog>
#include <QMessageBox>

class IRPTableModel;
class MainModel;
class PaymentImporter;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class Registry;

// Imports a bank file: shows its reference payments matched to the
// invoices, lets the user untick rows or pick another invoice, and saves
// the ticked ones. isAccepted() tells the main window to refresh.
class IRPDialog : public QDialog
{
    Q_OBJECT
public:
    IRPDialog(Registry* registry, MainModel* mainModel, QWidget* parent = nullptr);
    ~IRPDialog() override;

    bool isAccepted() const { return m_accepted; }
    IRPTableModel* model() const;
    void setBankAccountComboBoxVisible(bool visible);

public slots:
    void fileButtonClicked();
    void readFile(const QString& path);
    void savePayments();
    void printPayments();

protected:
    // Overridden by tests.
    virtual QString chooseFile(const QString& previous);
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);
    virtual bool askQuestion(const QString& text);
    virtual void showPaymentReport(const QList<int>& idRange);

private:
    void dateChoiceChanged(int index);
    // The chosen bank account's id; -1 for the first entry, which is none.
    int selectedBankAccountId() const;

    Registry* m_registry;
    PaymentImporter* m_importer;
    QLineEdit* m_fileEdit;
    QComboBox* m_bankAccountCombo;
    QLabel* m_bankAccountLabel;
    QComboBox* m_dateCombo;
    QLabel* m_summaryLabel;
    QLabel* m_accountLabel;
    QTableView* m_view;
    QPushButton* m_saveButton;
    QPushButton* m_printButton;
    bool m_accepted = false;
};

#endif // IRPDIALOG_H

#ifndef BANKACCOUNTDIALOG_H
#define BANKACCOUNTDIALOG_H

#include <QDialog>

class BankAccountTableModel;
class QCheckBox;
class QDialogButtonBox;
class QLineEdit;
class QModelIndex;
class QPushButton;
class QSortFilterProxyModel;
class QTableView;
class Registry;

// The seller's bank accounts in the order they are printed, and the fields
// of the chosen account. Edits go to copies of the registry's accounts; OK
// writes them to the database in one transaction and refreshes the
// registry, Cancel throws them away. Removed accounts are only marked
// deleted and disappear from the list.
class BankAccountDialog : public QDialog
{
    Q_OBJECT
public:
    explicit BankAccountDialog(Registry* registry, QWidget* parent = nullptr);
    ~BankAccountDialog() override;

    BankAccountTableModel* model() const { return m_model; }
    // The table row of the shown account, -1 when none.
    int currentAccountRow() const;
    void setCurrentAccountRow(int row);

public slots:
    void accept() override;
    void addAccount();
    void removeAccount();
    void moveUp();
    void moveDown();

protected:
    // Every refusal and failure goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);

private:
    void createWidgets();
    void currentChanged(const QModelIndex& current, const QModelIndex& previous);
    void formEdited();
    // Checks the fields and writes them into the model row; on a bad value
    // warns, focuses the field and returns false.
    bool commitForm();
    void loadForm();
    void move(bool up);

    Registry* m_registry;
    BankAccountTableModel* m_model;
    QSortFilterProxyModel* m_filter;
    QTableView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QPushButton* m_upButton;
    QPushButton* m_downButton;
    QWidget* m_form;
    QLineEdit* m_nameEdit;
    QLineEdit* m_shortNameEdit;
    QLineEdit* m_ibanEdit;
    QLineEdit* m_bicEdit;
    QCheckBox* m_visibleCheck;
    QDialogButtonBox* m_buttons;
    int m_formRow = -1;
    bool m_formDirty = false;
    bool m_loading = false;
    bool m_reverting = false;
};

#endif // BANKACCOUNTDIALOG_H

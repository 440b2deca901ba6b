#ifndef CUSTOMERDIALOG_H
#define CUSTOMERDIALOG_H

#include <QDialog>

class CustomerTableModel;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLineEdit;
class QModelIndex;
class QPushButton;
class QSortFilterProxyModel;
class QTableView;
class Registry;

// The customer register: a searchable list and the fields of the chosen
// customer. Edits go to copies of the registry's customers; OK writes them
// to the database in one transaction and refreshes the registry, Cancel
// throws them away. Removed customers are only marked deleted and are
// hidden unless "Näytä poistetut" is checked.
class CustomerDialog : public QDialog
{
    Q_OBJECT
public:
    explicit CustomerDialog(Registry* registry, QWidget* parent = nullptr);
    ~CustomerDialog() override;

    CustomerTableModel* model() const { return m_model; }
    // The id of the shown customer (-1 for a new or no customer).
    int currentCustomerId() const;
    void setCurrentCustomerId(int id);

public slots:
    void accept() override;
    void addCustomer();
    // Marks the shown customer deleted, or restores a deleted one.
    void removeCustomer();

protected:
    // Every refusal and failure goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);

private:
    void createWidgets();
    void currentChanged(const QModelIndex& current, const QModelIndex& previous);
    void filterChanged();
    void formEdited();
    // Checks the fields and writes them into the model row; on a bad value
    // warns, focuses the field and returns false.
    bool commitForm();
    void loadForm();
    void selectSourceRow(int row);
    int currentSourceRow() const;
    void updateButtons();

    Registry* m_registry;
    CustomerTableModel* m_model;
    QSortFilterProxyModel* m_deletedFilter;
    QSortFilterProxyModel* m_searchFilter;
    QLineEdit* m_searchEdit;
    QCheckBox* m_showDeletedCheck;
    QTableView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QWidget* m_form;
    QLineEdit* m_numberEdit;
    QLineEdit* m_nameEdit;
    QLineEdit* m_streetNameEdit;
    QLineEdit* m_postCodeEdit;
    QLineEdit* m_townNameEdit;
    QLineEdit* m_countryEdit;
    QLineEdit* m_contactEdit;
    QLineEdit* m_vatNumberEdit;
    QLineEdit* m_referenceNumberEdit;
    QLineEdit* m_emailAddressEdit;
    QLineEdit* m_phoneNumberEdit;
    QLineEdit* m_paymentTermsEdit;
    QComboBox* m_languageCombo;
    QLineEdit* m_custom1Edit;
    QLineEdit* m_custom2Edit;
    QLineEdit* m_intermediatorEdit;
    QLineEdit* m_receiverEdit;
    QLineEdit* m_ediEdit;
    QDialogButtonBox* m_buttons;
    int m_formRow = -1;
    bool m_formDirty = false;
    bool m_loading = false;
    bool m_reverting = false;
};

#endif // CUSTOMERDIALOG_H

#ifndef COPYDIALOG_H
#define COPYDIALOG_H

#include "core/customergrouplist.h"

#include <QDialog>
#include <memory>

class Invoice;
class InvoiceCopier;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class Registry;

// Group invoicing: the customers to copy the chosen invoice to, picked one
// by one or as named groups, and the last run's undo. The copying is the
// InvoiceCopier's; groups and the undo record go into the registry's
// company settings, which the caller stores after the dialog.
class CopyDialog : public QDialog
{
    Q_OBJECT
public:
    CopyDialog(Registry* registry, const Invoice& source, QWidget* parent = nullptr);
    ~CopyDialog() override;

    // The ids of the selected customers in list order.
    QList<int> selectedCustomerIds() const;
    void selectCustomers(const QList<int>& ids);
    // The day recorded for a run; a null date means the current date.
    void setToday(const QDate& today);

public slots:
    void selectCurrent();
    void deselectCurrent();
    void addGroup();
    void updateGroup();
    void removeGroup();
    void createInvoices();
    void undoCopy();

protected:
    // Every question and message goes through these, so tests can answer
    // and record them.
    virtual bool askQuestion(const QString& question);
    virtual void showWarning(const QString& text);
    virtual void showCritical(const QString& text);

private:
    QListWidgetItem* customerItem(int id) const;
    void move(QListWidgetItem* item, QListWidget* to);
    void activateGroup(QListWidgetItem* item);
    void groupRenamed(QListWidgetItem* item);
    void loadGroups();
    void storeGroups();
    void updateState();

    Registry* m_registry;
    std::unique_ptr<Invoice> m_source;
    std::unique_ptr<InvoiceCopier> m_copier;
    QList<CustomerGroupList::Group> m_groups;
    QListWidget* m_customerList;
    QListWidget* m_selectedList;
    QListWidget* m_groupList;
    QLabel* m_countLabel;
    QLabel* m_undoLabel;
    QPushButton* m_selectButton;
    QPushButton* m_deselectButton;
    QPushButton* m_updateGroupButton;
    QPushButton* m_removeGroupButton;
    QPushButton* m_createButton;
    QPushButton* m_undoButton;
};

#endif // COPYDIALOG_H

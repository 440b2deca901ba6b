#ifndef RAVELODIALOG_H
#define RAVELODIALOG_H

#include "core/ravelofilereader.h"
#include "core/raveloinvoicebuilder.h"
#include "core/ravelomapping.h"

#include <QDate>
#include <QDialog>
#include <QMessageBox>

class QComboBox;
class QDateEdit;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableView;
class QTableWidget;
class RaveloTableModel;
class Registry;

// Invoices from the time entries of the time-tracking program: reads the
// "*.rvt" files of a directory, lets the user pick the period and the
// customers, map their customers and work types to the program's customers
// and products, choose how rows are itemised and hours rounded, shows the
// rows of every invoice and only then stores them, all in one transaction.
// The mapping and the choices are kept in the company settings, the
// directory in the configuration of this machine.
class RaveloDialog : public QDialog
{
    Q_OBJECT
public:
    enum CustomerColumn
    {
        RaveloCustomerColumn,
        CustomerColumn,
        HoursColumn
    };
    enum WorkTypeColumn
    {
        WorkTypeColumn,
        ProductColumn
    };

    explicit RaveloDialog(Registry* registry, QWidget* parent = nullptr);
    ~RaveloDialog() override;

    // The date of the invoices and of the default period.
    void setToday(const QDate& today);
    // The numbers of the invoices made, after the dialog was accepted.
    const QList<int>& createdNumbers() const { return m_builder.savedNumbers(); }
    const RaveloFileReader& reader() const { return m_reader; }
    const RaveloInvoiceBuilder& builder() const { return m_builder; }
    RaveloTableModel* previewModel() const { return m_previewModel; }

public slots:
    // Reads the files of the directory field again.
    void readFiles();
    void createInvoices();
    void showDirectoryDialog();

protected:
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);
    virtual bool askQuestion(const QString& text);
    virtual QString chooseDirectory(const QString& start);

private:
    // The tables of the period's customers and work types, with the
    // mapping filled in.
    void updateTables();
    // The invoices of the current choices, or what stands in their way.
    void updatePreview();
    RaveloInvoiceBuilder::Options options() const;
    QComboBox* createCustomerBox(const QString& raveloCustomer);
    QComboBox* createProductBox(const QString& workType);
    void loadChoices();
    void storeChoices(Settings* settings) const;

    Registry* m_registry;
    RaveloFileReader m_reader;
    RaveloInvoiceBuilder m_builder;
    RaveloMapping m_mapping;
    // The table being refilled sends no changes.
    bool m_updating = false;

    QLineEdit* m_directoryEdit;
    QDateEdit* m_fromEdit;
    QDateEdit* m_toEdit;
    QDateEdit* m_dateEdit;
    QComboBox* m_itemizationBox;
    QComboBox* m_roundingBox;
    QComboBox* m_directionBox;
    QTableWidget* m_customerTable;
    QTableWidget* m_workTypeTable;
    QPlainTextEdit* m_problemsEdit;
    QTableView* m_previewView;
    RaveloTableModel* m_previewModel;
    QPushButton* m_createButton;
};

#endif // RAVELODIALOG_H

#ifndef DATABASELISTDIALOG_H
#define DATABASELISTDIALOG_H

#include "core/databaselist.h"

#include <QDialog>
#include <QList>

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class Registry;

// The databases of the configuration file (array "databases/settings"):
// SQLite files and PostgreSQL databases, each with a number and a name. The
// user adds, edits and removes entries and chooses the one to open.
// Accepting writes the list back; the caller opens selectedNumber().
class DatabaseListDialog : public QDialog
{
    Q_OBJECT
public:
    using Entry = DatabaseList::Entry;

    explicit DatabaseListDialog(Registry* registry, QWidget* parent = nullptr);

    int entryCount() const { return m_databases.count(); }
    Entry entry(int row) const { return m_databases.entry(row); }
    int currentRow() const;
    void setCurrentRow(int row);
    // The number of the chosen database, -1 when none is chosen.
    int selectedNumber() const;

public slots:
    void accept() override;
    void addEntry();
    void removeEntry();
    void chooseFile();

protected:
    // Every refusal goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);
    // Asks for an SQLite file; empty when the user gives up.
    virtual QString chooseFileName(const QString& current);

private:
    void loadForm();
    void fieldEdited();
    void updateTypeFields();
    QString entryText(const Entry& entry) const;
    bool checkEntries();

    Registry* m_registry;
    DatabaseList m_databases;
    bool m_loading = false;

    QListWidget* m_list;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QWidget* m_form;
    QSpinBox* m_numberSpin;
    QLineEdit* m_nameEdit;
    QComboBox* m_typeCombo;
    QLineEdit* m_fileNameEdit;
    QPushButton* m_browseButton;
    QLineEdit* m_hostEdit;
    QSpinBox* m_portSpin;
    QLineEdit* m_databaseNameEdit;
    QLineEdit* m_usernameEdit;
    QLineEdit* m_passwordEdit;
    QList<QWidget*> m_sqliteFields;
    QList<QWidget*> m_postgresqlFields;
    QDialogButtonBox* m_buttons;
};

#endif // DATABASELISTDIALOG_H

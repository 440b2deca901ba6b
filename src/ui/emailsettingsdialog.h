#ifndef EMAILSETTINGSDIALOG_H
#define EMAILSETTINGSDIALOG_H

#include "export/emailsettings.h"

#include <QDialog>
#include <QMap>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class Registry;

// The mail program of this machine: one for all databases and, where
// wanted, one of a database's own. The texts of the message belong to the
// business and are edited with the company's settings.
class EmailSettingsDialog : public QDialog
{
    Q_OBJECT
public:
    explicit EmailSettingsDialog(Registry* registry, QWidget* parent = nullptr);

    // What the dialog would write.
    EmailSettings::Program general() const;
    QList<EmailSettings::DatabaseEntry> databaseEntries() const;

public slots:
    void accept() override;
    // Index of the scope list: 0 all databases, then one per database.
    void showScope(int index);
    // Chooses a program by name and proposes its usual path.
    void chooseProgram(const QString& name);

private:
    EmailSettings::Program shownProgram() const;
    // The databases' own choices with the one shown.
    QMap<int, EmailSettings::Program> ownPrograms() const;
    void storeShown();
    void showProgram(const EmailSettings::Program& program);
    void updateFields();
    void browse();

    Registry* m_registry;
    EmailSettings::Program m_general;
    // Databases with their own choice, by number.
    QMap<int, EmailSettings::Program> m_own;
    // Entries of numbers no longer in the list of databases, kept as they are.
    QList<EmailSettings::DatabaseEntry> m_others;
    // -1 until the first scope is shown.
    int m_shownScope = -1;

    QComboBox* m_scopeCombo;
    QCheckBox* m_ownCheck;
    QComboBox* m_appCombo;
    QLineEdit* m_pathEdit;
    QPushButton* m_browseButton;
    QLineEdit* m_argsEdit;
    QLabel* m_argsHint;
};

#endif // EMAILSETTINGSDIALOG_H

#include "databaselistdialog.h"

#include "core/registry.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

const QString sqliteType = QStringLiteral("sqlite");
const QString postgresqlType = QStringLiteral("postgresql");

QLineEdit* newEdit(const QString& name)
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    return edit;
}

} // namespace

DatabaseListDialog::DatabaseListDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_databases(registry->appSettings())
{
    setWindowTitle(tr("Valitse yritys"));

    m_list = new QListWidget();
    m_list->setObjectName(QStringLiteral("databaseList"));
    QLabel* listLabel = new QLabel(tr("&Tietokannat"));
    listLabel->setBuddy(m_list);
    m_addButton = new QPushButton(tr("&Lisää"));
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_removeButton = new QPushButton(tr("P&oista"));
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    connect(m_addButton, &QPushButton::clicked, this, &DatabaseListDialog::addEntry);
    connect(m_removeButton, &QPushButton::clicked, this, &DatabaseListDialog::removeEntry);

    m_numberSpin = new QSpinBox();
    m_numberSpin->setObjectName(QStringLiteral("numberSpin"));
    m_numberSpin->setRange(1, 9999);
    m_nameEdit = newEdit(QStringLiteral("nameEdit"));
    m_typeCombo = new QComboBox();
    m_typeCombo->setObjectName(QStringLiteral("typeCombo"));
    m_typeCombo->addItem(tr("SQLite-tiedosto"), sqliteType);
    m_typeCombo->addItem(tr("PostgreSQL-palvelin"), postgresqlType);
    m_fileNameEdit = newEdit(QStringLiteral("fileNameEdit"));
    m_browseButton = new QPushButton(tr("&Selaa..."));
    m_browseButton->setObjectName(QStringLiteral("browseButton"));
    connect(m_browseButton, &QPushButton::clicked, this, &DatabaseListDialog::chooseFile);
    m_hostEdit = newEdit(QStringLiteral("hostEdit"));
    m_hostEdit->setPlaceholderText(QStringLiteral("localhost"));
    m_portSpin = new QSpinBox();
    m_portSpin->setObjectName(QStringLiteral("portSpin"));
    m_portSpin->setRange(1, 65535);
    m_databaseNameEdit = newEdit(QStringLiteral("databaseNameEdit"));
    m_usernameEdit = newEdit(QStringLiteral("usernameEdit"));
    m_passwordEdit = newEdit(QStringLiteral("passwordEdit"));
    m_passwordEdit->setEchoMode(QLineEdit::Password);

    m_form = new QWidget();
    QFormLayout* form = new QFormLayout(m_form);
    form->setContentsMargins(0, 0, 0, 0);
    auto addRow = [form](const QString& text, QWidget* field, QWidget* buddy) {
        QLabel* label = new QLabel(text);
        label->setBuddy(buddy);
        form->addRow(label, field);
        return label;
    };
    addRow(tr("&Numero"), m_numberSpin, m_numberSpin);
    addRow(tr("N&imi"), m_nameEdit, m_nameEdit);
    addRow(tr("T&yyppi"), m_typeCombo, m_typeCombo);
    QWidget* file = new QWidget();
    QHBoxLayout* fileLayout = new QHBoxLayout(file);
    fileLayout->setContentsMargins(0, 0, 0, 0);
    fileLayout->addWidget(m_fileNameEdit, 1);
    fileLayout->addWidget(m_browseButton);
    m_sqliteFields = { addRow(tr("Tie&dosto"), file, m_fileNameEdit), file };
    m_postgresqlFields = { addRow(tr("&Palvelin"), m_hostEdit, m_hostEdit), m_hostEdit,
        addRow(tr("Po&rtti"), m_portSpin, m_portSpin), m_portSpin,
        addRow(tr("Tieto&kanta"), m_databaseNameEdit, m_databaseNameEdit), m_databaseNameEdit,
        addRow(tr("Käyttä&jä"), m_usernameEdit, m_usernameEdit), m_usernameEdit,
        addRow(tr("Sala&sana"), m_passwordEdit, m_passwordEdit), m_passwordEdit };

    for (QLineEdit* edit : { m_nameEdit, m_fileNameEdit, m_hostEdit, m_databaseNameEdit,
             m_usernameEdit, m_passwordEdit })
        connect(edit, &QLineEdit::textEdited, this, &DatabaseListDialog::fieldEdited);
    connect(m_numberSpin, &QSpinBox::valueChanged, this, &DatabaseListDialog::fieldEdited);
    connect(m_portSpin, &QSpinBox::valueChanged, this, &DatabaseListDialog::fieldEdited);
    connect(m_typeCombo, &QComboBox::currentIndexChanged, this, &DatabaseListDialog::fieldEdited);

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("&Avaa"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("P&eruuta"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &DatabaseListDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &DatabaseListDialog::reject);

    QVBoxLayout* listColumn = new QVBoxLayout();
    listColumn->addWidget(listLabel);
    listColumn->addWidget(m_list, 1);
    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch(1);
    listColumn->addLayout(listButtons);
    QHBoxLayout* columns = new QHBoxLayout();
    columns->addLayout(listColumn, 2);
    columns->addWidget(m_form, 3);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addWidget(m_buttons);
    resize(720, 380);

    for (int row = 0; row < m_databases.count(); ++row)
        m_list->addItem(entryText(m_databases.entry(row)));
    connect(m_list, &QListWidget::currentRowChanged, this, &DatabaseListDialog::loadForm);
    // Enter or a double click on an entry opens it.
    connect(m_list, &QListWidget::itemActivated, this, &DatabaseListDialog::accept);
    const int current = m_databases.indexOfNumber(m_registry->databaseNumber());
    setCurrentRow(m_databases.count() == 0 ? -1 : qMax(0, current));
    loadForm();
    m_list->setFocus();
}

QString DatabaseListDialog::entryText(const Entry& entry) const
{
    return QStringLiteral("%1  %2")
        .arg(DatabaseList::number(entry))
        .arg(DatabaseList::displayName(entry));
}

int DatabaseListDialog::currentRow() const
{
    return m_list->currentRow();
}

void DatabaseListDialog::setCurrentRow(int row)
{
    m_list->setCurrentRow(row);
}

int DatabaseListDialog::selectedNumber() const
{
    const int row = currentRow();
    if (row < 0 || row >= m_databases.count())
        return -1;
    return DatabaseList::number(m_databases.entry(row));
}

void DatabaseListDialog::loadForm()
{
    const int row = currentRow();
    m_loading = true;
    const bool valid = row >= 0 && row < m_databases.count();
    m_form->setEnabled(valid);
    m_removeButton->setEnabled(valid);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(valid);
    const Entry entry = m_databases.entry(row);
    m_numberSpin->setValue(qMax(1, entry.value(QStringLiteral("number")).toInt()));
    m_nameEdit->setText(entry.value(QStringLiteral("name")).toString());
    m_typeCombo->setCurrentIndex(DatabaseList::isPostgreSQL(entry) ? 1 : 0);
    m_fileNameEdit->setText(entry.value(QStringLiteral("filename")).toString());
    m_hostEdit->setText(entry.value(QStringLiteral("host")).toString());
    m_portSpin->setValue(entry.value(QStringLiteral("port"), 5432).toInt());
    m_databaseNameEdit->setText(entry.value(QStringLiteral("databaseName")).toString());
    m_usernameEdit->setText(entry.value(QStringLiteral("username")).toString());
    m_passwordEdit->setText(entry.value(QStringLiteral("password")).toString());
    updateTypeFields();
    m_loading = false;
}

void DatabaseListDialog::updateTypeFields()
{
    const bool postgresql = m_typeCombo->currentIndex() == 1;
    for (QWidget* widget : qAsConst(m_sqliteFields))
        widget->setVisible(!postgresql);
    for (QWidget* widget : qAsConst(m_postgresqlFields))
        widget->setVisible(postgresql);
}

void DatabaseListDialog::fieldEdited()
{
    if (m_loading)
        return;
    const int row = currentRow();
    if (row < 0 || row >= m_databases.count())
        return;
    Entry entry = m_databases.entry(row);
    const bool postgresql = m_typeCombo->currentIndex() == 1;
    entry.insert(QStringLiteral("number"), m_numberSpin->value());
    entry.insert(QStringLiteral("name"), m_nameEdit->text().trimmed());
    entry.insert(QStringLiteral("type"), postgresql ? postgresqlType : sqliteType);
    auto setOrRemove = [&entry](const QString& key, const QString& value) {
        if (value.isEmpty())
            entry.remove(key);
        else
            entry.insert(key, value);
    };
    setOrRemove(QStringLiteral("filename"), m_fileNameEdit->text().trimmed());
    if (postgresql) {
        setOrRemove(QStringLiteral("host"), m_hostEdit->text().trimmed());
        entry.insert(QStringLiteral("port"), m_portSpin->value());
        setOrRemove(QStringLiteral("databaseName"), m_databaseNameEdit->text().trimmed());
        setOrRemove(QStringLiteral("username"), m_usernameEdit->text().trimmed());
        setOrRemove(QStringLiteral("password"), m_passwordEdit->text());
    }
    m_databases.setEntry(row, entry);
    m_list->item(row)->setText(entryText(entry));
    updateTypeFields();
}

void DatabaseListDialog::addEntry()
{
    const Entry entry = m_databases.newEntry();
    m_databases.add(entry);
    m_list->addItem(entryText(entry));
    setCurrentRow(m_databases.count() - 1);
    m_nameEdit->setFocus();
}

void DatabaseListDialog::removeEntry()
{
    const int row = currentRow();
    if (row < 0 || row >= m_databases.count())
        return;
    m_databases.remove(row);
    delete m_list->takeItem(row);
    setCurrentRow(qMin(row, m_databases.count() - 1));
    loadForm();
}

void DatabaseListDialog::chooseFile()
{
    const QString fileName = chooseFileName(m_fileNameEdit->text());
    if (fileName.isEmpty())
        return;
    m_fileNameEdit->setText(fileName);
    fieldEdited();
}

QString DatabaseListDialog::chooseFileName(const QString& current)
{
    return QFileDialog::getSaveFileName(this, tr("SQLite-tietokanta"), current,
        tr("SQLite-tietokannat (*.sqlite *.db);;Kaikki tiedostot (*)"), nullptr,
        QFileDialog::DontConfirmOverwrite);
}

bool DatabaseListDialog::checkEntries()
{
    QList<int> numbers;
    for (int row = 0; row < m_databases.count(); ++row) {
        const Entry entry = m_databases.entry(row);
        const int number = DatabaseList::number(entry);
        QString problem;
        if (numbers.contains(number))
            problem = tr("Numero %1 on jo toisen tietokannan käytössä.").arg(number);
        else if (DatabaseList::isPostgreSQL(entry)
            && entry.value(QStringLiteral("databaseName")).toString().isEmpty())
            problem = tr("Anna tietokannan nimi.");
        else if (!DatabaseList::isPostgreSQL(entry)
            && entry.value(QStringLiteral("filename")).toString().isEmpty())
            problem = tr("Anna tietokantatiedoston nimi.");
        numbers.append(number);
        if (problem.isEmpty())
            continue;
        setCurrentRow(row);
        showWarning(problem);
        return false;
    }
    return true;
}

void DatabaseListDialog::accept()
{
    if (currentRow() < 0 || !checkEntries())
        return;
    m_databases.write();
    QDialog::accept();
}

void DatabaseListDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

#include "databaselistdialog.h"

#include "core/registry.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

const QString sqliteType = QStringLiteral("sqlite");
const QString postgresqlType = QStringLiteral("postgresql");

bool isPostgreSQL(const DatabaseListDialog::Entry& entry)
{
    return entry.value(QStringLiteral("type"))
               .toString()
               .compare(postgresqlType, Qt::CaseInsensitive)
        == 0;
}

QLineEdit* newEdit(const QString& name)
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    return edit;
}

} // namespace

DatabaseListDialog::DatabaseListDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry)
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

    readEntries();
    connect(m_list, &QListWidget::currentRowChanged, this, &DatabaseListDialog::loadForm);
    // Enter or a double click on an entry opens it.
    connect(m_list, &QListWidget::itemActivated, this, &DatabaseListDialog::accept);
    int current = 0;
    for (int row = 0; row < m_entries.size(); ++row) {
        if (m_entries.at(row).value(QStringLiteral("number")).toInt()
            == m_registry->databaseNumber())
            current = row;
    }
    setCurrentRow(m_entries.isEmpty() ? -1 : current);
    loadForm();
    m_list->setFocus();
}

void DatabaseListDialog::readEntries()
{
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    const int count = settings->beginReadArray(QStringLiteral("settings"));
    for (int i = 0; i < count; ++i) {
        settings->setArrayIndex(i);
        Entry entry;
        // Keys this dialog does not know are written back as they were.
        const QStringList keys = settings->childKeys();
        for (const QString& key : keys)
            entry.insert(key, settings->value(key));
        m_entries.append(entry);
    }
    settings->endArray();
    settings->endGroup();
    for (const Entry& entry : qAsConst(m_entries))
        m_list->addItem(entryText(entry));
}

void DatabaseListDialog::writeEntries()
{
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    settings->remove(QStringLiteral("settings"));
    settings->beginWriteArray(QStringLiteral("settings"), m_entries.size());
    for (int i = 0; i < m_entries.size(); ++i) {
        settings->setArrayIndex(i);
        const Entry& entry = m_entries.at(i);
        for (auto it = entry.cbegin(); it != entry.cend(); ++it)
            settings->setValue(it.key(), it.value());
    }
    settings->endArray();
    settings->endGroup();
}

QString DatabaseListDialog::entryText(const Entry& entry) const
{
    QString name = entry.value(QStringLiteral("name")).toString();
    if (name.isEmpty()) {
        name = isPostgreSQL(entry)
            ? entry.value(QStringLiteral("databaseName")).toString()
            : QFileInfo(entry.value(QStringLiteral("filename")).toString()).completeBaseName();
    }
    return QStringLiteral("%1  %2").arg(entry.value(QStringLiteral("number")).toInt()).arg(name);
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
    if (row < 0 || row >= m_entries.size())
        return -1;
    return m_entries.at(row).value(QStringLiteral("number")).toInt();
}

void DatabaseListDialog::loadForm()
{
    const int row = currentRow();
    m_loading = true;
    const bool valid = row >= 0 && row < m_entries.size();
    m_form->setEnabled(valid);
    m_removeButton->setEnabled(valid);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(valid);
    const Entry entry = valid ? m_entries.at(row) : Entry();
    m_numberSpin->setValue(qMax(1, entry.value(QStringLiteral("number")).toInt()));
    m_nameEdit->setText(entry.value(QStringLiteral("name")).toString());
    m_typeCombo->setCurrentIndex(isPostgreSQL(entry) ? 1 : 0);
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
    if (row < 0 || row >= m_entries.size())
        return;
    Entry& entry = m_entries[row];
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
    m_list->item(row)->setText(entryText(entry));
    updateTypeFields();
}

void DatabaseListDialog::addEntry()
{
    int number = 1;
    for (const Entry& entry : qAsConst(m_entries))
        number = qMax(number, entry.value(QStringLiteral("number")).toInt() + 1);
    Entry entry;
    entry.insert(QStringLiteral("number"), number);
    entry.insert(QStringLiteral("name"), QString());
    entry.insert(QStringLiteral("type"), sqliteType);
    // A new file beside the configuration, named after the number.
    const QDir dir = QFileInfo(m_registry->appSettings()->fileName()).absoluteDir();
    entry.insert(QStringLiteral("filename"),
        dir.absoluteFilePath(tr("laskutus") + QStringLiteral("-%1.sqlite").arg(number)));
    m_entries.append(entry);
    m_list->addItem(entryText(entry));
    setCurrentRow(m_entries.size() - 1);
    m_nameEdit->setFocus();
}

void DatabaseListDialog::removeEntry()
{
    const int row = currentRow();
    if (row < 0 || row >= m_entries.size())
        return;
    m_entries.removeAt(row);
    delete m_list->takeItem(row);
    setCurrentRow(qMin(row, m_entries.size() - 1));
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
    for (int row = 0; row < m_entries.size(); ++row) {
        const Entry& entry = m_entries.at(row);
        const int number = entry.value(QStringLiteral("number")).toInt();
        QString problem;
        if (numbers.contains(number))
            problem = tr("Numero %1 on jo toisen tietokannan käytössä.").arg(number);
        else if (isPostgreSQL(entry)
            && entry.value(QStringLiteral("databaseName")).toString().isEmpty())
            problem = tr("Anna tietokannan nimi.");
        else if (!isPostgreSQL(entry)
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
    writeEntries();
    QDialog::accept();
}

void DatabaseListDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

#include "emailsettingsdialog.h"

#include "core/databaselist.h"
#include "core/registry.h"
#include "export/emailprofile.h"
#include "formhelper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

EmailSettingsDialog::EmailSettingsDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry)
{
    setWindowTitle(tr("Sähköpostiasetukset"));
    QSettings* settings = registry ? registry->appSettings() : nullptr;
    const EmailSettings stored(settings);
    m_general = stored.general();

    m_scopeCombo = FormHelper::create<QComboBox>(QStringLiteral("scopeCombo"));
    m_scopeCombo->addItem(tr("Kaikki tietokannat"), 0);
    if (settings) {
        DatabaseList databases(settings);
        for (int i = 0; i < databases.count(); ++i) {
            const DatabaseList::Entry entry = databases.entry(i);
            const int number = DatabaseList::number(entry);
            m_scopeCombo->addItem(
                QStringLiteral("%1: %2").arg(number).arg(DatabaseList::displayName(entry)), number);
        }
    }
    // The first entry of a number is the one that counts.
    const QList<EmailSettings::DatabaseEntry> entries = stored.databaseEntries();
    for (const EmailSettings::DatabaseEntry& entry : entries) {
        if (m_scopeCombo->findData(entry.number) > 0 && !m_own.contains(entry.number))
            m_own.insert(entry.number, entry.program);
        else
            m_others.append(entry);
    }

    m_ownCheck = new QCheckBox(tr("&Käytä tälle tietokannalle omaa ohjelmaa"));
    m_ownCheck->setObjectName(QStringLiteral("ownCheck"));
    m_appCombo = FormHelper::create<QComboBox>(QStringLiteral("appCombo"));
    m_appCombo->setEditable(true);
    const QList<EmailProfile> profiles = EmailProfile::all();
    for (const EmailProfile& profile : profiles)
        m_appCombo->addItem(profile.name);
    m_pathEdit = FormHelper::create<QLineEdit>(QStringLiteral("pathEdit"));
    m_browseButton = FormHelper::createButton(tr("&Selaa..."), QStringLiteral("browseButton"));
    m_argsEdit = FormHelper::create<QLineEdit>(QStringLiteral("argsEdit"));
    // A placeholder is not broken over two lines.
    const QString hint
        = tr("Tyhjä kenttä käyttää ohjelman omia argumentteja. Käytettävissä ovat mm. "
             "{{ customer/emailAddress }}, {{ subject }}, {{ body }}, {{ attachmentPath }} ja "
             "niiden URL-koodatut muodot {{ subjectEncoded }} ja {{ bodyEncoded }}.");
    m_argsHint = new QLabel(QString(hint)
                                .replace(QLatin1String("{{ "), QStringLiteral("{{\u00a0"))
                                .replace(QLatin1String(" }}"), QStringLiteral("\u00a0}}")));
    m_argsHint->setWordWrap(true);
    auto* note = new QLabel(tr("Viestin otsikko, teksti ja liitteen nimi muokataan kohdassa "
                               "Asetukset | Yrityksen tiedot, sivulla Sähköposti."));
    note->setWordWrap(true);

    auto* form = new QFormLayout;
    FormHelper::addRow(form, tr("&Tietokanta"), m_scopeCombo);
    form->addRow(QString(), m_ownCheck);
    FormHelper::addRow(form, tr("&Ohjelma"), m_appCombo);
    auto* pathRow = new QHBoxLayout;
    pathRow->addWidget(m_pathEdit, 1);
    pathRow->addWidget(m_browseButton);
    auto* pathLabel = new QLabel(tr("&Polku"));
    pathLabel->setBuddy(m_pathEdit);
    form->addRow(pathLabel, pathRow);
    FormHelper::addRow(form, tr("&Argumentit"), m_argsEdit);
    form->addRow(QString(), m_argsHint);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(note);
    layout->addStretch();
    layout->addWidget(FormHelper::createButtonBox(this));
    setMinimumWidth(560);

    connect(
        m_scopeCombo, qOverload<int>(&QComboBox::activated), this, &EmailSettingsDialog::showScope);
    // A database's own choice starts from the general one, which is also
    // what is shown, not editable, without one.
    connect(m_ownCheck, &QCheckBox::toggled, this, [this] {
        showProgram(m_general);
        updateFields();
    });
    connect(m_appCombo, &QComboBox::textActivated, this, &EmailSettingsDialog::chooseProgram);
    connect(m_browseButton, &QPushButton::clicked, this, &EmailSettingsDialog::browse);

    // The database open now is the likeliest one to be set up.
    const int current = m_scopeCombo->findData(registry ? registry->databaseNumber() : 0);
    showScope(m_own.contains(m_scopeCombo->itemData(current).toInt()) ? current : 0);
}

void EmailSettingsDialog::showScope(int index)
{
    storeShown();
    m_shownScope = qBound(0, index, m_scopeCombo->count() - 1);
    m_scopeCombo->setCurrentIndex(m_shownScope);
    const int number = m_scopeCombo->itemData(m_shownScope).toInt();
    {
        const QSignalBlocker blocker(m_ownCheck);
        m_ownCheck->setChecked(m_shownScope > 0 && m_own.contains(number));
    }
    showProgram(m_ownCheck->isChecked() ? m_own.value(number) : m_general);
    updateFields();
}

void EmailSettingsDialog::chooseProgram(const QString& name)
{
    m_appCombo->setCurrentText(name);
    const EmailProfile profile = EmailProfile::find(name);
    if (profile.kind == EmailProfile::AppleMail)
        m_pathEdit->clear();
    else if (profile.kind != EmailProfile::Other)
        m_pathEdit->setText(profile.proposedPath());
    updateFields();
}

void EmailSettingsDialog::showProgram(const EmailSettings::Program& program)
{
    // No entry of the list is chosen for an empty or own name.
    m_appCombo->setCurrentIndex(m_appCombo->findText(program.app));
    m_appCombo->setEditText(program.app);
    m_pathEdit->setText(program.appPath);
    m_argsEdit->setText(program.appArgs);
}

EmailSettings::Program EmailSettingsDialog::shownProgram() const
{
    return { m_appCombo->currentText().trimmed(), m_pathEdit->text().trimmed(),
        m_argsEdit->text() };
}

QMap<int, EmailSettings::Program> EmailSettingsDialog::ownPrograms() const
{
    QMap<int, EmailSettings::Program> own = m_own;
    if (m_shownScope > 0) {
        const int number = m_scopeCombo->itemData(m_shownScope).toInt();
        if (m_ownCheck->isChecked())
            own.insert(number, shownProgram());
        else
            own.remove(number);
    }
    return own;
}

void EmailSettingsDialog::storeShown()
{
    if (m_shownScope < 0)
        return;
    if (m_shownScope == 0)
        m_general = shownProgram();
    else
        m_own = ownPrograms();
}

void EmailSettingsDialog::updateFields()
{
    const bool editable = m_shownScope == 0 || m_ownCheck->isChecked();
    m_ownCheck->setEnabled(m_shownScope > 0);
    const EmailProfile profile = EmailProfile::find(m_appCombo->currentText().trimmed());
    // Apple Mail is started through the script that comes with the program.
    const bool pathUsed = profile.kind != EmailProfile::AppleMail;
    m_appCombo->setEnabled(editable);
    m_pathEdit->setEnabled(editable && pathUsed);
    m_browseButton->setEnabled(editable && pathUsed);
    m_argsEdit->setEnabled(editable);
    m_argsEdit->setPlaceholderText(profile.arguments);
}

void EmailSettingsDialog::browse()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Valitse sähköpostiohjelma"),
        m_pathEdit->text().isEmpty() ? QStringLiteral("/usr/bin") : m_pathEdit->text());
    if (!path.isEmpty())
        m_pathEdit->setText(QDir::toNativeSeparators(path));
}

EmailSettings::Program EmailSettingsDialog::general() const
{
    return m_shownScope == 0 ? shownProgram() : m_general;
}

QList<EmailSettings::DatabaseEntry> EmailSettingsDialog::databaseEntries() const
{
    QList<EmailSettings::DatabaseEntry> entries;
    const QMap<int, EmailSettings::Program> own = ownPrograms();
    for (auto it = own.cbegin(); it != own.cend(); ++it)
        entries.append({ it.key(), it.value() });
    return entries + m_others;
}

void EmailSettingsDialog::accept()
{
    EmailSettings settings(m_registry ? m_registry->appSettings() : nullptr);
    settings.setGeneral(general());
    settings.setDatabaseEntries(databaseEntries());
    QDialog::accept();
}

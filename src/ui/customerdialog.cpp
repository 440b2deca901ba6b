#include "customerdialog.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>

CustomerDialog::CustomerDialog(Registry* registry, QWidget* parent)
    : EditorDialog(registry, tr("Asiakastietojen tallentaminen epäonnistui. %1"), parent)
{
    setWindowTitle(tr("Asiakkaat"));

    // Two filters in a row: deleted customers first, then the search text.
    m_deletedFilter = new QSortFilterProxyModel(this);
    m_deletedFilter->setSourceModel(m_model);
    m_deletedFilter->setFilterRole(CustomerTableModel::DeletedRole);
    m_deletedFilter->setFilterFixedString(QStringLiteral("false"));
    m_searchFilter = new QSortFilterProxyModel(this);
    m_searchFilter->setSourceModel(m_deletedFilter);
    m_searchFilter->setFilterKeyColumn(-1);
    m_searchFilter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_searchFilter->setSortRole(Qt::EditRole);

    createWidgets();
    m_view->sortByColumn(CustomerTableModel::NumberColumn, Qt::AscendingOrder);
    if (m_searchFilter->rowCount() > 0)
        m_view->setCurrentIndex(m_searchFilter->index(0, CustomerTableModel::NameColumn));
    loadForm();
}

void CustomerDialog::createWidgets()
{
    m_searchEdit = FormHelper::create<QLineEdit>(QStringLiteral("searchEdit"));
    m_searchEdit->setClearButtonEnabled(true);
    m_searchEdit->setPlaceholderText(tr("Nimi, numero, osoite..."));
    QLabel* searchLabel = new QLabel(tr("&Hae"));
    searchLabel->setBuddy(m_searchEdit);
    m_showDeletedCheck = new QCheckBox(tr("Näytä poist&etut"));
    m_showDeletedCheck->setObjectName(QStringLiteral("showDeletedCheck"));
    connect(m_searchEdit, &QLineEdit::textChanged, this, &CustomerDialog::filterChanged);
    connect(m_showDeletedCheck, &QCheckBox::toggled, this, &CustomerDialog::filterChanged);

    m_view = new QTableView();
    setUpView(m_view, QStringLiteral("customerView"));
    m_view->setModel(m_searchFilter);
    m_view->setSortingEnabled(true);
    m_view->verticalHeader()->hide();
    for (int column = CustomerTableModel::StreetNameColumn;
         column < CustomerTableModel::ColumnCount; ++column) {
        if (column != CustomerTableModel::TownNameColumn)
            m_view->hideColumn(column);
    }
    FormHelper::fitColumns(m_view->horizontalHeader());
    // The name takes the room left, so a name typed for a new customer shows
    // whole at once.
    m_view->horizontalHeader()->setSectionResizeMode(
        CustomerTableModel::NameColumn, QHeaderView::Stretch);

    m_addButton = FormHelper::createButton(tr("&Uusi asiakas"), QStringLiteral("addButton"));
    m_removeButton = FormHelper::createButton(tr("&Poista"), QStringLiteral("removeButton"));
    connect(m_addButton, &QPushButton::clicked, this, &CustomerDialog::addCustomer);
    connect(m_removeButton, &QPushButton::clicked, this, &CustomerDialog::removeCustomer);

    QGroupBox* basic = new QGroupBox(tr("Asiakastiedot"));
    QFormLayout* form = new QFormLayout(basic);
    auto addLine = [&form](const QString& caption, const char* name) {
        return FormHelper::addField<QLineEdit>(form, caption, QLatin1String(name));
    };
    m_numberEdit = addLine(tr("Asia&kasnumero"), "numberEdit");
    m_numberEdit->setValidator(new QIntValidator(1, 2147483647, m_numberEdit));
    m_nameEdit = addLine(tr("N&imi"), "nameEdit");
    m_streetNameEdit = addLine(tr("&Lähiosoite"), "streetNameEdit");
    m_postCodeEdit = addLine(tr("Pos&tinumero"), "postCodeEdit");
    m_townNameEdit = addLine(tr("Postitoimip&aikka"), "townNameEdit");
    m_countryEdit = addLine(tr("&Maa"), "countryEdit");
    m_contactEdit = addLine(tr("&Yhteyshenkilö"), "contactEdit");
    m_vatNumberEdit = addLine(tr("Y-tunnus tai AL&V-numero"), "vatNumberEdit");
    m_vatNumberEdit->setPlaceholderText(tr("1234567-1 tai FI12345671"));
    m_referenceNumberEdit = addLine(tr("Oma viite&numero"), "referenceNumberEdit");
    m_emailAddressEdit = addLine(tr("Sähk&öposti"), "emailAddressEdit");
    m_phoneNumberEdit = addLine(tr("Puhelinnume&ro"), "phoneNumberEdit");
    m_paymentTermsEdit = addLine(tr("Maksueh&dot"), "paymentTermsEdit");
    m_paymentTermsEdit->setPlaceholderText(tr("Yrityksen oletusehdot"));

    QGroupBox* extra = new QGroupBox(tr("Kieli, omat kentät ja verkkolasku"));
    form = new QFormLayout(extra);
    m_languageCombo = FormHelper::addField<QComboBox>(
        form, tr("Lasku&jen kieli"), QStringLiteral("languageCombo"));
    m_languageCombo->addItem(tr("(laskupohjan kieli)"), QString());
    const QStringList languages = m_registry->availableLanguages();
    for (const QString& language : languages)
        m_languageCombo->addItem(language, Registry::parseLanguageCode(language));
    m_custom1Edit = addLine(tr("Oma &1"), "custom1Edit");
    m_custom2Edit = addLine(tr("Oma &2"), "custom2Edit");
    m_intermediatorEdit = addLine(tr("Verkkolaskuv&älittäjä"), "intermediatorEdit");
    m_receiverEdit = addLine(tr("Verkkolaskuo&soite"), "receiverEdit");
    m_ediEdit = addLine(tr("&OVT-tunnus"), "ediEdit");

    watchFields({ m_numberEdit, m_nameEdit, m_streetNameEdit, m_postCodeEdit, m_townNameEdit,
        m_countryEdit, m_contactEdit, m_vatNumberEdit, m_referenceNumberEdit, m_emailAddressEdit,
        m_phoneNumberEdit, m_paymentTermsEdit, m_languageCombo, m_custom1Edit, m_custom2Edit,
        m_intermediatorEdit, m_receiverEdit, m_ediEdit });

    QHBoxLayout* searchLayout = new QHBoxLayout();
    searchLayout->addWidget(searchLabel);
    searchLayout->addWidget(m_searchEdit, 1);
    searchLayout->addWidget(m_showDeletedCheck);
    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
    layOut(m_view, listButtons, { basic, extra }, searchLayout);

    // The list first, then the fields in reading order.
    FormHelper::setTabOrder({ m_searchEdit, m_showDeletedCheck, m_view, m_addButton, m_removeButton,
        m_numberEdit, m_nameEdit, m_streetNameEdit, m_postCodeEdit, m_townNameEdit, m_countryEdit,
        m_contactEdit, m_vatNumberEdit, m_referenceNumberEdit, m_emailAddressEdit,
        m_phoneNumberEdit, m_paymentTermsEdit, m_languageCombo, m_custom1Edit, m_custom2Edit,
        m_intermediatorEdit, m_receiverEdit, m_ediEdit, m_buttons });
    resize(1000, 620);
}

int CustomerDialog::currentCustomerId() const
{
    const Customer* customer = m_model->recordAt(currentRow());
    return customer ? customer->id : -1;
}

void CustomerDialog::setCurrentCustomerId(int id)
{
    const int row = m_model->rowOfId(id);
    if (row < 0)
        return;
    if (m_model->recordAt(row)->deleted)
        m_showDeletedCheck->setChecked(true);
    selectRow(row);
}

void CustomerDialog::addCustomer()
{
    if (!commitForm())
        return;
    // A new customer must be visible whatever the search text.
    m_searchEdit->clear();
    Customer customer;
    customer.number = m_model->nextFreeNumber();
    selectRow(m_model->addRecord(customer));
    m_nameEdit->setFocus();
}

void CustomerDialog::removeCustomer()
{
    const int row = currentRow();
    const Customer* customer = m_model->recordAt(row);
    if (!customer || !commitForm())
        return;
    if (customer->deleted)
        m_model->restoreRecord(row);
    else
        m_model->removeRecord(row);
    // The current row may have been filtered away or removed outright.
    loadForm();
}

void CustomerDialog::filterChanged()
{
    if (!commitForm()) {
        // Leave the filters alone until the shown customer is fixed.
        return;
    }
    const int row = m_formRow;
    m_deletedFilter->setFilterFixedString(
        m_showDeletedCheck->isChecked() ? QString() : QStringLiteral("false"));
    m_searchFilter->setFilterFixedString(m_searchEdit->text().trimmed());
    if (row >= 0 && m_searchFilter->rowCount() > 0)
        selectQuietly(row);
    if (currentRow() < 0 && m_searchFilter->rowCount() > 0) {
        m_reverting = true;
        m_view->setCurrentIndex(m_searchFilter->index(0, CustomerTableModel::NameColumn));
        m_reverting = false;
    }
    loadForm();
}

bool CustomerDialog::checkForm()
{
    bool numberOk = false;
    const int number = m_numberEdit->text().toInt(&numberOk);
    if (!numberOk || number < 1)
        return refuse(m_numberEdit, tr("Asiakasnumero puuttuu tai on virheellinen."));
    if (m_model->rowOfNumber(number, m_formRow) >= 0)
        return refuse(m_numberEdit, tr("Asiakasnumero %1 on jo käytössä.").arg(number));
    if (m_nameEdit->text().trimmed().isEmpty())
        return refuse(m_nameEdit, tr("Asiakkaan nimi puuttuu."));
    const QString vatNumber = m_vatNumberEdit->text().trimmed();
    if (!vatNumber.isEmpty() && !Customer::isValidVatNumberOrBusinessId(vatNumber))
        return refuse(m_vatNumberEdit, tr("Y-tunnus tai ALV-numero on virheellinen."), true);
    return true;
}

void CustomerDialog::readForm(Customer& customer)
{
    bool numberOk = false;
    const int number = m_numberEdit->text().toInt(&numberOk);
    if (numberOk)
        customer.number = number;
    customer.name = m_nameEdit->text().trimmed();
    customer.streetName = m_streetNameEdit->text().trimmed();
    customer.postCode = m_postCodeEdit->text().trimmed();
    customer.townName = m_townNameEdit->text().trimmed();
    customer.country = m_countryEdit->text().trimmed();
    customer.contact = m_contactEdit->text().trimmed();
    customer.vatNumber = m_vatNumberEdit->text().trimmed();
    customer.referenceNumber = m_referenceNumberEdit->text().trimmed();
    customer.emailAddress = m_emailAddressEdit->text().trimmed();
    customer.phoneNumber = m_phoneNumberEdit->text().trimmed();
    customer.paymentTerms = m_paymentTermsEdit->text().trimmed();
    customer.setPropertyIfNotEmpty(QStringLiteral("l"), m_languageCombo->currentData().toString());
    const struct
    {
        const char* key;
        QLineEdit* edit;
    } properties[] = { { "c1", m_custom1Edit }, { "c2", m_custom2Edit },
        { "e1", m_intermediatorEdit }, { "e2", m_receiverEdit }, { "e3", m_ediEdit } };
    for (const auto& property : properties)
        customer.setPropertyIfNotEmpty(
            QLatin1String(property.key), property.edit->text().trimmed());
}

void CustomerDialog::fillForm(const Customer& customer)
{
    m_numberEdit->setText(customer.number > 0 ? QString::number(customer.number) : QString());
    m_nameEdit->setText(customer.name);
    m_streetNameEdit->setText(customer.streetName);
    m_postCodeEdit->setText(customer.postCode);
    m_townNameEdit->setText(customer.townName);
    m_countryEdit->setText(customer.country);
    m_contactEdit->setText(customer.contact);
    m_vatNumberEdit->setText(customer.vatNumber);
    m_referenceNumberEdit->setText(customer.referenceNumber);
    m_emailAddressEdit->setText(customer.emailAddress);
    m_phoneNumberEdit->setText(customer.phoneNumber);
    m_paymentTermsEdit->setText(customer.paymentTerms);
    const QString language = customer.property(QStringLiteral("l"), QString()).toString();
    int languageIndex = m_languageCombo->findData(language);
    if (languageIndex < 0) {
        // A code this program does not offer is kept as it is.
        m_languageCombo->addItem(language, language);
        languageIndex = m_languageCombo->count() - 1;
    }
    m_languageCombo->setCurrentIndex(languageIndex);
    auto property
        = [&customer](const char* key) { return customer.property(QLatin1String(key)).toString(); };
    m_custom1Edit->setText(property("c1"));
    m_custom2Edit->setText(property("c2"));
    m_intermediatorEdit->setText(property("e1"));
    m_receiverEdit->setText(property("e2"));
    m_ediEdit->setText(property("e3"));
    m_form->setEnabled(m_formRow >= 0 && !customer.deleted);
    updateButtons();
}

void CustomerDialog::selectRow(int row)
{
    const QModelIndex index = m_searchFilter->mapFromSource(
        m_deletedFilter->mapFromSource(m_model->index(row, CustomerTableModel::NameColumn)));
    if (index.isValid()) {
        m_view->setCurrentIndex(index);
        m_view->scrollTo(index);
    }
}

int CustomerDialog::currentRow() const
{
    const QModelIndex index = m_view->selectionModel()->currentIndex();
    if (!index.isValid())
        return -1;
    return m_deletedFilter->mapToSource(m_searchFilter->mapToSource(index)).row();
}

void CustomerDialog::updateButtons()
{
    const Customer* customer = m_model->recordAt(currentRow());
    m_removeButton->setEnabled(customer != nullptr);
    m_removeButton->setText(customer && customer->deleted ? tr("&Palauta") : tr("&Poista"));
}

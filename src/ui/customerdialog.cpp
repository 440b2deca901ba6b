#include "customerdialog.h"

#include "core/customertablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/logging.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

namespace {

QLineEdit* addField(QFormLayout* layout, const QString& label, const QString& name)
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    QLabel* caption = new QLabel(label);
    caption->setBuddy(edit);
    layout->addRow(caption, edit);
    return edit;
}

} // namespace

CustomerDialog::CustomerDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_model(new CustomerTableModel(registry, this))
{
    setWindowTitle(tr("Asiakkaat"));
    m_model->load();

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
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &CustomerDialog::currentChanged);
    if (m_searchFilter->rowCount() > 0)
        m_view->setCurrentIndex(m_searchFilter->index(0, CustomerTableModel::NameColumn));
    loadForm();
}

CustomerDialog::~CustomerDialog() = default;

void CustomerDialog::createWidgets()
{
    m_searchEdit = new QLineEdit();
    m_searchEdit->setObjectName(QStringLiteral("searchEdit"));
    m_searchEdit->setClearButtonEnabled(true);
    m_searchEdit->setPlaceholderText(tr("Nimi, numero, osoite..."));
    QLabel* searchLabel = new QLabel(tr("&Hae"));
    searchLabel->setBuddy(m_searchEdit);
    m_showDeletedCheck = new QCheckBox(tr("Näytä poist&etut"));
    m_showDeletedCheck->setObjectName(QStringLiteral("showDeletedCheck"));
    connect(m_searchEdit, &QLineEdit::textChanged, this, &CustomerDialog::filterChanged);
    connect(m_showDeletedCheck, &QCheckBox::toggled, this, &CustomerDialog::filterChanged);

    m_view = new QTableView();
    m_view->setObjectName(QStringLiteral("customerView"));
    m_view->setModel(m_searchFilter);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setSortingEnabled(true);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    for (int column = CustomerTableModel::StreetNameColumn;
         column < CustomerTableModel::ColumnCount; ++column) {
        if (column != CustomerTableModel::TownNameColumn)
            m_view->hideColumn(column);
    }
    m_view->setColumnWidth(CustomerTableModel::NumberColumn, 70);
    m_view->setColumnWidth(CustomerTableModel::NameColumn, 220);

    m_addButton = new QPushButton(tr("&Uusi asiakas"));
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_removeButton = new QPushButton(tr("&Poista"));
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    for (QPushButton* button : { m_addButton, m_removeButton })
        button->setAutoDefault(false);
    connect(m_addButton, &QPushButton::clicked, this, &CustomerDialog::addCustomer);
    connect(m_removeButton, &QPushButton::clicked, this, &CustomerDialog::removeCustomer);

    QGroupBox* basic = new QGroupBox(tr("Asiakastiedot"));
    QFormLayout* basicLayout = new QFormLayout(basic);
    m_numberEdit = addField(basicLayout, tr("Asiakas&numero"), QStringLiteral("numberEdit"));
    m_numberEdit->setValidator(new QIntValidator(1, 2147483647, m_numberEdit));
    m_nameEdit = addField(basicLayout, tr("N&imi"), QStringLiteral("nameEdit"));
    m_streetNameEdit = addField(basicLayout, tr("&Lähiosoite"), QStringLiteral("streetNameEdit"));
    m_postCodeEdit = addField(basicLayout, tr("Pos&tinumero"), QStringLiteral("postCodeEdit"));
    m_townNameEdit = addField(basicLayout, tr("Postitoimip&aikka"), QStringLiteral("townNameEdit"));
    m_countryEdit = addField(basicLayout, tr("&Maa"), QStringLiteral("countryEdit"));
    m_contactEdit = addField(basicLayout, tr("&Yhteyshenkilö"), QStringLiteral("contactEdit"));
    m_vatNumberEdit
        = addField(basicLayout, tr("Y-tunnus tai AL&V-numero"), QStringLiteral("vatNumberEdit"));
    m_vatNumberEdit->setPlaceholderText(tr("1234567-8 tai FI12345678"));
    m_referenceNumberEdit
        = addField(basicLayout, tr("&Oma viitenumero"), QStringLiteral("referenceNumberEdit"));
    m_emailAddressEdit
        = addField(basicLayout, tr("&Sähköposti"), QStringLiteral("emailAddressEdit"));
    m_phoneNumberEdit
        = addField(basicLayout, tr("Puhelinnume&ro"), QStringLiteral("phoneNumberEdit"));
    m_paymentTermsEdit
        = addField(basicLayout, tr("Ma&ksuehdot"), QStringLiteral("paymentTermsEdit"));
    m_paymentTermsEdit->setPlaceholderText(tr("Yrityksen oletusehdot"));

    QGroupBox* extra = new QGroupBox(tr("Kieli, omat kentät ja verkkolasku"));
    QFormLayout* extraLayout = new QFormLayout(extra);
    m_languageCombo = new QComboBox();
    m_languageCombo->setObjectName(QStringLiteral("languageCombo"));
    m_languageCombo->addItem(tr("(laskupohjan kieli)"), QString());
    const QStringList languages = m_registry->availableLanguages();
    for (const QString& language : languages)
        m_languageCombo->addItem(language, Registry::parseLanguageCode(language));
    QLabel* languageLabel = new QLabel(tr("Lasku&jen kieli"));
    languageLabel->setBuddy(m_languageCombo);
    extraLayout->addRow(languageLabel, m_languageCombo);
    m_custom1Edit = addField(extraLayout, tr("Oma &1"), QStringLiteral("custom1Edit"));
    m_custom2Edit = addField(extraLayout, tr("Oma &2"), QStringLiteral("custom2Edit"));
    m_intermediatorEdit
        = addField(extraLayout, tr("Verkkolaskuv&älittäjä"), QStringLiteral("intermediatorEdit"));
    m_receiverEdit
        = addField(extraLayout, tr("Verkkolaskuo&soite"), QStringLiteral("receiverEdit"));
    m_ediEdit = addField(extraLayout, tr("OVT-tunn&us"), QStringLiteral("ediEdit"));

    for (QLineEdit* edit : { m_numberEdit, m_nameEdit, m_streetNameEdit, m_postCodeEdit,
             m_townNameEdit, m_countryEdit, m_contactEdit, m_vatNumberEdit, m_referenceNumberEdit,
             m_emailAddressEdit, m_phoneNumberEdit, m_paymentTermsEdit, m_custom1Edit,
             m_custom2Edit, m_intermediatorEdit, m_receiverEdit, m_ediEdit })
        connect(edit, &QLineEdit::textEdited, this, &CustomerDialog::formEdited);
    connect(m_languageCombo, &QComboBox::currentIndexChanged, this, &CustomerDialog::formEdited);

    m_form = new QWidget();
    QVBoxLayout* formLayout = new QVBoxLayout(m_form);
    formLayout->setContentsMargins(0, 0, 0, 0);
    formLayout->addWidget(basic);
    formLayout->addWidget(extra);
    formLayout->addStretch();

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Peruuta"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &CustomerDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &CustomerDialog::reject);

    QHBoxLayout* searchLayout = new QHBoxLayout();
    searchLayout->addWidget(searchLabel);
    searchLayout->addWidget(m_searchEdit, 1);
    searchLayout->addWidget(m_showDeletedCheck);
    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
    QVBoxLayout* listLayout = new QVBoxLayout();
    listLayout->addLayout(searchLayout);
    listLayout->addWidget(m_view, 1);
    listLayout->addLayout(listButtons);

    QHBoxLayout* body = new QHBoxLayout();
    body->addLayout(listLayout, 3);
    body->addWidget(m_form, 2);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(m_buttons);

    // The list first, then the fields in reading order.
    setTabOrder(m_searchEdit, m_showDeletedCheck);
    setTabOrder(m_showDeletedCheck, m_view);
    setTabOrder(m_view, m_addButton);
    setTabOrder(m_addButton, m_removeButton);
    setTabOrder(m_removeButton, m_numberEdit);
    QWidget* previous = m_numberEdit;
    for (QWidget* widget : std::initializer_list<QWidget*> { m_nameEdit, m_streetNameEdit,
             m_postCodeEdit, m_townNameEdit, m_countryEdit, m_contactEdit, m_vatNumberEdit,
             m_referenceNumberEdit, m_emailAddressEdit, m_phoneNumberEdit, m_paymentTermsEdit,
             m_languageCombo, m_custom1Edit, m_custom2Edit, m_intermediatorEdit, m_receiverEdit,
             m_ediEdit, m_buttons }) {
        setTabOrder(previous, widget);
        previous = widget;
    }
    resize(1000, 620);
}

int CustomerDialog::currentCustomerId() const
{
    const Customer* customer = m_model->recordAt(currentSourceRow());
    return customer ? customer->id : -1;
}

void CustomerDialog::setCurrentCustomerId(int id)
{
    const int row = m_model->rowOfId(id);
    if (row < 0)
        return;
    if (m_model->recordAt(row)->deleted)
        m_showDeletedCheck->setChecked(true);
    selectSourceRow(row);
}

void CustomerDialog::accept()
{
    if (!commitForm())
        return;
    if (m_model->isModified() && !m_model->save(m_registry->database())) {
        qCWarning(logUi).noquote() << m_model->lastError();
        showWarning(tr("Asiakastietojen tallentaminen epäonnistui. %1").arg(m_model->lastError()));
        return;
    }
    QDialog::accept();
}

void CustomerDialog::addCustomer()
{
    if (!commitForm())
        return;
    // A new customer must be visible whatever the search text.
    m_searchEdit->clear();
    Customer customer;
    customer.number = m_model->nextFreeNumber();
    const int row = m_model->addRecord(customer);
    selectSourceRow(row);
    m_nameEdit->setFocus();
}

void CustomerDialog::removeCustomer()
{
    const int row = currentSourceRow();
    const Customer* customer = m_model->recordAt(row);
    if (!customer || !commitForm())
        return;
    if (customer->deleted) {
        m_model->restoreRecord(row);
    } else {
        m_model->removeRecord(row);
    }
    // The current row may have been filtered away or removed outright.
    loadForm();
    updateButtons();
}

void CustomerDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void CustomerDialog::currentChanged(const QModelIndex&, const QModelIndex&)
{
    if (m_reverting)
        return;
    const int previousRow = m_formRow;
    if (!commitForm()) {
        m_reverting = true;
        selectSourceRow(previousRow);
        m_reverting = false;
        return;
    }
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
    if (row >= 0 && m_searchFilter->rowCount() > 0) {
        m_reverting = true;
        selectSourceRow(row);
        m_reverting = false;
    }
    if (currentSourceRow() < 0 && m_searchFilter->rowCount() > 0) {
        m_reverting = true;
        m_view->setCurrentIndex(m_searchFilter->index(0, CustomerTableModel::NameColumn));
        m_reverting = false;
    }
    loadForm();
}

void CustomerDialog::formEdited()
{
    if (!m_loading)
        m_formDirty = true;
}

bool CustomerDialog::commitForm()
{
    const Customer* current = m_model->recordAt(m_formRow);
    if (!m_formDirty || !current)
        return true;

    bool numberOk = false;
    const int number = m_numberEdit->text().toInt(&numberOk);
    if (!numberOk || number < 1) {
        showWarning(tr("Asiakasnumero puuttuu tai on virheellinen."));
        m_numberEdit->setFocus();
        return false;
    }
    if (m_model->rowOfNumber(number, m_formRow) >= 0) {
        showWarning(tr("Asiakasnumero %1 on jo käytössä.").arg(number));
        m_numberEdit->setFocus();
        return false;
    }
    if (m_nameEdit->text().trimmed().isEmpty()) {
        showWarning(tr("Asiakkaan nimi puuttuu."));
        m_nameEdit->setFocus();
        return false;
    }
    const QString vatNumber = m_vatNumberEdit->text().trimmed();
    if (!vatNumber.isEmpty() && !Customer::isValidVatNumberOrBusinessId(vatNumber)) {
        showWarning(tr("Y-tunnus tai ALV-numero on virheellinen."));
        m_vatNumberEdit->setFocus();
        m_vatNumberEdit->selectAll();
        return false;
    }

    // Start from the row itself so that properties this form does not show
    // are kept.
    Customer customer;
    current->copy(&customer);
    customer.number = number;
    customer.name = m_nameEdit->text().trimmed();
    customer.streetName = m_streetNameEdit->text().trimmed();
    customer.postCode = m_postCodeEdit->text().trimmed();
    customer.townName = m_townNameEdit->text().trimmed();
    customer.country = m_countryEdit->text().trimmed();
    customer.contact = m_contactEdit->text().trimmed();
    customer.vatNumber = vatNumber;
    customer.referenceNumber = m_referenceNumberEdit->text().trimmed();
    customer.emailAddress = m_emailAddressEdit->text().trimmed();
    customer.phoneNumber = m_phoneNumberEdit->text().trimmed();
    customer.paymentTerms = m_paymentTermsEdit->text().trimmed();
    customer.setPropertyIfNotEmpty(QStringLiteral("l"), m_languageCombo->currentData().toString());
    customer.setPropertyIfNotEmpty(QStringLiteral("c1"), m_custom1Edit->text().trimmed());
    customer.setPropertyIfNotEmpty(QStringLiteral("c2"), m_custom2Edit->text().trimmed());
    customer.setPropertyIfNotEmpty(QStringLiteral("e1"), m_intermediatorEdit->text().trimmed());
    customer.setPropertyIfNotEmpty(QStringLiteral("e2"), m_receiverEdit->text().trimmed());
    customer.setPropertyIfNotEmpty(QStringLiteral("e3"), m_ediEdit->text().trimmed());
    m_formDirty = false;
    m_model->setRecord(m_formRow, customer);
    return true;
}

void CustomerDialog::loadForm()
{
    m_loading = true;
    m_formRow = currentSourceRow();
    m_formDirty = false;
    const Customer* customer = m_model->recordAt(m_formRow);
    Customer empty;
    if (!customer)
        customer = &empty;
    m_numberEdit->setText(customer->number > 0 ? QString::number(customer->number) : QString());
    m_nameEdit->setText(customer->name);
    m_streetNameEdit->setText(customer->streetName);
    m_postCodeEdit->setText(customer->postCode);
    m_townNameEdit->setText(customer->townName);
    m_countryEdit->setText(customer->country);
    m_contactEdit->setText(customer->contact);
    m_vatNumberEdit->setText(customer->vatNumber);
    m_referenceNumberEdit->setText(customer->referenceNumber);
    m_emailAddressEdit->setText(customer->emailAddress);
    m_phoneNumberEdit->setText(customer->phoneNumber);
    m_paymentTermsEdit->setText(customer->paymentTerms);
    const QString language = customer->property(QStringLiteral("l"), QString()).toString();
    int languageIndex = m_languageCombo->findData(language);
    if (languageIndex < 0) {
        // A code this program does not offer is kept as it is.
        m_languageCombo->addItem(language, language);
        languageIndex = m_languageCombo->count() - 1;
    }
    m_languageCombo->setCurrentIndex(languageIndex);
    m_custom1Edit->setText(customer->property(QStringLiteral("c1"), QString()).toString());
    m_custom2Edit->setText(customer->property(QStringLiteral("c2"), QString()).toString());
    m_intermediatorEdit->setText(customer->property(QStringLiteral("e1"), QString()).toString());
    m_receiverEdit->setText(customer->property(QStringLiteral("e2"), QString()).toString());
    m_ediEdit->setText(customer->property(QStringLiteral("e3"), QString()).toString());
    m_form->setEnabled(m_formRow >= 0 && !customer->deleted);
    m_loading = false;
    updateButtons();
}

void CustomerDialog::selectSourceRow(int row)
{
    const QModelIndex index = m_searchFilter->mapFromSource(
        m_deletedFilter->mapFromSource(m_model->index(row, CustomerTableModel::NameColumn)));
    if (index.isValid()) {
        m_view->setCurrentIndex(index);
        m_view->scrollTo(index);
    }
}

int CustomerDialog::currentSourceRow() const
{
    const QModelIndex index = m_view->selectionModel()->currentIndex();
    if (!index.isValid())
        return -1;
    return m_deletedFilter->mapToSource(m_searchFilter->mapToSource(index)).row();
}

void CustomerDialog::updateButtons()
{
    const Customer* customer = m_model->recordAt(currentSourceRow());
    m_removeButton->setEnabled(customer != nullptr);
    m_removeButton->setText(customer && customer->deleted ? tr("&Palauta") : tr("&Poista"));
}

#include "searchdialog.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/dateformat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace {

QLineEdit* newEdit(const QString& name, const QString& placeholder = QString())
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    edit->setPlaceholderText(placeholder);
    return edit;
}

QWidget* range(QLineEdit* from, QLineEdit* to)
{
    QWidget* widget = new QWidget();
    QHBoxLayout* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(from, 1);
    layout->addWidget(new QLabel(QStringLiteral("–")));
    layout->addWidget(to, 1);
    return widget;
}

void addRow(QFormLayout* layout, const QString& text, QWidget* field, QWidget* buddy)
{
    QLabel* label = new QLabel(text);
    label->setBuddy(buddy);
    layout->addRow(label, field);
}

} // namespace

SearchDialog::SearchDialog(Registry* registry, InvoiceCriteria* criteria, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_criteria(criteria)
{
    setWindowTitle(tr("Laskujen haku"));
    const QString datePlaceholder = tr("p.k.vvvv");
    m_dateFromEdit = newEdit(QStringLiteral("dateFromEdit"), datePlaceholder);
    m_dateToEdit = newEdit(QStringLiteral("dateToEdit"), datePlaceholder);
    m_dueDateFromEdit = newEdit(QStringLiteral("dueDateFromEdit"), datePlaceholder);
    m_dueDateToEdit = newEdit(QStringLiteral("dueDateToEdit"), datePlaceholder);
    m_deliveryDateFromEdit = newEdit(QStringLiteral("deliveryDateFromEdit"), datePlaceholder);
    m_deliveryDateToEdit = newEdit(QStringLiteral("deliveryDateToEdit"), datePlaceholder);
    m_numberFromEdit = newEdit(QStringLiteral("numberFromEdit"));
    m_numberToEdit = newEdit(QStringLiteral("numberToEdit"));
    for (QLineEdit* edit : { m_numberFromEdit, m_numberToEdit })
        edit->setValidator(new QIntValidator(0, 2147483647, edit));

    m_customerCombo = new QComboBox();
    m_customerCombo->setObjectName(QStringLiteral("customerCombo"));
    m_customerCombo->setEditable(true);
    m_customerCombo->setInsertPolicy(QComboBox::NoInsert);
    QCompleter* completer = new QCompleter(m_customerCombo->model(), m_customerCombo);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    m_customerCombo->setCompleter(completer);
    struct Entry
    {
        QString name;
        int id;
    };
    QList<Entry> customers;
    for (int i = 0; i < m_registry->customerCount(); ++i) {
        const Customer* customer = m_registry->customerAt(i);
        // Removed customers still have their old invoices.
        customers.append(
            { customer->deleted ? tr("%1 (poistettu)").arg(customer->name) : customer->name,
                customer->id });
    }
    std::sort(customers.begin(), customers.end(),
        [](const Entry& a, const Entry& b) { return a.name.localeAwareCompare(b.name) < 0; });
    m_customerCombo->addItem(tr("(kaikki asiakkaat)"), -1);
    for (const Entry& entry : customers)
        m_customerCombo->addItem(entry.name, entry.id);

    QWidget* types = new QWidget();
    QGridLayout* typeLayout = new QGridLayout(types);
    typeLayout->setContentsMargins(0, 0, 0, 0);
    for (int type = 0; type < InvoiceType::count; ++type) {
        m_typeChecks[type] = new QCheckBox(InvoiceType::name(type));
        m_typeChecks[type]->setObjectName(QStringLiteral("typeCheck%1").arg(type));
        typeLayout->addWidget(m_typeChecks[type], type / 3, type % 3);
    }

    m_paymentStatusCombo = new QComboBox();
    m_paymentStatusCombo->setObjectName(QStringLiteral("paymentStatusCombo"));
    m_paymentStatusCombo->addItem(tr("Kaikki"), -1);
    m_paymentStatusCombo->addItem(tr("Maksetut"), 0);
    m_paymentStatusCombo->addItem(tr("Avoimet"), 1);
    m_balanceDateEdit = newEdit(QStringLiteral("balanceDateEdit"), datePlaceholder);
    m_referenceNumberEdit = newEdit(QStringLiteral("referenceNumberEdit"));
    m_textEdit = newEdit(QStringLiteral("textEdit"), tr("esim. *suunnittelu*"));
    m_textEdit->setToolTip(tr("* korvaa minkä tahansa määrän merkkejä, ? yhden merkin"));
    m_limitSpin = new QSpinBox();
    m_limitSpin->setObjectName(QStringLiteral("limitSpin"));
    m_limitSpin->setRange(0, 1000000);
    m_limitSpin->setSpecialValueText(tr("ei rajoitusta"));
    m_limitSpin->setSuffix(tr(" laskua"));

    QFormLayout* form = new QFormLayout();
    addRow(form, tr("Laskun &päivämäärä"), range(m_dateFromEdit, m_dateToEdit), m_dateFromEdit);
    addRow(form, tr("&Eräpäivä"), range(m_dueDateFromEdit, m_dueDateToEdit), m_dueDateFromEdit);
    addRow(form, tr("T&oimituspäivä"), range(m_deliveryDateFromEdit, m_deliveryDateToEdit),
        m_deliveryDateFromEdit);
    addRow(form, tr("Laskun &numero"), range(m_numberFromEdit, m_numberToEdit), m_numberFromEdit);
    addRow(form, tr("&Asiakas"), m_customerCombo, m_customerCombo);
    addRow(form, tr("Laskun t&yyppi"), types, m_typeChecks[0]);
    addRow(form, tr("&Maksutilanne"), m_paymentStatusCombo, m_paymentStatusCombo);
    addRow(form, tr("&Saldo päivänä"), m_balanceDateEdit, m_balanceDateEdit);
    addRow(form, tr("&Viitenumero"), m_referenceNumberEdit, m_referenceNumberEdit);
    addRow(form, tr("Laskurivin &teksti"), m_textEdit, m_textEdit);
    addRow(form, tr("En&intään"), m_limitSpin, m_limitSpin);

    QDialogButtonBox* buttons
        = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("&Hae"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Pe&ruuta"));
    QPushButton* clearButton = buttons->addButton(tr("Tyh&jennä"), QDialogButtonBox::ResetRole);
    clearButton->setObjectName(QStringLiteral("clearButton"));
    connect(clearButton, &QPushButton::clicked, this, &SearchDialog::clearFields);
    connect(buttons, &QDialogButtonBox::accepted, this, &SearchDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SearchDialog::reject);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    criteria->copy(&m_edited);
    loadCriteria(m_edited);
}

void SearchDialog::loadCriteria(const InvoiceCriteria& criteria)
{
    const DateFormat dateFormat;
    auto setDate = [&dateFormat](QLineEdit* edit, const QDate& date) {
        edit->setText(date.isValid() ? dateFormat.format(date) : QString());
    };
    auto setNumber = [](QLineEdit* edit, int number) {
        edit->setText(number >= 0 ? QString::number(number) : QString());
    };
    setDate(m_dateFromEdit, criteria.dateFrom);
    setDate(m_dateToEdit, criteria.dateTo);
    setDate(m_dueDateFromEdit, criteria.dueDateFrom);
    setDate(m_dueDateToEdit, criteria.dueDateTo);
    setDate(m_deliveryDateFromEdit, criteria.deliveryDateFrom);
    setDate(m_deliveryDateToEdit, criteria.deliveryDateTo);
    setNumber(m_numberFromEdit, criteria.numberFrom);
    setNumber(m_numberToEdit, criteria.numberTo);
    const int customer = m_customerCombo->findData(criteria.customerId);
    m_customerCombo->setCurrentIndex(customer < 0 ? 0 : customer);
    for (int type = 0; type < InvoiceType::count; ++type)
        m_typeChecks[type]->setChecked(criteria.types < 0 || (criteria.types & (1 << type)));
    const int status = m_paymentStatusCombo->findData(
        criteria.paymentStatus == 0 || criteria.paymentStatus == 1 ? criteria.paymentStatus : -1);
    m_paymentStatusCombo->setCurrentIndex(status);
    setDate(m_balanceDateEdit, criteria.balanceDate);
    m_referenceNumberEdit->setText(criteria.referenceNumber);
    m_textEdit->setText(criteria.text);
    m_limitSpin->setValue(criteria.limit > 0 ? criteria.limit : 0);
}

void SearchDialog::clearFields()
{
    InvoiceCriteria empty;
    loadCriteria(empty);
    m_dateFromEdit->setFocus();
}

bool SearchDialog::readDate(QLineEdit* edit, QDate* date)
{
    const QString text = edit->text().trimmed();
    if (text.isEmpty()) {
        *date = QDate();
        return true;
    }
    *date = DateFormat().parse(text);
    if (date->isValid())
        return true;
    showWarning(tr("Päivämäärä \"%1\" on virheellinen.").arg(text));
    edit->setFocus();
    edit->selectAll();
    return false;
}

bool SearchDialog::readNumber(QLineEdit* edit, int* number)
{
    const QString text = edit->text().trimmed();
    bool ok = true;
    *number = text.isEmpty() ? -1 : text.toInt(&ok);
    if (ok)
        return true;
    showWarning(tr("Laskun numero \"%1\" on virheellinen.").arg(text));
    edit->setFocus();
    return false;
}

bool SearchDialog::readCriteria(InvoiceCriteria* target)
{
    InvoiceCriteria result;
    m_edited.copy(&result);
    if (!readDate(m_dateFromEdit, &result.dateFrom) || !readDate(m_dateToEdit, &result.dateTo)
        || !readDate(m_dueDateFromEdit, &result.dueDateFrom)
        || !readDate(m_dueDateToEdit, &result.dueDateTo)
        || !readDate(m_deliveryDateFromEdit, &result.deliveryDateFrom)
        || !readDate(m_deliveryDateToEdit, &result.deliveryDateTo)
        || !readNumber(m_numberFromEdit, &result.numberFrom)
        || !readNumber(m_numberToEdit, &result.numberTo)
        || !readDate(m_balanceDateEdit, &result.balanceDate))
        return false;

    const QString customerText = m_customerCombo->currentText().trimmed();
    int customer = m_customerCombo->findText(customerText, Qt::MatchFixedString);
    if (customer < 0 && customerText.isEmpty())
        customer = 0;
    if (customer < 0) {
        showWarning(tr("Asiakasta \"%1\" ei löytynyt.").arg(customerText));
        m_customerCombo->setFocus();
        return false;
    }
    result.customerId = m_customerCombo->itemData(customer).toInt();

    int types = 0;
    for (int type = 0; type < InvoiceType::count; ++type) {
        if (m_typeChecks[type]->isChecked())
            types |= 1 << type;
    }
    if (types == 0) {
        showWarning(tr("Valitse vähintään yksi laskun tyyppi."));
        m_typeChecks[0]->setFocus();
        return false;
    }
    result.types = types == 0x3f ? -1 : types;
    result.paymentStatus = m_paymentStatusCombo->currentData().toInt();
    QString reference = m_referenceNumberEdit->text();
    reference.remove(QLatin1Char(' '));
    result.referenceNumber = reference.toUpper();
    result.text = m_textEdit->text().trimmed();
    result.limit = m_limitSpin->value() > 0 ? m_limitSpin->value() : -1;
    // A limit keeps the newest invoices.
    result.descending = result.limit > 0;
    result.copy(target);
    return true;
}

void SearchDialog::accept()
{
    if (!readCriteria(&m_edited))
        return;
    m_edited.copy(m_criteria);
    QDialog::accept();
}

void SearchDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

#include "reportcriteriadialog.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/dateformat.h"
#include "domain/invoicecriteria.h"
#include "domain/paymentcriteria.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

// Every type but the delivery note (type 5).
constexpr int invoiceTypes = (1 << 5) - 1;
constexpr int deliveryNoteTypes = 1 << 5;

QDialogButtonBox* addButtons(QDialog* dialog, QVBoxLayout* layout)
{
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    layout->addWidget(buttons);
    return buttons;
}

} // namespace

ReportCriteriaDialog::ReportCriteriaDialog(
    Registry* registry, InvoiceCriteria* criteria, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_invoiceCriteria(criteria)
{
    setWindowTitle(tr("Haku"));
    auto* layout = new QVBoxLayout(this);
    m_form = new QFormLayout;
    layout->addLayout(m_form);

    m_statusCombo = new QComboBox(this);
    m_statusCombo->addItem(tr("Kaikki laskut"), -1);
    m_statusCombo->addItem(tr("Avoimet laskut"), 1);
    m_statusCombo->addItem(tr("Maksetut laskut"), 0);
    m_statusCombo->setCurrentIndex(qMax(0,
        m_statusCombo->findData(criteria->paymentStatus == 0 || criteria->paymentStatus == 1
                ? criteria->paymentStatus
                : -1)));
    m_form->addRow(tr("&Maksutilanne:"), m_statusCombo);
    m_balanceDateEdit = addDateEdit(tr("Maksutilanne &päivänä:"), criteria->balanceDate);

    m_typeCombo = new QComboBox(this);
    m_typeCombo->addItem(tr("Laskut ja lähetteet"), -1);
    m_typeCombo->addItem(tr("Laskut"), invoiceTypes);
    m_typeCombo->addItem(tr("Lähetteet"), deliveryNoteTypes);
    m_typeCombo->setCurrentIndex(qMax(0, m_typeCombo->findData(criteria->types)));
    m_form->addRow(tr("&Tyyppi:"), m_typeCombo);

    createDateEdits(tr("Päivämäärä &alkaen:"), tr("Päivämäärä &asti:"));
    m_dateFromEdit->setText(DateFormat().format(criteria->dateFrom));
    m_dateToEdit->setText(DateFormat().format(criteria->dateTo));

    m_textEdit = new QLineEdit(criteria->text, this);
    m_textEdit->setPlaceholderText(tr("*sana*"));
    m_form->addRow(tr("&Hakusana:"), m_textEdit);
    addButtons(this, layout);
}

ReportCriteriaDialog::ReportCriteriaDialog(
    Registry* registry, PaymentCriteria* criteria, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_paymentCriteria(criteria)
{
    setWindowTitle(tr("Haku"));
    auto* layout = new QVBoxLayout(this);
    m_form = new QFormLayout;
    layout->addLayout(m_form);
    createDateEdits(tr("Maksupäivä &alkaen:"), tr("Maksupäivä &asti:"));
    m_dateFromEdit->setText(DateFormat().format(criteria->dateFrom));
    m_dateToEdit->setText(DateFormat().format(criteria->dateTo));

    m_bankAccountCombo = new QComboBox(this);
    m_bankAccountCombo->addItem(tr("Kaikki pankkitilit"), -1);
    if (registry) {
        for (int i = 0; i < registry->bankAccountCount(); ++i) {
            const BankAccount* account = registry->bankAccountAt(i);
            m_bankAccountCombo->addItem(account->name, account->id);
        }
    }
    m_bankAccountCombo->setCurrentIndex(
        qMax(0, m_bankAccountCombo->findData(criteria->bankAccountId)));
    m_form->addRow(tr("&Pankkitili:"), m_bankAccountCombo);
    addButtons(this, layout);
}

void ReportCriteriaDialog::createDateEdits(const QString& fromLabel, const QString& toLabel)
{
    m_dateFromEdit = addDateEdit(fromLabel, QDate());
    m_dateToEdit = addDateEdit(toLabel, QDate());
}

QLineEdit* ReportCriteriaDialog::addDateEdit(const QString& label, const QDate& date)
{
    auto* edit = new QLineEdit(DateFormat().format(date), this);
    edit->setPlaceholderText(tr("p.k.vvvv"));
    m_form->addRow(label, edit);
    return edit;
}

static QDate parseDate(const QLineEdit* edit)
{
    const QString text = edit->text().trimmed();
    return text.isEmpty() ? QDate() : DateFormat().parse(text);
}

void ReportCriteriaDialog::accept()
{
    if (m_invoiceCriteria) {
        m_invoiceCriteria->paymentStatus = m_statusCombo->currentData().toInt();
        m_invoiceCriteria->balanceDate = parseDate(m_balanceDateEdit);
        m_invoiceCriteria->types = m_typeCombo->currentData().toInt();
        m_invoiceCriteria->dateFrom = parseDate(m_dateFromEdit);
        m_invoiceCriteria->dateTo = parseDate(m_dateToEdit);
        m_invoiceCriteria->text = m_textEdit->text().trimmed();
    }
    if (m_paymentCriteria) {
        m_paymentCriteria->dateFrom = parseDate(m_dateFromEdit);
        m_paymentCriteria->dateTo = parseDate(m_dateToEdit);
        m_paymentCriteria->bankAccountId = m_bankAccountCombo->currentData().toInt();
    }
    QDialog::accept();
}

#include "paymentcriteriadialog.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/dateformat.h"
#include "domain/paymentcriteria.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QVBoxLayout>

PaymentCriteriaDialog::PaymentCriteriaDialog(
    Registry* registry, PaymentCriteria* criteria, QWidget* parent)
    : QDialog(parent)
    , m_criteria(criteria)
    , m_dateFromEdit(new QLineEdit(DateFormat().format(criteria->dateFrom), this))
    , m_dateToEdit(new QLineEdit(DateFormat().format(criteria->dateTo), this))
    , m_bankAccountCombo(new QComboBox(this))
{
    setWindowTitle(tr("Maksusuoritusten haku"));
    for (QLineEdit* edit : { m_dateFromEdit, m_dateToEdit })
        edit->setPlaceholderText(tr("p.k.vvvv"));
    m_bankAccountCombo->addItem(tr("Kaikki pankkitilit"), -1);
    if (registry) {
        for (int i = 0; i < registry->bankAccountCount(); ++i) {
            const BankAccount* account = registry->bankAccountAt(i);
            m_bankAccountCombo->addItem(account->name, account->id);
        }
    }
    m_bankAccountCombo->setCurrentIndex(
        qMax(0, m_bankAccountCombo->findData(criteria->bankAccountId)));

    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    form->addRow(tr("Maksupäivä &alkaen:"), m_dateFromEdit);
    form->addRow(tr("Maksupäivä &asti:"), m_dateToEdit);
    form->addRow(tr("&Pankkitili:"), m_bankAccountCombo);
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

static QDate parseDate(const QLineEdit* edit)
{
    const QString text = edit->text().trimmed();
    return text.isEmpty() ? QDate() : DateFormat().parse(text);
}

void PaymentCriteriaDialog::accept()
{
    m_criteria->dateFrom = parseDate(m_dateFromEdit);
    m_criteria->dateTo = parseDate(m_dateToEdit);
    m_criteria->bankAccountId = m_bankAccountCombo->currentData().toInt();
    QDialog::accept();
}

#include "referencenumberdialog.h"

#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/referencenumber.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "util/templatestringhelper.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

ReferenceNumberDialog::ReferenceNumberDialog(Registry* registry, MainModel* model, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_model(model), m_editable(model->isEditable())
{
    setWindowTitle(tr("Viitenumero ja lisätiedot"));
    const Invoice* invoice = m_model->invoice();

    m_referenceEdit = new QLineEdit();
    m_referenceEdit->setObjectName(QStringLiteral("referenceEdit"));
    m_noticeText1Edit = new QPlainTextEdit();
    m_noticeText1Edit->setObjectName(QStringLiteral("noticeText1Edit"));
    m_noticeText2Edit = new QPlainTextEdit();
    m_noticeText2Edit->setObjectName(QStringLiteral("noticeText2Edit"));
    for (QPlainTextEdit* edit : { m_noticeText1Edit, m_noticeText2Edit }) {
        edit->setTabChangesFocus(true);
        edit->setFixedHeight(edit->fontMetrics().lineSpacing() * 4);
    }
    m_rebuildButton = new QPushButton(tr("&Muodosta uudelleen"));
    m_rebuildButton->setObjectName(QStringLiteral("rebuildButton"));
    connect(m_rebuildButton, &QPushButton::clicked, this, &ReferenceNumberDialog::rebuild);
    m_customerCheck = new QCheckBox(tr("&Tallenna asiakkaan viitenumeroksi"));
    m_customerCheck->setObjectName(QStringLiteral("customerCheck"));

    QGroupBox* invoiceBox = new QGroupBox(tr("Lasku %1").arg(invoice->number));
    QFormLayout* invoiceForm = new QFormLayout(invoiceBox);
    QLabel* referenceLabel = new QLabel(tr("&Viitenumero"));
    referenceLabel->setBuddy(m_referenceEdit);
    invoiceForm->addRow(referenceLabel, m_referenceEdit);
    QLabel* text1Label = new QLabel(tr("Lisäteksti &1"));
    text1Label->setBuddy(m_noticeText1Edit);
    invoiceForm->addRow(text1Label, m_noticeText1Edit);
    QLabel* text2Label = new QLabel(tr("Lisäteksti &2"));
    text2Label->setBuddy(m_noticeText2Edit);
    invoiceForm->addRow(text2Label, m_noticeText2Edit);
    invoiceForm->addRow(QString(), m_rebuildButton);
    invoiceForm->addRow(QString(), m_customerCheck);

    m_baseEdit = new QLineEdit();
    m_baseEdit->setObjectName(QStringLiteral("baseEdit"));
    m_baseEdit->setPlaceholderText(tr("esim. 1234"));
    connect(m_baseEdit, &QLineEdit::textChanged, this, &ReferenceNumberDialog::baseEdited);
    m_nationalLabel = new QLabel();
    m_nationalLabel->setObjectName(QStringLiteral("nationalLabel"));
    m_nationalLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_rfLabel = new QLabel();
    m_rfLabel->setObjectName(QStringLiteral("rfLabel"));
    m_rfLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_useNationalButton = new QPushButton(tr("Käytä &kotimaista"));
    m_useNationalButton->setObjectName(QStringLiteral("useNationalButton"));
    m_useRfButton = new QPushButton(tr("Käytä &RF-viitettä"));
    m_useRfButton->setObjectName(QStringLiteral("useRfButton"));
    connect(m_useNationalButton, &QPushButton::clicked, this,
        [this] { setReferenceNumber(ReferenceNumber::national(m_baseEdit->text())); });
    connect(m_useRfButton, &QPushButton::clicked, this,
        [this] { setReferenceNumber(ReferenceNumber::rf(m_baseEdit->text())); });

    QGroupBox* toolBox = new QGroupBox(tr("Viitenumerolaskuri"));
    QGridLayout* tool = new QGridLayout(toolBox);
    QLabel* baseLabel = new QLabel(tr("P&erusosa"));
    baseLabel->setBuddy(m_baseEdit);
    tool->addWidget(baseLabel, 0, 0);
    tool->addWidget(m_baseEdit, 0, 1, 1, 2);
    tool->addWidget(new QLabel(tr("Kotimainen viite")), 1, 0);
    tool->addWidget(m_nationalLabel, 1, 1);
    tool->addWidget(m_useNationalButton, 1, 2);
    tool->addWidget(new QLabel(tr("RF-viite")), 2, 0);
    tool->addWidget(m_rfLabel, 2, 1);
    tool->addWidget(m_useRfButton, 2, 2);
    tool->setColumnStretch(1, 1);

    QDialogButtonBox* buttons
        = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("&Peruuta"));
    connect(buttons, &QDialogButtonBox::accepted, this, &ReferenceNumberDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ReferenceNumberDialog::reject);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(invoiceBox);
    layout->addWidget(toolBox);
    layout->addWidget(buttons);
    resize(560, sizeHint().height());

    setReferenceNumber(invoice->referenceNumber);
    m_noticeText1Edit->setPlainText(invoice->property(QStringLiteral("t1")).toString());
    m_noticeText2Edit->setPlainText(invoice->property(QStringLiteral("t2")).toString());
    // A saved invoice outside edit mode is only looked at; the calculator
    // and storing the reference as the customer's still work.
    m_referenceEdit->setReadOnly(!m_editable);
    m_noticeText1Edit->setReadOnly(!m_editable);
    m_noticeText2Edit->setReadOnly(!m_editable);
    m_rebuildButton->setEnabled(m_editable);
    baseEdited();
}

QString ReferenceNumberDialog::referenceNumber() const
{
    return ReferenceNumber::compact(m_referenceEdit->text());
}

void ReferenceNumberDialog::setReferenceNumber(const QString& reference)
{
    m_referenceEdit->setText(Invoice::formatReferenceNumber(ReferenceNumber::compact(reference)));
}

bool ReferenceNumberDialog::saveAsCustomerReference() const
{
    return m_customerCheck->isChecked();
}

void ReferenceNumberDialog::baseEdited()
{
    const QString national = ReferenceNumber::national(m_baseEdit->text());
    const QString rf = ReferenceNumber::rf(m_baseEdit->text());
    m_nationalLabel->setText(Invoice::formatReferenceNumber(national));
    m_rfLabel->setText(Invoice::formatReferenceNumber(rf));
    m_useNationalButton->setEnabled(m_editable && !national.isEmpty());
    m_useRfButton->setEnabled(m_editable && !rf.isEmpty());
}

void ReferenceNumberDialog::rebuild()
{
    if (!m_editable)
        return;
    setReferenceNumber(m_model->buildReferenceNumber0());
    const Settings* settings = m_registry->settings();
    bool found = false;
    const Invoice* invoice = m_model->invoice();
    const Customer* customer = m_registry->customerById(invoice->customerId, found);
    if (!settings || !found)
        return;
    TemplateStringHelper helper(m_registry->settings(), m_registry->bankAccounts());
    m_noticeText1Edit->setPlainText(helper.substituteVariables(
        settings->property(SettingsKeys::noticeText1, QString()).toString(), invoice, customer));
    m_noticeText2Edit->setPlainText(helper.substituteVariables(
        settings->property(SettingsKeys::noticeText2, QString()).toString(), invoice, customer));
}

void ReferenceNumberDialog::accept()
{
    const QString reference = referenceNumber();
    if (m_editable && !reference.isEmpty() && !ReferenceNumber::isValid(reference)) {
        showWarning(tr("Viitenumero %1 on virheellinen.").arg(m_referenceEdit->text()));
        m_referenceEdit->setFocus();
        return;
    }
    if (m_editable) {
        Invoice* invoice = m_model->invoice();
        invoice->referenceNumber = reference;
        invoice->setPropertyIfNotEmpty(QStringLiteral("t1"), m_noticeText1Edit->toPlainText());
        invoice->setPropertyIfNotEmpty(QStringLiteral("t2"), m_noticeText2Edit->toPlainText());
    }
    QDialog::accept();
}

void ReferenceNumberDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

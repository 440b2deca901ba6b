#include "irpdialog.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/paymentcriteria.h"
#include "payments/irptablemodel.h"
#include "payments/paymentimporter.h"
#include "ui/irpinvoicedelegate.h"
#include "ui/paymentprintpreviewdialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QVBoxLayout>

namespace {

// The entries of the date choice, in the order of the combo box.
enum DateChoice
{
    EntryDateChoice,
    PaymentDateChoice
};

QString settingsKey(const QString& key)
{
    return PaymentImporter::settingsGroup + QLatin1Char('/') + key;
}

} // namespace

IRPDialog::IRPDialog(Registry* registry, MainModel* mainModel, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_importer(new PaymentImporter(registry, this))
{
    // The payments go to the database directly; the window reloads after.
    Q_UNUSED(mainModel)
    setWindowTitle(tr("Maksusuoritusten tuonti"));

    m_fileEdit = new QLineEdit(this);
    m_fileEdit->setObjectName(QStringLiteral("fileEdit"));
    m_fileEdit->setReadOnly(true);
    auto* fileButton = new QPushButton(QStringLiteral("..."), this);
    fileButton->setObjectName(QStringLiteral("fileButton"));
    auto* fileLabel = new QLabel(tr("&Tiedosto:"), this);
    fileLabel->setBuddy(fileButton);

    m_bankAccountCombo = new QComboBox(this);
    m_bankAccountCombo->setObjectName(QStringLiteral("bankAccountCombo"));
    m_bankAccountCombo->addItem(QString(), -1);
    for (const BankAccount* account : registry->bankAccounts()) {
        if (!account->deleted)
            m_bankAccountCombo->addItem(account->name, account->id);
    }
    m_bankAccountLabel = new QLabel(tr("Pan&kkitili:"), this);
    m_bankAccountLabel->setBuddy(m_bankAccountCombo);

    m_dateCombo = new QComboBox(this);
    m_dateCombo->setObjectName(QStringLiteral("dateCombo"));
    m_dateCombo->addItems({ tr("Kirjauspäivä"), tr("Maksupäivä") });
    m_dateCombo->setCurrentIndex(
        m_importer->storedSaveEntryDate() ? EntryDateChoice : PaymentDateChoice);
    auto* dateLabel = new QLabel(tr("Tallennettava &päivä:"), this);
    dateLabel->setBuddy(m_dateCombo);

    auto* grid = new QGridLayout();
    grid->addWidget(fileLabel, 0, 0);
    auto* fileRow = new QHBoxLayout();
    fileRow->addWidget(m_fileEdit, 1);
    fileRow->addWidget(fileButton);
    grid->addLayout(fileRow, 0, 1);
    grid->addWidget(m_bankAccountLabel, 1, 0);
    grid->addWidget(m_bankAccountCombo, 1, 1);
    grid->addWidget(dateLabel, 2, 0);
    grid->addWidget(m_dateCombo, 2, 1);

    m_summaryLabel = new QLabel(this);
    m_summaryLabel->setObjectName(QStringLiteral("summaryLabel"));
    m_accountLabel = new QLabel(this);
    m_accountLabel->setObjectName(QStringLiteral("accountLabel"));
    m_accountLabel->hide();

    m_view = new QTableView(this);
    m_view->setObjectName(QStringLiteral("paymentView"));
    m_view->setModel(m_importer->model());
    m_view->setItemDelegateForColumn(IRPTableModel::InvoiceColumn, new IRPInvoiceDelegate(this));
    m_view->setEditTriggers(QAbstractItemView::AllEditTriggers);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);

    m_printButton = new QPushButton(tr("&Tulosta"), this);
    m_printButton->setObjectName(QStringLiteral("printButton"));
    m_printButton->setEnabled(false);
    m_saveButton = new QPushButton(tr("Tall&enna"), this);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setEnabled(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_printButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_saveButton, QDialogButtonBox::ActionRole);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(m_summaryLabel);
    layout->addWidget(m_accountLabel);
    layout->addWidget(m_view, 1);
    layout->addWidget(buttons);
    resize(760, 460);

    setBankAccountComboBoxVisible(false);
    connect(fileButton, &QPushButton::clicked, this, &IRPDialog::fileButtonClicked);
    connect(m_saveButton, &QPushButton::clicked, this, &IRPDialog::savePayments);
    connect(m_printButton, &QPushButton::clicked, this, &IRPDialog::printPayments);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_dateCombo, &QComboBox::currentIndexChanged, this, &IRPDialog::dateChoiceChanged);
    connect(m_importer, &PaymentImporter::bankAccountNeeded, this,
        [this] { setBankAccountComboBoxVisible(true); });
}

IRPDialog::~IRPDialog() = default;

IRPTableModel* IRPDialog::model() const
{
    return m_importer->model();
}

void IRPDialog::setBankAccountComboBoxVisible(bool visible)
{
    m_bankAccountCombo->setVisible(visible);
    m_bankAccountLabel->setVisible(visible);
}

void IRPDialog::dateChoiceChanged(int index)
{
    const bool entryDate = index == EntryDateChoice;
    m_importer->model()->setSaveEntryDate(entryDate);
    m_registry->appSettings()->setValue(settingsKey(PaymentImporter::dateKey),
        entryDate ? PaymentImporter::entryDateValue : PaymentImporter::paymentDateValue);
}

QString IRPDialog::chooseFile(const QString& previous)
{
    return QFileDialog::getOpenFileName(
        this, windowTitle(), previous, tr("Maksusuoritusaineistot (*.*)"));
}

void IRPDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}

bool IRPDialog::askQuestion(const QString& text)
{
    QMessageBox box(
        QMessageBox::Question, windowTitle(), text, QMessageBox::Yes | QMessageBox::No, this);
    return box.exec() == QMessageBox::Yes;
}

void IRPDialog::showPaymentReport(const QList<int>& idRange)
{
    PaymentCriteria criteria;
    criteria.idFrom = idRange.value(0);
    criteria.idTo = idRange.value(1);
    PaymentPrintPreviewDialog dialog(m_registry, this);
    criteria.copy(&dialog.listModel()->criteria());
    // The report shows this import's payments only.
    dialog.searchAction()->setEnabled(false);
    dialog.execReport(dialog.listModel());
}

void IRPDialog::fileButtonClicked()
{
    QSettings* settings = m_registry->appSettings();
    const QString key = settingsKey(PaymentImporter::fileNameKey);
    const QString path = chooseFile(settings->value(key).toString());
    if (path.isEmpty())
        return;
    settings->setValue(key, path);
    readFile(path);
}

void IRPDialog::readFile(const QString& path)
{
    m_fileEdit->setText(path);
    m_printButton->setEnabled(false);
    m_bankAccountCombo->setCurrentIndex(0);
    const bool read = m_importer->readFile(path);
    // A file that names no account of the business: the last one chosen.
    if (m_importer->bankAccountIndex() >= 0) {
        const int id = m_registry->bankAccountAt(m_importer->bankAccountIndex())->id;
        m_bankAccountCombo->setCurrentIndex(qMax(0, m_bankAccountCombo->findData(id)));
    } else {
        m_bankAccountCombo->setCurrentIndex(
            qMax(0, m_bankAccountCombo->findData(m_importer->storedBankAccountId())));
    }
    m_accountLabel->setText(m_importer->accountText());
    m_accountLabel->setVisible(!m_importer->accountText().isEmpty());
    if (!read) {
        m_summaryLabel->clear();
        m_saveButton->setEnabled(false);
        showMessage(QMessageBox::Warning,
            tr("Tiedoston lukeminen epäonnistui. %1").arg(m_importer->lastError()));
        return;
    }
    m_summaryLabel->setText(m_importer->summaryText());
    m_saveButton->setEnabled(m_importer->referencePaymentCount() > 0);
    m_view->resizeColumnsToContents();
}

int IRPDialog::selectedBankAccountId() const
{
    return m_bankAccountCombo->currentData().toInt();
}

void IRPDialog::savePayments()
{
    if (m_importer->isDuplicate() && !askQuestion(PaymentImporter::duplicateQuestion()))
        return;
    const int count = m_importer->savePayments(selectedBankAccountId());
    if (count < 0) {
        showMessage(QMessageBox::Critical,
            tr("Maksusuoritusten tallentaminen epäonnistui. %1").arg(m_importer->lastError()));
        return;
    }
    m_accepted = true;
    m_saveButton->setEnabled(false);
    m_printButton->setEnabled(count > 0);
    showMessage(QMessageBox::Information, PaymentImporter::resultText(count));
}

void IRPDialog::printPayments()
{
    const IRPTableModel* model = m_importer->model();
    if (model->firstPaymentId() < 0)
        return;
    showPaymentReport({ model->firstPaymentId(), model->lastPaymentId() });
}

#include "ravelodialog.h"

#include "core/ravelotablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "ui/formhelper.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

// The configuration key of the directory: it is this machine's.
const QString directoryKey = QStringLiteral("ravelo/directory");
const QString dateDisplayFormat = QStringLiteral("d.M.yyyy");
constexpr int minutesPerHour = 60;
// Invoices are usually made in the first half of the next month or at the
// end of the month worked: the default period is the month of this many
// days ago.
constexpr int defaultPeriodLag = 15;
constexpr int roundingSteps[] = { 0, 15, 30 };
constexpr int dialogMinimumWidth = 820;
constexpr int dialogMinimumHeight = 640;

QString hoursText(int minutes)
{
    return QStringLiteral("%1:%2")
        .arg(minutes / minutesPerHour)
        .arg(minutes % minutesPerHour, 2, 10, QLatin1Char('0'));
}

QTableWidget* createTable(const QString& name, const QStringList& headers)
{
    auto* table = FormHelper::create<QTableWidget>(name);
    table->setColumnCount(static_cast<int>(headers.size()));
    table->setHorizontalHeaderLabels(headers);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return table;
}

QDateEdit* createDateEdit(const QString& name)
{
    auto* edit = FormHelper::create<QDateEdit>(name);
    edit->setDisplayFormat(dateDisplayFormat);
    edit->setCalendarPopup(true);
    return edit;
}

} // namespace

RaveloDialog::RaveloDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_builder(registry)
    , m_directoryEdit(FormHelper::create<QLineEdit>(QStringLiteral("directoryEdit")))
    , m_fromEdit(createDateEdit(QStringLiteral("fromEdit")))
    , m_toEdit(createDateEdit(QStringLiteral("toEdit")))
    , m_dateEdit(createDateEdit(QStringLiteral("dateEdit")))
    , m_itemizationBox(FormHelper::create<QComboBox>(QStringLiteral("itemizationBox")))
    , m_roundingBox(FormHelper::create<QComboBox>(QStringLiteral("roundingBox")))
    , m_directionBox(FormHelper::create<QComboBox>(QStringLiteral("directionBox")))
    , m_customerTable(createTable(
          QStringLiteral("customerTable"), { tr("Ravelon asiakas"), tr("Asiakas"), tr("Tunnit") }))
    , m_workTypeTable(
          createTable(QStringLiteral("workTypeTable"), { tr("Ravelon työlaji"), tr("Tuote") }))
    , m_problemsEdit(FormHelper::create<QPlainTextEdit>(QStringLiteral("problemsEdit")))
    , m_previewView(FormHelper::create<QTableView>(QStringLiteral("previewView")))
    , m_previewModel(new RaveloTableModel(registry, this))
    , m_createButton(FormHelper::create<QPushButton>(QStringLiteral("createButton")))
{
    setWindowTitle(tr("Ravelo-aineiston tuonti"));

    auto* form = new QFormLayout;
    QPushButton* browse = FormHelper::createButton(tr("&Selaa..."), QStringLiteral("browseButton"));
    QPushButton* read
        = FormHelper::createButton(tr("Lue tie&dostot"), QStringLiteral("readButton"));
    connect(browse, &QPushButton::clicked, this, &RaveloDialog::showDirectoryDialog);
    connect(read, &QPushButton::clicked, this, &RaveloDialog::readFiles);
    connect(m_directoryEdit, &QLineEdit::returnPressed, this, &RaveloDialog::readFiles);
    auto* directoryRow = new QHBoxLayout;
    directoryRow->addWidget(m_directoryEdit, 1);
    directoryRow->addWidget(browse);
    directoryRow->addWidget(read);
    auto* directoryLabel = new QLabel(tr("&Hakemisto"));
    directoryLabel->setBuddy(m_directoryEdit);
    form->addRow(directoryLabel, directoryRow);

    auto* periodRow = new QHBoxLayout;
    periodRow->addWidget(m_fromEdit);
    periodRow->addWidget(new QLabel(QStringLiteral("–")));
    periodRow->addWidget(m_toEdit);
    periodRow->addStretch(1);
    auto* periodLabel = new QLabel(tr("&Aikaväli"));
    periodLabel->setBuddy(m_fromEdit);
    form->addRow(periodLabel, periodRow);

    m_itemizationBox->addItem(
        tr("Ei eritelty, rivi työlajia kohden"), RaveloInvoiceBuilder::NoItemization);
    m_itemizationBox->addItem(tr("Kuukausittain"), RaveloInvoiceBuilder::Monthly);
    m_itemizationBox->addItem(tr("Päivittäin"), RaveloInvoiceBuilder::Daily);
    m_itemizationBox->addItem(tr("Kirjaus kerrallaan"), RaveloInvoiceBuilder::EntryByEntry);
    m_roundingBox->addItem(tr("Ei pyöristystä"), roundingSteps[0]);
    m_roundingBox->addItem(tr("15 minuuttiin"), roundingSteps[1]);
    m_roundingBox->addItem(tr("30 minuuttiin"), roundingSteps[2]);
    m_directionBox->addItem(tr("ylöspäin"), true);
    m_directionBox->addItem(tr("lähimpään"), false);
    auto* choicesRow = new QHBoxLayout;
    auto* itemizationLabel = new QLabel(tr("&Erittely"));
    itemizationLabel->setBuddy(m_itemizationBox);
    auto* roundingLabel = new QLabel(tr("&Pyöristys"));
    roundingLabel->setBuddy(m_roundingBox);
    auto* dateLabel = new QLabel(tr("Laskujen päi&vämäärä"));
    dateLabel->setBuddy(m_dateEdit);
    choicesRow->addWidget(itemizationLabel);
    choicesRow->addWidget(m_itemizationBox);
    choicesRow->addSpacing(12);
    choicesRow->addWidget(roundingLabel);
    choicesRow->addWidget(m_roundingBox);
    choicesRow->addWidget(m_directionBox);
    choicesRow->addSpacing(12);
    choicesRow->addWidget(dateLabel);
    choicesRow->addWidget(m_dateEdit);
    choicesRow->addStretch(1);

    auto* customers = new QGroupBox(tr("As&iakkaat"));
    (new QVBoxLayout(customers))->addWidget(m_customerTable);
    auto* workTypes = new QGroupBox(tr("&Työlajit"));
    (new QVBoxLayout(workTypes))->addWidget(m_workTypeTable);
    auto* mappingRow = new QHBoxLayout;
    mappingRow->addWidget(customers, 3);
    mappingRow->addWidget(workTypes, 2);

    m_problemsEdit->setReadOnly(true);
    m_problemsEdit->setMaximumHeight(90);
    m_previewView->setModel(m_previewModel);
    m_previewView->verticalHeader()->hide();
    m_previewView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_previewView->horizontalHeader()->setSectionResizeMode(
        RaveloTableModel::TextColumn, QHeaderView::Stretch);
    auto* previewLabel = new QLabel(tr("Esi&katselu"));
    previewLabel->setBuddy(m_previewView);

    auto* buttons = new QDialogButtonBox(this);
    m_createButton->setText(tr("&Luo laskut"));
    buttons->addButton(m_createButton, QDialogButtonBox::ActionRole);
    QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
    close->setText(tr("Sulje"));
    // Return in the directory field reads the files; it must never make
    // invoices, nor close the dialog.
    for (QPushButton* button : { m_createButton, close }) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    connect(m_createButton, &QPushButton::clicked, this, &RaveloDialog::createInvoices);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(choicesRow);
    layout->addLayout(mappingRow, 2);
    layout->addWidget(m_problemsEdit);
    layout->addWidget(previewLabel);
    layout->addWidget(m_previewView, 3);
    layout->addWidget(buttons);
    setMinimumSize(dialogMinimumWidth, dialogMinimumHeight);

    loadChoices();
    setToday(QDate::currentDate());

    auto changed = [this] {
        if (!m_updating) {
            updateTables();
            updatePreview();
        }
    };
    connect(m_fromEdit, &QDateEdit::dateChanged, this, changed);
    connect(m_toEdit, &QDateEdit::dateChanged, this, changed);
    connect(m_customerTable, &QTableWidget::itemChanged, this, changed);
    for (QComboBox* box : { m_itemizationBox, m_roundingBox, m_directionBox })
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { updatePreview(); });
    if (!m_directoryEdit->text().isEmpty())
        readFiles();
    else
        updatePreview();
}

RaveloDialog::~RaveloDialog() = default;

void RaveloDialog::setToday(const QDate& today)
{
    const QDate month = today.addDays(-defaultPeriodLag);
    const QDate first(month.year(), month.month(), 1);
    m_updating = true;
    m_fromEdit->setDate(first);
    m_toEdit->setDate(first.addMonths(1).addDays(-1));
    m_dateEdit->setDate(today);
    m_updating = false;
    updateTables();
    updatePreview();
}

void RaveloDialog::loadChoices()
{
    const Settings* settings = m_registry->settings();
    if (settings) {
        m_mapping.load(*settings);
        auto select = [](QComboBox* box, const QVariant& value) {
            const int index = box->findData(value);
            if (index >= 0)
                box->setCurrentIndex(index);
        };
        select(m_itemizationBox, settings->property(SettingsKeys::raveloItemization, 0).toInt());
        select(m_roundingBox, settings->property(SettingsKeys::raveloRoundingStep, 0).toInt());
        select(m_directionBox,
            settings->property(SettingsKeys::raveloRoundUp, true).toString()
                != QLatin1String("false"));
    }
    m_directoryEdit->setText(m_registry->appSettings()->value(directoryKey).toString());
}

void RaveloDialog::storeChoices(Settings* settings) const
{
    m_mapping.save(settings);
    settings->setProperty(SettingsKeys::raveloItemization, m_itemizationBox->currentData().toInt());
    settings->setProperty(SettingsKeys::raveloRoundingStep, m_roundingBox->currentData().toInt());
    settings->setProperty(SettingsKeys::raveloRoundUp,
        m_directionBox->currentData().toBool() ? QStringLiteral("true") : QStringLiteral("false"));
}

void RaveloDialog::showDirectoryDialog()
{
    const QString chosen = chooseDirectory(m_directoryEdit->text());
    if (chosen.isEmpty())
        return;
    m_directoryEdit->setText(QDir::toNativeSeparators(chosen));
    readFiles();
}

void RaveloDialog::readFiles()
{
    const QString directory = QDir::fromNativeSeparators(m_directoryEdit->text().trimmed());
    m_reader.clear();
    m_reader.readDirectory(directory);
    if (QDir(directory).exists())
        m_registry->appSettings()->setValue(directoryKey, m_directoryEdit->text().trimmed());
    if (!m_builder.fetchBilledEntries())
        showMessage(QMessageBox::Critical,
            tr("Laskutustietojen hakeminen epäonnistui. %1").arg(m_builder.lastError()));
    updateTables();
    updatePreview();
}

RaveloInvoiceBuilder::Options RaveloDialog::options() const
{
    RaveloInvoiceBuilder::Options options;
    options.from = m_fromEdit->date();
    options.to = m_toEdit->date();
    for (int row = 0; row < m_customerTable->rowCount(); ++row) {
        const QTableWidgetItem* item = m_customerTable->item(row, RaveloCustomerColumn);
        if (item && item->checkState() == Qt::Checked)
            options.customers.append(item->text());
    }
    options.itemization = m_itemizationBox->currentData().toInt();
    options.roundingStep = m_roundingBox->currentData().toInt();
    options.roundUp = m_directionBox->currentData().toBool();
    return options;
}

QComboBox* RaveloDialog::createCustomerBox(const QString& raveloCustomer)
{
    auto* box = new QComboBox;
    box->addItem(tr("(valitse asiakas)"), -1);
    const int mapped = m_mapping.customerId(raveloCustomer);
    for (int i = 0; i < m_registry->customerCount(); ++i) {
        const Customer* customer = m_registry->customerAt(i);
        if (customer->deleted && customer->id != mapped)
            continue;
        box->addItem(
            QStringLiteral("%1 %2").arg(customer->number).arg(customer->name), customer->id);
        // A customer of the same name is the likely one the first time.
        if (customer->id == mapped || (mapped < 0 && customer->name == raveloCustomer))
            box->setCurrentIndex(box->count() - 1);
    }
    if (mapped < 0 && box->currentIndex() > 0)
        m_mapping.setCustomerId(raveloCustomer, box->currentData().toInt());
    connect(
        box, qOverload<int>(&QComboBox::currentIndexChanged), this, [this, box, raveloCustomer] {
            m_mapping.setCustomerId(raveloCustomer, box->currentData().toInt());
            updatePreview();
        });
    return box;
}

QComboBox* RaveloDialog::createProductBox(const QString& workType)
{
    auto* box = new QComboBox;
    box->addItem(tr("(valitse tuote)"), -1);
    const int mapped = m_mapping.productId(workType);
    for (int i = 0; i < m_registry->productCount(); ++i) {
        const Product* product = m_registry->productAt(i);
        box->addItem(QStringLiteral("%1 %2").arg(product->number, product->name), product->id);
        if (product->id == mapped || (mapped < 0 && product->name == workType))
            box->setCurrentIndex(box->count() - 1);
    }
    if (mapped < 0 && box->currentIndex() > 0)
        m_mapping.setProductId(workType, box->currentData().toInt());
    connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, [this, box, workType] {
        m_mapping.setProductId(workType, box->currentData().toInt());
        updatePreview();
    });
    return box;
}

void RaveloDialog::updateTables()
{
    if (m_updating)
        return;
    m_updating = true;
    // Unchecked customers stay unchecked while the period changes.
    QStringList unchecked;
    for (int row = 0; row < m_customerTable->rowCount(); ++row) {
        const QTableWidgetItem* item = m_customerTable->item(row, RaveloCustomerColumn);
        if (item && item->checkState() != Qt::Checked)
            unchecked.append(item->text());
    }

    RaveloInvoiceBuilder::Options all;
    all.from = m_fromEdit->date();
    all.to = m_toEdit->date();
    for (const RaveloEntry& entry : m_reader.entries()) {
        if (!all.customers.contains(entry.customer))
            all.customers.append(entry.customer);
    }
    QMap<QString, int> minutesByCustomer;
    const QList<RaveloEntry> open = m_builder.selectEntries(m_reader.entries(), all);
    QMap<QString, bool> workTypes;
    for (const RaveloEntry& entry : open) {
        minutesByCustomer[entry.customer] += entry.minutes;
        if (!unchecked.contains(entry.customer))
            workTypes.insert(entry.workType, true);
    }

    // Emptied first: the views hide and release the old combo boxes only
    // when their rows go.
    m_customerTable->setRowCount(0);
    m_workTypeTable->setRowCount(0);
    m_customerTable->setRowCount(static_cast<int>(minutesByCustomer.size()));
    int row = 0;
    for (auto it = minutesByCustomer.cbegin(); it != minutesByCustomer.cend(); ++it, ++row) {
        auto* name = new QTableWidgetItem(it.key());
        name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        name->setCheckState(unchecked.contains(it.key()) ? Qt::Unchecked : Qt::Checked);
        m_customerTable->setItem(row, RaveloCustomerColumn, name);
        m_customerTable->setCellWidget(row, CustomerColumn, createCustomerBox(it.key()));
        auto* hours = new QTableWidgetItem(hoursText(it.value()));
        hours->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        hours->setFlags(Qt::ItemIsEnabled);
        m_customerTable->setItem(row, HoursColumn, hours);
    }
    m_workTypeTable->setRowCount(static_cast<int>(workTypes.size()));
    row = 0;
    for (auto it = workTypes.cbegin(); it != workTypes.cend(); ++it, ++row) {
        auto* name = new QTableWidgetItem(it.key());
        name->setFlags(Qt::ItemIsEnabled);
        m_workTypeTable->setItem(row, WorkTypeColumn, name);
        m_workTypeTable->setCellWidget(row, ProductColumn, createProductBox(it.key()));
    }
    for (QTableWidget* table : { m_customerTable, m_workTypeTable })
        table->resizeColumnsToContents();
    m_updating = false;
}

void RaveloDialog::updatePreview()
{
    if (m_updating)
        return;
    QStringList problems = m_reader.errors();
    const bool built = m_builder.build(m_reader.entries(), m_mapping, options());
    if (built)
        m_previewModel->setInvoices(m_builder.invoices());
    else
        m_previewModel->clear();
    if (!built)
        problems.append(m_builder.lastError());
    else if (m_reader.entries().isEmpty() && m_reader.errors().isEmpty())
        problems.append(tr("Valitse hakemisto, jossa Ravelon tiedostot (*.rvt) ovat."));
    else if (m_builder.invoices().isEmpty() && m_reader.errors().isEmpty())
        problems.append(tr("Valitulta aikaväliltä ei löytynyt laskuttamattomia kirjauksia."));
    m_problemsEdit->setPlainText(problems.join(QLatin1Char('\n')));
    m_problemsEdit->setVisible(!problems.isEmpty());
    // Nothing is invoiced while a file has a bad line: it could be hours
    // that belong on these invoices.
    m_createButton->setEnabled(
        built && m_reader.errors().isEmpty() && !m_builder.invoices().isEmpty());
    FormHelper::fitColumns(m_previewView->horizontalHeader());
}

void RaveloDialog::createInvoices()
{
    // Another run may have billed entries since the files were read.
    if (!m_builder.fetchBilledEntries()) {
        showMessage(QMessageBox::Critical,
            tr("Laskutustietojen hakeminen epäonnistui. %1").arg(m_builder.lastError()));
        return;
    }
    updatePreview();
    if (!m_createButton->isEnabled())
        return;
    const int count = static_cast<int>(m_builder.invoices().size());
    if (!askQuestion(tr("Luodaan %1 laskua. Jatketaanko?").arg(count)))
        return;
    Settings settings;
    m_registry->settings()->copy(&settings);
    storeChoices(&settings);
    if (!m_builder.save(m_dateEdit->date(), &settings)) {
        showMessage(QMessageBox::Critical,
            tr("Laskujen luonti epäonnistui. %1").arg(m_builder.lastError()));
        return;
    }
    settings.copy(m_registry->settings());
    const QList<int>& numbers = m_builder.savedNumbers();
    showMessage(QMessageBox::Information,
        numbers.size() == 1 ? tr("Luotiin lasku %1.").arg(numbers.first())
                            : tr("Luotiin laskut %1–%2.").arg(numbers.first()).arg(numbers.last()));
    accept();
}

void RaveloDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}

bool RaveloDialog::askQuestion(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

QString RaveloDialog::chooseDirectory(const QString& start)
{
    return QFileDialog::getExistingDirectory(this, tr("Valitse hakemisto"), start);
}

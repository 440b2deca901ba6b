#include "mainmodel.h"

#include "core/databasefactory.h"
#include "core/databaselist.h"
#include "core/interestonarrearstablemodel.h"
#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/newinvoice.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/invoiceitem.h"
#include "domain/invoicetype.h"
#include "domain/logging.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/database.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"

#include <QSettings>
#include <QSortFilterProxyModel>

#include <memory>

namespace {

const QString noticeText1Key = QStringLiteral("t1");
const QString noticeText2Key = QStringLiteral("t2");
const QString attributePrefix = QStringLiteral("attributes/");

QVariant dateToSetting(const QDate& date)
{
    return date.isValid() ? date.toString(Qt::ISODate) : QString(QLatin1String(""));
}

QDate dateFromSetting(const QVariant& value)
{
    return QDate::fromString(value.toString(), Qt::ISODate);
}

int intFromSetting(const QVariant& value)
{
    bool ok = false;
    const int result = value.toInt(&ok);
    return ok ? result : -1;
}

} // namespace

MainModel::MainModel(Registry* registry, QObject* parent)
    : QObject(parent)
    , m_registry(registry)
    , m_invoiceTableModel(new InvoiceTableModel(registry, this))
    , m_invoiceProxyModel(new QSortFilterProxyModel(this))
    , m_invoiceItemTableModel(new InvoiceItemTableModel(registry, this))
    , m_paymentTableModel(new PaymentTableModel(registry, this))
    , m_interestTableModel(new InterestOnArrearsTableModel(this))
    , m_lastCriteria(&m_criteria)
{
    m_invoiceProxyModel->setSourceModel(m_invoiceTableModel);
    m_invoiceProxyModel->setSortRole(InvoiceTableModel::SortRole);
    m_invoiceProxyModel->setFilterCaseSensitivity(Qt::CaseInsensitive);
}

MainModel::~MainModel()
{
    closeDatabase();
}

int MainModel::openDatabase(int index, bool create)
{
    if (m_registry->isConnected())
        closeDatabase();

    QSettings* appSettings = m_registry->appSettings();
    const DatabaseList databases(appSettings);
    const DatabaseList::Entry entry = databases.entry(index);
    Database* database = DatabaseFactory::create(entry);
    // A local file is simply created when it is missing; a server's database
    // only when the caller asks.
    database->setCreateIfNotExist(DatabaseList::isPostgreSQL(entry) ? create : true);
    m_registry->setDatabase(database);
    m_registry->setConnected(true);

    int status = 0;
    m_lastError.clear();
    const bool opened = DatabaseFactory::open(database, appSettings, databases.group(index));
    if (!opened) {
        m_lastError = database->lastError();
        status = database->driverAvailable() ? -1 : -3;
    }
    // Only a file that really is missing is offered to be created; one that
    // cannot be opened (a directory without write access, say) is a failure
    // with its cause.
    const auto* sqlite = qobject_cast<const SQLiteDatabase*>(database);
    if (sqlite && sqlite->fileStatus() == SQLiteDatabase::FileUnusable)
        status = -1;
    else if (!database->exists())
        status = -2;
    // What the user is asked to create: the file, or the server's database.
    m_missingDatabaseName.clear();
    if (status == -2 && sqlite)
        m_missingDatabaseName = sqlite->fileName();
    if (status == -2 && m_missingDatabaseName.isEmpty())
        m_missingDatabaseName = entry.value(QStringLiteral("databaseName")).toString();
    loadCriteria();
    return status;
}

bool MainModel::closeDatabase()
{
    if (!m_registry->isConnected())
        return true;

    setEditable(false);
    m_invoiceTableModel->clear();
    m_invoiceItemTableModel->clearInvoiceItems();
    m_paymentTableModel->clearPayments();
    m_interestTableModel->clear();
    m_invoiceIndex = -1;
    m_lastInvoiceId = -1;
    m_invoice.clear();
    m_registry->setConnected(false);

    Database* database = m_registry->database();
    m_registry->setDatabase(nullptr);
    if (database) {
        database->close();
        delete database;
    }
    return true;
}

bool MainModel::fetchData()
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }

    std::unique_ptr<Query> query(database->query());
    bool ok = true;
    // Every step logs its line, but runs only while the earlier ones succeed.
    auto step = [&](const char* text, auto&& run) {
        qCDebug(logUi) << text;
        if (ok && !run()) {
            m_lastError = query->lastError();
            ok = false;
        }
    };

    step("Haetaan perustiedot", [&] { return m_registry->fetchSettings(query.get()); });
    step("Haetaan asiakastiedot", [&] { return m_registry->fetchCustomers(query.get()); });
    step("Haetaan tuotetiedot", [&] { return m_registry->fetchProducts(query.get()); });
    step("Haetaan pankkitilien tiedot", [&] { return m_registry->fetchBankAccounts(query.get()); });
    step("Haetaan tulostusskriptien tiedot",
        [&] { return m_registry->fetchPrintScripts(query.get()); });
    step("Haetaan laskujen tiedot", [&] { return loadInvoiceList(query.get()); });
    return ok;
}

bool MainModel::loadInvoiceList(Query* query)
{
    if (!query->fetchInvoiceSummaries(*m_lastCriteria))
        return false;
    m_invoiceTableModel->load(query, m_lastCriteria->descending);
    m_invoiceIndex = m_invoice.id >= 0 ? m_invoiceTableModel->rowOfInvoiceId(m_invoice.id) : -1;
    return true;
}

int MainModel::invoiceCount() const
{
    return m_invoiceTableModel->rowCount();
}

void MainModel::setEditable(bool editable)
{
    m_editable = editable;
    m_invoiceItemTableModel->setEditable(editable);
    m_paymentTableModel->setEditable(editable);
}

QDate MainModel::today() const
{
    return m_today.isValid() ? m_today : QDate::currentDate();
}

bool MainModel::goToInvoice(int index)
{
    Database* database = m_registry->database();
    const Invoice* summary = m_invoiceTableModel->invoiceAt(index);
    if (!database || !summary) {
        m_lastError = tr("Laskun tietoja ei löytynyt tietokannasta");
        return false;
    }
    const int id = summary->id;
    qCDebug(logUi).noquote() << QStringLiteral("Haetaan laskun id=%1 tiedot").arg(id);

    std::unique_ptr<Query> query(database->query());
    if (!query->fetchInvoiceDetails(id)) {
        m_lastError = query->lastError();
        return false;
    }
    if (!query->next()) {
        m_lastError = tr("Laskun tietoja ei löytynyt tietokannasta");
        qCWarning(logUi).noquote()
            << QStringLiteral("Laskun id=%1 tietoja ei löytynyt tietokannasta").arg(id);
        return false;
    }

    m_invoiceIndex = index;
    m_invoice.clear();
    query->invoiceDetails(&m_invoice);
    setEditable(id == m_lastInvoiceId);

    if (!m_invoiceItemTableModel->loadInvoiceItems(query.get(), id)
        || !m_paymentTableModel->loadPayments(query.get(), id)) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

int MainModel::createInvoice()
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return -1;
    }
    std::unique_ptr<Query> query(database->query());
    const int highest = query->maxInvoiceNumber();
    if (highest < 0) {
        m_lastError = query->lastError();
        return highest;
    }

    m_invoiceIndex = -1;
    NewInvoice::prepare(m_registry, &m_invoice, highest + 1, today());

    m_invoiceItemTableModel->clearInvoiceItems();
    m_paymentTableModel->clearPayments();
    setEditable(true);
    return highest;
}

int MainModel::createInvoiceCopy()
{
    const Invoice source = m_invoice;
    QList<InvoiceItem> rows;
    for (int row = 0; row < m_invoiceItemTableModel->rowCount(); ++row) {
        InvoiceItem item;
        if (m_invoiceItemTableModel->toInvoiceItem(row, &item))
            rows.append(item);
    }
    const int highest = createInvoice();
    if (highest < 0)
        return highest;

    // The new invoice keeps its own number, date and reference number.
    m_invoice.customerId = source.customerId;
    m_invoice.paymentTerms = source.paymentTerms;
    if (!m_invoice.paymentTerms.isEmpty())
        calculateDueDate();
    m_invoice.delivery = source.delivery;
    m_invoice.buyerRef = source.buyerRef;
    m_invoice.sellerRef = source.sellerRef;
    m_invoice.interestOnArrears = source.interestOnArrears;
    for (const QString& key : { noticeText1Key, noticeText2Key }) {
        const QString text = source.property(key).toString();
        if (!text.isEmpty())
            m_invoice.setProperty(key, text);
    }
    m_invoice.setProperties(source.propertiesWithPrefix(attributePrefix));
    for (const InvoiceItem& item : qAsConst(rows))
        m_invoiceItemTableModel->fromInvoiceItem(&item);
    return highest;
}

int MainModel::addPayment()
{
    Payment payment;
    const Settings* settings = m_registry->settings();
    bool ok = false;
    const int accountId
        = settings ? settings->property(SettingsKeys::defaultBankAccount).toInt(&ok) : -1;
    bool found = false;
    if (ok)
        m_registry->bankAccountById(accountId, found);
    payment.bankAccountId = found ? accountId : -1;
    // What is still open is the likeliest amount; the date the user types.
    const qint64 open
        = m_invoiceItemTableModel->totalAmountVatIncluded() - m_paymentTableModel->totalAmount();
    payment.amount = open > 0 ? static_cast<int>(open) : 0;
    return m_paymentTableModel->addPayment(payment);
}

int MainModel::isValidNumber(int number)
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return -1;
    }
    std::unique_ptr<Query> query(database->query());
    InvoiceCriteria criteria;
    criteria.number = number;
    if (!query->fetchInvoiceSummaries(criteria)) {
        m_lastError = query->lastError();
        return -1;
    }
    return query->next() ? 0 : 1;
}

void MainModel::setInvoiceNumber(int number)
{
    m_invoice.number = number;
    updateReferenceNumber();
    m_invoiceTableModel->updateInvoice(m_invoiceIndex, m_invoice);
}

bool MainModel::runInTransaction(Query* query, const std::function<bool()>& work)
{
    return m_registry->database()->runTransaction(work, query, &m_lastError);
}

bool MainModel::saveInvoice()
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    updateTotalAmount();
    updateBalance();
    const bool isNew = m_invoice.id < 0;

    std::unique_ptr<Query> query(database->query());
    const bool saved = runInTransaction(query.get(), [&] {
        if (!query->saveInvoice(&m_invoice))
            return false;
        return m_invoiceItemTableModel->saveInvoiceItems(query.get(), m_invoice.id)
            && m_paymentTableModel->savePayments(query.get(), m_invoice.id);
    });
    if (!saved) {
        // Nothing was written: ids handed out inside the transaction are void.
        if (isNew)
            m_invoice.id = -1;
        m_invoiceItemTableModel->rolledBack();
        m_paymentTableModel->rolledBack();
        return false;
    }
    m_invoiceItemTableModel->committed();
    m_paymentTableModel->committed();

    if (!isNew) {
        m_invoiceTableModel->updateInvoice(m_invoiceIndex, m_invoice);
        return true;
    }
    m_lastInvoiceId = m_invoice.id;
    if (!loadInvoiceList(query.get())) {
        // The invoice is stored: only the list beside it is out of date.
        m_lastError = tr("Lasku tallennettiin, mutta laskuluettelon päivittäminen "
                         "epäonnistui: %1")
                          .arg(query->lastError());
        return false;
    }
    return true;
}

bool MainModel::removeInvoice()
{
    const int id = m_invoice.id;
    if (id >= 0 && id != removedInvoiceId) {
        Database* database = m_registry->database();
        if (!database) {
            m_lastError = tr("Tietokantaa ei ole avattu.");
            return false;
        }
        std::unique_ptr<Query> query(database->query());
        const bool removed = runInTransaction(query.get(), [&] {
            return query->deleteInvoiceItems(id) && query->deletePayments(id)
                && query->deleteInvoice(id);
        });
        if (!removed)
            return false;
        m_invoiceTableModel->removeRow(m_invoiceTableModel->rowOfInvoiceId(id));
    }
    if (id == m_lastInvoiceId)
        m_lastInvoiceId = -1;
    m_invoice.id = removedInvoiceId;
    m_invoiceIndex = -1;
    m_invoiceItemTableModel->clearInvoiceItems();
    m_paymentTableModel->clearPayments();
    setEditable(false);
    return true;
}

bool MainModel::saveSettings()
{
    Database* database = m_registry->database();
    if (!database || !m_registry->settings()) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    return runInTransaction(
        query.get(), [&] { return query->updateSettings(m_registry->settings()); });
}

bool MainModel::saveReferenceNumber()
{
    bool found = false;
    Customer* customer = m_registry->customerById(m_invoice.customerId, found);
    if (!found || !customer) {
        m_lastError = tr("Laskun saajaa ei ole valittu.");
        return false;
    }
    if (customer->referenceNumber == m_invoice.referenceNumber)
        return true;
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    Customer changed;
    customer->copy(&changed);
    changed.referenceNumber = m_invoice.referenceNumber;
    std::unique_ptr<Query> query(database->query());
    if (!runInTransaction(query.get(), [&] { return query->saveCustomer(&changed); }))
        return false;
    customer->referenceNumber = changed.referenceNumber;
    return true;
}

void MainModel::updateTotalAmount()
{
    m_invoice.totalAmount = static_cast<int>(m_invoiceItemTableModel->totalAmountVatIncluded());
    m_invoiceTableModel->setTotalAmount(m_invoiceIndex, m_invoice.totalAmount);
}

void MainModel::updateBalance()
{
    m_invoice.balance
        = static_cast<int>(m_invoice.totalAmount - m_paymentTableModel->totalAmount());
    m_invoiceTableModel->setBalance(m_invoiceIndex, m_invoice.balance);
}

void MainModel::calculateDueDate()
{
    NewInvoice::calculateDueDate(&m_invoice);
}

QString MainModel::buildReferenceNumber0() const
{
    return NewInvoice::buildReferenceNumber0(m_registry, m_invoice);
}

QString MainModel::buildReferenceNumber1() const
{
    return NewInvoice::buildReferenceNumber1(m_registry, m_invoice);
}

void MainModel::updateReferenceNumber()
{
    NewInvoice::updateReferenceNumber(m_registry, &m_invoice);
}

void MainModel::calculateInterestOnArrears()
{
    // The rate is in 1/100 %: 800 is 8 %. A year counts 365 days, also a
    // leap year, and each period charges the balance open during it.
    const double rate = m_invoice.interestOnArrears / double(Constants::percentageScale * 100);
    constexpr double daysInYear = 365.0;
    long long balance = m_invoice.totalAmount;
    QDate periodStart = m_invoice.dueDate;
    double interest = 0.0;
    int days = 0;
    for (int row = 0; row < m_paymentTableModel->rowCount(); ++row) {
        const Payment* payment = m_paymentTableModel->paymentAt(row);
        const qint64 d = periodStart.daysTo(payment->date);
        if (d > 0) {
            interest += rate * double(balance) * double(d) / daysInYear;
            days += int(d);
        }
        // A payment before the due date only lowers the balance.
        balance -= payment->amount;
        periodStart = payment->date;
    }
    const QDate end = today();
    if (balance > 0 && periodStart < end) {
        const qint64 d = periodStart.daysTo(end);
        interest += rate * double(balance) * double(d) / daysInYear;
        days += int(d);
    }
    const int cents = int(interest + (interest < 0 ? -0.5 : 0.5));
    m_interestTableModel->addRow(m_invoice.number, m_invoice.date, days, cents);
    m_interestTableModel->setCustomerId(m_invoice.customerId);
}

void MainModel::addInterestRows(const Product* product)
{
    InvoiceItemTableModel* rows = m_invoiceItemTableModel;
    const int first = rows->rowCount();
    for (int i = 0; i < m_interestTableModel->rowCount(); ++i) {
        const int number = m_interestTableModel->invoiceNumber(i);
        const QString text = number == m_invoice.number
            ? tr("Viivästyskorko")
            : tr("Laskun %1 viivästyskorko").arg(number);
        const int row = first + i;
        if (!rows->insertRow(row))
            return;
        rows->setProduct(row, product);
        const long long amount = static_cast<long long>(m_interestTableModel->amount(i))
            * Constants::amountScale / Constants::totalAmountScale;
        rows->setQuantityAndAmountAndVat0(row, Constants::quantityScale, amount);
        rows->setText(row, text);
    }
}

int MainModel::createInterestInvoice(const Product* product)
{
    const int highest = createInvoice();
    if (highest < 0)
        return highest;
    m_invoice.type = InvoiceType::InterestInvoice;
    m_invoice.customerId = m_interestTableModel->customerId();
    bool found = false;
    const Customer* customer = m_registry->customerById(m_invoice.customerId, found);
    if (found && customer && !customer->paymentTerms.isEmpty()) {
        m_invoice.paymentTerms = customer->paymentTerms;
        calculateDueDate();
    }
    // The customer brings its own reference number and notice texts.
    updateReferenceNumber();
    addInterestRows(product);
    return highest;
}

void MainModel::setupQuickSearchCriteria(int n)
{
    m_quickSearchCriteria.clear();
    m_currentQuickSearch = n;
    switch (n) {
    case 0:
        m_quickSearchCriteria.limit = 100;
        m_quickSearchCriteria.descending = true;
        break;
    case 1:
        m_quickSearchCriteria.dueDateFrom = today();
        break;
    case 2:
        m_quickSearchCriteria.paymentStatus = 1;
        break;
    case 3:
        m_quickSearchCriteria.dateFrom = today();
        m_quickSearchCriteria.dateTo = today();
        break;
    case 4:
        m_quickSearchCriteria.customerId = m_invoice.customerId;
        break;
    default:
        break;
    }
}

bool MainModel::search()
{
    m_lastCriteria = &m_criteria;
    m_currentQuickSearch = -1;
    saveCriteria();
    return refresh();
}

bool MainModel::quickSearch(int n)
{
    setupQuickSearchCriteria(n);
    m_lastCriteria = &m_quickSearchCriteria;
    saveCriteria();
    return refresh();
}

bool MainModel::refresh()
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    if (!loadInvoiceList(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

void MainModel::loadCriteria()
{
    m_criteria.clear();
    m_currentQuickSearch = -1;
    m_lastCriteria = &m_criteria;
    const int number = m_registry->databaseNumber();
    if (number < 0)
        return;

    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("search"));
    const int size = settings->beginReadArray(QStringLiteral("databases"));
    for (int i = 0; i < size; ++i) {
        settings->setArrayIndex(i);
        if (intFromSetting(settings->value(QStringLiteral("number"))) != number)
            continue;
        bool isQuickSearch = false;
        const int quick = settings->value(QStringLiteral("quickSearch")).toInt(&isQuickSearch);
        if (isQuickSearch) {
            setupQuickSearchCriteria(quick);
            m_lastCriteria = &m_quickSearchCriteria;
        } else {
            m_criteria.dateFrom = dateFromSetting(settings->value(QStringLiteral("date1")));
            m_criteria.dateTo = dateFromSetting(settings->value(QStringLiteral("date2")));
            m_criteria.dueDateFrom = dateFromSetting(settings->value(QStringLiteral("dueDate1")));
            m_criteria.dueDateTo = dateFromSetting(settings->value(QStringLiteral("dueDate2")));
            m_criteria.deliveryDateFrom
                = dateFromSetting(settings->value(QStringLiteral("deliveryDate1")));
            m_criteria.deliveryDateTo
                = dateFromSetting(settings->value(QStringLiteral("deliveryDate2")));
            m_criteria.balanceDate
                = dateFromSetting(settings->value(QStringLiteral("balanceDate")));
            m_criteria.numberFrom
                = intFromSetting(settings->value(QStringLiteral("invoiceNumber1")));
            m_criteria.numberTo = intFromSetting(settings->value(QStringLiteral("invoiceNumber2")));
            m_criteria.customerId = intFromSetting(settings->value(QStringLiteral("customerId")));
            m_criteria.text = settings->value(QStringLiteral("text")).toString();
            m_criteria.types = intFromSetting(settings->value(QStringLiteral("type")));
            m_criteria.paymentStatus = intFromSetting(settings->value(QStringLiteral("balance")));
        }
        break;
    }
    settings->endArray();
    settings->endGroup();
}

void MainModel::saveCriteria()
{
    const int number = m_registry->databaseNumber();
    if (number < 0)
        return;

    QMap<QString, QVariant> element;
    element.insert(QStringLiteral("number"), number);
    if (m_currentQuickSearch >= 0 && m_lastCriteria == &m_quickSearchCriteria) {
        element.insert(QStringLiteral("quickSearch"), m_currentQuickSearch);
    } else {
        element.insert(QStringLiteral("date1"), dateToSetting(m_criteria.dateFrom));
        element.insert(QStringLiteral("date2"), dateToSetting(m_criteria.dateTo));
        element.insert(QStringLiteral("dueDate1"), dateToSetting(m_criteria.dueDateFrom));
        element.insert(QStringLiteral("dueDate2"), dateToSetting(m_criteria.dueDateTo));
        element.insert(QStringLiteral("deliveryDate1"), dateToSetting(m_criteria.deliveryDateFrom));
        element.insert(QStringLiteral("deliveryDate2"), dateToSetting(m_criteria.deliveryDateTo));
        element.insert(QStringLiteral("balanceDate"), dateToSetting(m_criteria.balanceDate));
        element.insert(QStringLiteral("invoiceNumber1"), m_criteria.numberFrom);
        element.insert(QStringLiteral("invoiceNumber2"), m_criteria.numberTo);
        element.insert(QStringLiteral("customerId"), m_criteria.customerId);
        element.insert(QStringLiteral("text"), m_criteria.text);
        element.insert(QStringLiteral("type"), m_criteria.types);
        element.insert(QStringLiteral("balance"), m_criteria.paymentStatus);
    }

    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("search"));
    QList<QMap<QString, QVariant>> elements;
    const int size = settings->beginReadArray(QStringLiteral("databases"));
    bool replaced = false;
    for (int i = 0; i < size; ++i) {
        settings->setArrayIndex(i);
        if (intFromSetting(settings->value(QStringLiteral("number"))) == number) {
            if (!replaced)
                elements.append(element);
            replaced = true;
            continue;
        }
        QMap<QString, QVariant> other;
        const QStringList keys = settings->childKeys();
        for (const QString& key : keys)
            other.insert(key, settings->value(key));
        elements.append(other);
    }
    settings->endArray();
    if (!replaced)
        elements.append(element);

    // Rewritten whole, so that no key of an earlier kind of search stays.
    settings->remove(QStringLiteral("databases"));
    settings->beginWriteArray(QStringLiteral("databases"), elements.size());
    for (int i = 0; i < elements.size(); ++i) {
        settings->setArrayIndex(i);
        const QMap<QString, QVariant>& values = elements.at(i);
        for (auto it = values.cbegin(); it != values.cend(); ++it)
            settings->setValue(it.key(), it.value());
    }
    settings->endArray();
    settings->endGroup();
}

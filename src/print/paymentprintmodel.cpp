#include "paymentprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/settings.h"
#include "listreportformat.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <memory>

namespace {

QVariant money(long long cents)
{
    return Decimal(cents, 2).toVariant();
}

const char* const columnNames[] = { "number", "date", "dueDate", "deliveryDate", "customerNumber",
    "customerName", "totalAmount", "paymentAmount", "paymentDate", "bankAccount" };

} // namespace

PaymentPrintModel::PaymentPrintModel(Registry* registry, QObject* parent)
    : PrintModel(parent), m_registry(registry), m_columnFlags(allColumns())
{
}

PaymentPrintModel::~PaymentPrintModel() = default;

QString PaymentPrintModel::title() const
{
    return tr("Suorituspäiväkirja");
}

QString PaymentPrintModel::columnName(int column)
{
    if (column < 0 || column >= ColumnCount)
        return QString();
    return QLatin1String(columnNames[column]);
}

QString PaymentPrintModel::columnHeading(int column)
{
    switch (column) {
    case NumberColumn:
        return tr("Laskun numero");
    case DateColumn:
        return tr("Päivämäärä");
    case DueDateColumn:
        return tr("Eräpäivä");
    case DeliveryDateColumn:
        return tr("Toimituspäivä");
    case CustomerNumberColumn:
        return tr("Asiakasnumero");
    case CustomerNameColumn:
        return tr("Asiakkaan nimi");
    case TotalAmountColumn:
        return tr("Loppusumma");
    case PaymentAmountColumn:
        return tr("Suoritus");
    case PaymentDateColumn:
        return tr("Maksupäivä");
    case BankAccountColumn:
        return tr("Pankkitili");
    default:
        return QString();
    }
}

void PaymentPrintModel::setExtraFields(const QStringList& fields)
{
    m_extraFields = fields;
    m_extraFieldsSet = true;
}

bool PaymentPrintModel::run()
{
    m_rows.clear();
    m_totalAmount = 0;
    m_totalPaymentAmount = 0;
    m_lastError.clear();
    Database* database = m_registry ? m_registry->database() : nullptr;
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchInvoicesAndPayments(m_criteria, m_invoiceCriteria)) {
        m_lastError = query->lastError();
        return false;
    }
    QSet<int> invoiceIds;
    while (query->next()) {
        Row row;
        query->invoiceAndPayment(&row.invoice, &row.payment);
        m_totalPaymentAmount += row.payment.amount;
        if (!invoiceIds.contains(row.invoice.id)) {
            invoiceIds.insert(row.invoice.id);
            m_totalAmount += row.invoice.totalAmount;
        }
        m_rows.append(row);
    }
    if (!m_rows.isEmpty()) {
        // The joined statement leaves out the type and the reference number.
        if (!query->fetchInvoiceSummaries(m_invoiceCriteria)) {
            m_lastError = query->lastError();
            m_rows.clear();
            return false;
        }
        QHash<int, Invoice> summaries;
        while (query->next()) {
            Invoice invoice;
            query->invoiceSummary(&invoice);
            if (invoiceIds.contains(invoice.id))
                summaries.insert(invoice.id, invoice);
        }
        for (Row& row : m_rows) {
            const auto found = summaries.constFind(row.invoice.id);
            if (found != summaries.constEnd()) {
                row.invoice.type = found->type;
                row.invoice.referenceNumber = found->referenceNumber;
            }
        }
    }
    QString accountName;
    if (m_criteria.bankAccountId >= 0) {
        bool found = false;
        const BankAccount* account = m_registry->bankAccountById(m_criteria.bankAccountId, found);
        if (found)
            accountName = account->name;
    }
    m_criteriaTexts = buildCriteriaTexts(m_criteria, accountName);
    sort(m_sortColumn);
    return true;
}

QStringList PaymentPrintModel::buildCriteriaTexts(
    const PaymentCriteria& criteria, const QString& bankAccountName)
{
    QStringList texts;
    if (criteria.dateFrom.isValid() || criteria.dateTo.isValid())
        texts.append(tr("Maksusuoritukset ajalta %1 - %2")
                         .arg(ListReportFormat::date(criteria.dateFrom),
                             ListReportFormat::date(criteria.dateTo))
                         .trimmed());
    else
        texts.append(tr("Maksusuoritukset"));
    if (!bankAccountName.isEmpty())
        texts.append(tr("Pankkitili %1").arg(bankAccountName));
    return texts;
}

const Customer* PaymentPrintModel::customerOf(const Invoice& invoice) const
{
    if (!m_registry)
        return nullptr;
    bool found = false;
    const Customer* customer = m_registry->customerById(invoice.customerId, found);
    return found ? customer : nullptr;
}

const BankAccount* PaymentPrintModel::bankAccountOf(const Payment& payment) const
{
    if (!m_registry || payment.bankAccountId < 0)
        return nullptr;
    bool found = false;
    const BankAccount* account = m_registry->bankAccountById(payment.bankAccountId, found);
    return found ? account : nullptr;
}

QString PaymentPrintModel::bankAccountName(const Payment& payment) const
{
    const BankAccount* account = bankAccountOf(payment);
    if (!account)
        return QString();
    return account->shortName.isEmpty() ? account->name : account->shortName;
}

void PaymentPrintModel::sort(int column)
{
    if (column < 0 || column >= ColumnCount)
        column = PaymentDateColumn;
    m_sortColumn = column;
    const QCollator collator = ListReportFormat::collator();
    auto dates = [](const QDate& p, const QDate& q) {
        if (p.isValid() != q.isValid())
            return p.isValid() ? -1 : 1;
        return p < q ? -1 : (q < p ? 1 : 0);
    };
    auto numbers = [](long long p, long long q) { return p < q ? -1 : (q < p ? 1 : 0); };
    auto compare = [&](const Row& a, const Row& b) -> int {
        switch (column) {
        case NumberColumn:
            return numbers(a.invoice.number, b.invoice.number);
        case DateColumn:
            return dates(a.invoice.date, b.invoice.date);
        case DueDateColumn:
            return dates(a.invoice.dueDate, b.invoice.dueDate);
        case DeliveryDateColumn:
            return dates(a.invoice.deliveryDate, b.invoice.deliveryDate);
        case CustomerNumberColumn: {
            const Customer* p = customerOf(a.invoice);
            const Customer* q = customerOf(b.invoice);
            return numbers(p ? p->number : -1, q ? q->number : -1);
        }
        case CustomerNameColumn: {
            const Customer* p = customerOf(a.invoice);
            const Customer* q = customerOf(b.invoice);
            return collator.compare(p ? p->name : QString(), q ? q->name : QString());
        }
        case TotalAmountColumn:
            return numbers(a.invoice.totalAmount, b.invoice.totalAmount);
        case PaymentAmountColumn:
            return numbers(a.payment.amount, b.payment.amount);
        case PaymentDateColumn:
            return dates(a.payment.date, b.payment.date);
        case BankAccountColumn:
            return collator.compare(bankAccountName(a.payment), bankAccountName(b.payment));
        default:
            return 0;
        }
    };
    std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
        int result = compare(a, b);
        if (result == 0)
            result = dates(a.payment.date, b.payment.date);
        if (result == 0)
            result = numbers(a.invoice.number, b.invoice.number);
        return result < 0;
    });
}

QVariant PaymentPrintModel::value(QStringList& path)
{
    if (path.isEmpty())
        return QVariant();
    const QString& root = path.at(0);
    if (path.size() == 1) {
        if (root == QLatin1String("totalAmount"))
            return money(m_totalAmount);
        if (root == QLatin1String("totalPaymentAmount"))
            return money(m_totalPaymentAmount);
        if (root == QLatin1String("name")) {
            const Settings* settings = m_registry ? m_registry->settings() : nullptr;
            return settings ? settings->sellerName : QString();
        }
        return QVariant();
    }
    if (root == QLatin1String("payments")) {
        if (path.size() == 2 && path.at(1) == QLatin1String("length"))
            return int(m_rows.size());
        bool ok = false;
        const int index = path.at(1).toInt(&ok);
        if (!ok || index < 0 || index >= m_rows.size() || path.size() < 3)
            return QVariant();
        return rowValue(m_rows.at(index), path);
    }
    if (root == QLatin1String("criteria") && path.size() == 2) {
        if (path.at(1) == QLatin1String("length"))
            return int(m_criteriaTexts.size());
        bool ok = false;
        const int index = path.at(1).toInt(&ok);
        return ok && index >= 0 && index < m_criteriaTexts.size()
            ? QVariant(m_criteriaTexts.at(index))
            : QVariant();
    }
    if (root == QLatin1String("columns") && path.size() == 2) {
        for (int column = 0; column < ColumnCount; ++column) {
            if (path.at(1) == QLatin1String(columnNames[column]))
                return (m_columnFlags & (1 << column)) != 0;
        }
    }
    return QVariant();
}

QVariant PaymentPrintModel::rowValue(const Row& row, const QStringList& path) const
{
    const QString& key = path.at(2);
    if (path.size() == 3) {
        if (key == QLatin1String("date"))
            return row.payment.date;
        if (key == QLatin1String("amount"))
            return money(row.payment.amount);
        return QVariant();
    }
    if (path.size() != 4)
        return QVariant();
    const QString& field = path.at(3);
    const Invoice& invoice = row.invoice;
    if (key == QLatin1String("invoice")) {
        if (field == QLatin1String("type"))
            return invoice.type;
        if (field == QLatin1String("number"))
            return invoice.number;
        if (field == QLatin1String("date"))
            return invoice.date;
        if (field == QLatin1String("dueDate"))
            return invoice.dueDate;
        if (field == QLatin1String("hasDeliveryDate"))
            return invoice.deliveryDate.isValid();
        if (field == QLatin1String("deliveryDate"))
            return invoice.deliveryDate;
        if (field == QLatin1String("totalAmount"))
            return money(invoice.totalAmount);
        if (field == QLatin1String("balance"))
            return money(invoice.balance);
        return QVariant();
    }
    if (key == QLatin1String("customer")) {
        const Customer* customer = customerOf(invoice);
        Customer none;
        if (!customer)
            customer = &none;
        if (field == QLatin1String("number"))
            return customer->number;
        if (field == QLatin1String("name"))
            return customer->name;
        if (field == QLatin1String("streetName"))
            return customer->streetName;
        if (field == QLatin1String("postCode"))
            return customer->postCode;
        if (field == QLatin1String("townName"))
            return customer->townName;
        if (field == QLatin1String("country"))
            return customer->country;
        return QVariant();
    }
    if (key == QLatin1String("bankAccount")) {
        const BankAccount* account = bankAccountOf(row.payment);
        BankAccount none;
        if (!account)
            account = &none;
        if (field == QLatin1String("name"))
            return account->name;
        if (field == QLatin1String("iban"))
            return BankAccount::formatIban(account->iban);
        if (field == QLatin1String("bban"))
            return account->iban.isEmpty()
                ? QString()
                : BankAccount::formatBban(BankAccount::ibanToBban(account->iban));
        if (field == QLatin1String("bic"))
            return account->bic;
        if (field == QLatin1String("shortName"))
            return bankAccountName(row.payment);
        return QVariant();
    }
    return QVariant();
}

bool PaymentPrintModel::exportToCSV(const QString& fileName, const QString& format)
{
    // The delivery date is not part of the journal's CSV.
    static const int csvColumns[]
        = { NumberColumn, DateColumn, DueDateColumn, CustomerNumberColumn, CustomerNameColumn,
              TotalAmountColumn, PaymentAmountColumn, PaymentDateColumn, BankAccountColumn };
    static const char* const headings[] = { "Numero", "Päivämäärä", "Eräpäivä", "Asiakasnumero",
        "Nimi", "Yhteensä", "Suoritus", "Maksupäivä", "Pankkitili" };
    static const char* const extraWords[][2]
        = { { "lähiosoite", "Lähiosoite" }, { "postinumero", "Postinumero" },
              { "postitoimipaikka", "Postitoimipaikka" }, { "maa", "Maa" },
              { "yhteyshenkilö", "Yhteyshenkilö" }, { "puhelinnumero", "Puhelinnumero" },
              { "sähköpostiosoite", "Sähköpostiosoite" }, { "iban", "IBAN" },
              { "pankki", "Pankki" }, { "bic", "BIC" }, { "tilinumero", "Tilinumero" } };

    const QStringList words = m_extraFieldsSet
        ? m_extraFields
        : ListReportFormat::extraFields(
            m_registry ? m_registry->appSettings() : nullptr, QStringLiteral("paymentPrint"));
    QList<int> extras;
    for (const QString& word : words) {
        for (int i = 0; i < int(std::size(extraWords)); ++i) {
            if (word == QString::fromUtf8(extraWords[i][0]) && !extras.contains(i))
                extras.append(i);
        }
    }

    CsvWriter csv(format);
    for (int i = 0; i < int(std::size(csvColumns)); ++i) {
        if (m_columnFlags & (1 << csvColumns[i]))
            csv.addText(tr(headings[i]));
    }
    for (int extra : std::as_const(extras))
        csv.addText(tr(extraWords[extra][1]));
    csv.endRow();

    for (const Row& row : std::as_const(m_rows)) {
        const Customer* customer = customerOf(row.invoice);
        const BankAccount* account = bankAccountOf(row.payment);
        for (int column : csvColumns) {
            if (!(m_columnFlags & (1 << column)))
                continue;
            switch (column) {
            case NumberColumn:
                csv.addNumber(QString::number(row.invoice.number));
                break;
            case DateColumn:
                csv.addText(ListReportFormat::date(row.invoice.date));
                break;
            case DueDateColumn:
                csv.addText(ListReportFormat::date(row.invoice.dueDate));
                break;
            case CustomerNumberColumn:
                csv.addNumber(customer ? QString::number(customer->number) : QString());
                break;
            case CustomerNameColumn:
                csv.addText(customer ? customer->name : QString());
                break;
            case TotalAmountColumn:
                csv.addNumber(ListReportFormat::cents(row.invoice.totalAmount));
                break;
            case PaymentAmountColumn:
                csv.addNumber(ListReportFormat::cents(row.payment.amount));
                break;
            case PaymentDateColumn:
                csv.addText(ListReportFormat::date(row.payment.date));
                break;
            case BankAccountColumn:
                csv.addText(bankAccountName(row.payment));
                break;
            }
        }
        for (int extra : std::as_const(extras)) {
            const QString word = QString::fromUtf8(extraWords[extra][0]);
            QString text;
            if (customer && word == QLatin1String("lähiosoite"))
                text = customer->streetName;
            else if (customer && word == QLatin1String("postinumero"))
                text = customer->postCode;
            else if (customer && word == QLatin1String("postitoimipaikka"))
                text = customer->townName;
            else if (customer && word == QLatin1String("maa"))
                text = customer->country;
            else if (customer && word == QLatin1String("yhteyshenkilö"))
                text = customer->contact;
            else if (customer && word == QLatin1String("puhelinnumero"))
                text = customer->phoneNumber;
            else if (customer && word == QLatin1String("sähköpostiosoite"))
                text = customer->emailAddress;
            else if (account && word == QLatin1String("iban"))
                text = BankAccount::formatIban(account->iban);
            else if (account && word == QLatin1String("pankki"))
                text = account->name;
            else if (account && word == QLatin1String("bic"))
                text = account->bic;
            else if (account && word == QLatin1String("tilinumero"))
                text = BankAccount::formatBban(BankAccount::ibanToBban(account->iban));
            csv.addText(text);
        }
        csv.endRow();
    }
    return ListReportFormat::save(csv, fileName, &m_lastError);
}

#include "paymentprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/customer.h"
#include "listreportformat.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <memory>

PaymentPrintModel::PaymentPrintModel(Registry* registry, QObject* parent)
    : ListPrintModel(registry, QStringLiteral("payments"),
        { QStringLiteral("number"), QStringLiteral("date"), QStringLiteral("dueDate"),
            QStringLiteral("deliveryDate"), QStringLiteral("customerNumber"),
            QStringLiteral("customerName"), QStringLiteral("totalAmount"),
            QStringLiteral("paymentAmount"), QStringLiteral("paymentDate"),
            QStringLiteral("bankAccount") },
        QStringLiteral("paymentPrint"), PaymentDateColumn, parent)
{
}

PaymentPrintModel::~PaymentPrintModel() = default;

QString PaymentPrintModel::title() const
{
    return tr("Suorituspäiväkirja");
}

QStringList PaymentPrintModel::columnHeadings() const
{
    return { tr("Laskun numero"), tr("Päivämäärä"), tr("Eräpäivä"), tr("Toimituspäivä"),
        tr("Asiakasnumero"), tr("Asiakkaan nimi"), tr("Loppusumma"), tr("Suoritus"),
        tr("Maksupäivä"), tr("Pankkitili") };
}

bool PaymentPrintModel::run()
{
    m_rows.clear();
    m_totalAmount = 0;
    m_totalPaymentAmount = 0;
    Database* database = this->database();
    if (!database)
        return false;
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
    auto compareRows = [&](const Row& a, const Row& b) -> int {
        switch (column) {
        case NumberColumn:
            return compare(a.invoice.number, b.invoice.number);
        case DateColumn:
            return compare(a.invoice.date, b.invoice.date);
        case DueDateColumn:
            return compare(a.invoice.dueDate, b.invoice.dueDate);
        case DeliveryDateColumn:
            return compare(a.invoice.deliveryDate, b.invoice.deliveryDate);
        case CustomerNumberColumn:
        case CustomerNameColumn:
            return compareCustomers(
                a.invoice.customerId, b.invoice.customerId, column == CustomerNameColumn, collator);
        case TotalAmountColumn:
            return compare(a.invoice.totalAmount, b.invoice.totalAmount);
        case PaymentAmountColumn:
            return compare(a.payment.amount, b.payment.amount);
        case PaymentDateColumn:
            return compare(a.payment.date, b.payment.date);
        case BankAccountColumn:
            return collator.compare(bankAccountName(a.payment), bankAccountName(b.payment));
        default:
            return 0;
        }
    };
    std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
        int result = compareRows(a, b);
        if (result == 0)
            result = compare(a.payment.date, b.payment.date);
        if (result == 0)
            result = compare(a.invoice.number, b.invoice.number);
        return result < 0;
    });
}

QVariant PaymentPrintModel::totalValue(const QString& key) const
{
    if (key == QLatin1String("totalAmount"))
        return money(m_totalAmount);
    if (key == QLatin1String("totalPaymentAmount"))
        return money(m_totalPaymentAmount);
    return QVariant();
}

QVariant PaymentPrintModel::rowValue(int index, const QStringList& path) const
{
    const Row& row = m_rows.at(index);
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
        if (field == QLatin1String("totalAmount"))
            return money(invoice.totalAmount);
        return invoiceValue(invoice, field);
    }
    if (key == QLatin1String("customer")) {
        const Customer* customer = customerOf(invoice.customerId);
        return addressValue(customer ? *customer : Customer(), field);
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
    static const char* const bankWords[][2] = { { "iban", "IBAN" }, { "pankki", "Pankki" },
        { "bic", "BIC" }, { "tilinumero", "Tilinumero" } };
    auto extraHeading = [](const QString& word) {
        for (const auto& pair : bankWords) {
            if (word == QLatin1String(pair[0]))
                return tr(pair[1]);
        }
        return customerFieldHeading(word);
    };
    QStringList extras;
    const QStringList words = extraFields();
    for (const QString& word : words) {
        if (!extraHeading(word).isEmpty() && !extras.contains(word))
            extras.append(word);
    }

    CsvWriter csv(format);
    for (int i = 0; i < int(std::size(csvColumns)); ++i) {
        if (isColumnVisible(csvColumns[i]))
            csv.addText(tr(headings[i]));
    }
    for (const QString& word : std::as_const(extras))
        csv.addText(extraHeading(word));
    csv.endRow();

    for (const Row& row : std::as_const(m_rows)) {
        const Customer* customer = customerOf(row.invoice.customerId);
        const BankAccount* account = bankAccountOf(row.payment);
        for (int column : csvColumns) {
            if (!isColumnVisible(column))
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
        for (const QString& word : std::as_const(extras)) {
            QString text = customerField(customer, word);
            if (account && word == QLatin1String("iban"))
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

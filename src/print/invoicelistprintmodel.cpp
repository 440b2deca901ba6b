#include "invoicelistprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/invoiceitem.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "listreportformat.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QHash>
#include <algorithm>
#include <memory>

namespace {

// Totals of one listed invoice: from its priced rows, or the stored total
// when it has none.
long long rowTotal(const Invoice& invoice, const Vat& vat)
{
    return vat.size() > 0 ? vat.totalAmountVatIncluded() : invoice.totalAmount;
}

long long rowTotalVatExcluded(const Invoice& invoice, const Vat& vat)
{
    return vat.size() > 0 ? vat.totalAmountVatExcluded() : invoice.totalAmount;
}

} // namespace

InvoiceListPrintModel::InvoiceListPrintModel(Registry* registry, QObject* parent)
    : ListPrintModel(registry, QStringLiteral("invoices"),
        { QStringLiteral("number"), QStringLiteral("date"), QStringLiteral("dueDate"),
            QStringLiteral("deliveryDate"), QStringLiteral("customerNumber"),
            QStringLiteral("customerName"), QStringLiteral("totalAmountVatExcluded"),
            QStringLiteral("totalVatAmount"), QStringLiteral("totalAmountVatIncluded"),
            QStringLiteral("balance"), QStringLiteral("referenceNumber") },
        QStringLiteral("invoiceListPrint"), NumberColumn, parent)
{
}

InvoiceListPrintModel::~InvoiceListPrintModel() = default;

QString InvoiceListPrintModel::title() const
{
    return tr("Laskuluettelo");
}

QStringList InvoiceListPrintModel::columnHeadings() const
{
    return { tr("Laskun numero"), tr("Päivämäärä"), tr("Eräpäivä"), tr("Toimituspäivä"),
        tr("Asiakasnumero"), tr("Asiakkaan nimi"), tr("Veroton"), tr("ALV"), tr("Verollinen"),
        tr("Avoin saldo"), tr("Viitenumero") };
}

void InvoiceListPrintModel::clear()
{
    m_rows.clear();
    m_vat.clear();
    m_totalBalance = 0;
    m_criteriaTexts.clear();
}

bool InvoiceListPrintModel::run()
{
    clear();
    Database* database = this->database();
    if (!database)
        return false;
    int roundingMode = 1;
    if (const Settings* settings = m_registry->settings()) {
        bool ok = false;
        const int mode = settings->property(SettingsKeys::roundingMode).toInt(&ok);
        if (ok)
            roundingMode = mode;
    }
    m_vat.setRoundingMode(roundingMode);

    std::unique_ptr<Query> query(database->query());
    // At a balance date the open balance is read from the payments up to
    // that date, and the paid/open choice is made here on that balance.
    const bool atDate = m_criteria.balanceDate.isValid();
    query->setInvoiceBalanceMode(atDate);
    if (!query->fetchInvoiceSummaries(m_criteria)) {
        m_lastError = query->lastError();
        return false;
    }
    QHash<int, int> rowOfInvoice;
    while (query->next()) {
        Row row;
        query->invoiceSummary(&row.invoice);
        if (atDate && m_criteria.paymentStatus == 0 && row.invoice.balance != 0)
            continue;
        if (atDate && m_criteria.paymentStatus == 1 && row.invoice.balance == 0)
            continue;
        row.vat.setRoundingMode(roundingMode);
        rowOfInvoice.insert(row.invoice.id, m_rows.size());
        m_rows.append(row);
    }
    if (!query->fetchInvoiceItems(m_criteria)) {
        m_lastError = query->lastError();
        clear();
        return false;
    }
    while (query->next()) {
        InvoiceItem item;
        query->invoiceItem(&item);
        const auto found = rowOfInvoice.constFind(item.invoiceId);
        // Description-only rows carry no amount and would add an empty rate.
        if (found != rowOfInvoice.constEnd() && item.quantity != 0)
            m_rows[found.value()].vat.addInvoiceItem(&item);
    }
    for (const Row& row : std::as_const(m_rows)) {
        if (row.vat.size() > 0)
            m_vat.add(&row.vat);
        else if (row.invoice.totalAmount != 0)
            m_vat.addVatIncludedAmount(row.invoice.totalAmount, 0);
        m_totalBalance += row.invoice.balance;
    }

    const Customer* customer
        = m_criteria.customerId >= 0 ? customerOf(m_criteria.customerId) : nullptr;
    m_criteriaTexts = buildCriteriaTexts(m_criteria, customer ? customer->name : QString());
    sort(m_sortColumn);
    return true;
}

QStringList InvoiceListPrintModel::buildCriteriaTexts(
    const InvoiceCriteria& criteria, const QString& customerName)
{
    QStringList texts;
    const bool deliveryNotes = criteria.types == (1 << 5);
    const QString balanceDate = ListReportFormat::date(criteria.balanceDate);
    QString first;
    bool plain = false;
    if (deliveryNotes) {
        first = tr("Lähetteet");
    } else if (criteria.paymentStatus == 1) {
        first = balanceDate.isEmpty() ? tr("Avoimet laskut")
                                      : tr("Avoimet laskut %1").arg(balanceDate);
    } else if (criteria.paymentStatus == 0) {
        first = balanceDate.isEmpty() ? tr("Maksetut laskut")
                                      : tr("Ennen %1 maksetut laskut").arg(balanceDate);
    } else {
        first = tr("Laskut");
        plain = true;
    }
    if (criteria.dateFrom.isValid() || criteria.dateTo.isValid()) {
        const QString from = ListReportFormat::date(criteria.dateFrom);
        const QString to = ListReportFormat::date(criteria.dateTo);
        if (plain)
            first = tr("Laskut %1 - %2").arg(from, to).trimmed();
        else if (deliveryNotes)
            first += QLatin1Char(' ') + tr("ajalta %1 - %2").arg(from, to).trimmed();
        else
            first += QLatin1Char(' ') + tr("väliltä %1 - %2").arg(from, to).trimmed();
    }
    texts.append(first);
    if (criteria.dueDateFrom.isValid() || criteria.dueDateTo.isValid())
        texts.append(tr("Eräpäivät %1")
                         .arg(ListReportFormat::range(criteria.dueDateFrom, criteria.dueDateTo)));
    if (criteria.deliveryDateFrom.isValid() || criteria.deliveryDateTo.isValid())
        texts.append(tr("Toimitukset ajalta %1 - %2")
                         .arg(ListReportFormat::date(criteria.deliveryDateFrom),
                             ListReportFormat::date(criteria.deliveryDateTo))
                         .trimmed());
    if (criteria.numberFrom >= 0 || criteria.numberTo >= 0) {
        const QString from
            = criteria.numberFrom >= 0 ? QString::number(criteria.numberFrom) : QString();
        const QString to = criteria.numberTo >= 0 ? QString::number(criteria.numberTo) : QString();
        texts.append(tr("Laskunumerot %1 - %2").arg(from, to).trimmed());
    }
    if (criteria.number >= 0)
        texts.append(tr("Laskunumero %1").arg(criteria.number));
    if (!customerName.isEmpty())
        texts.append(tr("Asiakas %1").arg(customerName));
    if (!criteria.referenceNumber.isEmpty())
        texts.append(
            tr("Viitenumero %1").arg(Invoice::formatReferenceNumber(criteria.referenceNumber)));
    if (!criteria.text.isEmpty())
        texts.append(tr("Hakusanalla ") + criteria.text);
    return texts;
}

void InvoiceListPrintModel::sort(int column)
{
    if (column < 0 || column >= ColumnCount)
        column = NumberColumn;
    m_sortColumn = column;
    const QCollator collator = ListReportFormat::collator();
    auto compareRows = [&](const Row& a, const Row& b) -> int {
        const Invoice& x = a.invoice;
        const Invoice& y = b.invoice;
        switch (column) {
        case DateColumn:
            return compare(x.date, y.date);
        case DueDateColumn:
            return compare(x.dueDate, y.dueDate);
        case DeliveryDateColumn:
            return compare(x.deliveryDate, y.deliveryDate);
        case CustomerNumberColumn:
        case CustomerNameColumn:
            return compareCustomers(
                x.customerId, y.customerId, column == CustomerNameColumn, collator);
        case TotalAmountVatExcludedColumn:
            return compare(rowTotalVatExcluded(x, a.vat), rowTotalVatExcluded(y, b.vat));
        case TotalVatAmountColumn:
            return compare(rowTotal(x, a.vat) - rowTotalVatExcluded(x, a.vat),
                rowTotal(y, b.vat) - rowTotalVatExcluded(y, b.vat));
        case TotalAmountVatIncludedColumn:
            return compare(rowTotal(x, a.vat), rowTotal(y, b.vat));
        case BalanceColumn:
            return compare(x.balance, y.balance);
        case ReferenceNumberColumn:
            return collator.compare(x.referenceNumber, y.referenceNumber);
        default:
            return 0;
        }
    };
    std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
        const int result = compareRows(a, b);
        if (result != 0)
            return result < 0;
        return a.invoice.number < b.invoice.number;
    });
}

QVariant InvoiceListPrintModel::value(QStringList& path)
{
    if (!path.isEmpty() && path.at(0) == QLatin1String("vat"))
        return vatValue(path);
    return ListPrintModel::value(path);
}

QVariant InvoiceListPrintModel::totalValue(const QString& key) const
{
    if (key == QLatin1String("totalAmountVatExcluded"))
        return money(m_vat.totalAmountVatExcluded());
    if (key == QLatin1String("totalVatAmount"))
        return money(m_vat.totalVatAmount());
    if (key == QLatin1String("totalAmount"))
        return money(m_vat.totalAmountVatIncluded());
    if (key == QLatin1String("totalBalance"))
        return money(m_totalBalance);
    return QVariant();
}

QVariant InvoiceListPrintModel::rowValue(int index, const QStringList& path) const
{
    const Row& row = m_rows.at(index);
    const Invoice& invoice = row.invoice;
    const QString& key = path.at(2);
    if (key == QLatin1String("customer")) {
        if (path.size() != 4)
            return QVariant();
        const Customer* customer = customerOf(invoice.customerId);
        return addressValue(customer ? *customer : Customer(), path.at(3));
    }
    if (path.size() != 3)
        return QVariant();
    if (key == QLatin1String("totalAmount"))
        return money(rowTotal(invoice, row.vat));
    if (key == QLatin1String("totalAmountVatExcluded"))
        return money(rowTotalVatExcluded(invoice, row.vat));
    if (key == QLatin1String("totalVatAmount"))
        return money(rowTotal(invoice, row.vat) - rowTotalVatExcluded(invoice, row.vat));
    if (key == QLatin1String("referenceNumber"))
        return Invoice::formatReferenceNumber(invoice.referenceNumber);
    if (key == QLatin1String("referenceNumberRaw"))
        return invoice.referenceNumber;
    if (key == QLatin1String("referenceNumberSpy"))
        return Invoice::formatSpyReferenceNumber(invoice.referenceNumber);
    return invoiceValue(invoice, key);
}

QVariant InvoiceListPrintModel::vatValue(const QStringList& path) const
{
    const QList<int> rates = m_vat.vatRates();
    if (path.size() == 2 && path.at(1) == QLatin1String("length"))
        return int(rates.size());
    if (path.size() != 3)
        return QVariant();
    bool ok = false;
    const int index = path.at(1).toInt(&ok);
    if (!ok || index < 0 || index >= rates.size())
        return QVariant();
    const int rate = rates.at(index);
    const QString& key = path.at(2);
    if (key == QLatin1String("percent"))
        return Decimal(rate, 2).toVariant();
    if (key == QLatin1String("amountVatExcluded"))
        return money(m_vat.totalAmountVatExcluded(rate));
    if (key == QLatin1String("vatAmount"))
        return money(m_vat.totalVatAmount(rate));
    if (key == QLatin1String("amount"))
        return money(m_vat.totalAmountVatIncluded(rate));
    return QVariant();
}

bool InvoiceListPrintModel::exportToCSV(const QString& fileName, const QString& format)
{
    static const char* const headings[] = { "Numero", "Päivämäärä", "Eräpäivä", "Toimituspäivä",
        "Asiakasnumero", "Nimi", "Veroton", "ALV", "Verollinen", "Avoin saldo", "Viitenumero" };
    QStringList extraCustomer;
    bool vatColumns = false;
    const QStringList words = extraFields();
    for (const QString& word : words) {
        if (word == QLatin1String("alv-erittely"))
            vatColumns = true;
        else if (!customerFieldHeading(word).isEmpty() && !extraCustomer.contains(word))
            extraCustomer.append(word);
    }

    CsvWriter csv(format);
    for (int column = 0; column < ColumnCount; ++column) {
        if (isColumnVisible(column))
            csv.addText(tr(headings[column]));
    }
    for (const QString& word : std::as_const(extraCustomer))
        csv.addText(customerFieldHeading(word));
    const QList<int> rates = m_vat.vatRates();
    if (vatColumns) {
        for (int rate : rates) {
            const QString percent = ListReportFormat::number(rate, 2, 0);
            csv.addText(tr("Veroton (%1 %)").arg(percent));
            csv.addText(tr("ALV (%1 %)").arg(percent));
            csv.addText(tr("Verollinen (%1 %)").arg(percent));
        }
    }
    csv.endRow();

    for (const Row& row : std::as_const(m_rows)) {
        const Invoice& invoice = row.invoice;
        const Customer* customer = customerOf(invoice.customerId);
        const long long total = rowTotal(invoice, row.vat);
        const long long vatExcluded = rowTotalVatExcluded(invoice, row.vat);
        for (int column = 0; column < ColumnCount; ++column) {
            if (!isColumnVisible(column))
                continue;
            switch (column) {
            case NumberColumn:
                csv.addNumber(QString::number(invoice.number));
                break;
            case DateColumn:
                csv.addText(ListReportFormat::date(invoice.date));
                break;
            case DueDateColumn:
                csv.addText(ListReportFormat::date(invoice.dueDate));
                break;
            case DeliveryDateColumn:
                csv.addText(ListReportFormat::date(invoice.deliveryDate));
                break;
            case CustomerNumberColumn:
                csv.addNumber(customer ? QString::number(customer->number) : QString());
                break;
            case CustomerNameColumn:
                csv.addText(customer ? customer->name : QString());
                break;
            case TotalAmountVatExcludedColumn:
                csv.addNumber(ListReportFormat::cents(vatExcluded));
                break;
            case TotalVatAmountColumn:
                csv.addNumber(ListReportFormat::cents(total - vatExcluded));
                break;
            case TotalAmountVatIncludedColumn:
                csv.addNumber(ListReportFormat::cents(total));
                break;
            case BalanceColumn:
                csv.addNumber(ListReportFormat::cents(invoice.balance));
                break;
            case ReferenceNumberColumn:
                csv.addText(Invoice::formatReferenceNumber(invoice.referenceNumber));
                break;
            }
        }
        for (const QString& word : std::as_const(extraCustomer))
            csv.addText(customerField(customer, word));
        if (vatColumns) {
            for (int rate : rates) {
                const bool has = row.vat.vatRates().contains(rate);
                csv.addNumber(has ? ListReportFormat::cents(row.vat.totalAmountVatExcluded(rate))
                                  : QString());
                csv.addNumber(
                    has ? ListReportFormat::cents(row.vat.totalVatAmount(rate)) : QString());
                csv.addNumber(has ? ListReportFormat::cents(row.vat.totalAmountVatIncluded(rate))
                                  : QString());
            }
        }
        csv.endRow();
    }
    return ListReportFormat::save(csv, fileName, &m_lastError);
}

#include "query.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "domain/logging.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "sqlstatement.h"

#include <QSqlError>
#include <QStringList>

namespace {

// Qt's drivers bind a null QString as SQL NULL, and the text columns are
// NOT NULL: an empty text goes in as a non-null empty string.
QVariant textValue(const QString& text)
{
    if (text.isNull())
        return QVariant(QString(QLatin1String("")));
    return QVariant(text);
}

QVariant dateValue(const QDate& date)
{
    if (date.isValid())
        return QVariant(date);
    return QVariant(QMetaType::fromType<QDate>());
}

QVariant foreignKeyValue(int id)
{
    if (id < 0)
        return QVariant(QMetaType::fromType<int>());
    return QVariant(id);
}

QDate toDate(const QVariant& value)
{
    if (value.isNull())
        return QDate();
    // SQLite hands dates back as "yyyy-MM-dd" text, PostgreSQL as QDate.
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    return QDate::fromString(value.toString(), Qt::ISODate);
}

int toForeignKey(const QVariant& value)
{
    return value.isNull() ? -1 : value.toInt();
}

// The order of the invoice queries, newest first when asked, and their limit.
void appendInvoiceOrder(QString& sql, const QString& numberColumn, const InvoiceCriteria& criteria)
{
    sql += QStringLiteral(" ORDER BY ") + numberColumn;
    if (criteria.descending)
        sql += QStringLiteral(" DESC");
    if (criteria.limit > 0)
        sql += QStringLiteral(" LIMIT %1").arg(criteria.limit);
}

// The LIKE pattern of a search text. The user's * and ? are the wildcards %
// and _, and a typed % or _ is one too. A backslash before any of these or
// before another backslash makes that character literal; anywhere else, and
// at the end, it is a backslash itself. The pattern escapes with a backslash
// only before %, _ and \, which both back-ends read alike.
QString likePattern(const QString& text)
{
    const QString special = QStringLiteral("*?%_\\");
    const QChar backslash = QLatin1Char('\\');
    QString pattern;
    for (qsizetype i = 0; i < text.size(); ++i) {
        QChar c = text.at(i);
        const bool escaped
            = c == backslash && i + 1 < text.size() && special.contains(text.at(i + 1));
        if (escaped)
            c = text.at(++i);
        const bool literal = escaped || c == backslash;
        if (literal && (c == QLatin1Char('%') || c == QLatin1Char('_') || c == backslash))
            pattern += backslash;
        if (!literal && c == QLatin1Char('*'))
            c = QLatin1Char('%');
        else if (!literal && c == QLatin1Char('?'))
            c = QLatin1Char('_');
        pattern += c;
    }
    return pattern;
}

bool appendConditions(QString& where, const QString& keyword, const QStringList& conditions)
{
    if (conditions.isEmpty())
        return false;
    where += keyword + conditions.join(QLatin1String(" AND "));
    return true;
}

const QString invoiceDetailsSelect = QStringLiteral(
    "SELECT id, customer_id, type, number, date, payment_terms, delivery, delivery_date, buyer_ref, seller_ref, interest_on_arrears, due_date, reference_number, total_amount, balance, properties FROM invoice");
const QString invoiceSummarySelect = QStringLiteral(
    "SELECT id, customer_id, type, number, date, due_date, delivery_date, reference_number, total_amount, balance FROM invoice");
const QString paymentSelect
    = QStringLiteral("SELECT id, invoice_id, date, bank_account_id, amount FROM payment");

} // namespace

Query::Query(QSqlQuery query, QObject* parent) : QObject(parent), m_query(std::move(query)) { }

Query::~Query() = default;

QString Query::lastError() const
{
    return m_lastError;
}

bool Query::next()
{
    return m_query.next();
}

bool Query::prepareQuery(const QString& sql)
{
    qCDebug(logDatabase).noquote() << "Tietokantakysely:" << sql;
    if (m_query.prepare(sql))
        return true;
    return fail();
}

bool Query::execQuery()
{
    return SqlStatement::execPrepared(m_query, &m_lastError);
}

bool Query::fail()
{
    m_lastError = SqlStatement::errorText(m_query.lastError());
    qCWarning(logDatabase).noquote() << "Tietokantavirhe:" << m_lastError;
    return false;
}

void Query::bindValues(const QVariantList& values)
{
    for (const QVariant& value : values)
        m_query.addBindValue(value);
}

QString Query::patternOperator() const
{
    return QStringLiteral("LIKE");
}

QString Query::escapeClause() const
{
    return QStringLiteral(" ESCAPE '\\'");
}

QString Query::insertStatement(const QString& sql, const QString& table) const
{
    QString statement = sql;
    return statement.replace(QLatin1String("VALUES (NULL,"),
        QLatin1String("VALUES (") + newIdValue(table) + QLatin1Char(','));
}

QString Query::newIdValue(const QString& table) const
{
    Q_UNUSED(table)
    return QStringLiteral("NULL");
}

int Query::insertedId(const QString& table)
{
    Q_UNUSED(table)
    const QVariant id = m_query.lastInsertId();
    return id.isValid() ? id.toInt() : -1;
}

// Readers

bool Query::fetchBankAccounts()
{
    return prepareQuery(QStringLiteral(
               "SELECT id, name, short_name, iban, bic, row_number, visible, deleted FROM bank_account ORDER BY row_number"))
        && execQuery();
}

void Query::bankAccount(BankAccount* account)
{
    account->id = m_query.value(0).toInt();
    account->name = m_query.value(1).toString();
    account->shortName = m_query.value(2).toString();
    account->iban = m_query.value(3).toString();
    account->bic = m_query.value(4).toString();
    account->rowNumber = m_query.value(5).toInt();
    account->visible = m_query.value(6).toBool();
    account->deleted = m_query.value(7).toBool();
}

bool Query::fetchCustomers()
{
    return prepareQuery(QStringLiteral(
               "SELECT id, number, name, street_name, post_code, town_name, country, contact, vat_number, reference_number, email_address, phone_number, payment_terms, properties, deleted FROM customer ORDER BY number"))
        && execQuery();
}

void Query::customer(Customer* customer)
{
    customer->id = m_query.value(0).toInt();
    customer->number = m_query.value(1).toInt();
    customer->name = m_query.value(2).toString();
    customer->streetName = m_query.value(3).toString();
    customer->postCode = m_query.value(4).toString();
    customer->townName = m_query.value(5).toString();
    customer->country = m_query.value(6).toString();
    customer->contact = m_query.value(7).toString();
    customer->vatNumber = m_query.value(8).toString();
    customer->referenceNumber = m_query.value(9).toString();
    customer->emailAddress = m_query.value(10).toString();
    customer->phoneNumber = m_query.value(11).toString();
    customer->paymentTerms = m_query.value(12).toString();
    customer->propertiesFromString(m_query.value(13).toString());
    customer->deleted = m_query.value(14).toBool();
}

bool Query::fetchProducts()
{
    return prepareQuery(QStringLiteral(
               "SELECT id, number, name, unit_code, amount, vat_rate, vat_excluded, category FROM product ORDER BY number"))
        && execQuery();
}

void Query::product(Product* product)
{
    product->id = m_query.value(0).toInt();
    product->number = m_query.value(1).toString();
    product->name = m_query.value(2).toString();
    product->unitCode = m_query.value(3).toString();
    product->amount = m_query.value(4).toLongLong();
    product->vatRate = m_query.value(5).toInt();
    product->vatExcluded = m_query.value(6).toBool();
    product->category = m_query.value(7).toString();
}

bool Query::fetchSettings()
{
    return prepareQuery(QStringLiteral(
               "SELECT seller_name, seller_street_name, seller_post_code, seller_town_name, seller_country, seller_business_id, seller_logo, properties FROM settings LIMIT 1"))
        && execQuery();
}

void Query::settings(Settings* settings)
{
    settings->sellerName = m_query.value(0).toString();
    settings->sellerStreetName = m_query.value(1).toString();
    settings->sellerPostCode = m_query.value(2).toString();
    settings->sellerTownName = m_query.value(3).toString();
    settings->sellerCountry = m_query.value(4).toString();
    settings->sellerBusinessId = m_query.value(5).toString();
    settings->sellerLogo = m_query.value(6).toByteArray();
    settings->propertiesFromString(m_query.value(7).toString());
}

bool Query::fetchPrintScriptSummaries()
{
    return prepareQuery(
               QStringLiteral("SELECT id, type, name FROM print_script ORDER BY type, name"))
        && execQuery();
}

void Query::printScriptSummary(PrintScript* script)
{
    script->id = m_query.value(0).toInt();
    script->type = m_query.value(1).toString();
    script->name = m_query.value(2).toString();
}

bool Query::fetchPrintScriptDetails()
{
    return prepareQuery(QStringLiteral(
               "SELECT id, type, name, source_code FROM print_script ORDER BY type, name"))
        && execQuery();
}

bool Query::fetchPrintScriptDetails(int id)
{
    return runStatement(
        QStringLiteral("SELECT id, type, name, source_code FROM print_script WHERE id = ? LIMIT 1"),
        { id });
}

void Query::printScriptDetails(PrintScript* script)
{
    printScriptSummary(script);
    script->sourceCode = m_query.value(3).toString();
}

bool Query::fetchPrintScript(int id, PrintScript* script)
{
    if (id < 0 || !fetchPrintScriptDetails(id) || !next())
        return false;
    printScriptDetails(script);
    return true;
}

bool Query::fetchInvoiceDetails(int id)
{
    return runStatement(
        QStringLiteral(
            "SELECT id, customer_id, type, number, date, payment_terms, delivery, delivery_date, buyer_ref, seller_ref, interest_on_arrears, due_date, reference_number, total_amount, balance, properties FROM invoice WHERE id = ? LIMIT 1"),
        { id });
}

bool Query::fetchInvoices(const QString& select, const InvoiceCriteria& criteria)
{
    QVariantList values;
    QString sql = select;
    if (m_invoiceBalanceMode && criteria.balanceDate.isValid()) {
        // The balance at a date: the total less the payments made by then.
        sql.replace(QLatin1String("total_amount, balance"),
            QLatin1String(
                "total_amount, total_amount - COALESCE((SELECT sum(p.amount) FROM payment p WHERE p.invoice_id = invoice.id AND p.date <= ?), 0)"));
        values.append(criteria.balanceDate);
    }
    buildInvoiceWhereClause(criteria, sql, values, QString(), QStringLiteral(" WHERE "));
    appendInvoiceOrder(sql, QStringLiteral("number"), criteria);
    return runStatement(sql, values);
}

bool Query::fetchInvoiceDetails(const InvoiceCriteria& criteria)
{
    return fetchInvoices(invoiceDetailsSelect, criteria);
}

void Query::invoiceDetails(Invoice* invoice)
{
    invoice->id = m_query.value(0).toInt();
    invoice->customerId = toForeignKey(m_query.value(1));
    invoice->type = m_query.value(2).toInt();
    invoice->number = m_query.value(3).toInt();
    invoice->date = toDate(m_query.value(4));
    invoice->paymentTerms = m_query.value(5).toString();
    invoice->delivery = m_query.value(6).toString();
    invoice->deliveryDate = toDate(m_query.value(7));
    invoice->buyerRef = m_query.value(8).toString();
    invoice->sellerRef = m_query.value(9).toString();
    invoice->interestOnArrears = m_query.value(10).toInt();
    invoice->dueDate = toDate(m_query.value(11));
    invoice->referenceNumber = m_query.value(12).toString();
    invoice->totalAmount = m_query.value(13).toInt();
    invoice->balance = m_query.value(14).toInt();
    invoice->propertiesFromString(m_query.value(15).toString());
}

bool Query::fetchInvoiceSummaries(const InvoiceCriteria& criteria)
{
    return fetchInvoices(invoiceSummarySelect, criteria);
}

void Query::invoiceSummary(Invoice* invoice)
{
    invoice->id = m_query.value(0).toInt();
    invoice->customerId = toForeignKey(m_query.value(1));
    invoice->type = m_query.value(2).toInt();
    invoice->number = m_query.value(3).toInt();
    invoice->date = toDate(m_query.value(4));
    invoice->dueDate = toDate(m_query.value(5));
    invoice->deliveryDate = toDate(m_query.value(6));
    invoice->referenceNumber = m_query.value(7).toString();
    invoice->totalAmount = m_query.value(8).toInt();
    invoice->balance = m_query.value(9).toInt();
}

bool Query::fetchInvoiceReferences()
{
    return runStatement(
        QStringLiteral("SELECT id, reference_number FROM invoice ORDER BY number"), {});
}

void Query::invoiceReference(int* id, QString* referenceNumber)
{
    *id = m_query.value(0).toInt();
    *referenceNumber = m_query.value(1).toString();
}

int Query::fetchInvoiceCount(const InvoiceCriteria& criteria)
{
    QVariantList values;
    QString sql = QStringLiteral("SELECT count(*) FROM invoice");
    buildInvoiceWhereClause(criteria, sql, values, QString(), QStringLiteral(" WHERE "));
    if (!prepareQuery(sql))
        return -1;
    bindValues(values);
    if (!execQuery())
        return -1;
    if (!m_query.next()) {
        m_lastError = tr("Laskujen määrää ei saatu luettua");
        return -1;
    }
    return m_query.value(0).toInt();
}

int Query::maxInvoiceNumber()
{
    if (!prepareQuery(QStringLiteral("SELECT max(number) FROM invoice")) || !execQuery())
        return -1;
    if (!m_query.next())
        return 0;
    return m_query.value(0).toInt(); // NULL for an empty table reads as 0
}

bool Query::fetchInvoicesWithProperty(const QString& key)
{
    QString pattern = key + QLatin1Char('=');
    for (const char* special : { "\\", "%", "_" })
        pattern.replace(QLatin1String(special), QLatin1Char('\\') + QLatin1String(special));
    return runStatement(QStringLiteral("SELECT id, properties FROM invoice WHERE properties LIKE ?")
            + escapeClause() + QStringLiteral(" ORDER BY id"),
        { QLatin1Char('%') + pattern + QLatin1Char('%') });
}

void Query::invoiceProperties(Invoice* invoice)
{
    invoice->id = m_query.value(0).toInt();
    invoice->propertiesFromString(m_query.value(1).toString());
}

bool Query::fetchInvoiceItems(int invoiceId)
{
    return runStatement(
        QStringLiteral(
            "SELECT id, invoice_id, product_number, product_name, quantity, unit_code, amount, vat_rate, vat_excluded, discount, text, row_number FROM invoice_item WHERE invoice_id = ? ORDER BY row_number"),
        { invoiceId });
}

bool Query::fetchInvoiceItem(int id)
{
    return runStatement(
        QStringLiteral(
            "SELECT id, invoice_id, product_number, product_name, quantity, unit_code, amount, vat_rate, vat_excluded, discount, text, row_number FROM invoice_item WHERE id = ?"),
        { id });
}

bool Query::fetchInvoiceItems(const InvoiceCriteria& criteria)
{
    QVariantList values;
    QString sql = QStringLiteral(
        "SELECT r.id, r.invoice_id, r.product_number, r.product_name, r.quantity, r.unit_code, r.amount, r.vat_rate, r.vat_excluded, r.discount, r.text, r.row_number FROM invoice_item r INNER JOIN invoice i ON r.invoice_id = i.id WHERE r.invoice_id IN (SELECT j.id FROM invoice j");
    buildInvoiceWhereClause(criteria, sql, values, QStringLiteral("j."), QStringLiteral(" WHERE "));
    appendInvoiceOrder(sql, QStringLiteral("j.number"), criteria);
    sql += QStringLiteral(") ORDER BY i.number, r.row_number");
    return runStatement(sql, values);
}

void Query::invoiceItem(InvoiceItem* item)
{
    item->id = m_query.value(0).toInt();
    item->invoiceId = m_query.value(1).toInt();
    item->productNumber = m_query.value(2).toString();
    item->productName = m_query.value(3).toString();
    item->quantity = m_query.value(4).toLongLong();
    item->unitCode = m_query.value(5).toString();
    item->amount = m_query.value(6).toLongLong();
    item->vatRate = m_query.value(7).toInt();
    item->vatExcluded = m_query.value(8).toBool();
    item->discount = m_query.value(9).toInt();
    item->text = m_query.value(10).toString();
    item->rowNumber = m_query.value(11).toInt();
}

bool Query::fetchPayments(int invoiceId)
{
    return runStatement(
        QStringLiteral(
            "SELECT id, invoice_id, date, bank_account_id, amount FROM payment WHERE invoice_id = ? ORDER BY date, bank_account_id"),
        { invoiceId });
}

bool Query::fetchPayment(int id)
{
    return runStatement(
        QStringLiteral(
            "SELECT id, invoice_id, date, bank_account_id, amount FROM payment WHERE id = ?"),
        { id });
}

bool Query::fetchPayments(const PaymentCriteria& paymentCriteria)
{
    QVariantList values;
    QString sql = paymentSelect;
    buildPaymentWhereClause(
        paymentCriteria, nullptr, sql, values, QString(), QStringLiteral(" WHERE "));
    sql += QStringLiteral(" ORDER BY date, bank_account_id");
    return runStatement(sql, values);
}

bool Query::fetchPayments(
    const PaymentCriteria& paymentCriteria, const InvoiceCriteria& invoiceCriteria)
{
    QVariantList values;
    QString sql = QStringLiteral(
        "SELECT p.id, p.invoice_id, p.date, p.bank_account_id, p.amount FROM payment p INNER JOIN invoice i ON p.invoice_id = i.id");
    buildPaymentWhereClause(paymentCriteria, &invoiceCriteria, sql, values, QStringLiteral("p."),
        QStringLiteral(" WHERE "));
    sql += QStringLiteral(" ORDER BY i.number, p.date, p.bank_account_id");
    return runStatement(sql, values);
}

void Query::payment(Payment* payment)
{
    readPayment(payment, 0);
}

void Query::readPayment(Payment* payment, int first)
{
    payment->id = m_query.value(first).toInt();
    payment->invoiceId = m_query.value(first + 1).toInt();
    payment->date = toDate(m_query.value(first + 2));
    payment->bankAccountId = toForeignKey(m_query.value(first + 3));
    payment->amount = m_query.value(first + 4).toInt();
}

bool Query::fetchInvoicesAndPayments(
    const PaymentCriteria& paymentCriteria, const InvoiceCriteria& invoiceCriteria)
{
    QVariantList values;
    QString sql = QStringLiteral(
        "SELECT i.id, i.customer_id, i.number, i.date, i.due_date, i.delivery_date, i.total_amount, i.balance, p.id, p.invoice_id, p.date, p.bank_account_id, p.amount FROM payment p INNER JOIN invoice i ON p.invoice_id = i.id");
    buildPaymentWhereClause(paymentCriteria, &invoiceCriteria, sql, values, QStringLiteral("p."),
        QStringLiteral(" WHERE "));
    sql += QStringLiteral(" ORDER BY p.date, i.number");
    return runStatement(sql, values);
}

void Query::invoiceAndPayment(Invoice* invoice, Payment* payment)
{
    invoice->id = m_query.value(0).toInt();
    invoice->customerId = toForeignKey(m_query.value(1));
    invoice->number = m_query.value(2).toInt();
    invoice->date = toDate(m_query.value(3));
    invoice->dueDate = toDate(m_query.value(4));
    invoice->deliveryDate = toDate(m_query.value(5));
    invoice->totalAmount = m_query.value(6).toInt();
    invoice->balance = m_query.value(7).toInt();
    readPayment(payment, 8);
}

void Query::setInvoiceBalanceMode(bool on)
{
    m_invoiceBalanceMode = on;
}

bool Query::invoiceBalanceMode() const
{
    return m_invoiceBalanceMode;
}

bool Query::fetchPaymentAmounts(const InvoiceCriteria& criteria, const QDate& date)
{
    QVariantList values { dateValue(date) };
    QString sql = QStringLiteral(
        "SELECT p.invoice_id, sum(p.amount) FROM payment p WHERE p.date <= ? AND p.invoice_id IN (SELECT j.id FROM invoice j");
    buildInvoiceWhereClause(criteria, sql, values, QStringLiteral("j."), QStringLiteral(" WHERE "));
    sql += QStringLiteral(") GROUP BY p.invoice_id ORDER BY p.invoice_id");
    return runStatement(sql, values);
}

void Query::paymentAmount(int* invoiceId, long long* amount)
{
    *invoiceId = m_query.value(0).toInt();
    *amount = m_query.value(1).toLongLong();
}

// Writers

bool Query::saveBankAccount(BankAccount* account)
{
    return account->id < 0 ? insertBankAccount(account) : updateBankAccount(account);
}

bool Query::saveCustomer(Customer* customer)
{
    return customer->id < 0 ? insertCustomer(customer) : updateCustomer(customer);
}

bool Query::saveProduct(Product* product)
{
    return product->id < 0 ? insertProduct(product) : updateProduct(product);
}

bool Query::saveInvoice(Invoice* invoice)
{
    return invoice->id < 0 ? insertInvoice(invoice) : updateInvoice(invoice);
}

bool Query::saveInvoiceItem(InvoiceItem* item)
{
    return item->id < 0 ? insertInvoiceItem(item) : updateInvoiceItem(item);
}

bool Query::savePayment(Payment* payment)
{
    return payment->id < 0 ? insertPayment(payment) : updatePayment(payment);
}

bool Query::savePrintScript(PrintScript* script)
{
    return script->id < 0 ? insertPrintScript(script) : updatePrintScript(script);
}

void Query::bindBankAccount(BankAccount* account)
{
    m_query.addBindValue(textValue(account->name));
    m_query.addBindValue(textValue(account->shortName));
    m_query.addBindValue(textValue(account->iban));
    m_query.addBindValue(textValue(account->bic));
    m_query.addBindValue(account->rowNumber);
    m_query.addBindValue(account->visible);
    m_query.addBindValue(account->deleted);
}

void Query::bindCustomer(Customer* customer)
{
    m_query.addBindValue(customer->number);
    m_query.addBindValue(textValue(customer->name));
    m_query.addBindValue(textValue(customer->streetName));
    m_query.addBindValue(textValue(customer->postCode));
    m_query.addBindValue(textValue(customer->townName));
    m_query.addBindValue(textValue(customer->country));
    m_query.addBindValue(textValue(customer->contact));
    m_query.addBindValue(textValue(customer->vatNumber));
    m_query.addBindValue(textValue(customer->referenceNumber));
    m_query.addBindValue(textValue(customer->emailAddress));
    m_query.addBindValue(textValue(customer->phoneNumber));
    m_query.addBindValue(textValue(customer->paymentTerms));
    m_query.addBindValue(textValue(customer->propertiesToString()));
    m_query.addBindValue(customer->deleted);
}

void Query::bindInvoice(Invoice* invoice)
{
    // A null invoice date or due date goes in as NULL and the NOT NULL
    // columns refuse it: the save fails with the driver's message.
    m_query.addBindValue(invoice->customerId);
    m_query.addBindValue(invoice->type);
    m_query.addBindValue(invoice->number);
    m_query.addBindValue(dateValue(invoice->date));
    m_query.addBindValue(textValue(invoice->paymentTerms));
    m_query.addBindValue(textValue(invoice->delivery));
    m_query.addBindValue(dateValue(invoice->deliveryDate));
    m_query.addBindValue(textValue(invoice->buyerRef));
    m_query.addBindValue(textValue(invoice->sellerRef));
    m_query.addBindValue(invoice->interestOnArrears);
    m_query.addBindValue(dateValue(invoice->dueDate));
    m_query.addBindValue(textValue(invoice->referenceNumber));
    m_query.addBindValue(invoice->totalAmount);
    m_query.addBindValue(invoice->balance);
    m_query.addBindValue(textValue(invoice->propertiesToString()));
}

void Query::bindInvoiceItem(InvoiceItem* item)
{
    m_query.addBindValue(item->invoiceId);
    m_query.addBindValue(textValue(item->productNumber));
    m_query.addBindValue(textValue(item->productName));
    m_query.addBindValue(static_cast<qlonglong>(item->quantity));
    m_query.addBindValue(textValue(item->unitCode));
    m_query.addBindValue(static_cast<qlonglong>(item->amount));
    m_query.addBindValue(item->vatRate);
    m_query.addBindValue(item->vatExcluded);
    m_query.addBindValue(item->discount);
    m_query.addBindValue(textValue(item->text));
    m_query.addBindValue(item->rowNumber);
}

void Query::bindPayment(Payment* payment)
{
    m_query.addBindValue(payment->invoiceId);
    m_query.addBindValue(dateValue(payment->date));
    m_query.addBindValue(foreignKeyValue(payment->bankAccountId));
    m_query.addBindValue(payment->amount);
}

void Query::bindPrintScript(PrintScript* script)
{
    m_query.addBindValue(textValue(script->type));
    m_query.addBindValue(textValue(script->name));
    m_query.addBindValue(textValue(script->sourceCode));
}

void Query::bindProduct(Product* product)
{
    m_query.addBindValue(textValue(product->number));
    m_query.addBindValue(textValue(product->name));
    m_query.addBindValue(textValue(product->unitCode));
    m_query.addBindValue(static_cast<qlonglong>(product->amount));
    m_query.addBindValue(product->vatRate);
    m_query.addBindValue(product->vatExcluded);
    m_query.addBindValue(textValue(product->category));
}

void Query::bindSettings(Settings* settings)
{
    m_query.addBindValue(textValue(settings->sellerName));
    m_query.addBindValue(textValue(settings->sellerStreetName));
    m_query.addBindValue(textValue(settings->sellerPostCode));
    m_query.addBindValue(textValue(settings->sellerTownName));
    m_query.addBindValue(textValue(settings->sellerCountry));
    m_query.addBindValue(textValue(settings->sellerBusinessId));
    m_query.addBindValue(settings->sellerLogo.isNull() ? QByteArray("") : settings->sellerLogo);
    m_query.addBindValue(textValue(settings->propertiesToString()));
}

bool Query::insertBankAccount(BankAccount* account)
{
    return insertRecord(
        QStringLiteral("bank_account"),
        QStringLiteral(
            "INSERT INTO bank_account (id, name, short_name, iban, bic, row_number, visible, deleted) VALUES (NULL, ?, ?, ?, ?, ?, ?, ?)"),
        [&] { bindBankAccount(account); }, &account->id);
}

bool Query::updateBankAccount(BankAccount* account)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE bank_account SET name=?, short_name=?, iban=?, bic=?, row_number=?, visible=?, deleted=? WHERE id = ?"),
        [&] { bindBankAccount(account); }, account->id);
}

bool Query::insertCustomer(Customer* customer)
{
    return insertRecord(
        QStringLiteral("customer"),
        QStringLiteral(
            "INSERT INTO customer (id, number, name, street_name, post_code, town_name, country, contact, vat_number, reference_number, email_address, phone_number, payment_terms, properties, deleted) VALUES (NULL, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        [&] { bindCustomer(customer); }, &customer->id);
}

bool Query::updateCustomer(Customer* customer)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE customer SET number=?, name=?, street_name=?, post_code=?, town_name=?, country=?, contact=?, vat_number=?, reference_number=?, email_address=?, phone_number=?, payment_terms=?, properties=?, deleted=? WHERE id = ?"),
        [&] { bindCustomer(customer); }, customer->id);
}

bool Query::insertInvoice(Invoice* invoice)
{
    return insertRecord(
        QStringLiteral("invoice"),
        QStringLiteral(
            "INSERT INTO invoice (id, customer_id, type, number, date, payment_terms, delivery, delivery_date, buyer_ref, seller_ref, interest_on_arrears, due_date, reference_number, total_amount, balance, properties) VALUES (NULL, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        [&] { bindInvoice(invoice); }, &invoice->id);
}

bool Query::updateInvoice(Invoice* invoice)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE invoice SET customer_id=?, type=?, number=?, date=?, payment_terms=?, delivery=?, delivery_date=?, buyer_ref=?, seller_ref=?, interest_on_arrears=?, due_date=?, reference_number=?, total_amount=?, balance=?, properties=? WHERE id = ?"),
        [&] { bindInvoice(invoice); }, invoice->id);
}

bool Query::insertInvoiceItem(InvoiceItem* item)
{
    return insertRecord(
        QStringLiteral("invoice_item"),
        QStringLiteral(
            "INSERT INTO invoice_item (id, invoice_id, product_number, product_name, quantity, unit_code, amount, vat_rate, vat_excluded, discount, text, row_number) VALUES (NULL, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        [&] { bindInvoiceItem(item); }, &item->id);
}

bool Query::updateInvoiceItem(InvoiceItem* item)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE invoice_item SET invoice_id=?, product_number=?, product_name=?, quantity=?, unit_code=?, amount=?, vat_rate=?, vat_excluded=?, discount=?, text=?, row_number=? WHERE id = ?"),
        [&] { bindInvoiceItem(item); }, item->id);
}

bool Query::insertPayment(Payment* payment)
{
    return insertRecord(
        QStringLiteral("payment"),
        QStringLiteral(
            "INSERT INTO payment (id, invoice_id, date, bank_account_id, amount) VALUES (NULL, ?, ?, ?, ?)"),
        [&] { bindPayment(payment); }, &payment->id);
}

bool Query::updatePayment(Payment* payment)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE payment SET invoice_id=?, date=?, bank_account_id=?, amount=? WHERE id = ?"),
        [&] { bindPayment(payment); }, payment->id);
}

bool Query::insertPrintScript(PrintScript* script)
{
    return insertRecord(
        QStringLiteral("print_script"),
        QStringLiteral(
            "INSERT INTO print_script (id, type, name, source_code) VALUES (NULL, ?, ?, ?)"),
        [&] { bindPrintScript(script); }, &script->id);
}

bool Query::updatePrintScript(PrintScript* script)
{
    return updateRecord(
        QStringLiteral("UPDATE print_script SET type=?, name=?, source_code=? WHERE id = ?"),
        [&] { bindPrintScript(script); }, script->id);
}

bool Query::insertProduct(Product* product)
{
    return insertRecord(
        QStringLiteral("product"),
        QStringLiteral(
            "INSERT INTO product (id, number, name, unit_code, amount, vat_rate, vat_excluded, category) VALUES (NULL, ?, ?, ?, ?, ?, ?, ?)"),
        [&] { bindProduct(product); }, &product->id);
}

bool Query::updateProduct(Product* product)
{
    return updateRecord(
        QStringLiteral(
            "UPDATE product SET number=?, name=?, unit_code=?, amount=?, vat_rate=?, vat_excluded=?, category=? WHERE id = ?"),
        [&] { bindProduct(product); }, product->id);
}

bool Query::insertSettings(Settings* settings)
{
    if (!prepareQuery(QStringLiteral(
            "INSERT INTO settings (version, seller_name, seller_street_name, seller_post_code, seller_town_name, seller_country, seller_business_id, seller_logo, properties) VALUES (10, ?, ?, ?, ?, ?, ?, ?, ?)")))
        return false;
    bindSettings(settings);
    return execQuery();
}

bool Query::updateSettings(Settings* settings)
{
    if (!prepareQuery(QStringLiteral(
            "UPDATE settings SET seller_name=?, seller_street_name=?, seller_post_code=?, seller_town_name=?, seller_country=?, seller_business_id=?, seller_logo=?, properties=?")))
        return false;
    bindSettings(settings);
    return execQuery();
}

bool Query::runStatement(const QString& sql, const QVariantList& values)
{
    if (!prepareQuery(sql))
        return false;
    bindValues(values);
    return execQuery();
}

bool Query::insertRecord(
    const QString& table, const QString& sql, const std::function<void()>& bind, int* id)
{
    if (!prepareQuery(insertStatement(sql, table)))
        return false;
    bind();
    if (!execQuery())
        return false;
    *id = insertedId(table);
    return *id >= 0;
}

bool Query::updateRecord(const QString& sql, const std::function<void()>& bind, int id)
{
    if (!prepareQuery(sql))
        return false;
    bind();
    m_query.addBindValue(id);
    return execQuery();
}

bool Query::deleteProduct(int id)
{
    return runStatement(QStringLiteral("DELETE FROM product WHERE id = ?"), { id });
}

bool Query::deleteBankAccount(int id)
{
    return runStatement(
        QStringLiteral("UPDATE bank_account SET deleted = ? WHERE id = ?"), { true, id });
}

bool Query::deleteCustomer(int id)
{
    return runStatement(
        QStringLiteral("UPDATE customer SET deleted = ? WHERE id = ?"), { true, id });
}

bool Query::deleteInvoice(int id)
{
    return runStatement(QStringLiteral("DELETE FROM invoice WHERE id = ?"), { id });
}

bool Query::deleteInvoicesBetween(int firstId, int lastId)
{
    return runStatement(
        QStringLiteral("DELETE FROM invoice WHERE id BETWEEN ? AND ?"), { firstId, lastId });
}

bool Query::deleteInvoiceItem(int id)
{
    return runStatement(QStringLiteral("DELETE FROM invoice_item WHERE id = ?"), { id });
}

bool Query::deleteInvoiceItems(int invoiceId)
{
    return runStatement(
        QStringLiteral("DELETE FROM invoice_item WHERE invoice_id = ?"), { invoiceId });
}

bool Query::deleteInvoiceItemsBetween(int firstInvoiceId, int lastInvoiceId)
{
    return runStatement(QStringLiteral("DELETE FROM invoice_item WHERE invoice_id BETWEEN ? AND ?"),
        { firstInvoiceId, lastInvoiceId });
}

bool Query::deletePayment(int id)
{
    return runStatement(QStringLiteral("DELETE FROM payment WHERE id = ?"), { id });
}

bool Query::deletePayments(int invoiceId)
{
    return runStatement(QStringLiteral("DELETE FROM payment WHERE invoice_id = ?"), { invoiceId });
}

bool Query::deletePaymentsBetween(int firstInvoiceId, int lastInvoiceId)
{
    return runStatement(QStringLiteral("DELETE FROM payment WHERE invoice_id BETWEEN ? AND ?"),
        { firstInvoiceId, lastInvoiceId });
}

bool Query::deleteInvoiceRange(int firstId, int lastId)
{
    return deletePaymentsBetween(firstId, lastId) && deleteInvoiceItemsBetween(firstId, lastId)
        && deleteInvoicesBetween(firstId, lastId);
}

bool Query::deletePrintScript(int id)
{
    return runStatement(QStringLiteral("DELETE FROM print_script WHERE id = ?"), { id });
}

bool Query::addInitialData(const QString& companyName)
{
    Settings settings;
    settings.sellerName = companyName;
    settings.setProperty(SettingsKeys::paymentTerms, tr("14 päivää netto"));
    settings.setProperty(SettingsKeys::periodForComplaints, tr("8 päivää"));
    settings.setProperty(SettingsKeys::interestOnArrears, 800);
    settings.setProperty(SettingsKeys::interestProduct, QStringLiteral("999"));
    settings.setProperty(SettingsKeys::reminderText,
        tr("Pyydämme ystävällisesti maksamaan saatavamme. Mikäli kuitenkin olette jo suorittaneet tämän laskun, tämä maksumuistutus on aiheeton."));
    if (!insertSettings(&settings))
        return false;

    Product product;
    product.number = QStringLiteral("999");
    product.name = tr("Viivästyskorko");
    return insertProduct(&product);
}

bool Query::buildInvoiceWhereClause(const InvoiceCriteria& criteria, QString& where,
    QVariantList& values, const QString& prefix, const QString& keyword) const
{
    QStringList conditions;
    auto add = [&](const QString& condition, const QVariantList& conditionValues) {
        conditions.append(QString(condition).replace(QLatin1String("%1"), prefix));
        values.append(conditionValues);
    };

    if (criteria.dateFrom.isValid())
        add(QStringLiteral("%1date >= ?"), { criteria.dateFrom });
    if (criteria.dateTo.isValid())
        add(QStringLiteral("%1date <= ?"), { criteria.dateTo });
    if (criteria.dueDateFrom.isValid())
        add(QStringLiteral("%1due_date >= ?"), { criteria.dueDateFrom });
    if (criteria.dueDateTo.isValid())
        add(QStringLiteral("%1due_date <= ?"), { criteria.dueDateTo });

    // An invoice without a delivery date counts as delivered on its date.
    const QDate& start = criteria.deliveryDateFrom;
    const QDate& end = criteria.deliveryDateTo;
    if (start.isValid() && end.isValid() && start <= end) {
        add(QStringLiteral(
                "((%1delivery_date IS NOT NULL AND %1delivery_date BETWEEN ? AND ?) OR (%1delivery_date IS NULL AND %1date BETWEEN ? AND ?))"),
            { start, end, start, end });
    } else {
        if (start.isValid()) {
            add(QStringLiteral(
                    "((%1delivery_date IS NOT NULL AND %1delivery_date >= ?) OR (%1delivery_date IS NULL AND %1date >= ?))"),
                { start, start });
        }
        if (end.isValid()) {
            add(QStringLiteral(
                    "((%1delivery_date IS NOT NULL AND %1delivery_date <= ?) OR (%1delivery_date IS NULL AND %1date <= ?))"),
                { end, end });
        }
    }

    if (criteria.numberFrom >= 0)
        add(QStringLiteral("%1number >= ?"), { criteria.numberFrom });
    if (criteria.numberTo >= 0)
        add(QStringLiteral("%1number <= ?"), { criteria.numberTo });
    if (criteria.number >= 0)
        add(QStringLiteral("%1number = ?"), { criteria.number });
    if (!criteria.numberRanges.isEmpty()) {
        QStringList ranges;
        QVariantList bounds;
        for (const InvoiceCriteria::NumberRange& range : criteria.numberRanges) {
            ranges.append(QStringLiteral("%1number BETWEEN ? AND ?"));
            bounds << range.from << range.to;
        }
        add(QLatin1Char('(') + ranges.join(QLatin1String(" OR ")) + QLatin1Char(')'), bounds);
    }
    if (criteria.id >= 0)
        add(QStringLiteral("%1id = ?"), { criteria.id });
    if (criteria.customerId >= 0)
        add(QStringLiteral("%1customer_id = ?"), { criteria.customerId });
    if (!criteria.referenceNumber.isEmpty())
        add(QStringLiteral("%1reference_number = ?"), { criteria.referenceNumber });

    if (criteria.types >= 0) {
        QStringList types;
        for (int type = 0; type < 31; ++type) {
            if (criteria.types & (1 << type))
                types.append(QStringLiteral("%1type = %2").arg(prefix).arg(type));
        }
        // An empty mask selects nothing rather than everything.
        conditions.append(types.isEmpty()
                ? QStringLiteral("1 = 0")
                : QLatin1Char('(') + types.join(QLatin1String(" OR ")) + QLatin1Char(')'));
    }

    if (!criteria.balanceDate.isValid()) {
        if (criteria.paymentStatus == 0)
            add(QStringLiteral("%1balance = 0"), {});
        else if (criteria.paymentStatus == 1)
            add(QStringLiteral("%1balance <> 0"), {});
    }

    if (!criteria.text.isEmpty()) {
        add(QStringLiteral("%1id IN (SELECT invoice_id FROM invoice_item WHERE text %2 ?%3)")
                .replace(QLatin1String("%2"), patternOperator())
                .replace(QLatin1String("%3"), escapeClause()),
            { likePattern(criteria.text) });
    }

    return appendConditions(where, keyword, conditions);
}

bool Query::buildPaymentWhereClause(const PaymentCriteria& paymentCriteria,
    const InvoiceCriteria* invoiceCriteria, QString& where, QVariantList& values,
    const QString& prefix, const QString& keyword) const
{
    QStringList conditions;
    auto add = [&](const QString& condition, const QVariant& value) {
        conditions.append(QString(condition).replace(QLatin1String("%1"), prefix));
        values.append(value);
    };
    if (paymentCriteria.dateFrom.isValid())
        add(QStringLiteral("%1date >= ?"), paymentCriteria.dateFrom);
    if (paymentCriteria.dateTo.isValid())
        add(QStringLiteral("%1date <= ?"), paymentCriteria.dateTo);
    if (paymentCriteria.idFrom >= 0)
        add(QStringLiteral("%1id >= ?"), paymentCriteria.idFrom);
    if (paymentCriteria.idTo >= 0)
        add(QStringLiteral("%1id <= ?"), paymentCriteria.idTo);
    if (paymentCriteria.invoiceId >= 0)
        add(QStringLiteral("%1invoice_id = ?"), paymentCriteria.invoiceId);
    if (paymentCriteria.bankAccountId >= 0)
        add(QStringLiteral("%1bank_account_id = ?"), paymentCriteria.bankAccountId);

    if (invoiceCriteria) {
        QString subSelect = prefix + QStringLiteral("invoice_id IN (SELECT j.id FROM invoice j");
        buildInvoiceWhereClause(
            *invoiceCriteria, subSelect, values, QStringLiteral("j."), QStringLiteral(" WHERE "));
        conditions.append(subSelect + QLatin1Char(')'));
    }

    return appendConditions(where, keyword, conditions);
}

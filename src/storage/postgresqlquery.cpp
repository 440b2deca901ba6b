#include "postgresqlquery.h"

#include <QHash>

PostgreSQLQuery::PostgreSQLQuery(QSqlQuery query, QObject* parent) : Query(std::move(query), parent)
{
}

QString PostgreSQLQuery::patternOperator() const
{
    return QStringLiteral("ILIKE");
}

QString PostgreSQLQuery::escapeClause() const
{
    return QStringLiteral(" ESCAPE E'\\\\'");
}

QString PostgreSQLQuery::newIdValue(const QString& table) const
{
    // New ids come from the table's sequence, e.g. "INSERT INTO payment (id,
    // invoice_id, date, bank_account_id, amount) VALUES (nextval('payment_id_seq'), ?, ?, ?, ?)".
    static const QHash<QString, QString> values {
        { QStringLiteral("bank_account"), QStringLiteral("nextval('bank_account_id_seq')") },
        { QStringLiteral("customer"), QStringLiteral("nextval('customer_id_seq')") },
        { QStringLiteral("invoice"), QStringLiteral("nextval('invoice_id_seq')") },
        { QStringLiteral("invoice_item"), QStringLiteral("nextval('invoice_item_id_seq')") },
        { QStringLiteral("payment"), QStringLiteral("nextval('payment_id_seq')") },
        { QStringLiteral("print_script"), QStringLiteral("nextval('print_script_id_seq')") },
        { QStringLiteral("product"), QStringLiteral("nextval('product_id_seq')") },
    };
    return values.value(table);
}

int PostgreSQLQuery::insertedId(const QString& table)
{
    return sequenceValue(table + QStringLiteral("_id_seq"));
}

int PostgreSQLQuery::sequenceValue(const QString& sequence)
{
    if (!prepareQuery(QStringLiteral("SELECT currval('") + sequence + QStringLiteral("')"))
        || !execQuery())
        return -1;
    if (!m_query.next()) {
        m_lastError = tr("Tunnisteen arvoa ei saatu luettua");
        return -1;
    }
    return m_query.value(0).toInt();
}

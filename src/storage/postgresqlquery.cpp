#include "postgresqlquery.h"

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
    return QStringLiteral("nextval('%1_id_seq')").arg(table);
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

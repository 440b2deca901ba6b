#ifndef POSTGRESQLQUERY_H
#define POSTGRESQLQUERY_H

#include "query.h"

// The PostgreSQL dialect: ids come from the sequences "<table>_id_seq" and
// text patterns are matched without regard to case.
class PostgreSQLQuery : public Query
{
    Q_OBJECT
public:
    explicit PostgreSQLQuery(QSqlQuery query, QObject* parent = nullptr);

    // The current value of a sequence in this session, -1 on failure.
    int sequenceValue(const QString& sequence);

protected:
    QString patternOperator() const override;
    QString escapeClause() const override;
    QString newIdValue(const QString& table) const override;
    int insertedId(const QString& table) override;
};

#endif // POSTGRESQLQUERY_H

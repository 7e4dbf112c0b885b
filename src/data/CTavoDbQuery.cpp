#include "data/CTavoDbQuery.h"

CTavoDbQuery::CTavoDbQuery(const QString& sql, QObject* parent)
    : CTavoDbTable(QString(), parent), m_query(sql)
{
}

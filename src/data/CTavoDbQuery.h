#pragma once
#include "tgui_export.h"
// The result of one SQL query as a table model: CTavoDb::execute sends the
// SQL and the answer fills the model as a synchronisation fills a table.
#include <QString>

#include "data/CTavoDbTable.h"

class TGUI_EXPORT CTavoDbQuery : public CTavoDbTable
{
    Q_OBJECT
public:
    explicit CTavoDbQuery(const QString& sql = QString(), QObject* parent = nullptr);

    QString query() const { return m_query; }
    void set(const QString& sql) { m_query = sql; }

private:
    QString m_query;
};

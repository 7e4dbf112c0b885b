#pragma once
// Responses of the database peer as tests write them: rows of text, "~" for NULL.
#include <QList>
#include <QStringList>

#include "CTJDbResp.h"

inline TJDB::CTJDbResp dbResponse(const QString& token, int type, const QStringList& columns,
                                  const QList<QStringList>& rows, int total = -1, int start = 0)
{
    TJDB::CTJDbResp r;
    r.set(TJDB::ReqElementToken, token.toUtf8().constData());
    r.set(TJDB::ReqElementDbName, "user");
    r.set(TJDB::ReqElementTotalRows, total < 0 ? int(rows.size()) : total);
    r.set(TJDB::ReqElementStartRow, start);
    r.set(TJDB::ReqElementEndRow, start + int(rows.size()) - 1);
    r.set(TJDB::ReqElementNotification, type);
    std::vector<std::string> names;
    for (const QString& c : columns)
        names.push_back(c.toStdString());
    r.setColumns(names);
    for (const QStringList& row : rows) {
        std::vector<std::string> cells;
        std::vector<const char*> fields;
        for (const QString& cell : row)
            cells.push_back(cell.toStdString());
        for (int i = 0; i < row.size(); ++i)
            fields.push_back(row.at(i) == QLatin1String("~") ? nullptr : cells[std::size_t(i)].c_str());
        r.addRow(fields.data(), nullptr, int(fields.size()));
    }
    return r;
}

// Rows "id|name" for ids from..to.
inline QList<QStringList> contactRows(int from, int to)
{
    QList<QStringList> rows;
    for (int id = from; id <= to; ++id)
        rows.append({QString::number(id), QStringLiteral("name %1").arg(id)});
    return rows;
}

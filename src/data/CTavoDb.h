#pragma once
#include "tgui_export.h"
// The link of a GUI process to the database peer "dbs": a live, cached copy of
// the tables it subscribes to, and the results of SQL queries. It never
// touches a socket: requests leave as TJDB text through tjdbRequest, which the
// manager sends as frames of type 1 to "dbs", and answers and change
// notifications come back through tjdbResponse.
//
// Tables made by subscribeToTable belong to the link. A query given to
// execute is made with new by the caller; deleteQuery deletes it, also while
// its answer is on the way (the answer is then dropped), and the link deletes
// the queries still waiting for an answer when it goes.
#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUuid>

#include "data/CTavoDbQuery.h"
#include "data/CTavoDbTable.h"

class TGUI_EXPORT CTavoDb : public QObject
{
    Q_OBJECT
public:
    explicit CTavoDb(QObject* parent = nullptr);
    ~CTavoDb() override;

    // Table names as last reported by updateTableNames.
    QStringList tables() const;
    // The subscribed table of this name, or null.
    CTavoDbTable* table(const QString& name) const;
    // The table of this name, subscribed now if it is new; null while "dbs" is down.
    CTavoDbTable* subscribeToTable(const QString& name);

    void setConnected(bool connected);
    bool isConnected() const { return m_connected; }
    void setDbName(const QByteArray& name);
    QByteArray dbName() const { return m_dbName; }

    // Sends sql under token; the answer comes back under the same token.
    void query(const QString& token, const QString& sql);
    void execute(CTavoDbQuery& query);
    void execute(const QUuid& token, const QString& sql);
    // The whole content of a subscribed table again, under its token or the given one.
    void requestUpdate(const QString& tableName);
    void requestUpdate(const QString& tableName, const QString& token);
    CTavoDbQuery* getQuery(const QUuid& token) const;
    void deleteQuery(const CTavoDbQuery& query);

signals:
    void tjdbRequest(const QString& data);
    void updatedTableNames(const QStringList& tableNames);
    void tableCreated(const QString& tableName, const CTavoDbTable* table);
    void connectedChanged(bool connected);

public slots:
    void updateTableNames();
    void tjdbResponse(const QString& data);

private:
    // type 65535 subscribes to every change, 0 cancels.
    void subscribe(CTavoDbTable* table, int type);
    void resubscribe();

    QByteArray m_dbName;
    bool m_connected = false;
    QMap<QUuid, CTavoDbTable*> m_tables;
    QList<QString> m_tableNames;
    QString m_tableNamesToken;
    QMap<QUuid, QPointer<CTavoDbQuery>> m_queries;
};

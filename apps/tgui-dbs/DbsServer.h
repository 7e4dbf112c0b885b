#pragma once
// The database peer's logic, apart from its socket: reads the TJDB requests of
// GUI processes, runs their SQL, answers the frame's source in batches, keeps
// subscriptions per peer, token and table, and tells subscribers of changes:
// rows its own connection inserts, updates or deletes one by one, and a whole
// new copy of each subscribed table when another process has written to the
// file (PRAGMA data_version) or the schema changed.
#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "DbsDatabase.h"

class DbsServer : public QObject
{
    Q_OBJECT
public:
    // Writes one answer frame (type 1) to the peer bit destination.
    using Sender = std::function<void(int destination, const QByteArray& payload)>;

    explicit DbsServer(int batchRows, QObject* parent = nullptr);
    ~DbsServer() override;

    // The first database added answers requests without a database name.
    void addDatabase(std::unique_ptr<DbsDatabase> database);
    DbsDatabase* database(const QByteArray& name) const;
    void setSender(Sender sender) { m_send = std::move(sender); }
    // Checks for writes of other processes every ms; 0 stops checking.
    void setPollInterval(int ms);
    int subscriptionCount() const { return m_subs.size(); }

public slots:
    // A frame from the core: requests (type 1) and the peers' status (type 0).
    void handleFrame(const QByteArray& payload, int source, int type);
    void poll();

private:
    struct Subscription {
        int peer;
        QByteArray token;
        QByteArray table;
        int type;  // mask of notification kinds
        DbsDatabase* db;
    };
    struct Watched {
        std::unique_ptr<DbsDatabase> db;
        qint64 dataVersion;
    };

    void handleRequest(const QByteArray& payload, int source);
    void handleStatus(const QByteArray& payload);
    void subscribe(int peer, const QByteArray& token, const QByteArray& table, int type, DbsDatabase* db);
    // Sends result as answers or notifications of one kind under token.
    void sendResult(int peer, const QByteArray& token, DbsDatabase* db, DbsDatabase::Result& result,
                    int notification);
    void sendError(int peer, const QByteArray& token, DbsDatabase* db, const QString& error);
    void send(int peer, const TJDB::CTJDbResp& response);
    void notifyChanges(DbsDatabase* db);
    void notifyRun(DbsDatabase* db, const QByteArray& table, int kind, const QVector<qint64>& ids);
    void resyncAll(DbsDatabase* db);
    void resync(const Subscription& sub);
    QList<Subscription> subscribersOf(DbsDatabase* db, const QByteArray& table, int kind) const;

    int m_batchRows;
    std::vector<Watched> m_dbs;
    QList<Subscription> m_subs;
    Sender m_send;
    QTimer m_poll;
};

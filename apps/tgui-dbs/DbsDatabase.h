#pragma once
// One SQLite database file of the database peer: runs the SQL of requests,
// cuts results into batches of answer rows, and records the rows that its
// own connection changes (sqlite3_update_hook) so that subscribers can be told.
// Writes by other processes show as a new PRAGMA data_version.
#include <QByteArray>
#include <QString>
#include <QVector>
#include <vector>

#include <sqlite3.h>

#include "CTJDbResp.h"

class DbsDatabase
{
public:
    struct Change {
        int kind;          // TJDB::NotificationT: insert, update or delete
        QByteArray table;  // as the schema spells it
        qint64 rowId;
    };

    // What a run of SQL gave: the rows of the last statement that has
    // columns, in batches of at most batchRows rows (at least one batch, with
    // the columns, even without rows), or the reason it failed.
    struct Result {
        std::vector<TJDB::CTJDbResp> batches;
        int totalRows = 0;
        QString error;       // empty on success
        int changes = 0;     // rows changed by the last statement
        qint64 lastInsertId = 0;
        bool noSuchTable = false;
    };

    DbsDatabase(const QByteArray& name, const QString& path);
    ~DbsDatabase();
    DbsDatabase(const DbsDatabase&) = delete;
    DbsDatabase& operator=(const DbsDatabase&) = delete;

    // Opens the file; create allows a missing one. False with a reason when
    // the file is missing (and create is false) or is not a database.
    bool open(bool create, QString* error);
    // Runs a file of SQL when the database has no table yet; false with a reason.
    bool initIfEmpty(const QString& sqlFile, bool* ran, QString* error);
    QByteArray name() const { return m_name; }
    QString path() const { return m_path; }

    // Runs every statement of sql. The first column is named "rowid" when the
    // SQL selects a row id alias first ("SELECT OID, ..."): SQLite names that
    // column after an INTEGER PRIMARY KEY, and subscribers find rows by it.
    void execute(const QByteArray& sql, int batchRows, Result* result);
    // SELECT OID, * of one table into result; rowIds limits it to those rows.
    void selectTable(const QByteArray& table, int batchRows, Result* result,
                     const QVector<qint64>* rowIds = nullptr);

    // Changes made by this connection since the last takeChanges; overflow is
    // set when there were too many to list (subscribers then need everything).
    // Empty while a transaction is open: its changes wait for the commit.
    std::vector<Change> takeChanges(bool* overflow);
    bool inTransaction() const;

    // Counters that move on a commit by another connection and on any schema change.
    qint64 dataVersion();
    qint64 schemaVersion();
    // Longest time one request may run before it is interrupted; 0 for ever.
    void setTimeLimit(int ms) { m_timeLimitMs = ms; }

    static bool selectsRowIdFirst(const QByteArray& sql);
    sqlite3* handle() const { return m_db; }
    static QByteArray quoted(const QByteArray& identifier);

private:
    static void updateHook(void* self, int op, const char* db, const char* table, sqlite3_int64 rowId);
    static void rollbackHook(void* self);
    static int progress(void* self);
    static bool replaces(const QByteArray& sql);
    qint64 pragmaNumber(const char* sql);

    QByteArray m_name;
    QString m_path;
    sqlite3* m_db = nullptr;
    std::vector<Change> m_changes;
    bool m_overflow = false;
    qint64 m_hookCalls = 0;
    int m_timeLimitMs = 10000;
    qint64 m_deadline = 0;  // monotonic ms, 0 when nothing runs
};

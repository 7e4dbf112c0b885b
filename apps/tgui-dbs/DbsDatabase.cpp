#include "DbsDatabase.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <cstring>

#include "TJDbTypes.h"

namespace {
// Changes one request may list one by one; beyond that subscribers get the
// whole table again, which is cheaper than thousands of single rows.
const std::size_t kMaxChanges = 20000;
// Bytes of cells in one batch: keeps every frame far below the frame limit
// even when escaping triples a cell.
const std::size_t kMaxBatchBytes = 1u << 20;
// Bytes of one whole result: a phone's tables are small; this is a runaway query.
const std::size_t kMaxResultBytes = 64u << 20;

qint64 monotonicMs()
{
    static QElapsedTimer clock;
    if (!clock.isValid())
        clock.start();
    return clock.elapsed();
}

// Steps stmt to its end, appending its rows to result's batches.
bool collectRows(sqlite3* db, sqlite3_stmt* stmt, int batchRows, DbsDatabase::Result* result,
                 std::size_t* bytes)
{
    const int columns = sqlite3_column_count(stmt);
    std::vector<const char*> fields(std::size_t(columns > 0 ? columns : 1));
    std::vector<int> lengths(fields.size());
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
        if (result->batches.empty())
            result->batches.emplace_back();
        TJDB::CTJDbResp* batch = &result->batches.back();
        if (batch->numOfRows() >= batchRows || batch->rowBytes() >= kMaxBatchBytes) {
            TJDB::CTJDbResp next;
            std::vector<std::string> names;
            for (int c = 0; c < batch->numOfCols(); ++c)
                names.emplace_back(batch->colName(c));
            next.setColumns(names);
            result->batches.push_back(std::move(next));
            batch = &result->batches.back();
        }
        for (int c = 0; c < columns; ++c) {
            switch (sqlite3_column_type(stmt, c)) {
            case SQLITE_NULL:
                fields[std::size_t(c)] = nullptr;
                lengths[std::size_t(c)] = 0;
                break;
            case SQLITE_BLOB:
                fields[std::size_t(c)] = static_cast<const char*>(sqlite3_column_blob(stmt, c));
                lengths[std::size_t(c)] = sqlite3_column_bytes(stmt, c);
                if (!fields[std::size_t(c)])
                    fields[std::size_t(c)] = "";
                break;
            default:
                fields[std::size_t(c)] = reinterpret_cast<const char*>(sqlite3_column_text(stmt, c));
                lengths[std::size_t(c)] = sqlite3_column_bytes(stmt, c);
                break;
            }
            *bytes += std::size_t(lengths[std::size_t(c)]) + 1;
        }
        if (*bytes > kMaxResultBytes) {
            result->error = QStringLiteral("result larger than %1 MiB").arg(kMaxResultBytes >> 20);
            return false;
        }
        batch->addRow(fields.data(), lengths.data(), columns);
        ++result->totalRows;
    }
    if (rc != SQLITE_DONE) {
        result->error = QString::fromUtf8(sqlite3_errmsg(db));
        return false;
    }
    return true;
}

// Starts the batches of a statement with columns.
void startResult(sqlite3_stmt* stmt, bool labelRowId, DbsDatabase::Result* result)
{
    result->batches.clear();
    result->totalRows = 0;
    std::vector<std::string> names;
    for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
        const char* name = sqlite3_column_name(stmt, c);
        names.emplace_back(c == 0 && labelRowId ? "rowid" : (name ? name : ""));
    }
    result->batches.emplace_back();
    result->batches.back().setColumns(names);
}
}  // namespace

DbsDatabase::DbsDatabase(const QByteArray& name, const QString& path) : m_name(name), m_path(path) {}

DbsDatabase::~DbsDatabase()
{
    if (m_db)
        sqlite3_close_v2(m_db);
}

bool DbsDatabase::open(bool create, QString* error)
{
    if (!create && !QFile::exists(m_path)) {
        *error = QStringLiteral("no such file");
        return false;
    }
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (create)
        flags |= SQLITE_OPEN_CREATE;
    const QByteArray path = QFile::encodeName(m_path);
    if (sqlite3_open_v2(path.constData(), &m_db, flags, nullptr) != SQLITE_OK) {
        *error = QString::fromUtf8(m_db ? sqlite3_errmsg(m_db) : "out of memory");
        return false;
    }
    // SQLite reads the header only when it first needs the schema.
    char* message = nullptr;
    if (sqlite3_exec(m_db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, &message) != SQLITE_OK) {
        *error = QString::fromUtf8(message ? message : sqlite3_errmsg(m_db));
        sqlite3_free(message);
        return false;
    }
    sqlite3_busy_timeout(m_db, 2000);
    // The peer serves the files it was given, nothing a request names.
    sqlite3_limit(m_db, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_update_hook(m_db, &DbsDatabase::updateHook, this);
    sqlite3_rollback_hook(m_db, &DbsDatabase::rollbackHook, this);
    sqlite3_progress_handler(m_db, 1000, &DbsDatabase::progress, this);
    dataVersion();
    return true;
}

bool DbsDatabase::initIfEmpty(const QString& sqlFile, bool* ran, QString* error)
{
    *ran = false;
    if (pragmaNumber("SELECT count(*) FROM sqlite_master WHERE type='table'") != 0)
        return true;
    QFile file(sqlFile);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    const QByteArray sql = file.readAll();
    char* message = nullptr;
    if (sqlite3_exec(m_db, sql.constData(), nullptr, nullptr, &message) != SQLITE_OK) {
        *error = QString::fromUtf8(message ? message : sqlite3_errmsg(m_db));
        sqlite3_free(message);
        return false;
    }
    m_changes.clear();
    m_overflow = false;
    *ran = true;
    return true;
}

bool DbsDatabase::selectsRowIdFirst(const QByteArray& sql)
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*SELECT\\s+(?:ALL\\s+|DISTINCT\\s+)?(?:OID|ROWID|_ROWID_)\\s*(?:,|\\bFROM\\b|$)"),
        QRegularExpression::CaseInsensitiveOption);
    return pattern.match(QString::fromUtf8(sql)).hasMatch();
}

QByteArray DbsDatabase::quoted(const QByteArray& identifier)
{
    QByteArray q = identifier;
    q.replace('"', "\"\"");
    return '"' + q + '"';
}

void DbsDatabase::execute(const QByteArray& sql, int batchRows, Result* result)
{
    *result = Result();
    const std::size_t changesBefore = m_changes.size();
    m_deadline = m_timeLimitMs > 0 ? monotonicMs() + m_timeLimitMs : 0;
    std::size_t bytes = 0;
    const char* tail = sql.constData();
    const char* const end = tail + sql.size();
    while (tail < end && result->error.isEmpty()) {
        sqlite3_stmt* stmt = nullptr;
        const char* next = nullptr;
        if (sqlite3_prepare_v2(m_db, tail, int(end - tail), &stmt, &next) != SQLITE_OK) {
            result->error = QString::fromUtf8(sqlite3_errmsg(m_db));
            break;
        }
        if (!next || next <= tail)
            next = end;
        tail = next;
        if (!stmt)
            continue;  // a comment or white space
        if (sqlite3_column_count(stmt) > 0) {
            startResult(stmt, selectsRowIdFirst(QByteArray(sqlite3_sql(stmt))), result);
            bytes = 0;
        }
        const qint64 totalBefore = sqlite3_total_changes64(m_db);
        const qint64 hooksBefore = m_hookCalls;
        collectRows(m_db, stmt, batchRows, result, &bytes);
        // Rows can change without the hook hearing of them: "DELETE FROM t"
        // without WHERE empties a table in one step, and REPLACE deletes the
        // rows it conflicts with. Subscribers then get their tables whole.
        if (sqlite3_total_changes64(m_db) - totalBefore > m_hookCalls - hooksBefore
            || (m_hookCalls != hooksBefore && replaces(QByteArray(sqlite3_sql(stmt)))))
            m_overflow = true;
        // sqlite3_changes keeps the count of the last writing statement.
        result->changes = sqlite3_stmt_readonly(stmt) ? 0 : sqlite3_changes(m_db);
        sqlite3_finalize(stmt);
    }
    m_deadline = 0;
    result->lastInsertId = sqlite3_last_insert_rowid(m_db);
    if (!result->error.isEmpty()) {
        result->batches.clear();
        result->totalRows = 0;
        result->noSuchTable = result->error.startsWith(QLatin1String("no such table"));
        // A failed statement may have undone rows the hook already listed.
        if (m_changes.size() != changesBefore)
            m_overflow = true;
        return;
    }
    if (result->batches.empty())
        result->batches.emplace_back();
}

void DbsDatabase::selectTable(const QByteArray& table, int batchRows, Result* result, const QVector<qint64>* rowIds)
{
    if (!rowIds) {
        execute("SELECT OID, * FROM " + quoted(table), batchRows, result);
        return;
    }
    *result = Result();
    const QByteArray sql = "SELECT OID, * FROM " + quoted(table) + " WHERE OID = ?";
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.constData(), sql.size(), &stmt, nullptr) != SQLITE_OK) {
        result->error = QString::fromUtf8(sqlite3_errmsg(m_db));
        result->noSuchTable = result->error.startsWith(QLatin1String("no such table"));
        return;
    }
    startResult(stmt, true, result);
    std::size_t bytes = 0;
    for (qint64 id : *rowIds) {
        sqlite3_reset(stmt);
        sqlite3_bind_int64(stmt, 1, id);
        if (!collectRows(m_db, stmt, batchRows, result, &bytes))
            break;
    }
    sqlite3_finalize(stmt);
    if (!result->error.isEmpty()) {
        result->batches.clear();
        result->totalRows = 0;
    }
}

std::vector<DbsDatabase::Change> DbsDatabase::takeChanges(bool* overflow)
{
    *overflow = false;
    if (inTransaction())
        return {};
    *overflow = m_overflow;
    m_overflow = false;
    std::vector<Change> changes;
    changes.swap(m_changes);
    return changes;
}

bool DbsDatabase::inTransaction() const
{
    return m_db && !sqlite3_get_autocommit(m_db);
}

qint64 DbsDatabase::pragmaNumber(const char* sql)
{
    sqlite3_stmt* stmt = nullptr;
    qint64 value = -1;
    if (sqlite3_prepare_v2(m_db, sql, -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW)
        value = sqlite3_column_int64(stmt, 0);
    sqlite3_finalize(stmt);
    return value;
}

qint64 DbsDatabase::dataVersion()
{
    return pragmaNumber("PRAGMA data_version");
}

qint64 DbsDatabase::schemaVersion()
{
    return pragmaNumber("PRAGMA schema_version");
}

void DbsDatabase::updateHook(void* self, int op, const char* db, const char* table, sqlite3_int64 rowId)
{
    auto* d = static_cast<DbsDatabase*>(self);
    ++d->m_hookCalls;
    if (!db || std::strcmp(db, "main") != 0 || !table)
        return;  // temporary and attached tables have no subscribers
    if (d->m_changes.size() >= kMaxChanges) {
        d->m_overflow = true;
        return;
    }
    const int kind = op == SQLITE_INSERT   ? TJDB::NotificationInsert
                     : op == SQLITE_DELETE ? TJDB::NotificationDelete
                                           : TJDB::NotificationUpdate;
    d->m_changes.push_back({kind, QByteArray(table), rowId});
}

bool DbsDatabase::replaces(const QByteArray& sql)
{
    static const QRegularExpression pattern(QStringLiteral("\\bREPLACE\\b"), QRegularExpression::CaseInsensitiveOption);
    return pattern.match(QString::fromUtf8(sql)).hasMatch();
}

void DbsDatabase::rollbackHook(void* self)
{
    // Undone changes were never announced.
    auto* d = static_cast<DbsDatabase*>(self);
    d->m_changes.clear();
    d->m_overflow = false;
}

int DbsDatabase::progress(void* self)
{
    auto* d = static_cast<DbsDatabase*>(self);
    return d->m_deadline && monotonicMs() > d->m_deadline ? 1 : 0;
}

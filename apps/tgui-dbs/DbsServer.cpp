#include "DbsServer.h"

#include <QRegularExpression>

#include "CTJDbReq.h"
#include "core/AppDefs.h"
#include "log/GuiLog.h"

namespace {
// The frame's payload limit (the header's length field).
const int kMaxPayload = 0xFFFFFD;

const char* peerName(int bit)
{
    const char* name = appDefsName(GuiAppsT(bit));
    return name ? name : "?";
}

bool sameTable(const QByteArray& a, const QByteArray& b)
{
    // SQLite compares table names without regard to ASCII case.
    return qstricmp(a.constData(), b.constData()) == 0;
}
}  // namespace

DbsServer::DbsServer(int batchRows, QObject* parent) : QObject(parent), m_batchRows(qMax(1, batchRows))
{
    connect(&m_poll, &QTimer::timeout, this, &DbsServer::poll);
}

DbsServer::~DbsServer() = default;

void DbsServer::addDatabase(std::unique_ptr<DbsDatabase> database)
{
    const qint64 version = database->dataVersion();
    m_dbs.push_back({std::move(database), version});
}

DbsDatabase* DbsServer::database(const QByteArray& name) const
{
    if (m_dbs.empty())
        return nullptr;
    if (name.isEmpty())
        return m_dbs.front().db.get();
    for (const Watched& w : m_dbs) {
        if (w.db->name() == name)
            return w.db.get();
    }
    return nullptr;
}

void DbsServer::setPollInterval(int ms)
{
    if (ms <= 0) {
        m_poll.stop();
        return;
    }
    m_poll.start(ms);
}

void DbsServer::handleFrame(const QByteArray& payload, int source, int type)
{
    if (type == GuiAppsMsgDb)
        handleRequest(payload, source);
    else if (type == GuiAppsMsgTxml)
        handleStatus(payload);
    else
        guiLog(4, "tgui-dbs: ignoring a frame of type %d from %s", type, peerName(source));
}

void DbsServer::handleStatus(const QByteArray& payload)
{
    // The core's application status: subscriptions of peers that left go.
    static const QRegularExpression pattern(QStringLiteral("<AppStatus\\s+mask=\"([^\"]*)\""));
    const QRegularExpressionMatch m = pattern.match(QString::fromUtf8(payload));
    if (!m.hasMatch())
        return;
    bool ok = false;
    const int mask = m.captured(1).toInt(&ok, 0);
    if (!ok)
        return;
    for (int i = m_subs.size() - 1; i >= 0; --i) {
        if (m_subs.at(i).peer & mask)
            continue;
        guiLog(2, "tgui-dbs: %s is gone, subscription %s to %s dropped", peerName(m_subs.at(i).peer),
               m_subs.at(i).token.constData(), m_subs.at(i).table.constData());
        m_subs.removeAt(i);
    }
}

void DbsServer::handleRequest(const QByteArray& payload, int source)
{
    TJDB::CTJDbReq request;
    if (!request.parse(payload.constData(), std::size_t(payload.size()))) {
        guiLog(4, "tgui-dbs: unreadable request of %d bytes from %s: %s", payload.size(), peerName(source),
               request.error());
        return;
    }
    if (!(source & 0xFFF)) {
        guiLog(4, "tgui-dbs: request from an unknown peer (%d) dropped", source);
        return;
    }
    const QByteArray token(request.getStr(TJDB::ReqElementToken));
    const QByteArray dbName(request.getStr(TJDB::ReqElementDbName));
    DbsDatabase* db = database(dbName);
    if (!db) {
        guiLog(4, "tgui-dbs: %s asks for database '%s', which is not served", peerName(source), dbName.constData());
        sendError(source, token, nullptr, QStringLiteral("no database '%1'").arg(QString::fromUtf8(dbName)));
        return;
    }

    bool cancelled = false;
    for (int i = 0; i < request.numOfCommands(); ++i) {
        const TJDB::CTJDbCommand& command = request.command(i);
        if (command.kind() != TJDB::CTJDbCommand::KindSubscribe)
            continue;
        subscribe(source, token, QByteArray(command.table()), command.subscribeType(), db);
        cancelled = cancelled || command.subscribeType() == TJDB::SubscribeCancel;
    }
    // A cancellation needs no content.
    if (cancelled)
        return;

    const QByteArray sql(request.getStr(TJDB::ReqElementSql));
    if (sql.trimmed().isEmpty()) {
        if (request.numOfCommands() == 0)
            sendError(source, token, db, QStringLiteral("no SQL"));
        return;
    }
    const qint64 schemaBefore = db->schemaVersion();
    DbsDatabase::Result result;
    db->execute(sql, m_batchRows, &result);
    // Subscribers hear of the changes before the writer hears its answer. A
    // new schema may have made or changed subscribed tables: they come whole.
    if (db->schemaVersion() != schemaBefore) {
        bool overflow = false;
        db->takeChanges(&overflow);
        resyncAll(db);
    } else {
        notifyChanges(db);
    }
    if (!result.error.isEmpty()) {
        guiLog(4, "tgui-dbs: request %s of %s failed: %s", token.constData(), peerName(source),
               qPrintable(result.error));
        sendError(source, token, db, result.error);
        return;
    }
    sendResult(source, token, db, result, TJDB::NotificationSync);
}

void DbsServer::subscribe(int peer, const QByteArray& token, const QByteArray& table, int type, DbsDatabase* db)
{
    for (int i = 0; i < m_subs.size(); ++i) {
        if (m_subs.at(i).peer != peer || m_subs.at(i).token != token)
            continue;
        if (type == TJDB::SubscribeCancel) {
            guiLog(2, "tgui-dbs: %s cancels its subscription %s to %s", peerName(peer), token.constData(),
                   m_subs.at(i).table.constData());
            m_subs.removeAt(i);
        } else {
            m_subs[i] = {peer, token, table, type, db};
        }
        return;
    }
    if (type == TJDB::SubscribeCancel)
        return;
    guiLog(2, "tgui-dbs: %s subscribes to %s.%s as %s", peerName(peer), db->name().constData(), table.constData(),
           token.constData());
    m_subs.append({peer, token, table, type, db});
}

void DbsServer::sendResult(int peer, const QByteArray& token, DbsDatabase* db, DbsDatabase::Result& result,
                           int notification)
{
    int start = 0;
    for (TJDB::CTJDbResp& batch : result.batches) {
        const int rows = batch.numOfRows();
        batch.set(TJDB::ReqElementToken, token.constData());
        if (db)
            batch.set(TJDB::ReqElementDbName, db->name().constData());
        batch.set(TJDB::ReqElementTotalRows, result.totalRows);
        batch.set(TJDB::ReqElementStartRow, start);
        batch.set(TJDB::ReqElementEndRow, start + rows - 1);
        batch.set(TJDB::ReqElementNotification, notification);
        if (notification == TJDB::NotificationSync) {
            batch.set(TJDB::ReqElementChanges, result.changes);
            batch.set(TJDB::ReqElementLastInsertId, static_cast<long long>(result.lastInsertId));
        }
        send(peer, batch);
        start += rows;
    }
}

void DbsServer::sendError(int peer, const QByteArray& token, DbsDatabase* db, const QString& error)
{
    TJDB::CTJDbResp response;
    response.set(TJDB::ReqElementToken, token.constData());
    if (db)
        response.set(TJDB::ReqElementDbName, db->name().constData());
    response.set(TJDB::ReqElementTotalRows, 0);
    response.set(TJDB::ReqElementStartRow, 0);
    response.set(TJDB::ReqElementEndRow, -1);
    response.set(TJDB::ReqElementError, error.toUtf8().constData());
    send(peer, response);
}

void DbsServer::send(int peer, const TJDB::CTJDbResp& response)
{
    if (!m_send)
        return;
    const std::string text = response.serialize();
    if (text.size() > std::size_t(kMaxPayload)) {
        guiLog(4, "tgui-dbs: an answer of %zu bytes for %s does not fit a frame", text.size(), peerName(peer));
        return;
    }
    m_send(peer, QByteArray(text.data(), int(text.size())));
}

QList<DbsServer::Subscription> DbsServer::subscribersOf(DbsDatabase* db, const QByteArray& table, int kind) const
{
    QList<Subscription> found;
    for (const Subscription& s : m_subs) {
        if (s.db == db && (s.type & kind) && sameTable(s.table, table))
            found.append(s);
    }
    return found;
}

void DbsServer::notifyChanges(DbsDatabase* db)
{
    bool overflow = false;
    const std::vector<DbsDatabase::Change> changes = db->takeChanges(&overflow);
    if (overflow) {
        resyncAll(db);
        return;
    }
    // Consecutive changes of one kind to one table travel together, in order.
    std::size_t i = 0;
    while (i < changes.size()) {
        const DbsDatabase::Change& first = changes[i];
        QVector<qint64> ids;
        std::size_t j = i;
        for (; j < changes.size() && changes[j].kind == first.kind && changes[j].table == first.table; ++j) {
            if (!ids.contains(changes[j].rowId))
                ids.append(changes[j].rowId);
        }
        notifyRun(db, first.table, first.kind, ids);
        i = j;
    }
}

void DbsServer::notifyRun(DbsDatabase* db, const QByteArray& table, int kind, const QVector<qint64>& ids)
{
    const QList<Subscription> subs = subscribersOf(db, table, kind);
    if (subs.isEmpty())
        return;
    DbsDatabase::Result result;
    if (kind == TJDB::NotificationDelete) {
        // Only the row ids of the rows that are gone.
        result.batches.emplace_back();
        result.batches.back().setColumns({"rowid"});
        for (qint64 id : ids) {
            if (result.batches.back().numOfRows() >= m_batchRows) {
                result.batches.emplace_back();
                result.batches.back().setColumns({"rowid"});
            }
            const std::string text = std::to_string(id);
            result.batches.back().addRow({text.c_str()});
        }
        result.totalRows = ids.size();
    } else {
        db->selectTable(table, m_batchRows, &result, &ids);
        if (!result.error.isEmpty()) {
            guiLog(4, "tgui-dbs: cannot read the changed rows of %s: %s", table.constData(),
                   qPrintable(result.error));
            for (const Subscription& s : subs)
                resync(s);
            return;
        }
        if (result.totalRows == 0)
            return;  // gone again before anyone heard of them
    }
    for (const Subscription& s : subs)
        sendResult(s.peer, s.token, db, result, kind);
}

void DbsServer::resyncAll(DbsDatabase* db)
{
    for (const Subscription& s : qAsConst(m_subs)) {
        if (s.db == db)
            resync(s);
    }
}

void DbsServer::resync(const Subscription& sub)
{
    DbsDatabase::Result result;
    sub.db->selectTable(sub.table, m_batchRows, &result);
    if (result.noSuchTable) {
        // The table is gone: an empty result empties the subscriber's copy.
        result = DbsDatabase::Result();
        result.batches.emplace_back();
    } else if (!result.error.isEmpty()) {
        guiLog(4, "tgui-dbs: cannot read %s again for %s: %s", sub.table.constData(), peerName(sub.peer),
               qPrintable(result.error));
        return;
    }
    sendResult(sub.peer, sub.token, sub.db, result, TJDB::NotificationSync);
}

void DbsServer::poll()
{
    for (Watched& w : m_dbs) {
        const qint64 version = w.db->dataVersion();
        if (version == w.dataVersion || version < 0)
            continue;
        w.dataVersion = version;
        guiLog(2, "tgui-dbs: %s was changed by another process, sending subscribed tables again",
               w.db->name().constData());
        resyncAll(w.db.get());
    }
}

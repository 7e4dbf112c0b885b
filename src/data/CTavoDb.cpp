#include "data/CTavoDb.h"

#include <QNetworkInterface>

#include "CTJDbCommand.h"
#include "CTJDbReq.h"
#include "CTJDbResp.h"
#include "log/GuiLog.h"

namespace {
// The query whose updateData runs: deleting it from one of its own signals
// must wait until updateData has returned.
const CTavoDbQuery* g_applying = nullptr;

void deleteNowOrLater(CTavoDbQuery* q)
{
    if (q == g_applying)
        q->deleteLater();
    else
        delete q;
}

const char kSelectAll[] = "SELECT OID, * FROM %1";
const char kTableNamesSql[] = "SELECT name FROM sqlite_master WHERE type='table';";

// The address of the first interface with an IPv4 address and a real
// hardware address; empty on a machine with only a loopback interface.
QString subscriberAddress()
{
    if (QNetworkInterface::allAddresses().isEmpty())
        return QString();
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& i : interfaces) {
        if (i.hardwareAddress() == QLatin1String("00:00:00:00:00:00"))
            continue;
        const QList<QNetworkAddressEntry> entries = i.addressEntries();
        for (const QNetworkAddressEntry& e : entries) {
            if (e.ip().protocol() == QAbstractSocket::IPv4Protocol)
                return e.ip().toString();
        }
    }
    return QString();
}
}  // namespace

CTavoDb::CTavoDb(QObject* parent) : QObject(parent), m_dbName("user") {}

CTavoDb::~CTavoDb()
{
    qDeleteAll(m_tables);
    for (const QPointer<CTavoDbQuery>& q : qAsConst(m_queries))
        delete q.data();
}

QStringList CTavoDb::tables() const
{
    return m_tableNames;
}

CTavoDbTable* CTavoDb::table(const QString& name) const
{
    for (CTavoDbTable* t : m_tables) {
        if (t->name() == name)
            return t;
    }
    return nullptr;
}

CTavoDbTable* CTavoDb::subscribeToTable(const QString& name)
{
    if (CTavoDbTable* existing = table(name))
        return existing;
    if (!m_connected)
        return nullptr;
    auto* created = new CTavoDbTable(name);
    m_tables.insert(QUuid::createUuid(), created);
    emit tableCreated(name, created);
    subscribe(created, TJDB::SubscribeAll);
    return created;
}

void CTavoDb::subscribe(CTavoDbTable* table, int type)
{
    const QUuid token = m_tables.key(table);
    TJDB::CTJDbCommand command;
    TJDB::CTJDbReq request;
    request.set(TJDB::ReqElementToken, token.toString().toUtf8().constData());
    request.set(TJDB::ReqElementDbName, m_dbName.constData());
    const QString address = subscriberAddress();
    if (!address.isEmpty())
        request.set(TJDB::ReqElementSubscriber, address.toUtf8().constData());
    const QByteArray tableName = table->name().toUtf8();
    command.setSubscribe(type, tableName.constData());
    request.addCommand(command);
    // The subscription brings the whole present content at once, row id first.
    request.set(TJDB::ReqElementSql, QString::fromLatin1(kSelectAll).arg(table->name()).toUtf8().constData());
    emit tjdbRequest(QString::fromStdString(request.serialize()));
}

void CTavoDb::resubscribe()
{
    if (m_dbName.isEmpty())
        return;
    for (CTavoDbTable* t : qAsConst(m_tables)) {
        guiLog(3, "Subscribing to %s", qPrintable(t->name()));
        subscribe(t, TJDB::SubscribeAll);
    }
}

void CTavoDb::setConnected(bool connected)
{
    if (connected == m_connected)
        return;
    m_connected = connected;
    // Going down keeps the cached rows visible; coming back brings them anew.
    if (connected)
        resubscribe();
    emit connectedChanged(connected);
}

void CTavoDb::setDbName(const QByteArray& name)
{
    if (name.isEmpty()) {
        guiLog(3, "Ignoring request to set database name to an empty string");
        return;
    }
    if (name == m_dbName)
        return;
    for (CTavoDbTable* t : qAsConst(m_tables))
        subscribe(t, TJDB::SubscribeCancel);
    m_dbName = name;
    m_queries.clear();
    if (m_connected)
        resubscribe();
    guiLog(3, "Database name changed to '%s'", m_dbName.constData());
}

void CTavoDb::query(const QString& token, const QString& sql)
{
    TJDB::CTJDbReq request;
    request.set(TJDB::ReqElementDbName, m_dbName.constData());
    request.set(TJDB::ReqElementToken, token.toUtf8().constData());
    request.set(TJDB::ReqElementSql, sql.toUtf8().constData());
    emit tjdbRequest(QString::fromStdString(request.serialize()));
}

void CTavoDb::updateTableNames()
{
    m_tableNamesToken = QUuid::createUuid().toString();
    query(m_tableNamesToken, QString::fromLatin1(kTableNamesSql));
}

void CTavoDb::requestUpdate(const QString& tableName)
{
    for (auto it = m_tables.cbegin(); it != m_tables.cend(); ++it) {
        if (it.value()->name() == tableName) {
            query(it.key().toString(), QString::fromLatin1(kSelectAll).arg(tableName));
            return;
        }
    }
    guiLog(4, "CTavoDb::requestUpdate: no subscribed table '%s'", qPrintable(tableName));
}

void CTavoDb::requestUpdate(const QString& tableName, const QString& token)
{
    query(token, QString::fromLatin1(kSelectAll).arg(tableName));
}

void CTavoDb::execute(CTavoDbQuery& q)
{
    const QUuid token = QUuid::createUuid();
    m_queries.insert(token, QPointer<CTavoDbQuery>(&q));
    query(token.toString(), q.query());
}

void CTavoDb::execute(const QUuid& token, const QString& sql)
{
    query(token.toString(), sql);
}

CTavoDbQuery* CTavoDb::getQuery(const QUuid& token) const
{
    return m_queries.value(token).data();
}

void CTavoDb::deleteQuery(const CTavoDbQuery& q)
{
    // The entry stays until the answer is complete, so that the rest of the
    // answer finds it and is dropped.
    for (const QPointer<CTavoDbQuery>& p : qAsConst(m_queries)) {
        if (p.data() == &q) {
            deleteNowOrLater(p.data());
            return;
        }
    }
    deleteNowOrLater(const_cast<CTavoDbQuery*>(&q));
}

void CTavoDb::tjdbResponse(const QString& data)
{
    TJDB::CTJDbResp response;
    const QByteArray utf8 = data.toUtf8();
    if (!response.parse(utf8.constData(), std::size_t(utf8.size())))
        guiLog(4, "CTavoDb: unreadable TJDB response of %d bytes: %s", utf8.size(), response.error());
    const QString tokenText = QString::fromUtf8(response.getStr(TJDB::ReqElementToken));
    const QUuid token(tokenText);
    const int first = response.getInt(TJDB::ReqElementTotalRows);
    const int last = response.getInt(TJDB::ReqElementEndRow);
    // A failed request brings no rows; the cached ones stay as they are.
    const bool failed = response.has(TJDB::ReqElementError);
    if (failed)
        guiLog(4, "CTavoDb: request %s failed: %s", qPrintable(tokenText), response.getStr(TJDB::ReqElementError));

    if (!tokenText.isEmpty() && m_queries.contains(token)) {
        const QPointer<CTavoDbQuery> q = m_queries.value(token);
        if (q && !failed) {
            g_applying = q.data();
            q->updateData(response);
            g_applying = nullptr;
        }
        if (failed || first == 0 || first == last + 1)
            m_queries.remove(token);
        return;
    }
    if (!tokenText.isEmpty() && tokenText == m_tableNamesToken) {
        if (failed)
            return;
        // A long list comes in batches: the first one starts the list anew.
        if (response.getInt(TJDB::ReqElementStartRow) <= 0)
            m_tableNames.clear();
        for (int r = 0; r < response.numOfRows(); ++r)
            m_tableNames.append(QString::fromUtf8(response.field(r, 0), response.fieldLength(r, 0)));
        emit updatedTableNames(m_tableNames);
        return;
    }
    if (!tokenText.isEmpty() && m_tables.contains(token)) {
        if (!failed)
            m_tables.value(token)->updateData(response);
        return;
    }
    guiLog(4,
           "'Table Names' or 'Tables Data' update is not required due to unavailability of token (%s) from the "
           "cached table",
           qPrintable(tokenText));
}

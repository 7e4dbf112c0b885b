#include "data/CTavoDb.h"

#include "log/GuiLog.h"

CTavoDb::CTavoDb(QObject* parent) : QObject(parent), m_dbName("user") {}

void CTavoDb::setConnected(bool connected)
{
    if (connected == m_connected)
        return;
    m_connected = connected;
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
    m_dbName = name;
    guiLog(3, "Database name changed to '%s'", m_dbName.constData());
}

void CTavoDb::tjdbResponse(const QString& data)
{
    // No table is subscribed yet, so no token can match.
    guiLog(4,
           "'Table Names' or 'Tables Data' update is not required due to unavailability of token "
           "(%s) from the cached table",
           "");
    Q_UNUSED(data);
}

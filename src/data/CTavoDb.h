#pragma once
#include "tgui_export.h"
// The link of a GUI process to the database peer "dbs". It never touches a
// socket: requests leave as text through tjdbRequest, which the manager sends
// as frames of type 1, and answers come back through tjdbResponse.
//
// This first form carries the connection state and the database name; the
// tables and queries over the TJDB request library join it later.
#include <QByteArray>
#include <QObject>
#include <QString>

class TGUI_EXPORT CTavoDb : public QObject
{
    Q_OBJECT
public:
    explicit CTavoDb(QObject* parent = nullptr);

    void setConnected(bool connected);
    bool isConnected() const { return m_connected; }
    void setDbName(const QByteArray& name);
    QByteArray dbName() const { return m_dbName; }

signals:
    void tjdbRequest(const QString& data);
    void connectedChanged(bool connected);

public slots:
    void tjdbResponse(const QString& data);

private:
    QByteArray m_dbName;
    bool m_connected = false;
};

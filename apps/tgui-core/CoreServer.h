#pragma once
// The simulated core: accepts GUI processes and local peers, takes their
// registrations, routes every frame to the registered peers its destination
// mask names, reports the status mask of the connected peers to each of them,
// prints every frame addressed to the core as one line and plays a scenario.
#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QStringList>
#include <QTcpServer>
#include <QTimer>

#include "core/AppDefs.h"

class QProcess;
class QTcpSocket;

class CoreServer : public QTcpServer
{
    Q_OBJECT
public:
    explicit CoreServer(QObject* parent = nullptr);
    ~CoreServer() override;

    void setTls(const QSslCertificate& cert, const QSslKey& key);
    // Lines of a scenario; played once the server listens.
    bool loadScenario(const QString& path, QString* error);
    void startScenario();
    // Where "start" finds its tgui-<peer> programs; empty: beside this program.
    void setProgramDir(const QString& dir) { m_programDir = dir; }
    // Where "report" writes relative file names; the current folder by default.
    void setReportDir(const QString& dir) { m_reportDir = dir; }

    // Sends one frame from the core to every registered peer in mask.
    int sendToMask(int mask, const QByteArray& payload, GuiAppsMsgTypeT type);
    int connectedMask() const;
    // Bytes that may wait for one peer that does not read; a peer over it is dropped.
    void setQueueLimit(qint64 bytes) { m_queueLimit = bytes; }
    static constexpr qint64 DefaultQueueLimit = 32 * 1024 * 1024;

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct Peer {
        QTcpSocket* socket = nullptr;
        QByteArray buffer;
        int bit = 0;
        QString name;
    };

    void onReadyRead(Peer* peer);
    void onGone(Peer* peer);
    // Writes one frame to a peer; false when the peer was over its limit and is gone.
    bool writeTo(Peer* peer, const char* data, qint64 size);
    void handleFrame(Peer* peer, const GuiAppsMsgHdrT& hdr, const QByteArray& payload);
    void broadcastStatus();
    void onEventSeen(const QString& line);
    void step();
    int maskOf(const QString& word) const;
    // "start <peer> [arguments]": runs tgui-<peer> from the program folder, linked to this core.
    void startPeer(const QString& peer, const QString& arguments);
    // UI reports: "report" saves the next one, "expectreport" asks until one shows a widget's value.
    void askForReport(const QString& peer);
    void onUiReport(const QString& peer, const QByteArray& xml);
    void finishReportStep();

    QList<Peer*> m_peers;
    qint64 m_queueLimit = DefaultQueueLimit;
    bool m_tls = false;
    QSslCertificate m_cert;
    QSslKey m_key;

    QStringList m_scenario;
    int m_line = 0;
    QTimer m_stepTimer;
    QString m_waitingFor;      // peer name for "wait"
    QString m_expecting;       // substring for "expect"
    QTimer m_waitTimeout;
    QList<QProcess*> m_children;  // peers started by the scenario, stopped with the core
    QString m_programDir;

    QString m_reportDir;
    QString m_reportPeer;      // peer whose report a step waits for
    QString m_reportFile;      // "report": where to save it
    QString m_matchName;       // "expectreport": the widget's name,
    QString m_matchAttribute;  // its attribute
    QString m_matchValue;      // and the value looked for
    bool m_syncing = false;    // "sync": any report will do
    QTimer m_reportRetry;
};

#pragma once
// The server of tgui-soapd: HTTP/1.1 on 127.0.0.1, one request per connection.
// See main.cpp for the paths and operations it serves.
#include <QByteArray>
#include <QHash>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>

class QSslSocket;

class SoapEndpoint : public QTcpServer
{
    Q_OBJECT
public:
    explicit SoapEndpoint(QObject* parent = nullptr);

    // Connections that start with a TLS handshake, and tunnels opened by
    // CONNECT, are encrypted with this pair.
    void setTls(const QSslCertificate& certificate, const QSslKey& key);
    void setCredentials(const QString& user, const QString& password);
    int requestCount() const { return m_requests; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct Request {
        QByteArray method;
        QByteArray target;  // origin form: "/path?query"
        QByteArray host;
        QHash<QByteArray, QByteArray> headers;  // lower-case names
        QByteArray body;
    };
    enum class Parse { Incomplete, Done, Bad, TooLarge };

    void onReadable(QSslSocket* socket);
    Parse parse(QByteArray& buffer, Request* request);
    void serve(QSslSocket* socket, const Request& request);
    void serveSoap(QSslSocket* socket, const Request& request, const QByteArray& path, const QByteArray& user);
    void reply(QSslSocket* socket, int status, const QByteArray& body,
               const QList<QPair<QByteArray, QByteArray>>& headers = {},
               const QByteArray& contentType = "text/xml; charset=utf-8");
    static QByteArray envelope(const QByteArray& bodyContent);
    static QByteArray fault(const QByteArray& code, const QByteArray& text);

    QSslCertificate m_certificate;
    QSslKey m_key;
    QString m_user;
    QString m_password;
    int m_requests = 0;
};

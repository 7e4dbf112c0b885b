// tgui-soapd: a small SOAP endpoint for the web services of TGUILib, on
// 127.0.0.1 only. One request per connection (it answers "Connection: close").
//
// Operations (the first element in soap:Body of a POST; a GET is "Ping"):
//   GetEntries [<filter>prefix</filter>]  the canned directory: count, entries
//   Echo                                   the operation element's text back
//   Ping                                   "pong"
//   anything else                          HTTP 500 with a soap:Fault
// Paths: any path serves the operations, but for
//   /auth/...          Basic authentication first (--user, --password): 401
//   /redirect?to=URL   302 to URL;  /redirect-loop  302 to itself
//   /empty             200 with no body;  /notxml  200 with text that is not XML
//   /hang              reads the request and never answers
// Query items on any path: delay=MS answers late, size=N pads the reply to N
// bytes, status=CODE answers with that status and a fault.
// A request that reached it through a proxy is absolute ("POST http://host/...");
// one that opens with a TLS handshake is served over TLS, and CONNECT opens a
// TLS tunnel to itself, so that it also stands behind an HTTP proxy as the
// proxy's upstream. Each request prints one line on standard output:
//   LISTENING <port>[ tls]
//   REQUEST <n> <method> <target> via=<Via header|direct> user=<name|->
//   CONNECT <n> <target>
// SIGTERM and SIGINT stop it with exit code 0.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QSslCertificate>
#include <QSslKey>
#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

#include "ProgramCommandLine.h"
#include "SelfSignedCert.h"
#include "SoapEndpoint.h"

namespace {
int g_signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    const ssize_t ignored = ::write(g_signalPipe[1], &byte, 1);
    (void)ignored;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}
}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tgui-soapd"));

    QCommandLineParser cli;
    QCommandLineOption port("port", "Listen on <port> of 127.0.0.1 (default 0: a free one).", "port", "0");
    QCommandLineOption tls("tls", "Serve TLS: a generated certificate unless --cert and --key are given.");
    QCommandLineOption cert("cert", "PEM certificate for TLS.", "file");
    QCommandLineOption key("key", "PEM private key for TLS.", "file");
    QCommandLineOption writeCert("write-cert", "Write the generated certificate and key into <dir>.", "dir");
    QCommandLineOption user("user", "User name for /auth/ paths (default \"alice\").", "name", "alice");
    QCommandLineOption password("password", "Password for /auth/ paths (default \"secret\").", "text", "secret");
    cli.addOptions({port, tls, cert, key, writeCert, user, password});
    cmdline::parse(cli, QStringLiteral("SOAP endpoint on 127.0.0.1 for TGUILib's web services"));
    int portNumber = 0;
    if (!cmdline::number(cli, port, 0, 65535, &portNumber))
        return cmdline::UsageError;

    SoapEndpoint server;
    server.setCredentials(cli.value(user), cli.value(password));
    if (cli.isSet(tls)) {
        QByteArray certPem, keyPem;
        if (cli.isSet(cert) || cli.isSet(key)) {
            certPem = readFile(cli.value(cert));
            keyPem = readFile(cli.value(key));
        } else {
            const SelfSignedCert made = makeSelfSignedCert("tgui-soapd");
            certPem = made.certPem;
            keyPem = made.keyPem;
            if (cli.isSet(writeCert)) {
                const QDir dir(cli.value(writeCert));
                if (!writeFile(dir.filePath("tgui-soapd.crt"), certPem) || !writeFile(dir.filePath("tgui-soapd.key"), keyPem)) {
                    std::fprintf(stderr, "tgui-soapd: cannot write the certificate into %s\n", qPrintable(dir.path()));
                    return 1;
                }
            }
        }
        const QSslCertificate certificate(certPem, QSsl::Pem);
        QSslKey privateKey(keyPem, QSsl::Ec, QSsl::Pem);
        if (privateKey.isNull())
            privateKey = QSslKey(keyPem, QSsl::Rsa, QSsl::Pem);
        if (certificate.isNull() || privateKey.isNull()) {
            std::fprintf(stderr, "tgui-soapd: no usable certificate and key for --tls\n");
            return 2;
        }
        server.setTls(certificate, privateKey);
    }

    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0) {
        std::perror("tgui-soapd: socketpair");
        return 1;
    }
    QSocketNotifier signalNotifier(g_signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&signalNotifier, &QSocketNotifier::activated, &app, [&] {
        char byte = 0;
        const ssize_t ignored = ::read(g_signalPipe[0], &byte, 1);
        (void)ignored;
        std::fprintf(stdout, "STOPPED after %d requests\n", server.requestCount());
        std::fflush(stdout);
        app.quit();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);

    if (!server.listen(QHostAddress::LocalHost, quint16(portNumber))) {
        std::fprintf(stderr, "tgui-soapd: cannot listen on 127.0.0.1:%d: %s\n", portNumber,
                     qPrintable(server.errorString()));
        return 1;
    }
    std::fprintf(stdout, "LISTENING %u%s\n", unsigned(server.serverPort()), cli.isSet(tls) ? " tls" : "");
    std::fflush(stdout);
    const int code = app.exec();
    server.close();
    ::close(g_signalPipe[0]);
    ::close(g_signalPipe[1]);
    return code;
}

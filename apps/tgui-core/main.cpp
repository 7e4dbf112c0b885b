// tgui-core: a simulated core application for GUI processes of the toolkit.
// See README.md ("The simulated core") for its options and scenario files.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QSslCertificate>
#include <QSslKey>
#include <cstdio>

#include "CoreServer.h"
#include "ProgramCommandLine.h"
#include "SelfSignedCert.h"
#include "StopSignals.h"

namespace {
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
    app.setApplicationName(QStringLiteral("tgui-core"));

    QCommandLineParser cli;
    QCommandLineOption port("port", "Listen on <port> (default 10010; 0 picks a free one).", "port", "10010");
    QCommandLineOption listen("listen", "Listen on the numeric <address> (default: all).", "address");
    QCommandLineOption tls("tls", "Encrypt every connection (TLS 1.2 or later).");
    QCommandLineOption cert("cert", "PEM certificate for --tls (generated when absent).", "file");
    QCommandLineOption key("key", "PEM private key for --tls.", "file");
    QCommandLineOption writeCert("write-cert", "Write the generated certificate and key into <dir>.", "dir");
    QCommandLineOption scenario("scenario", "Play the scenario <file>.", "file");
    QCommandLineOption queueLimit("queue-limit",
                                  "Drop a peer that has more than <bytes> waiting to be written to it "
                                  "(default 33554432).", "bytes");
    // An emulated build runs its programs through wrappers in another folder.
    QCommandLineOption programs("programs", "Start a scenario's peers from <dir> (default: beside tgui-core).",
                                "dir");
    QCommandLineOption reportDir("report-dir", "Save the UI reports of \"report\" steps in <dir> (default: here).", "dir");
    cli.addOptions({port, listen, tls, cert, key, writeCert, scenario, queueLimit, programs, reportDir});
    cmdline::parse(cli, QStringLiteral("Simulated core application for TGUILib GUI processes"));
    int portNumber = 10010;
    QHostAddress address(QHostAddress::Any);
    qint64 queueBytes = CoreServer::DefaultQueueLimit;
    if (!cmdline::number(cli, port, 0, 65535, &portNumber) || !cmdline::address(cli, listen, &address)
        || !cmdline::number(cli, queueLimit, qint64(1024), qint64(1) << 40, &queueBytes))
        return cmdline::UsageError;

    CoreServer server;
    server.setQueueLimit(queueBytes);
    if (cli.isSet(tls)) {
        QByteArray certPem, keyPem;
        if (cli.isSet(cert) || cli.isSet(key)) {
            certPem = readFile(cli.value(cert));
            keyPem = readFile(cli.value(key));
        } else {
            const SelfSignedCert made = makeSelfSignedCert("tgui-core");
            certPem = made.certPem;
            keyPem = made.keyPem;
            if (cli.isSet(writeCert)) {
                const QDir dir(cli.value(writeCert));
                if (!writeFile(dir.filePath("tgui-core.crt"), certPem)
                    || !writeFile(dir.filePath("tgui-core.key"), keyPem))
                    std::fprintf(stderr, "tgui-core: cannot write the certificate into %s\n",
                                 qPrintable(dir.path()));
            }
        }
        const QSslCertificate certificate(certPem, QSsl::Pem);
        QSslKey privateKey(keyPem, QSsl::Ec, QSsl::Pem);
        if (privateKey.isNull())
            privateKey = QSslKey(keyPem, QSsl::Rsa, QSsl::Pem);
        if (certificate.isNull() || privateKey.isNull()) {
            std::fprintf(stderr, "tgui-core: no usable certificate and key for --tls\n");
            return 2;
        }
        server.setTls(certificate, privateKey);
    }
    server.setProgramDir(cli.value(programs));
    if (cli.isSet(reportDir))
        server.setReportDir(cli.value(reportDir));
    if (cli.isSet(scenario)) {
        QString error;
        if (!server.loadScenario(cli.value(scenario), &error)) {
            std::fprintf(stderr, "tgui-core: cannot read scenario %s: %s\n",
                         qPrintable(cli.value(scenario)), qPrintable(error));
            return 2;
        }
    }
    if (!server.listen(address, quint16(portNumber))) {
        std::fprintf(stderr, "tgui-core: cannot listen on %s port %d: %s\n",
                     qPrintable(address.toString()), portNumber, qPrintable(server.errorString()));
        return 1;
    }
    // SIGTERM and SIGINT: the loop ends with code 0, the server's destructor
    // stops the peers the scenario started and closes every connection.
    if (!stopsignals::install([] {
            std::fprintf(stdout, "STOPPING\n");
            std::fflush(stdout);
            QCoreApplication::exit(0);
        }))
        return 1;
    std::fprintf(stdout, "LISTENING %u%s\n", unsigned(server.serverPort()), cli.isSet(tls) ? " tls" : "");
    std::fflush(stdout);
    server.startScenario();
    return app.exec();
}

#pragma once
// A certificate and key for the TLS listener, made on the spot when none is given.
#include <QByteArray>

struct SelfSignedCert {
    QByteArray certPem;
    QByteArray keyPem;
    bool ok = false;
};

// EC P-256 key, SHA-256 signature, valid for a year, CN=commonName.
SelfSignedCert makeSelfSignedCert(const char* commonName);

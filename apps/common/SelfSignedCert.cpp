#include "SelfSignedCert.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

namespace {
QByteArray drain(BIO* bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return size > 0 ? QByteArray(data, int(size)) : QByteArray();
}
}  // namespace

SelfSignedCert makeSelfSignedCert(const char* commonName)
{
    SelfSignedCert result;
    EVP_PKEY* key = EVP_EC_gen("P-256");
    X509* cert = X509_new();
    BIO* certBio = BIO_new(BIO_s_mem());
    BIO* keyBio = BIO_new(BIO_s_mem());
    if (key && cert && certBio && keyBio) {
        X509_set_version(cert, 2);
        ASN1_INTEGER_set(X509_get_serialNumber(cert), 1);
        X509_gmtime_adj(X509_getm_notBefore(cert), 0);
        X509_gmtime_adj(X509_getm_notAfter(cert), 365L * 24 * 3600);
        X509_set_pubkey(cert, key);
        X509_NAME* name = X509_get_subject_name(cert);
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0);
        X509_set_issuer_name(cert, name);
        if (X509_sign(cert, key, EVP_sha256()) > 0 && PEM_write_bio_X509(certBio, cert) == 1
            && PEM_write_bio_PrivateKey(keyBio, key, nullptr, nullptr, 0, nullptr, nullptr) == 1) {
            result.certPem = drain(certBio);
            result.keyPem = drain(keyBio);
            result.ok = !result.certPem.isEmpty() && !result.keyPem.isEmpty();
        }
    }
    BIO_free(keyBio);
    BIO_free(certBio);
    X509_free(cert);
    EVP_PKEY_free(key);
    return result;
}

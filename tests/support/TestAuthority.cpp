#include "support/TestAuthority.h"

#include <QtCore/QByteArrayList>

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace Korvo::Web::TestSupport {

namespace {

constexpr long VALID_BEFORE_SECONDS = 24 * 3600;
constexpr long VALID_FOR_SECONDS = 30 * 24 * 3600;

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Memory = std::unique_ptr<BIO, decltype(&BIO_free)>;

Key newKey()
{
    return Key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
}

void addExtension(X509 *certificate, X509V3_CTX *context, int kind, const QByteArray &value)
{
    X509_EXTENSION *const extension = X509V3_EXT_conf_nid(nullptr, context, kind, value.constData());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void nameSubject(X509 *certificate, const char *commonName)
{
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(commonName), -1, -1, 0);
}

Certificate newCertificate(EVP_PKEY *key, const char *commonName, long serial)
{
    Certificate certificate(X509_new(), &X509_free);
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -VALID_BEFORE_SECONDS);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), VALID_FOR_SECONDS);
    X509_set_pubkey(certificate.get(), key);
    nameSubject(certificate.get(), commonName);
    return certificate;
}

void sign(X509 *certificate, X509 *issuer, EVP_PKEY *issuerKey, const QList<QPair<int, QByteArray>> &extensions)
{
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    for (const auto &extension : extensions)
        addExtension(certificate, &context, extension.first, extension.second);
    X509_sign(certificate, issuerKey, EVP_sha256());
}

QByteArray contentOf(const Memory &memory)
{
    char *text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return QByteArray(text, int(size));
}

QByteArray pemOf(X509 *certificate)
{
    const Memory memory(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_X509(memory.get(), certificate);
    return contentOf(memory);
}

QByteArray pemOf(EVP_PKEY *key)
{
    const Memory memory(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return contentOf(memory);
}

QByteArray alternativeNames(const QList<QByteArray> &hostNames)
{
    QByteArrayList names;
    for (const QByteArray &host : hostNames)
        names.append("DNS:" + host);
    return names.join(',');
}

} // namespace

TestAuthority TestAuthority::forHosts(const QList<QByteArray> &hostNames)
{
    const Key authorityKey = newKey();
    const Certificate authority = newCertificate(authorityKey.get(), "Korvo test authority", 1);
    sign(authority.get(), authority.get(), authorityKey.get(),
         {{NID_basic_constraints, "critical,CA:TRUE"}, {NID_key_usage, "critical,keyCertSign,cRLSign"}});

    const Key hostKey = newKey();
    const Certificate host = newCertificate(hostKey.get(), "Korvo test server", 2);
    sign(host.get(), authority.get(), authorityKey.get(),
         {{NID_basic_constraints, "critical,CA:FALSE"}, {NID_subject_alt_name, alternativeNames(hostNames)}});

    return {pemOf(authority.get()), pemOf(host.get()), pemOf(hostKey.get())};
}

} // namespace Korvo::Web::TestSupport

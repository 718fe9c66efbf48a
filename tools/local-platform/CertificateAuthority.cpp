#include "CertificateAuthority.h"

#include "Crypto.h"

#include <openssl/bn.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr long DAY = 24 * 60 * 60;
constexpr long AUTHORITY_DAYS = 3650;
constexpr long SERVER_DAYS = 365;

constexpr CertificateFlavour FLAVOURS[] = {CertificateFlavour::Right, CertificateFlavour::WrongHost, CertificateFlavour::Expired,
                                           CertificateFlavour::SelfSigned};

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

File openFile(const std::string &path, const char *mode)
{
    File file(std::fopen(path.c_str(), mode), &std::fclose);
    if (!file)
        throw std::runtime_error("cannot open " + path);
    return file;
}

void require(bool ok, const char *what)
{
    if (!ok)
        throw std::runtime_error(std::string("certificates: ") + what);
}

EVP_PKEY *newKey()
{
    EVP_PKEY *key = EVP_EC_gen("P-256");
    require(key != nullptr, "cannot make a key");
    return key;
}

void setSerial(X509 *certificate)
{
    std::string bytes = randomBytes(16);
    bytes[0] = static_cast<char>(bytes[0] & 0x7f);
    BIGNUM *number = BN_bin2bn(reinterpret_cast<const unsigned char *>(bytes.data()), static_cast<int>(bytes.size()), nullptr);
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
    BN_free(number);
}

void setName(X509_NAME *name, const std::string &commonName)
{
    const auto add = [name](const char *field, const std::string &value) {
        X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(value.c_str()), -1, -1, 0);
    };
    add("O", "Korvo local platform");
    add("CN", commonName);
}

void addExtension(X509 *certificate, X509 *issuer, int id, const std::string &value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str());
    require(extension != nullptr, "cannot make an extension");
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void setValidity(X509 *certificate, long fromDay, long toDay)
{
    X509_gmtime_adj(X509_getm_notBefore(certificate), fromDay * DAY);
    X509_gmtime_adj(X509_getm_notAfter(certificate), toDay * DAY);
}

bool isAddress(const std::string &name)
{
    return name.find_first_not_of("0123456789.") == std::string::npos || name.find(':') != std::string::npos;
}

std::string alternativeNames(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names)
        text += (text.empty() ? "" : ",") + std::string(isAddress(name) ? "IP:" : "DNS:") + name;
    return text;
}

} // namespace

CertificateAuthority::CertificateAuthority(const std::string &dataFolder, const std::vector<std::string> &hostNames)
    : authorityFile(dataFolder + "/ca.pem"), names(hostNames)
{
    const std::string keyFile = dataFolder + "/ca.key";
    if (std::filesystem::exists(authorityFile) && std::filesystem::exists(keyFile))
        load(keyFile);
    else
        create(keyFile);
    for (const CertificateFlavour flavour : FLAVOURS)
        contexts.push_back(makeContext(flavour));
}

SSL_CTX *CertificateAuthority::context(CertificateFlavour flavour) const
{
    return contexts[static_cast<std::size_t>(flavour)].get();
}

void CertificateAuthority::load(const std::string &keyFile)
{
    key.reset(PEM_read_PrivateKey(openFile(keyFile, "r").get(), nullptr, nullptr, nullptr));
    certificate.reset(PEM_read_X509(openFile(authorityFile, "r").get(), nullptr, nullptr, nullptr));
    require(key && certificate, "the authority in the data folder cannot be read");
}

void CertificateAuthority::create(const std::string &keyFile)
{
    key.reset(newKey());
    certificate.reset(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    setSerial(certificate.get());
    setValidity(certificate.get(), -1, AUTHORITY_DAYS);
    setName(X509_get_subject_name(certificate.get()), "Korvo local platform authority " + randomHex(4));
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    X509_set_pubkey(certificate.get(), key.get());
    addExtension(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(certificate.get(), certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
    require(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0, "cannot sign");

    const mode_t previous = umask(0077);
    const int written = PEM_write_PrivateKey(openFile(keyFile, "w").get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    umask(previous);
    require(written == 1 && PEM_write_X509(openFile(authorityFile, "w").get(), certificate.get()) == 1, "cannot be written");
}

CertificateAuthority::Certificate CertificateAuthority::makeCertificate(CertificateFlavour flavour, EVP_PKEY *serverKey) const
{
    const bool selfSigned = flavour == CertificateFlavour::SelfSigned;
    Certificate made(X509_new(), X509_free);
    X509_set_version(made.get(), X509_VERSION_3);
    setSerial(made.get());
    if (flavour == CertificateFlavour::Expired)
        setValidity(made.get(), -30, -2);
    else
        setValidity(made.get(), -1, SERVER_DAYS);
    setName(X509_get_subject_name(made.get()), flavour == CertificateFlavour::WrongHost ? "wrong.korvo.example" : names.front());
    X509 *issuer = selfSigned ? made.get() : certificate.get();
    X509_set_issuer_name(made.get(), X509_get_subject_name(issuer));
    X509_set_pubkey(made.get(), serverKey);
    addExtension(made.get(), issuer, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(made.get(), issuer, NID_ext_key_usage, "serverAuth");
    addExtension(made.get(), issuer, NID_subject_alt_name,
                 flavour == CertificateFlavour::WrongHost ? "DNS:wrong.korvo.example" : alternativeNames(names));
    require(X509_sign(made.get(), selfSigned ? serverKey : key.get(), EVP_sha256()) > 0, "cannot sign");
    return made;
}

CertificateAuthority::Context CertificateAuthority::makeContext(CertificateFlavour flavour) const
{
    const Key serverKey(newKey(), EVP_PKEY_free);
    const Certificate shown = makeCertificate(flavour, serverKey.get());
    Context context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    // Without resumption every connection shows its certificate, so a certificate fault is seen at once.
    SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET | SSL_OP_NO_COMPRESSION);
    SSL_CTX_set_num_tickets(context.get(), 0);
    SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
    SSL_CTX_set_mode(context.get(), SSL_MODE_AUTO_RETRY | SSL_MODE_RELEASE_BUFFERS);
    require(SSL_CTX_use_certificate(context.get(), shown.get()) == 1 && SSL_CTX_use_PrivateKey(context.get(), serverKey.get()) == 1,
            "the server's certificate does not fit");
    return context;
}

} // namespace LocalPlatform

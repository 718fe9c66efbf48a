#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <vector>

namespace LocalPlatform {

enum class CertificateFlavour { Right, WrongHost, Expired, SelfSigned };

/// The platform's private certificate authority, made on first start and kept in the data folder, and the
/// certificates that the server shows. Those are made afresh at each start.
class CertificateAuthority
{
public:
    CertificateAuthority(const std::string &dataFolder, const std::vector<std::string> &hostNames);

    /// The file that a client has to trust.
    const std::string &file() const { return authorityFile; }

    /// The context for a TLS server; contexts of all flavours live as long as this object.
    SSL_CTX *context(CertificateFlavour flavour) const;

private:
    using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
    using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
    using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

    void load(const std::string &keyFile);
    void create(const std::string &keyFile);
    Context makeContext(CertificateFlavour flavour) const;
    Certificate makeCertificate(CertificateFlavour flavour, EVP_PKEY *serverKey) const;

    std::string authorityFile;
    std::vector<std::string> names;
    Key key{nullptr, EVP_PKEY_free};
    Certificate certificate{nullptr, X509_free};
    std::vector<Context> contexts;
};

} // namespace LocalPlatform

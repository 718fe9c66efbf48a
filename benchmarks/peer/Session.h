#pragma once

#include "peer/Requests.h"

#include <string>

namespace Korvo::Bench {

/// A logged-in user: knows how the requests of both servers look and are signed.
class Session
{
public:
    explicit Session(Requests &sharedRequests)
        : requests(sharedRequests)
    {
    }

    /// The four requests of a login.
    void logIn();

    PeerRequest web(const char *method, const std::string &route, std::string body = {}) const;
    PeerRequest statuses(std::string body) const;
    /// @p signedPath goes into the signature as it is, and encoded into the address.
    PeerRequest service(const char *method, const std::string &signedPath, std::string body = {},
                        const std::string &query = {}) const;
    /// All files of a bucket.
    PeerRequest listing(const std::string &bucket) const;
    /// A signed request for a file, which comes uncompressed.
    PeerRequest download(const std::string &signedPath) const;

    Requests &requests;

private:
    PeerRequest plain(const char *method, const std::string &route, const std::string &contentType,
                      std::string body) const;
    PeerRequest serviceWithoutSignature(const char *method, const std::string &signedPath, std::string body,
                                        const std::string &query, std::string *toSign) const;

    std::string token;
    std::string clientId = "Vantrel";
    std::string secret;
};

} // namespace Korvo::Bench

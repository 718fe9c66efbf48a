#pragma once

#include "AccountStore.h"
#include "Clock.h"

#include <httplib.h>

#include <map>
#include <mutex>
#include <string>

namespace LocalPlatform {

/// Verifies service requests: the signature over five lines, the date, a message token never seen before.
class SignatureCheck
{
public:
    SignatureCheck(AccountStore &accountStore) : accounts(accountStore) {}

    struct Verdict
    {
        Company company;
        bool resent = false; ///< the very same request has come before
    };

    /// @p path is what the client signed: relative to the service's root, without parameters. Throws Refusal.
    Verdict verify(const httplib::Request &request, const std::string &path, std::int64_t now);

    /// For the one service request that carries the headers but no signature.
    void verifyHeadersOnly(const httplib::Request &request) const;

private:
    struct Seen
    {
        std::size_t fingerprint;
        std::int64_t at;
    };

    bool registerToken(const std::string &token, std::size_t fingerprint, std::int64_t now);

    AccountStore &accounts;
    std::mutex mutex; ///< guards tokens and nextSweep
    std::map<std::string, Seen> tokens;
    std::int64_t nextSweep = 0;
};

} // namespace LocalPlatform

#pragma once

#include "Clock.h"
#include "Database.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace LocalPlatform {

struct Account
{
    std::string email;
    std::string firstName;
    std::string lastName;
    std::string companyId;
    std::string roles;
    std::string secondFactor; ///< the code; empty: none is asked for
    std::int64_t tokenLifetime = 0;
};

struct Company
{
    std::string id;
    std::string clientId;
    std::string secretKey;
};

struct IssuedToken
{
    std::string text;
    std::int64_t issued = 0;
    std::int64_t expires = 0;
};

/// Users, their companies with the clients' credentials, and the tokens given out.
class AccountStore
{
public:
    AccountStore(Database &target, const Clock &platformClock);

    void addDefaults();

    /// Adds or replaces; @p description as the control route takes it. Throws Refusal if it is not usable.
    void add(const nlohmann::json &description);

    std::optional<Account> find(const std::string &email);
    std::optional<Account> checkPassword(const std::string &email, const std::string &password);
    IssuedToken issueToken(const Account &account);

    /// The account a token stands for, while it is valid.
    std::optional<Account> accountForToken(const std::string &token);
    void revokeToken(const std::string &token);

    std::optional<Company> company(const std::string &id);
    std::optional<Company> companyOfClient(const std::string &clientId);

    void recordReset(const std::string &user);
    nlohmann::json resets();

    /// Without passwords, codes, tokens and secrets.
    nlohmann::json overview();

private:
    void addCompany(const std::string &id, const std::string &name);
    void store(const Account &account, const std::string &password);

    Database &database;
    const Clock &clock;
    std::mutex cacheMutex; ///< guards the cache; signed requests ask for their client each time
    std::map<std::string, Company> clientCache;
};

} // namespace LocalPlatform

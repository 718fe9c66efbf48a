#include "AccountStore.h"

#include "Crypto.h"
#include "Refusal.h"

#include <nlohmann/json.hpp>

namespace LocalPlatform {
namespace {

constexpr std::int64_t DEFAULT_TOKEN_LIFETIME = 24 * 60 * 60;
constexpr std::size_t SALT_BYTES = 16;

const char *const DEFAULT_ACCOUNTS = R"([
    {"email": "inspector@korvo.example", "password": "Camera 12%1+Kanal", "firstName": "Ida", "lastName": "Weiß"},
    {"email": "secure@korvo.example", "password": "Second-Factor-1", "firstName": "Sepp", "lastName": "Grün",
     "roles": "COMPANY_OPERATOR", "secondFactor": "123456"},
    {"email": "expiring@korvo.example", "password": "Short-Lived-1", "firstName": "Eva", "lastName": "Kurz", "tokenLifetime": 601}
])";

constexpr const char *ACCOUNT_COLUMNS = "email, first_name, last_name, company_id, roles, second_factor, token_lifetime";

Account accountOf(const Statement &row)
{
    return {row.text(0), row.text(1), row.text(2), row.text(3), row.text(4), row.text(5), row.integer(6)};
}

Company companyOf(const Statement &row)
{
    return {row.text(0), row.text(1), row.text(2)};
}

template<typename T>
T valueOr(const nlohmann::json &object, const char *name, T fallback)
{
    try {
        return object.value(name, fallback);
    } catch (const nlohmann::json::exception &) {
        throw Refusal(400, std::string("wrong type of value: ") + name, name);
    }
}

} // namespace

AccountStore::AccountStore(Database &target, const Clock &platformClock) : database(target), clock(platformClock) {}

void AccountStore::addDefaults()
{
    for (const auto &description : nlohmann::json::parse(DEFAULT_ACCOUNTS))
        if (!find(description["email"]))
            add(description);
}

void AccountStore::add(const nlohmann::json &description)
{
    if (!description.is_object())
        throw Refusal(400, "an account is a JSON object");
    Account account;
    account.email = valueOr<std::string>(description, "email", "");
    account.firstName = valueOr<std::string>(description, "firstName", "First");
    account.lastName = valueOr<std::string>(description, "lastName", "Last");
    account.companyId = valueOr<std::string>(description, "companyId", "korvo-company-01");
    account.roles = valueOr<std::string>(description, "roles", "COMPANY_OPERATOR");
    account.secondFactor = valueOr<std::string>(description, "secondFactor", "");
    account.tokenLifetime = valueOr<std::int64_t>(description, "tokenLifetime", DEFAULT_TOKEN_LIFETIME);
    const auto password = valueOr<std::string>(description, "password", "");
    if (account.email.empty() || password.empty() || account.companyId.empty())
        throw Refusal(400, "an account needs email, password and companyId");
    addCompany(account.companyId, valueOr<std::string>(description, "company", "Kanal GmbH"));
    store(account, password);
}

void AccountStore::addCompany(const std::string &id, const std::string &name)
{
    const auto guard = database.lock();
    Statement(database, "INSERT INTO companies VALUES(?, ?, ?, ?) ON CONFLICT(id) DO UPDATE SET name = excluded.name")
        .bind(id).bind(name).bind("client-" + randomHex(8)).bind(randomHex(32)).run();
}

void AccountStore::store(const Account &account, const std::string &password)
{
    const std::string salt = randomBytes(SALT_BYTES);
    const std::string hash = scryptHash(password, salt);
    const auto guard = database.lock();
    Statement(database, "INSERT OR REPLACE INTO accounts(salt, hash, email, first_name, last_name, company_id, roles, second_factor, "
                        "token_lifetime) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .bindBlob(salt).bindBlob(hash).bind(account.email).bind(account.firstName).bind(account.lastName)
        .bind(account.companyId).bind(account.roles).bind(account.secondFactor).bind(account.tokenLifetime).run();
}

std::optional<Account> AccountStore::find(const std::string &email)
{
    const auto guard = database.lock();
    Statement row(database, std::string("SELECT ") + ACCOUNT_COLUMNS + " FROM accounts WHERE email = ?");
    row.bind(email);
    return row.step() ? std::optional(accountOf(row)) : std::nullopt;
}

std::optional<Account> AccountStore::checkPassword(const std::string &email, const std::string &password)
{
    std::string salt(SALT_BYTES, '\0');
    std::string hash;
    {
        const auto guard = database.lock();
        Statement row(database, "SELECT salt, hash FROM accounts WHERE email = ?");
        row.bind(email);
        if (row.step()) {
            salt = row.text(0);
            hash = row.text(1);
        }
    }
    // Hashed for an unknown user too, so that the time taken tells nothing.
    return equalInConstantTime(scryptHash(password, salt), hash) ? find(email) : std::nullopt;
}

IssuedToken AccountStore::issueToken(const Account &account)
{
    IssuedToken token;
    token.text = randomHex(32);
    token.issued = clock.now();
    token.expires = token.issued + account.tokenLifetime;
    const auto guard = database.lock();
    Statement(database, "DELETE FROM tokens WHERE expires < ?").bind(token.issued - DEFAULT_TOKEN_LIFETIME).run();
    Statement(database, "INSERT INTO tokens VALUES(?, ?, ?)").bindBlob(sha256(token.text)).bind(account.email).bind(token.expires).run();
    return token;
}

std::optional<Account> AccountStore::accountForToken(const std::string &token)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT email, expires FROM tokens WHERE token_hash = ?");
    row.bindBlob(sha256(token));
    if (!row.step() || row.integer(1) <= clock.now())
        return std::nullopt;
    return find(row.text(0));
}

void AccountStore::revokeToken(const std::string &token)
{
    const auto guard = database.lock();
    Statement(database, "DELETE FROM tokens WHERE token_hash = ?").bindBlob(sha256(token)).run();
}

std::optional<Company> AccountStore::company(const std::string &id)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT id, client_id, secret_key FROM companies WHERE id = ?");
    row.bind(id);
    return row.step() ? std::optional(companyOf(row)) : std::nullopt;
}

std::optional<Company> AccountStore::companyOfClient(const std::string &clientId)
{
    const std::lock_guard cacheGuard(cacheMutex);
    const auto known = clientCache.find(clientId);
    if (known != clientCache.end())
        return known->second;
    const auto guard = database.lock();
    Statement row(database, "SELECT id, client_id, secret_key FROM companies WHERE client_id = ?");
    row.bind(clientId);
    if (!row.step())
        return std::nullopt;
    return clientCache.emplace(clientId, companyOf(row)).first->second;
}

void AccountStore::recordReset(const std::string &user)
{
    const bool known = find(user).has_value();
    const auto guard = database.lock();
    Statement(database, "INSERT INTO resets(user, known, at) VALUES(?, ?, ?)").bind(user).bind(std::int64_t(known)).bind(isoDate(clock.now())).run();
}

nlohmann::json AccountStore::resets()
{
    nlohmann::json list = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, "SELECT user, known, at FROM resets ORDER BY id");
    while (row.step())
        list.push_back({{"user", row.text(0)}, {"known", row.integer(1) != 0}, {"at", row.text(2)}});
    return list;
}

nlohmann::json AccountStore::overview()
{
    nlohmann::json list = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, std::string("SELECT ") + ACCOUNT_COLUMNS + " FROM accounts ORDER BY email");
    while (row.step()) {
        const Account account = accountOf(row);
        list.push_back({{"email", account.email}, {"firstName", account.firstName}, {"lastName", account.lastName},
                        {"companyId", account.companyId}, {"roles", account.roles},
                        {"secondFactor", !account.secondFactor.empty()}, {"tokenLifetime", account.tokenLifetime}});
    }
    return list;
}

} // namespace LocalPlatform

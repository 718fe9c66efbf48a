#include "Crypto.h"

#include "Text.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr std::size_t DIGEST_BYTES = 32;
constexpr std::uint64_t SCRYPT_COST = 16384;
constexpr std::uint64_t SCRYPT_BLOCK = 8;
constexpr std::uint64_t SCRYPT_MEMORY = 64 * 1024 * 1024;

unsigned char *bytesOf(std::string &text)
{
    return reinterpret_cast<unsigned char *>(text.data());
}

const unsigned char *bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

} // namespace

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(bytesOf(bytes), static_cast<int>(count)) != 1)
        throw std::runtime_error("no random bytes");
    return bytes;
}

std::string randomHex(std::size_t bytes)
{
    return hexEncoded(randomBytes(bytes));
}

std::string sha256(std::string_view bytes)
{
    Sha256 hash;
    hash.add(bytes);
    return hash.result();
}

std::string hmacSha256(std::string_view key, std::string_view message)
{
    std::string digest(DIGEST_BYTES, '\0');
    unsigned int length = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), bytesOf(message), message.size(), bytesOf(digest), &length);
    return digest;
}

std::string scryptHash(std::string_view password, std::string_view salt)
{
    std::string key(DIGEST_BYTES, '\0');
    if (EVP_PBE_scrypt(password.data(), password.size(), bytesOf(salt), salt.size(), SCRYPT_COST, SCRYPT_BLOCK, 1, SCRYPT_MEMORY,
                       bytesOf(key), key.size()) != 1)
        throw std::runtime_error("scrypt failed");
    return key;
}

bool equalInConstantTime(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

Sha256::Sha256() : context(EVP_MD_CTX_new())
{
    EVP_DigestInit_ex(static_cast<EVP_MD_CTX *>(context), EVP_sha256(), nullptr);
}

Sha256::~Sha256()
{
    EVP_MD_CTX_free(static_cast<EVP_MD_CTX *>(context));
}

void Sha256::add(std::string_view bytes)
{
    EVP_DigestUpdate(static_cast<EVP_MD_CTX *>(context), bytes.data(), bytes.size());
}

std::string Sha256::result()
{
    std::string digest(DIGEST_BYTES, '\0');
    EVP_DigestFinal_ex(static_cast<EVP_MD_CTX *>(context), bytesOf(digest), nullptr);
    return digest;
}

} // namespace LocalPlatform

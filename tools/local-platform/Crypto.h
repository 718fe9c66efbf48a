#pragma once

#include <string>
#include <string_view>

namespace LocalPlatform {

std::string randomBytes(std::size_t count);
std::string randomHex(std::size_t bytes);
std::string sha256(std::string_view bytes);
std::string hmacSha256(std::string_view key, std::string_view message);
std::string scryptHash(std::string_view password, std::string_view salt);

/// Takes the same time wherever the first difference stands.
bool equalInConstantTime(std::string_view a, std::string_view b);

/// SHA-256 of bytes that arrive piece by piece.
class Sha256
{
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256 &) = delete;
    Sha256 &operator=(const Sha256 &) = delete;

    void add(std::string_view bytes);
    std::string result();

private:
    void *context;
};

} // namespace LocalPlatform

#include "accounts/Password.h"

#include <crypt.h>
#include <string.h>
#include <sys/random.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace sonolet::service {

namespace {

// crypt's working memory (32 KiB), wiped when done: it has held the password.
struct CryptData {
    CryptData() : data(std::make_unique<crypt_data>()) {}
    ~CryptData() { explicit_bzero(data.get(), sizeof(*data)); }
    CryptData(const CryptData&) = delete;
    CryptData& operator=(const CryptData&) = delete;

    std::unique_ptr<crypt_data> data;
};

std::string hashWith(const Secret& password, const std::string& setting) {
    const CryptData work;
    const char* hash =
        crypt_rn(password.value().c_str(), setting.c_str(), work.data.get(), sizeof(crypt_data));
    // A failure gives a token that starts with '*', never a hash.
    return hash == nullptr || *hash == '*' ? std::string() : std::string(hash);
}

}  // namespace

Secret::~Secret() {
    explicit_bzero(text.data(), text.size());
}

std::string hashPassword(const Secret& password) {
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (crypt_gensalt_rn("$y$", 0, nullptr, 0, setting, sizeof(setting)) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot make a yescrypt salt");
    }
    std::string hash = hashWith(password, setting);
    if (hash.empty()) {
        throw std::runtime_error("cannot hash the password: it is too long");
    }
    return hash;
}

bool matchesPassword(const Secret& password, const std::string& hash) {
    const std::string found = hashWith(password, hash);
    if (found.empty() || found.size() != hash.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t place = 0; place < hash.size(); ++place) {
        difference |= static_cast<unsigned char>(found[place] ^ hash[place]);
    }
    return difference == 0;
}

std::string randomText(std::size_t bytes) {
    static constexpr char hexadecimal[] = "0123456789abcdef";
    std::string random(bytes, '\0');
    if (getrandom(random.data(), bytes, 0) != static_cast<ssize_t>(bytes)) {
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
    std::string text;
    text.reserve(2 * bytes);
    for (const char character : random) {
        const auto value = static_cast<unsigned char>(character);
        text += hexadecimal[value >> 4];
        text += hexadecimal[value & 0xf];
    }
    return text;
}

}  // namespace sonolet::service

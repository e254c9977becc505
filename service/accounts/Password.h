#ifndef SONOLET_SERVICE_ACCOUNTS_PASSWORD_H
#define SONOLET_SERVICE_ACCOUNTS_PASSWORD_H

#include <cstddef>
#include <string>

namespace sonolet::service {

// A secret in memory: wiped when it goes, each copy by itself. What hands it on copies the object
// and never the text.
class Secret final {
public:
    Secret() = default;
    explicit Secret(const char* secretText) : text(secretText == nullptr ? "" : secretText) {}
    Secret(const Secret&) = default;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    const std::string& value() const { return text; }

private:
    std::string text;
};

// The yescrypt hash of a password with a fresh salt. Slow on purpose: tens of milliseconds. The
// text says by which method and how hard, so that hashes of other days can still be checked. Throws
// std::runtime_error for a password that is too long or without randomness. Any thread.
std::string hashPassword(const Secret& password);

// Whether `password` gives `hash`; the time taken tells nothing of where they differ. A hash that
// is none matches nothing.
bool matchesPassword(const Secret& password, const std::string& hash);

// Random bytes as text of 2 * `bytes` hexadecimal digits.
std::string randomText(std::size_t bytes);

}  // namespace sonolet::service

#endif

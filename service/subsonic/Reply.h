#ifndef SONOLET_SERVICE_SUBSONIC_REPLY_H
#define SONOLET_SERVICE_SUBSONIC_REPLY_H

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct _JsonNode;

namespace sonolet::service {

// A part of a server's answer, or one that is missing. Servers differ: what is one of many may come
// without its list, a number as a text, a text as a number. So nothing here fails; what is not
// there is empty or 0.
//
// Threads: constant, for any. Ownership: a part keeps the whole.
class Reply final {
public:
    // Text that is no answer: why.
    class Malformed final : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    // Nothing.
    Reply() = default;
    // Reads a whole answer. Throws Malformed, also for what is nested as no answer is.
    static Reply parse(std::string_view json);

    bool exists() const { return node != nullptr; }
    // A member of an object.
    Reply operator[](const char* name) const;
    // The elements of a list; of anything else that exists, itself.
    std::vector<Reply> list() const;

    // Valid UTF-8 without control characters.
    std::string text() const;
    std::int64_t number() const;
    bool flag() const;
    // ISO 8601, with any fraction, with or without a zone (then the local one), as microseconds
    // since 1970.
    std::int64_t time() const;

private:
    std::shared_ptr<const void> whole;
    _JsonNode* node = nullptr;  // of the whole
};

}  // namespace sonolet::service

#endif

#include "jspp/_detail/pool.h"

namespace jspp::__detail {

void pool::grow() {
    constexpr std::size_t count = 32;
    auto* const memory = static_cast<unsigned char*>(::operator new(count* size));
    for (std::size_t i = count; i > 0; --i) {
        give(memory + (i - 1) * size);
    }
}

}  // namespace jspp::__detail

#include "Allocations.h"

#include "../fakes/Faults.h"

#include <stdlib.h>

#include <new>
#include <unordered_map>

namespace {

template <typename T>
struct Malloc {
    using value_type = T;
    Malloc() = default;
    template <typename U>
    explicit Malloc(const Malloc<U>&) {}
    T* allocate(std::size_t count) {
        return static_cast<T*>(malloc(count * sizeof(T)));  // NOLINT(bugprone-sizeof-expression)
    }
    void deallocate(T* block, std::size_t) { free(block); }
    bool operator==(const Malloc&) const { return true; }
    bool operator!=(const Malloc&) const { return false; }
};

using Sizes = std::unordered_map<void*,
                                 std::size_t,
                                 std::hash<void*>,
                                 std::equal_to<>,
                                 Malloc<std::pair<void* const, std::size_t>>>;

// Never destroyed: blocks are freed up to the end of the process.
Sizes& sizes() {
    alignas(Sizes) static unsigned char storage[sizeof(Sizes)];
    static auto* instance = new (storage) Sizes;
    return *instance;
}

std::size_t bytesHeld = 0;

void* allocate(std::size_t size) {
    if (Faults::get().strikes(Faults::Memory)) {
        return nullptr;
    }
    void* const block = malloc(size == 0 ? 1 : size);
    if (Faults::inPlugin && block != nullptr) {
        sizes().emplace(block, size);
        bytesHeld += size;
    }
    return block;
}

void release(void* block) {
    const auto known = sizes().find(block);
    if (known != sizes().end()) {
        bytesHeld -= known->second;
        sizes().erase(known);
    }
    free(block);
}

}  // namespace

Allocations Allocations::held() {
    return {sizes().size(), bytesHeld};
}

// clang-format off
void* operator new(std::size_t size) {
    if (void* const block = allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
// clang-format on

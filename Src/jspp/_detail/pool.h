#ifndef SONOLET_JSPP_DETAIL_POOL_H
#define SONOLET_JSPP_DETAIL_POOL_H

#include <cstddef>
#include <new>

namespace jspp::__detail {

// Memory for blocks of one size, for what comes and goes by the thousand: what one block leaves,
// the next takes. It is never given back.
//
// Threads: none of its own; whoever uses a pool says how. Errors: take() throws std::bad_alloc.
class pool final {
public:
    explicit constexpr pool(std::size_t block_size) noexcept : size(block_size) {}

    pool(const pool&) = delete;
    pool& operator=(const pool&) = delete;

#if defined(__SANITIZE_ADDRESS__)
    // So that a block that is used after its time is found.
    void* take() {
        return ::operator new(size);
    }
    void give(void* block) noexcept {
        ::operator delete(block);
    }
#else
    void* take() {
        if (!unused) {
            grow();
        }
        link* const block = unused;
        unused = block->next;
        return block;
    }
    void give(void* block) noexcept {
        unused = new (block) link{unused};
    }
#endif

private:
    struct link {
        link* next;
    };

    // Makes room for many blocks at once, and links them.
    void grow();

    const std::size_t size;
    [[maybe_unused]] link* unused = nullptr;  // under the sanitizer nothing is
};

// Base of a class whose objects are made with `new` and come from a pool of their own. REQUIRES:
// one thread makes and deletes them; nothing is derived from `Kind`.
template <class Kind>
class pooled {
public:
    static void* operator new(std::size_t) { return memory().take(); }
    static void operator delete(void* object) noexcept { memory().give(object); }

private:
    // Never destroyed: objects may go after the exit handlers.
    static pool& memory() noexcept {
        static pool blocks(sizeof(Kind));
        return blocks;
    }
};

// For the nodes of one container, which is never destroyed. Threads: the container's. Kind by kind
// a pool of its own, shared by all containers of such nodes.
template <class Kind>
class pool_allocator {
public:
    using value_type = Kind;

    pool_allocator() = default;
    template <class Other>
    // NOLINTNEXTLINE(google-explicit-constructor): an allocator is made of another kind's
    pool_allocator(const pool_allocator<Other>&) noexcept {}

    // One comes from the pool; several, as for a table, from the heap.
    Kind* allocate(std::size_t count) {
        return static_cast<Kind*>(count == 1 ? memory().take() : ::operator new(count* size));
    }
    void deallocate(Kind* place, std::size_t count) noexcept {
        if (count == 1) {
            memory().give(place);
        } else {
            ::operator delete(place);
        }
    }

private:
    static constexpr std::size_t size = sizeof(Kind);  // NOLINT(bugprone-sizeof-expression): any

    static pool& memory() noexcept {
        static pool blocks(size);
        return blocks;
    }
};
template <class One, class Other>
bool operator==(const pool_allocator<One>&, const pool_allocator<Other>&) noexcept {
    return true;
}
template <class One, class Other>
bool operator!=(const pool_allocator<One>&, const pool_allocator<Other>&) noexcept {
    return false;
}

}  // namespace jspp::__detail

#endif

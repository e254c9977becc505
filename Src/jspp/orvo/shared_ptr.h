#ifndef SONOLET_ORVO_SHARED_PTR_H
#define SONOLET_ORVO_SHARED_PTR_H

#include <atomic>
#include <cassert>
#include <cstddef>
#include <type_traits>
#include <utility>

// Counted pointers with atomic counts. A pointer object itself belongs to one thread at a time;
// copies of it may live and die on any thread, and the object is destroyed on the thread that
// drops the last one.
namespace orvo {

template <class T>
class shared_ptr;
template <class T>
class weak_ptr;
template <class T>
class enable_shared_from_this;

// Says that no other thread has a pointer to the object yet: counting is cheaper then.
struct unshared_t {};
inline constexpr unshared_t unshared{};

namespace __detail {

// What all pointers to one object share. It outlives the object while there are weak pointers.
struct count_block {
    std::atomic<int> strong{1};
    // The weak pointers, and one more for all the strong ones together: whoever takes it to 0
    // frees the block.
    std::atomic<int> weak{1};

    // REQUIRES: the caller has a share, or a weak pointer for the second.
    void add_strong() noexcept { strong.fetch_add(1, std::memory_order_relaxed); }
    void add_weak() noexcept { weak.fetch_add(1, std::memory_order_relaxed); }
    // The same while no other thread has a pointer to the object.
    void add_weak_unshared() noexcept {
        weak.store(weak.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    // False once the object has gone. For a weak pointer, whose object may be going on another
    // thread at this moment.
    bool add_strong_if_alive() noexcept {
        int count = strong.load(std::memory_order_relaxed);
        while (count > 0) {
            if (strong.compare_exchange_weak(count, count + 1, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    // The caller's weak pointer, or the share of all strong ones; the block may be gone afterwards.
    void drop_weak() noexcept {
        // Nobody can join whoever is alone, so then there is nothing to count.
        if (weak.load(std::memory_order_acquire) == 1 ||
            weak.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }
};

template <class T, class Base>
void link_self(const shared_ptr<T>& owner, enable_shared_from_this<Base>* object) noexcept;
template <class T>
void link_self(const shared_ptr<T>&, const volatile void*) noexcept {}

}  // namespace __detail

// One of the owners of an object, or none. The last one to go destroys it, with the deleter where
// there is one, else with delete. Nothing throws but the constructor that takes an object over.
template <class T>
class shared_ptr {
public:
    using deleter_type = void (*)(T*);

    shared_ptr() noexcept = default;
    // Owns nothing, as the one before.
    shared_ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)

    // Takes `object` over, also when this throws. Links the object's own weak pointer if it is an
    // enable_shared_from_this. Throws std::bad_alloc.
    explicit shared_ptr(T* object, deleter_type custom_deleter = nullptr)
        : pointer(object), deleter(custom_deleter) {
        try {
            block = new __detail::count_block;
        } catch (...) {
            destroy(object, custom_deleter);
            throw;
        }
        __detail::link_self(*this, object);
    }

    shared_ptr(const shared_ptr& other) noexcept
        : block(other.block), pointer(other.pointer), deleter(other.deleter) {
        if (block) {
            block->add_strong();
        }
    }

    shared_ptr(shared_ptr&& other) noexcept
        : block(std::exchange(other.block, nullptr)),
          pointer(std::exchange(other.pointer, nullptr)),
          deleter(std::exchange(other.deleter, nullptr)) {}

    // To a base class whose destructor is virtual. REQUIRES: `other` has no deleter of its own.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    shared_ptr(const shared_ptr<U>& other) noexcept  // NOLINT(google-explicit-constructor)
        : shared_ptr(other, other.pointer) {}

    // Shares the ownership of `other`, points to `object`, which is a part or a view of it.
    template <class U>
    shared_ptr(const shared_ptr<U>& other, T* object) noexcept
        : block(other.block), pointer(object) {
        assert(!other.deleter);
        if (block) {
            block->add_strong();
        }
    }

    ~shared_ptr() { decreaseRef(); }

    // What it held before goes after the assignment: its destructor finds the new state.
    shared_ptr& operator=(shared_ptr other) noexcept {
        swap(other);
        return *this;
    }

    // Gives up this owner's share and leaves it empty. Emptied before the object goes, so that a
    // destructor that comes back here finds nothing.
    void decreaseRef() noexcept {
        __detail::count_block* const counts = std::exchange(block, nullptr);
        T* const object = std::exchange(pointer, nullptr);
        const deleter_type custom_deleter = std::exchange(deleter, nullptr);
        if (!counts || counts->strong.fetch_sub(1, std::memory_order_acq_rel) != 1) {
            return;
        }
        destroy(object, custom_deleter);
        counts->drop_weak();
    }

    // The same, under the name that others know.
    void reset() noexcept { decreaseRef(); }

    // No count changes.
    void swap(shared_ptr& other) noexcept {
        std::swap(block, other.block);
        std::swap(pointer, other.pointer);
        std::swap(deleter, other.deleter);
    }

    // Borrowed; null for none. The operators REQUIRE an object.
    T* get() const noexcept { return pointer; }
    T& operator*() const noexcept { return *pointer; }
    T* operator->() const noexcept { return pointer; }
    explicit operator bool() const noexcept { return pointer != nullptr; }

private:
    template <class U>
    friend class shared_ptr;
    friend class weak_ptr<T>;
    template <class U>
    friend class weak_ptr;

    static void destroy(T* object, deleter_type custom_deleter) noexcept {
        if (custom_deleter) {
            custom_deleter(object);
        } else {
            delete object;
        }
    }

    // All three null, or the first two not; a pointer to a part has no deleter.
    __detail::count_block* block = nullptr;
    T* pointer = nullptr;
    deleter_type deleter = nullptr;
};

template <class T, class U>
bool operator==(const shared_ptr<T>& a, const shared_ptr<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T, class U>
bool operator!=(const shared_ptr<T>& a, const shared_ptr<U>& b) noexcept {
    return a.get() != b.get();
}

// Refers to an object without owning it; lock() tells whether it is still there.
template <class T>
class weak_ptr {
public:
    weak_ptr() noexcept = default;

    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    weak_ptr(const shared_ptr<U>& owner) noexcept  // NOLINT(google-explicit-constructor)
        : block(owner.block), pointer(owner.pointer) {
        if constexpr (std::is_same_v<U, T>) {
            deleter = owner.deleter;
        }
        if (block) {
            block->add_weak();
        }
    }

    // The same. REQUIRES: the owner owns something, without a deleter.
    template <class U>
    weak_ptr(const shared_ptr<U>& owner, unshared_t) noexcept
        : block(owner.block), pointer(owner.pointer) {
        assert(!owner.deleter);
        block->add_weak_unshared();
    }

    weak_ptr(const weak_ptr& other) noexcept
        : block(other.block), pointer(other.pointer), deleter(other.deleter) {
        if (block) {
            block->add_weak();
        }
    }

    weak_ptr(weak_ptr&& other) noexcept
        : block(std::exchange(other.block, nullptr)),
          pointer(std::exchange(other.pointer, nullptr)),
          deleter(std::exchange(other.deleter, nullptr)) {}

    ~weak_ptr() {
        if (block) {
            block->drop_weak();
        }
    }

    // As for owners: in one step, and nothing throws.
    weak_ptr& operator=(weak_ptr other) noexcept {
        std::swap(block, other.block);
        std::swap(pointer, other.pointer);
        std::swap(deleter, other.deleter);
        return *this;
    }

    // A share of the object, or an empty pointer when it has gone.
    shared_ptr<T> lock() const noexcept {
        shared_ptr<T> owner;
        if (block && block->add_strong_if_alive()) {
            owner.block = block;
            owner.pointer = pointer;
            owner.deleter = deleter;
        }
        return owner;
    }

    // True once the object has gone. False may be old when it returns, unless the caller's thread
    // is the one that destroys.
    bool expired() const noexcept {
        return !block || block->strong.load(std::memory_order_acquire) < 1;
    }

private:
    __detail::count_block* block = nullptr;
    T* pointer = nullptr;
    typename shared_ptr<T>::deleter_type deleter = nullptr;
};

// Base of a class that hands out shared pointers to itself. The pointers are empty until the first
// shared_ptr to the object exists, and again in its destructor.
template <class T>
class enable_shared_from_this {
public:
    // Any thread that has a share of the object.
    shared_ptr<T> shared_from_this() const noexcept { return self.lock(); }

protected:
    enable_shared_from_this() = default;
    // A copy is another object, with an owner of its own.
    enable_shared_from_this(const enable_shared_from_this&) noexcept {}
    enable_shared_from_this& operator=(const enable_shared_from_this&) noexcept { return *this; }
    ~enable_shared_from_this() = default;

private:
    template <class U, class Base>
    friend void __detail::link_self(const shared_ptr<U>&, enable_shared_from_this<Base>*) noexcept;

    weak_ptr<T> self;
};

template <class T, class Base>
void __detail::link_self(const shared_ptr<T>& owner,
                         enable_shared_from_this<Base>* object) noexcept {
    if (object) {
        object->self = weak_ptr<Base>(owner);
    }
}

// An object with its first owner; throws what its constructor throws.
template <class T, class... Arguments>
shared_ptr<T> make_shared(Arguments&&... arguments) {
    return shared_ptr<T>(new T(std::forward<Arguments>(arguments)...));
}

// Empty when the object is not a T.
template <class T, class U>
shared_ptr<T> dynamic_pointer_cast(const shared_ptr<U>& object) noexcept {
    T* const cast = dynamic_cast<T*>(object.get());
    return cast ? shared_ptr<T>(object, cast) : shared_ptr<T>();
}

}  // namespace orvo

#endif

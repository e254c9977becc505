#ifndef SONOLET_SERVICE_OBJECTS_HANDLE_H
#define SONOLET_SERVICE_OBJECTS_HANDLE_H

#include <atomic>
#include <utility>

namespace sonolet::service {

// What every counted handle of the C interface is: an object that lives until its last reference
// goes. It is made with one reference, which belongs to whoever made it.
//
// Threads: references may be taken and let go on any; everything else is for the thread that uses
// the library. The destructor runs where the last reference goes, so it touches what is locked and
// nothing else.
class Handle {
public:
    Handle() = default;
    // For release() alone.
    virtual ~Handle() = default;

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // REQUIRES: the caller knows of one that stays meanwhile.
    void addRef() noexcept { references.fetch_add(1, std::memory_order_relaxed); }

    // False when the last reference has gone already: for a shelf, which may meet a handle that is
    // just being destroyed.
    bool tryAddRef() noexcept {
        int count = references.load(std::memory_order_relaxed);
        while (count > 0) {
            if (references.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    // The object may be gone when this returns.
    void release() noexcept {
        if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

private:
    std::atomic<int> references{1};
};

// Owns one reference of a handle, or is empty. Which function takes a reference over and which
// takes its own is in its name. Threads: as a pointer is. Several may hold references of one handle
// on several threads; one Ref belongs to one of them at a time.
template <typename Object>
class Ref final {
public:
    Ref() = default;
    // A copy has a reference of its own; what was moved from is empty.
    Ref(const Ref& other) : object(other.object) {
        if (object != nullptr) {
            object->addRef();
        }
    }
    Ref(Ref&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    ~Ref() {
        if (object != nullptr) {
            object->release();
        }
    }

    // Takes over the reference that the caller owns. NULL gives an empty one.
    static Ref adopt(Object* owned) {
        Ref ref;
        ref.object = owned;
        return ref;
    }

    // Takes a reference of its own. `held` is not NULL.
    static Ref share(Object* held) {
        held->addRef();
        return adopt(held);
    }

    // Borrowed: good while this or another reference is held.
    Object* get() const { return object; }
    Object* operator->() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Hands the reference to the caller, who passes it on to the program; this is empty then.
    Object* detach() { return std::exchange(object, nullptr); }

private:
    Object* object = nullptr;
};

}  // namespace sonolet::service

#endif

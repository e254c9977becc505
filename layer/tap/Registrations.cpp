#include "tap/Registrations.h"

#include <cstddef>

namespace {

constexpr std::size_t mostGone = 1024;

void* asUserdata(std::uintptr_t number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a number in the form of user data
    return reinterpret_cast<void*>(number);
}

}  // namespace

Registrations& Registrations::all() {
    static Registrations& registrations = *new Registrations;  // never freed: threads go on
    return registrations;
}

void* Registrations::add(const Registration& registration) {
    const std::lock_guard<std::mutex> lock(mutex);
    living.emplace(++last, registration);
    return asUserdata(last);
}

void* Registrations::find(const Registration& registration) const {
    const std::lock_guard<std::mutex> lock(mutex);
    std::uintptr_t found = 0;
    for (const auto& [number, each] : living) {
        if (each.handle == registration.handle && each.callbacks == registration.callbacks &&
            each.userdata == registration.userdata && number > found) {
            found = number;
        }
    }
    return asUserdata(found);
}

void Registrations::remove(void* number) {
    const std::lock_guard<std::mutex> lock(mutex);
    auto node = living.extract(reinterpret_cast<std::uintptr_t>(number));
    if (node.empty()) {
        return;
    }
    goneInOrder.push_back(node.key());
    gone.insert(std::move(node));
    if (goneInOrder.size() > mostGone) {
        gone.erase(goneInOrder.front());
        goneInOrder.pop_front();
    }
}

std::optional<Registration> Registrations::get(void* number) const {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto key = reinterpret_cast<std::uintptr_t>(number);
    for (const auto* const list : {&living, &gone}) {
        const auto found = list->find(key);
        if (found != list->end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

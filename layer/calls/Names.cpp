#include "calls/Names.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace {

constexpr std::size_t mostSecrets = 256;

bool isSecretName(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const char* const part : {"password", "blob", "secret", "credential"}) {
        // Names of events and handlers are told; what they bring is known by its value.
        if (lower.find(part) != std::string::npos && lower.rfind("on", 0) != 0) {
            return true;
        }
    }
    return false;
}

bool isMember(Fn function) {
    return function == Fn::getter || function == Fn::setter || function == Fn::call ||
           function == Fn::global_getter || function == Fn::global_setter;
}

}  // namespace

std::string_view Names::nameOf(const void* object) const {
    const auto found = objects.find(object);
    return found != objects.end() ? std::string_view(found->second.name)
                                  : std::string_view("object");
}

std::string_view Names::memberOf(const void* functionObject) const {
    const auto found = objects.find(functionObject);
    return found != objects.end() ? std::string_view(found->second.name) : std::string_view();
}

std::string Names::follow(Event& event) {
    std::string name;
    std::vector<Frame>& frames = threads[event.head.thread];
    if (event.hasArguments()) {
        hideArguments(event);
        name = of(event);
        Frame frame{event.head.function, event.pointer(0), nullptr, {}, nullptr};
        if (event.is(Fn::call)) {
            frame.functionObject = event.pointer(1);
        } else if (isMember(event.head.function)) {
            frame.name = event.text(1);
        }
        frames.push_back(std::move(frame));
    }
    if (event.hasResults() && !frames.empty()) {
        const Frame frame = std::move(frames.back());
        frames.pop_back();
        hideResults(event, frame);
        nameResult(event, frame);
        const bool isCreate = event.is(Fn::create_function) || event.is(Fn::create_object);
        if (isCreate && event.resultPointer(1) != nullptr) {
            forget(event.resultPointer(1));
            objects[event.resultPointer(1)] = {"object", event.is(Fn::create_function)};
            functions += event.is(Fn::create_function) ? 1 : 0;
            if (!frames.empty()) {
                frames.back().made = event.resultPointer(1);
            }
        } else if (event.is(Fn::destructor)) {
            forget(frame.object);
        }
    }
    return name;
}

void Names::forget(const void* object) {
    const auto found = objects.find(object);
    if (found != objects.end()) {
        functions -= found->second.isFunction ? 1 : 0;
        objects.erase(found);
    }
}

// The first name stays: the same object may be answered again, by another name.
void Names::nameResult(const Event& event, const Frame& frame) {
    const void* const object = isMember(frame.function) ? event.resultPointer(1) : nullptr;
    if (object == nullptr || frame.made != object) {
        return;
    }
    std::string name = frame.name;
    if (frame.function == Fn::call) {
        name = memberOf(frame.functionObject);
        if (name == "create") {
            name = nameOf(frame.object);
        }
    }
    objects[object].name = std::move(name);
}

std::string Names::of(const Event& event) const {
    std::string own = event.is(Fn::count) ? "mark" : infoOf(event.head.function).name;
    const auto member = [&](const char* verb, std::string_view name) {
        return std::string(verb).append(nameOf(event.pointer(0))).append(".").append(name);
    };
    switch (event.head.function) {
    case Fn::global_getter:
        return "get " + std::string(event.text(1));
    case Fn::global_setter:
        return "set " + std::string(event.text(1));
    case Fn::getter:
        return member("get ", event.text(1));
    case Fn::setter:
        return member("set ", event.text(1));
    case Fn::call:
        return member("call ", memberOf(event.pointer(1)));
    case Fn::destructor:
        return "destroy " + std::string(nameOf(event.pointer(0)));
    default:
        return own;
    }
}

// ---- Secrets ----

bool Names::isHidden(const Event& event, std::size_t argument) const {
    if (event.is(Fn::call)) {
        // Name and password; the rest of a login is a flag and a blob. A function whose name was
        // in calls that got lost may be login.
        const std::string_view member = memberOf(event.pointer(1));
        return (member == "login" && argument > 3) ||
               ((member.empty() || member == "object") && argument > 2);
    }
    return (event.is(Fn::setter) || event.is(Fn::global_setter)) && argument > 1 &&
           isSecretName(event.text(1));
}

bool Names::isKnownSecret(const Value& value) const {
    return !secrets.empty() &&
           secrets.count(std::string(storedText(value).substr(0, limits.text))) > 0;
}

// Each login brings a new blob: the oldest are forgotten.
void Names::learn(std::string secret) {
    if (!secrets.insert(secret).second) {
        return;
    }
    secretsInOrder.push_back(std::move(secret));
    if (forgets && secretsInOrder.size() > mostSecrets) {
        secrets.erase(secretsInOrder.front());
        secretsInOrder.pop_front();
    }
}

std::int64_t Names::numberOf(std::string_view secret) {
    if (secret.empty()) {
        return 0;
    }
    const auto [found, isNew] = numbers.emplace(secret, lastNumber + 1);
    lastNumber += isNew ? 1 : 0;
    return found->second;
}

void Names::hideArguments(Event& event) {
    const std::string_view user = event.is(Fn::sp_session_login) ? event.text(1) : "";
    for (std::size_t i = 0; i < event.arguments.size(); ++i) {
        Value& value = event.arguments[i];
        const std::string_view text = storedText(value);
        if (text.empty()) {
            continue;
        }
        // A name that is a password, too, is told wherever it stands as a name.
        if (value.tag == Tag::Secret && text != user) {
            learn(std::string(text.substr(0, limits.text)));
        }
        if (isHidden(event, i) || isKnownSecret(value)) {
            value.tag = Tag::Secret;
        }
    }
}

void Names::hideResults(Event& event, const Frame& frame) const {
    const bool readsSecret = frame.function == Fn::getter && isSecretName(frame.name);
    for (Value& value : event.results) {
        if (!storedText(value).empty() && (readsSecret || isKnownSecret(value))) {
            value.tag = Tag::Secret;
        }
    }
}

#ifndef SONOLET_JSPP_NAME_TABLE_H
#define SONOLET_JSPP_NAME_TABLE_H

#include "jspp/orvo/shared_ptr.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace jspp {

class function_context;
class interface;
class parameter_context;
class result_context;

namespace __detail {

struct inspection;

// A member function of a class derived from interface, or a free function, behind one type. The
// conversion of the member pointer keeps its `this` adjustment.
template <class... Arguments>
class callee final {
public:
    callee() = default;

    template <class T>
    callee(void (T::*member)(Arguments...))  // NOLINT(google-explicit-constructor)
        : target(static_cast<plain>(member)) {}

    template <class T>
    callee(void (T::*member)(Arguments...) const)  // NOLINT(google-explicit-constructor)
        : target(static_cast<constant>(member)) {}

    callee(void (*function)(Arguments...))  // NOLINT(google-explicit-constructor)
        : target(function) {}

    // Empty: a setter that is not there, for example.
    explicit operator bool() const noexcept {
        return !std::holds_alternative<std::monostate>(target);
    }

    // REQUIRES: not empty, and `self` is of the member's class.
    void operator()(interface& self, Arguments... arguments) const {
        if (const auto* const member = std::get_if<plain>(&target)) {
            (self.**member)(arguments...);
        } else if (const auto* const const_member = std::get_if<constant>(&target)) {
            (self.**const_member)(arguments...);
        } else {
            std::get<free>(target)(arguments...);
        }
    }

private:
    using plain = void (interface::*)(Arguments...);
    using constant = void (interface::*)(Arguments...) const;
    using free = void (*)(Arguments...);

    std::variant<std::monostate, plain, constant, free> target;
};

}  // namespace __detail

// Members by what script does: calls a function, reads an attribute, writes one; the last two also
// get the name, for classes that answer to any.
using function_member = __detail::callee<function_context&>;
using get_member = __detail::callee<result_context&>;
using set_member = __detail::callee<parameter_context&>;
using catch_all_get = __detail::callee<const std::string&, result_context&>;
using catch_all_set = __detail::callee<const std::string&, parameter_context&>;

// A row of a class's table of functions. `signature` names the expected arguments, a character
// each: n number, s string, b boolean, o object, - anything. It tells the reader; the members check
// their arguments themselves.
struct function_row {
    const char* name;
    function_member member;
    const char* signature;
};

// A row of a class's table of attributes; without a setter it is read-only.
struct attribute_row {
    const char* name;
    get_member getter;
    set_member setter;
};

// Script names, and what each answers with. A name is registered at most once for reading and once
// for writing; a second time throws std::runtime_error("Already registered").
//
// Threads: none of its own. A table that is complete may be read from any thread.
class name_table final {
public:
    struct function {
        function_member member;
        std::string signature;
    };

    // What a name that can be read is.
    using readable =
        std::variant<function, get_member, orvo::shared_ptr<interface>, double, bool, std::string>;

    name_table();
    // A class that has its base's names starts from a copy; a move is one too, nothing is assigned.
    name_table(const name_table& other);
    name_table& operator=(const name_table&) = delete;
    ~name_table();

    // The table of a class: the names of `base`, then those of the rows. Made once for a class, and
    // kept for ever.
    template <class... Rows>
    explicit name_table(const name_table& base, const Rows&... rows) : name_table(base) {
        (add(rows, std::size(rows)), ...);
    }

    // A name for reading, and one for writing. After a throw the table is as before.
    void add(const std::string& name, readable value);
    void add_setter(const std::string& name, set_member member);

    // Removes the name for reading and for writing.
    void remove(std::string_view name);

    // Null when the table does not have the name. Valid until the name is removed.
    const readable* find(std::string_view name) const noexcept;
    const set_member* find_setter(std::string_view name) const noexcept;

    // For names that the table does not have.
    catch_all_get any_getter;
    catch_all_set any_setter;

private:
    friend struct __detail::inspection;  // tests

    // Rows are constants of a class; what they name is copied.
    void add(const function_row* rows, std::size_t count);
    void add(const attribute_row* rows, std::size_t count);

    std::map<std::string, readable, std::less<>> readables;
    std::map<std::string, set_member, std::less<>> setters;
};

}  // namespace jspp

#endif

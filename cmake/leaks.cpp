// Part of every program with the address sanitizer, which looks for leaks when the program ends.
//
// GLib's initialiser lets a grown table of names go on purpose. Its stack would tell that from a
// leak, but to unwind each allocation through libraries without frame pointers takes ten times as
// long as the tests do. So what is allocated before the program's own initialisers is not looked
// at. Of a leak in such a library ASAN_OPTIONS=fast_unwind_on_malloc=0 shows the whole stack.

// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier): the sanitizers' names
extern "C" void __lsan_disable();
extern "C" void __lsan_enable();

__attribute__((section(".preinit_array"),
               used)) static void (*const beforeLibraries)() = __lsan_disable;
__attribute__((constructor)) static void afterLibraries() {
    __lsan_enable();
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)

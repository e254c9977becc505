#include "tap/Imports.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace {

using Address = ElfW(Addr);

#if defined(__x86_64__)
constexpr unsigned functionRelocations[] = {R_X86_64_JUMP_SLOT, R_X86_64_GLOB_DAT, R_X86_64_64};
#elif defined(__i386__)
constexpr unsigned functionRelocations[] = {R_386_JMP_SLOT, R_386_GLOB_DAT, R_386_32};
#elif defined(__arm__)
constexpr unsigned functionRelocations[] = {R_ARM_JUMP_SLOT, R_ARM_GLOB_DAT, R_ARM_ABS32};
#elif defined(__aarch64__)
constexpr unsigned functionRelocations[] = {R_AARCH64_JUMP_SLOT, R_AARCH64_GLOB_DAT,
                                            R_AARCH64_ABS64};
#else
#error "the relocations of this machine are not known here"
#endif

#if __ELF_NATIVE_CLASS == 64
constexpr unsigned symbolShift = 32;
constexpr Address typeMask = 0xffffffff;
#else
constexpr unsigned symbolShift = 8;
constexpr Address typeMask = 0xff;
#endif

// The loader's numbers.
template <class T>
T* toPointer(Address address) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<T*>(address);
}

bool isOfFunction(Address info) {
    for (const unsigned type : functionRelocations) {
        if ((info & typeMask) == type) {
            return true;
        }
    }
    return false;
}

// The part of the library that the loader has made read-only behind itself; writable while this
// lives.
class Opened final {
public:
    explicit Opened(const link_map& library) : base(library.l_addr) {
        const auto look = [](dl_phdr_info* info, std::size_t, void* self) {
            static_cast<Opened*>(self)->look(*info);
            return 0;
        };
        dl_iterate_phdr(look, this);
        if (begin < end && !protect(PROT_READ | PROT_WRITE)) {
            throw std::runtime_error("the system does not let the plug-in's calls be watched");
        }
    }
    ~Opened() {
        if (begin < end) {
            protect(PROT_READ);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

private:
    void look(const dl_phdr_info& info) {
        for (int i = 0; info.dlpi_addr == base && i < info.dlpi_phnum; ++i) {
            const auto& header = info.dlpi_phdr[i];
            if (header.p_type == PT_GNU_RELRO) {
                const auto page = static_cast<Address>(sysconf(_SC_PAGESIZE));
                // As the loader rounds: a page that is only partly in it is left alone at the end.
                begin = (base + header.p_vaddr) & ~(page - 1);
                end = (base + header.p_vaddr + header.p_memsz) & ~(page - 1);
            }
        }
    }
    bool protect(int access) const {
        return mprotect(toPointer<void>(begin), end - begin, access) == 0;
    }

    const Address base;
    Address begin = 0;
    Address end = 0;
};

// What the dynamic section says.
class Dynamic final {
public:
    explicit Dynamic(const link_map& library) : base(library.l_addr) {
        for (const ElfW(Dyn)* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) {
            take(*entry);
        }
    }

    template <class Visit>
    void visit(const Visit& found) const {
        if (symbols == nullptr || strings == nullptr) {
            return;
        }
        if (pltIsRela) {
            table<ElfW(Rela)>(plt, pltSize, found);
        } else {
            table<ElfW(Rel)>(plt, pltSize, found);
        }
        table<ElfW(Rela)>(rela, relaSize, found);
        table<ElfW(Rel)>(rel, relSize, found);
    }

private:
    // Most loaders have made addresses of the section's offsets, some have not.
    template <class T>
    T* at(Address value) const {
        return toPointer<T>(value < base ? base + value : value);
    }

    void take(const ElfW(Dyn) & entry) {
        switch (entry.d_tag) {
        case DT_SYMTAB:
            symbols = at<const ElfW(Sym)>(entry.d_un.d_ptr);
            break;
        case DT_STRTAB:
            strings = at<const char>(entry.d_un.d_ptr);
            break;
        case DT_JMPREL:
            plt = at<const char>(entry.d_un.d_ptr);
            break;
        case DT_PLTRELSZ:
            pltSize = entry.d_un.d_val;
            break;
        case DT_PLTREL:
            pltIsRela = entry.d_un.d_val == DT_RELA;
            break;
        case DT_RELA:
            rela = at<const char>(entry.d_un.d_ptr);
            break;
        case DT_RELASZ:
            relaSize = entry.d_un.d_val;
            break;
        case DT_REL:
            rel = at<const char>(entry.d_un.d_ptr);
            break;
        case DT_RELSZ:
            relSize = entry.d_un.d_val;
            break;
        default:
            break;
        }
    }

    template <class Relocation, class Visit>
    void table(const char* begin, std::size_t size, const Visit& found) const {
        const auto* each = reinterpret_cast<const Relocation*>(begin);
        for (std::size_t left = begin != nullptr ? size / sizeof *each : 0; left > 0;
             --left, ++each) {
            if (isOfFunction(each->r_info)) {
                const auto& symbol = symbols[each->r_info >> symbolShift];
                found(strings + symbol.st_name, toPointer<void*>(base + each->r_offset));
            }
        }
    }

    const Address base;
    const ElfW(Sym) * symbols = nullptr;
    const char* strings = nullptr;
    const char* plt = nullptr;
    const char* rela = nullptr;
    const char* rel = nullptr;
    std::size_t pltSize = 0;
    std::size_t relaSize = 0;
    std::size_t relSize = 0;
    bool pltIsRela = false;
};

}  // namespace

Imports::Imports(void* loaded) : library(loaded) {}

std::size_t Imports::replace(const Choose& choose) {
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr) {
        throw std::runtime_error("the loader does not tell where the plug-in is");
    }
    const Opened writable(*map);
    std::size_t replaced = 0;
    Dynamic(*map).visit([&](const char* symbol, void** slot) {
        if (void* const other = choose(symbol, *slot)) {
            *slot = other;
            ++replaced;
        }
    });
    return replaced;
}

#include "glcalls.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace Atelier::Vel::Testing {

namespace {

constexpr std::size_t kMaxFunctions = 256;
std::array<int, kMaxFunctions> counts = {};

// Clang's sanitizer compares the type of a function with that of the pointer to it.
#ifdef __clang__
#define OF_ANY_TYPE __attribute__((no_sanitize("function")))
#else
#define OF_ANY_TYPE
#endif

// Callers pass arguments of any type; the calling convention allows a function to ignore them.
template<std::size_t kIndex>
OF_ANY_TYPE std::uintptr_t countCall() {
    ++counts[kIndex];
    return 0;
}

using Counter = std::uintptr_t (*)();

template<std::size_t... kIndices>
std::array<Counter, kMaxFunctions> makeCounters(std::index_sequence<kIndices...>) {
    return {countCall<kIndices>...};
}

const std::array<Counter, kMaxFunctions>& counters() {
    static const auto made = makeCounters(std::make_index_sequence<kMaxFunctions>());
    return made;
}

constexpr char kPrefix[] = "epoxy_gl"; // of libepoxy's pointers

// One pointer of libepoxy for each function that the library imports.
struct Import {
    std::string name; // without "epoxy_"
    void** pointer = nullptr;
};

const ElfW(Dyn) * entry(const link_map& library, ElfW(Sxword) tag) {
    for (const ElfW(Dyn)* dynamic = library.l_ld; dynamic->d_tag != DT_NULL; ++dynamic)
        if (dynamic->d_tag == tag)
            return dynamic;
    return nullptr;
}

// The table of hashes has no symbols that are imported; its second word is the number of those before it.
std::vector<Import> readImports() {
    std::vector<Import> imports;
    void* const handle = dlopen("libVelGL.so.0", RTLD_LAZY | RTLD_NOLOAD);
    link_map* library = nullptr;
    if (handle == nullptr || dlinfo(handle, RTLD_DI_LINKMAP, &library) != 0)
        return imports;
    const auto* hashes = reinterpret_cast<const std::uint32_t*>(entry(*library, DT_GNU_HASH)->d_un.d_ptr);
    const auto* symbols = reinterpret_cast<const ElfW(Sym)*>(entry(*library, DT_SYMTAB)->d_un.d_ptr);
    const auto* strings = reinterpret_cast<const char*>(entry(*library, DT_STRTAB)->d_un.d_ptr);
    for (std::uint32_t i = 0; i < hashes[1]; ++i) {
        const char* const name = strings + symbols[i].st_name;
        // "epoxy_gl_version" is a function of libepoxy itself.
        if (std::strncmp(name, kPrefix, std::strlen(kPrefix)) == 0 && name[std::strlen(kPrefix)] != '_')
            imports.push_back({name + std::strlen("epoxy_"), static_cast<void**>(dlsym(RTLD_DEFAULT, name))});
    }
    dlclose(handle);
    return imports;
}

const std::vector<Import>& imports() {
    static const std::vector<Import> read = readImports();
    return read;
}

bool isQuery(const std::string& name) {
    return name.rfind("glGet", 0) == 0 || name.rfind("glIs", 0) == 0;
}

} // namespace

GLCalls::GLCalls() {
    for (std::size_t i = 0; i < imports().size(); ++i) {
        _before.push_back(*imports()[i].pointer);
        *imports()[i].pointer = reinterpret_cast<void*>(counters()[i]);
    }
    restart();
}

GLCalls::~GLCalls() {
    for (std::size_t i = 0; i < imports().size(); ++i)
        *imports()[i].pointer = _before[i];
}

void GLCalls::restart() {
    counts.fill(0);
}

int GLCalls::count() {
    int total = 0;
    for (const int count : counts)
        total += count;
    return total;
}

int GLCalls::count(const std::string& name) {
    const std::map<std::string, int> calls = byName();
    const auto found = calls.find(name);
    return found != calls.end() ? found->second : 0;
}

int GLCalls::queryCount() {
    int total = 0;
    for (const auto& [name, count] : byName())
        total += isQuery(name) ? count : 0;
    return total;
}

std::map<std::string, int> GLCalls::byName() {
    std::map<std::string, int> calls;
    for (std::size_t i = 0; i < imports().size(); ++i)
        if (counts[i] > 0)
            calls[imports()[i].name] = counts[i];
    return calls;
}

std::vector<std::string> GLCalls::importedNames() {
    std::vector<std::string> names;
    for (const Import& import : imports())
        names.push_back(import.name);
    return names;
}

} // namespace Atelier::Vel::Testing

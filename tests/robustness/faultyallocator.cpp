#include "faultyallocator.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/sanitizer.h"

namespace {

using Atelier::Vel::Testing::FaultKind;

bool isArmed = false;
FaultKind armedKind = FaultKind::One;
std::size_t firstDenied = 0;
std::size_t requestCount = 0;
std::size_t inUse = 0;

// Functions of Qt 5 that crash or leave invalid objects when they get no memory. A library that uses Qt
// cannot prevent that, so their requests are never denied.
constexpr const char* kHeedless[] = {
    "_ZN7QObject7connect", // does not check its memory; a QTextStream connects itself to its device
};

bool isHeedless(const void* function) {
    Dl_info information = {};
    if (dladdr(function, &information) == 0 || information.dli_sname == nullptr)
        return false;
    return std::any_of(std::begin(kHeedless), std::end(kHeedless), [&](const char* name) {
        return std::strncmp(information.dli_sname, name, std::strlen(name)) == 0;
    });
}

bool isCalledHeedlessly() {
    void* callers[32];
    const int count = backtrace(callers, static_cast<int>(std::size(callers)));
    return std::any_of(callers, callers + count, isHeedless);
}

bool isDenied() {
    if (!isArmed)
        return false;
    const std::size_t request = requestCount++;
    const bool isMeant = armedKind == FaultKind::One ? request == firstDenied : request >= firstDenied;
    if (!isMeant)
        return false;
    // The inspection of the callers may allocate.
    isArmed = false;
    const bool isGiven = isCalledHeedlessly();
    isArmed = true;
    return !isGiven;
}

std::size_t pagesOf(std::size_t bytes) {
    constexpr std::size_t kPage = 4096;
    return (bytes + kPage - 1) / kPage;
}

void* counted(void* block) {
    inUse += block != nullptr ? 1 : 0;
    return block;
}

} // namespace

// The libraries use these functions, although the project hides its symbols.
#pragma GCC visibility push(default)

#if VELMODEL_ADDRESS_SANITIZER

void* operator new(std::size_t bytes) {
    void* const block = isDenied() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
    return block != nullptr ? counted(block) : throw std::bad_alloc();
}
void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}
void operator delete(void* block) noexcept {
    inUse -= block != nullptr ? 1 : 0;
    std::free(block);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    operator delete(block);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete[](void* block, std::size_t /*bytes*/) noexcept {
    operator delete(block);
}

#else

namespace {

void* denied() {
    errno = ENOMEM;
    return nullptr;
}

} // namespace

// NOLINTBEGIN: the C library's names and its declarations
extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
void* __libc_calloc(size_t elements, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* block);

void* malloc(size_t bytes) {
    return isDenied() ? denied() : counted(__libc_malloc(bytes));
}
void* calloc(size_t elements, size_t bytes) {
    return isDenied() ? denied() : counted(__libc_calloc(elements, bytes));
}
void* realloc(void* block, size_t bytes) {
    if (isDenied())
        return denied();
    return block == nullptr ? counted(__libc_malloc(bytes)) : __libc_realloc(block, bytes);
}
void* memalign(size_t alignment, size_t bytes) {
    return isDenied() ? denied() : counted(__libc_memalign(alignment, bytes));
}
void* aligned_alloc(size_t alignment, size_t bytes) {
    return memalign(alignment, bytes);
}
int posix_memalign(void** block, size_t alignment, size_t bytes) {
    *block = memalign(alignment, bytes);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) {
    inUse -= block != nullptr ? 1 : 0;
    __libc_free(block);
}
}
// NOLINTEND

#endif

// NOLINTBEGIN: the C library's names and its declarations
extern "C" {
void* mmap(void* address, size_t bytes, int protection, int flags, int file, off_t offset) noexcept {
    if (isDenied()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    const long begin = syscall(SYS_mmap, address, bytes, protection, flags, file, offset);
    inUse += begin != -1 ? pagesOf(bytes) : 0;
    return reinterpret_cast<void*>(begin);
}
// The library moves pages over other pages that it owns.
void* mremap(void* address, size_t bytes, size_t newBytes, int flags, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, flags);
    void* const target = va_arg(arguments, void*);
    va_end(arguments);
    const long begin = syscall(SYS_mremap, address, bytes, newBytes, flags, target);
    inUse -= begin != -1 ? pagesOf(bytes) : 0;
    return reinterpret_cast<void*>(begin);
}
int munmap(void* begin, size_t bytes) noexcept {
    inUse -= pagesOf(bytes);
    return static_cast<int>(syscall(SYS_munmap, begin, bytes));
}
}
// NOLINTEND

#pragma GCC visibility pop

namespace Atelier::Vel::Testing {

AllocationFault::AllocationFault(std::size_t first, FaultKind kind) {
    firstDenied = first;
    armedKind = kind;
    requestCount = 0;
    isArmed = true;
}

AllocationFault::~AllocationFault() {
    isArmed = false;
}

std::size_t AllocationFault::requests() {
    return requestCount;
}

std::size_t memoryInUse() {
    return inUse;
}

} // namespace Atelier::Vel::Testing

#include "allocationcount.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#define VELMODEL_COUNTS_ALLOCATIONS 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#undef VELMODEL_COUNTS_ALLOCATIONS
#endif
#endif

namespace {

size_t count = 0;
size_t inUse = 0;

#ifdef VELMODEL_COUNTS_ALLOCATIONS
void* counted(void* block) {
    ++count;
    inUse += malloc_usable_size(block);
    return block;
}
#endif

} // namespace

#ifdef VELMODEL_COUNTS_ALLOCATIONS
// Everything in the process allocates through these, Qt's strings included: the libraries see them, although
// the project hides its symbols.
#pragma GCC visibility push(default)
// NOLINTBEGIN: the C library's names and its declarations
extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
void* __libc_calloc(size_t elements, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* memory);
void* malloc(size_t bytes) {
    return counted(__libc_malloc(bytes));
}
void* realloc(void* memory, size_t bytes) {
    const size_t before = malloc_usable_size(memory);
    void* const block = __libc_realloc(memory, bytes);
    if (block != nullptr || bytes == 0)
        inUse -= before;
    return counted(block);
}
void* calloc(size_t elements, size_t bytes) {
    return counted(__libc_calloc(elements, bytes));
}
void* memalign(size_t alignment, size_t bytes) {
    return counted(__libc_memalign(alignment, bytes));
}
void* aligned_alloc(size_t alignment, size_t bytes) {
    return memalign(alignment, bytes);
}
int posix_memalign(void** block, size_t alignment, size_t bytes) {
    *block = memalign(alignment, bytes);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* memory) {
    inUse -= malloc_usable_size(memory);
    __libc_free(memory);
}
void* mmap(void* address, size_t bytes, int protection, int flags, int file, off_t offset) noexcept {
    const long begin = syscall(SYS_mmap, address, bytes, protection, flags, file, offset);
    inUse += begin == -1 ? 0 : bytes;
    return reinterpret_cast<void*>(begin);
}
// The library moves pages over other pages that it owns.
void* mremap(void* address, size_t bytes, size_t newBytes, int flags, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, flags);
    void* const target = va_arg(arguments, void*);
    va_end(arguments);
    const long begin = syscall(SYS_mremap, address, bytes, newBytes, flags, target);
    inUse -= begin == -1 ? 0 : bytes;
    return reinterpret_cast<void*>(begin);
}
int munmap(void* begin, size_t bytes) noexcept {
    inUse -= bytes;
    return static_cast<int>(syscall(SYS_munmap, begin, bytes));
}
}
// NOLINTEND
#pragma GCC visibility pop
#endif

namespace Atelier::Vel::Testing {

bool countsAllocations() {
#ifdef VELMODEL_COUNTS_ALLOCATIONS
    return true;
#else
    return false;
#endif
}

std::size_t allocationCount() {
    return count;
}

std::size_t bytesInUse() {
    return inUse;
}

} // namespace Atelier::Vel::Testing

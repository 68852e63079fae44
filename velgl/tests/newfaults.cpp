#include "newfaults.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>

#include "support/sanitizer.h"

namespace {

enum class Denied { None, One, All };

thread_local Denied mode = Denied::None;
thread_local std::size_t left = 0; // requests before the one that is denied
thread_local std::size_t denied = 0;

} // namespace

namespace Atelier::Vel::Testing {

NewFaults::NewFaults() {
    denied = 0;
    mode = Denied::All;
}

NewFaults::NewFaults(std::size_t number) {
    denied = 0;
    left = number;
    mode = Denied::One;
}

NewFaults::~NewFaults() {
    mode = Denied::None;
}

std::size_t NewFaults::deniedCount() {
    return denied;
}

} // namespace Atelier::Vel::Testing

// A sanitizer has an operator of its own.
#if VELMODEL_ADDRESS_SANITIZER == 0

namespace {

bool isInVelGL(const void* function) {
    Dl_info information = {};
    return dladdr(function, &information) != 0 && information.dli_fname != nullptr &&
           std::strstr(information.dli_fname, "libVelGL") != nullptr;
}

bool isDenied(const void* caller) {
    if (mode == Denied::None || !isInVelGL(caller))
        return false;
    if (mode == Denied::One && left-- > 0)
        return false;
    if (mode == Denied::One)
        mode = Denied::None;
    ++denied;
    return true;
}

void* allocated(std::size_t size, const void* caller) {
    void* memory = isDenied(caller) ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

#define VISIBLE __attribute__((visibility("default"), noinline))

VISIBLE void* operator new(std::size_t size) {
    return allocated(size, __builtin_return_address(0));
}

VISIBLE void* operator new[](std::size_t size) {
    return allocated(size, __builtin_return_address(0));
}

VISIBLE void operator delete(void* memory) noexcept {
    std::free(memory);
}

VISIBLE void operator delete[](void* memory) noexcept {
    std::free(memory);
}

VISIBLE void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

VISIBLE void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif

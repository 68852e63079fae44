#pragma once

namespace Atelier::Vel::Testing {

/// While an object of this class lives, EGL reports every current context by the same handle, and says that
/// it exists: as if each new context got the handle of the one destroyed before. For programs that compile
/// onehandle.cpp; at most one object lives at a time.
class OneHandle {
public:
    OneHandle();
    ~OneHandle();
    OneHandle(const OneHandle&) = delete;
    OneHandle& operator=(const OneHandle&) = delete;
};

} // namespace Atelier::Vel::Testing

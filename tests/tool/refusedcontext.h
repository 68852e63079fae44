#pragma once

namespace Atelier::Vel::Testing {

/// During its lifetime, EGL makes contexts current `granted` more times and then refuses; releasing a context
/// always works. Only one may exist at a time.
class RefusedContext {
public:
    explicit RefusedContext(int granted);
    ~RefusedContext();
    RefusedContext(const RefusedContext&) = delete;
    RefusedContext& operator=(const RefusedContext&) = delete;
};

} // namespace Atelier::Vel::Testing

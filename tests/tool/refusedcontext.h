#pragma once

namespace Atelier::Vel::Testing {

/// While it lives, EGL makes contexts current `granted` more times and then refuses; giving a context up
/// always works. Only one may live at a time.
class RefusedContext {
public:
    explicit RefusedContext(int granted);
    ~RefusedContext();
    RefusedContext(const RefusedContext&) = delete;
    RefusedContext& operator=(const RefusedContext&) = delete;
};

} // namespace Atelier::Vel::Testing

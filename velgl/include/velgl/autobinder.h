#pragma once

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// Keeps an object bound for the lifetime of the binder.
class VELGL_EXPORT AutoBinder {
public:
    /// Binds `bindable`; null is allowed and binds nothing.
    AutoBinder(Bindable* bindable);
    ~AutoBinder();

    AutoBinder(const AutoBinder&) = delete;
    AutoBinder& operator=(const AutoBinder&) = delete;

private:
    Bindable* _bindable;
};

} // namespace Atelier::Vel

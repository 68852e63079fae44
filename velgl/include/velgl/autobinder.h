#pragma once

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// Keeps an object bound within a scope: binds it on construction and unbinds it on destruction. The result
/// of bind() is not kept; call bind() and unbind() yourself where a failure matters.
/// Threads: on the thread of the current context, see Bindable.
class VELGL_EXPORT AutoBinder {
public:
    /// Binds `bindable`, which must outlive the binder. Null is allowed and binds nothing.
    AutoBinder(Bindable* bindable);
    /// Unbinds the object, also after a bind() that failed. Changes nothing while another context is current.
    ~AutoBinder();

    AutoBinder(const AutoBinder&) = delete;
    AutoBinder& operator=(const AutoBinder&) = delete;

private:
    Bindable* _bindable;
};

} // namespace Atelier::Vel

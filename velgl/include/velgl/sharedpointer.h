#pragma once

#include <memory>

#include <QtCore/QSharedPointer>

namespace Atelier::Vel {

/// Moves an object from a unique to a shared pointer. `owned` may be null.
/// Returns: a pointer that shares the ownership among its copies.
/// Threads: any.
/// Throws std::bad_alloc when there is no memory for the counters of the shared pointer; the object is
/// deleted then. QSharedPointer::create() would crash in that case, and the constructor of QSharedPointer
/// would leak the object.
template<typename T>
QSharedPointer<T> shared(std::unique_ptr<T> owned) {
    QSharedPointer<T> result(owned.get());
    static_cast<void>(owned.release());
    return result;
}

} // namespace Atelier::Vel

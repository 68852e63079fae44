#pragma once

#include <memory>

#include <QtCore/QSharedPointer>

namespace Atelier::Vel {

/// A shared pointer to what `owned` owns. When there is no memory for its counters, the object is deleted and
/// std::bad_alloc thrown; QSharedPointer::create() would crash, and the constructor forget the object.
template<typename T>
QSharedPointer<T> shared(std::unique_ptr<T> owned) {
    QSharedPointer<T> result(owned.get());
    static_cast<void>(owned.release());
    return result;
}

} // namespace Atelier::Vel

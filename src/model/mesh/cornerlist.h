#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// The index of a corner that has no value in an attribute.
constexpr quint32 kNoIndex = 0x7FFFFFFF;

/// The indices of some corners into one attribute.
struct CornerList {
    const QString* attribute;
    quint32* indices;
};

} // namespace Atelier::Vel

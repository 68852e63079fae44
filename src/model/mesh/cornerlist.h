#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// The index of a corner that has no value in an attribute.
constexpr quint32 kNoIndex = 0x7FFFFFFF;

/// An index into one attribute for each of some corners.
struct CornerList {
    const QString* attribute;
    quint32* indices;
};

} // namespace Atelier::Vel

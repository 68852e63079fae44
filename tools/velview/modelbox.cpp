#include "modelbox.h"

#include <algorithm>

namespace Atelier::Vel::Viewer {

ModelBox united(const ModelBox& one, const ModelBox& other) {
    if (!one.isValid || !other.isValid)
        return one.isValid ? one : other;
    ModelBox all = one;
    for (int axis = 0; axis < 3; ++axis) {
        all.minimum[axis] = std::min(one.minimum[axis], other.minimum[axis]);
        all.maximum[axis] = std::max(one.maximum[axis], other.maximum[axis]);
    }
    return all;
}

// Half of each first: the sum of two coordinates may overflow.
QVector3D centreOf(const ModelBox& box) {
    return box.minimum * 0.5F + box.maximum * 0.5F;
}

QVector3D sizeOf(const ModelBox& box) {
    return box.maximum - box.minimum;
}

} // namespace Atelier::Vel::Viewer

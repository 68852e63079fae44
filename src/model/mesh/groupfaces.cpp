#include "mesh/groupfaces.h"

#include <algorithm>

namespace Atelier::Vel {

GroupFaces::Others& GroupFaces::others() {
    if (!_others)
        _others = new Others;
    return *_others;
}

void GroupFaces::addRun(quint32 first, quint32 count) {
    if (_count != 0 && first == _first + _count) {
        _count += count;
        return;
    }
    if (_count != 0) {
        std::vector<quint32>& runs = others().runs;
        runs.push_back(_first);
        if (_count > 1)
            runs.push_back((_count - 1) | kFollow);
    }
    _first = first;
    _count = count;
}

void GroupFaces::setStream(const QSharedPointer<ModelDataStream>& stream) {
    others().stream = stream;
}

bool GroupFaces::followsAsOneRun(quint64& next) const {
    const bool follows = _count == 0 || ((!_others || _others->runs.empty()) && _first >= next);
    next = std::max(next, quint64{_first} + _count);
    return follows;
}

} // namespace Atelier::Vel

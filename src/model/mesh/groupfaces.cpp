#include "mesh/groupfaces.h"

#include <algorithm>

namespace Atelier::Vel {

GroupFaces::FaceRuns& GroupFaces::earlier() {
    if (!_earlier)
        _earlier = new FaceRuns;
    return *_earlier;
}

void GroupFaces::addRun(quint32 first, quint32 count) {
    if (_count != 0 && first == _first + _count) {
        _count += count;
        return;
    }
    if (_count != 0) {
        std::vector<quint32>& runs = earlier().runs;
        runs.push_back(_first);
        if (_count > 1)
            runs.push_back((_count - 1) | kFollow);
    }
    _first = first;
    _count = count;
}

void GroupFaces::setStream(const QSharedPointer<ModelDataStream>& stream) {
    earlier().stream = stream;
}

bool GroupFaces::followsAsOneRun(quint64& next) const {
    const bool follows = _count == 0 || ((!_earlier || _earlier->runs.empty()) && _first >= next);
    next = std::max(next, quint64{_first} + _count);
    return follows;
}

} // namespace Atelier::Vel

#include "mesh/facestore.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "glconstants.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

// Elements that are appended with one call: 16 KiB, which stay in the first-level cache.
constexpr quint64 kBlock = 4096;

} // namespace

FaceStore::FaceStore(StreamSource& streams, Input input) : _streams(streams), _input(input) {
    clear();
}

void FaceStore::clear() {
    _counts = _streams.make(kGlUnsignedInt, 0);
    _uniform.reset();
    if (_input == Input::Consumed)
        _uniform.emplace();
}

bool FaceStore::isEmpty() const {
    return _uniform ? _uniform->count == 0 : Vel::isEmpty(_counts.data());
}

void FaceStore::add(quint64 count, const unsigned int* cornerCounts) {
    if (count == 0 || addUniform(count, cornerCounts))
        return;
    if (_uniform)
        listUniform();
    if (!appendWords(_counts.data(), count, cornerCounts))
        _streams.refuse(QStringLiteral("the faces"));
}

bool FaceStore::addUniform(quint64 count, const unsigned int* cornerCounts) {
    if (!_uniform)
        return false;
    const unsigned int corners = _uniform->count == 0 ? cornerCounts[0] : _uniform->corners;
    const auto isOther = [corners](unsigned int other) { return other != corners; };
    if (corners == 0 || std::any_of(cornerCounts, cornerCounts + count, isOther))
        return false;
    _uniform->corners = corners;
    _uniform->count += count;
    return true;
}

void FaceStore::listUniform() {
    const UniformFaces faces = *_uniform;
    _uniform.reset();
    const std::vector<unsigned int> counts(std::min<quint64>(faces.count, kBlock), faces.corners);
    for (quint64 left = faces.count; left != 0; left -= std::min<quint64>(left, counts.size()))
        add(std::min<quint64>(left, counts.size()), counts.data());
}

quint32 FaceStore::cornerCount() const {
    if (_uniform)
        return static_cast<quint32>(_uniform->count * _uniform->corners);
    const WordView counts = WordView::of(_counts.data());
    return std::accumulate(counts.words, counts.words + counts.count, quint32{0});
}

} // namespace Atelier::Vel

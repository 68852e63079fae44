#include "geometry/smoothing/cornernormals.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "geometry/merging/vertexmerging.h"
#include "geometry/smoothing/facedirections.h"

namespace Atelier::Vel {

namespace {

/// The corners at each position. Positions are numbered in the order of their first appearance.
class CornersByPosition {
public:
    CornersByPosition(const CornerFaces& faces, const MergeOptions& merging) : _corners(faces.cornerCount) {
        std::vector<quint32> positionOf(faces.cornerCount);
        const VertexMerging merged({faces.positions}, faces.cornerCount, positionOf.data(), merging);
        // Counts at first, then the number of corners at positions before this one.
        _begins.resize(quint64{merged.vertexCount()} + 1);
        for (const quint32 position : positionOf)
            ++_begins[position];
        std::exclusive_scan(_begins.begin(), _begins.end(), _begins.begin(), quint32{0});
        std::vector<quint32> next = _begins;
        for (quint32 corner = 0; corner < faces.cornerCount; ++corner)
            _corners[next[positionOf[corner]]++] = corner;
    }

    quint32 positionCount() const { return static_cast<quint32>(_begins.size() - 1); }
    const quint32* begin(quint32 position) const { return _corners.data() + _begins[position]; }
    quint32 count(quint32 position) const { return _begins[position + 1] - _begins[position]; }

private:
    std::vector<quint32> _begins;
    std::vector<quint32> _corners;
};

/// Corners of one position that get the same normal.
struct Fan {
    Direction normal;         ///< of their faces, or the mean of several
    Direction weightedSum;    ///< of the normals of their faces
    qint64 number = kNoneYet; ///< of their corner normal

    static constexpr qint64 kNoneYet = -1;
};

/// The fans of one position.
class Fans {
public:
    explicit Fans(const FaceDirections& directions) : _directions(directions) {}

    Fan& fanOf(quint32 i) { return _fans[_fanOf[i]]; }

protected:
    void clear(quint32 corners) {
        _fans.clear();
        _fanOf.resize(corners);
    }
    void beginFan(quint32 corner) { _fans.push_back({_directions.normalOf(corner), {}}); }
    /// Adds corner i of the position to the last fan.
    void join(quint32 i, quint32 corner) {
        _fanOf[i] = static_cast<quint32>(_fans.size() - 1);
        _fans.back().weightedSum = _fans.back().weightedSum + weighted(corner);
    }
    Direction weighted(quint32 corner) const {
        return _directions.angleOf(corner) * _directions.normalOf(corner);
    }

    const FaceDirections& _directions;
    std::vector<Fan> _fans;
    std::vector<quint32> _fanOf; ///< of each corner of the position
};

/// Smooths faces up to a crease angle.
class CreaseFans : public Fans {
public:
    CreaseFans(const FaceDirections& directions, float creaseAngle) : Fans(directions) {
        // Normals are floats, so that the angle between equal ones appears to be up to 0.03 degrees.
        constexpr double kTolerance = 0.1;
        constexpr double kHalfTurn = 180;
        const double degrees = creaseAngle > 0 ? double(creaseAngle) + kTolerance : kTolerance;
        _leastCosine = degrees < kHalfTurn ? cosineOf(degrees / kHalfTurn * kPi) : -2;
    }

    void collect(const quint32* corners, quint32 count) {
        clear(count);
        if (count > kMaxFans)
            return collectInCells(corners, count);
        for (quint32 i = 0; i < count; ++i) {
            beginFan(corners[i]);
            join(i, corners[i]);
        }
    }
    Direction sumOf(const Fan& fan) {
        _comparisons += _fans.size();
        return std::accumulate(_fans.begin(), _fans.end(), Direction(),
                               [&](const Direction& sum, const Fan& other) {
                                   return areSmooth(fan, other) ? sum + other.weightedSum : sum;
                               });
    }
    quint64 comparisons() const { return _comparisons; }

private:
    static constexpr quint32 kMaxFans = 256;
    // Six by six cells on each side of a cube, and one for faces without a normal: fewer than kMaxFans.
    static constexpr quint32 kCellsPerEdge = 6;
    static constexpr quint32 kCells = 6 * kCellsPerEdge * kCellsPerEdge + 1;

    bool areSmooth(const Fan& fan, const Fan& other) const {
        return isZero(fan.normal) || dotProduct(fan.normal, other.normal) >= _leastCosine;
    }

    void collectInCells(const quint32* corners, quint32 count) {
        constexpr quint32 kNone = kCells;
        std::array<quint32, kCells> fanOfCell;
        fanOfCell.fill(kNone);
        for (quint32 i = 0; i < count; ++i) {
            const Direction normal = _directions.normalOf(corners[i]);
            quint32& fan = fanOfCell[cellOf(normal)];
            if (fan == kNone) {
                fan = static_cast<quint32>(_fans.size());
                _fans.emplace_back();
            }
            _fanOf[i] = fan;
            _fans[fan].normal = _fans[fan].normal + normal;
            _fans[fan].weightedSum = _fans[fan].weightedSum + weighted(corners[i]);
        }
        for (Fan& fan : _fans)
            fan.normal = unitDirection(fan.normal);
    }

    /// The cell of a direction of length 1, or the last one for zero.
    static quint32 cellOf(const Direction& direction) {
        if (isZero(direction))
            return kCells - 1;
        const double axes[] = {direction.x, direction.y, direction.z};
        const auto isShorter = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
        const auto axis = static_cast<quint32>(std::max_element(axes, axes + 3, isShorter) - axes);
        const auto step = [&](quint32 other) {
            const double place = (axes[other % 3] / std::fabs(axes[axis]) + 1) / 2 * kCellsPerEdge;
            return std::min(static_cast<quint32>(place), kCellsPerEdge - 1);
        };
        const quint32 side = 2 * axis + (axes[axis] < 0 ? 1 : 0);
        return (side * kCellsPerEdge + step(axis + 1)) * kCellsPerEdge + step(axis + 2);
    }

    double _leastCosine;
    quint64 _comparisons = 0;
};

/// Smooths faces of the same group.
class GroupFans : public Fans {
public:
    GroupFans(const FaceDirections& directions, const CornerFaces& faces)
        : Fans(directions), _groups(faces.groups), _faceCount(faces.faceCount) {}

    void collect(const quint32* corners, quint32 count) {
        clear(count);
        _members.clear();
        for (quint32 i = 0; i < count; ++i)
            _members.emplace_back(groupOf(corners[i]), i);
        std::sort(_members.begin(), _members.end());
        quint32 previous = kFlat;
        for (const auto& [group, i] : _members) {
            if (group == kFlat || group != previous)
                beginFan(corners[i]);
            join(i, corners[i]);
            previous = group;
        }
    }
    Direction sumOf(const Fan& fan) const { return fan.weightedSum; }
    quint64 comparisons() const { return 0; }

private:
    static constexpr quint32 kFlat = 0;

    quint32 groupOf(quint32 corner) const {
        const quint32 face = _directions.faceOf(corner);
        return face < _faceCount ? _groups[face] : kFlat;
    }

    const quint32* _groups;
    quint64 _faceCount;
    std::vector<std::pair<quint32, quint32>> _members; ///< group, and number of the corner at the position
};

/// Writes the normals and the numbers of the corners.
class NormalWriter {
public:
    NormalWriter(const CornerNumbers& corners, bool outward) : _corners(corners), _outward(outward) {}

    bool isMissing(quint32 corner) const { return _corners.numbers[corner] == _corners.missing; }

    template<typename PositionFans>
    void write(quint32 corner, PositionFans& fans, Fan& fan) {
        if (fan.number == Fan::kNoneYet)
            fan.number = add(fans.sumOf(fan), fan.normal);
        _corners.numbers[corner] = _corners.first + static_cast<quint32>(fan.number);
    }
    std::vector<float> take() { return std::move(_normals); }

private:
    qint64 add(const Direction& sum, const Direction& normalOfFace) {
        // The normals of faces are floats of length 1, so that a shorter sum has no correct digits.
        constexpr double kShortest = 1e-6;
        Direction normal = unitDirection(sum, kShortest);
        if (isZero(normal))
            normal = normalOfFace;
        // Zero minus zero, unlike minus zero, is positive.
        const Direction turned = _outward ? normal : Direction() - normal;
        const std::array<float, 3> floats = {float(turned.x), float(turned.y), float(turned.z)};
        if (_normals.empty() || !std::equal(floats.begin(), floats.end(), _normals.end() - 3))
            _normals.insert(_normals.end(), floats.begin(), floats.end());
        return static_cast<qint64>(_normals.size() / 3) - 1;
    }

    CornerNumbers _corners;
    bool _outward;
    std::vector<float> _normals;
};

template<typename PositionFans>
void smooth(const CornersByPosition& positions, PositionFans& fans, NormalWriter& writer,
            const std::function<void(quint32)>& count) {
    for (quint32 position = 0; position < positions.positionCount(); ++position) {
        const quint32* const corners = positions.begin(position);
        const quint32 cornerCount = positions.count(position);
        const auto isMissing = [&](quint32 corner) { return writer.isMissing(corner); };
        if (std::any_of(corners, corners + cornerCount, isMissing)) {
            fans.collect(corners, cornerCount);
            for (quint32 i = 0; i < cornerCount; ++i)
                if (isMissing(corners[i]))
                    writer.write(corners[i], fans, fans.fanOf(i));
        }
        count(cornerCount);
    }
}

/// Calls a meter with some ten thousand corners at a time.
class CornerCounter {
public:
    explicit CornerCounter(const WorkMeter& meter) : _meter(meter) {}

    void add(quint32 corners) {
        constexpr quint64 kCornersPerReport = 1 << 15;
        _corners += corners;
        if (_meter && _corners >= kCornersPerReport)
            _meter(static_cast<int>(std::exchange(_corners, 0)));
    }

private:
    const WorkMeter& _meter;
    quint64 _corners = 0;
};

} // namespace

CornerNormals makeCornerNormals(const CornerFaces& faces, const CornerNormalRule& rule,
                                const CornerNumbers& corners, const MergeOptions& merging) {
    CornerCounter counter(merging.meter);
    const auto count = [&counter](quint32 done) { counter.add(done); };
    const FaceDirections directions(faces, count);
    const CornersByPosition positions(faces, merging);
    NormalWriter writer(corners, rule.outward);
    const auto finish = [&](auto fans) {
        smooth(positions, fans, writer, count);
        return CornerNormals{writer.take(), fans.comparisons()};
    };
    return faces.groups != nullptr ? finish(GroupFans(directions, faces))
                                   : finish(CreaseFans(directions, rule.creaseAngle));
}

} // namespace Atelier::Vel

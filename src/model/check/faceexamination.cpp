#include "check/faceexamination.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "geometry/shapes/edgecrossing.h"
#include "mesh/cornerlist.h"

namespace Atelier::Vel {

namespace {

// Flatter faces count as planar: programs usually write five digits or more.
constexpr double kPlanar = 0.01;
// The cosines of 90 ± 0.5 degrees.
constexpr double kInPlane = 0.0087;

/// What there is among some indices.
struct IndexRange {
    quint64 end = 0; ///< behind the highest index
    bool hasNone = false;

    IndexRange(const quint32* indices, quint32 count) {
        for (quint32 i = 0; i < count; ++i) {
            const bool isNone = indices[i] == kNoIndex;
            hasNone = hasNone || isNone;
            end = std::max(end, isNone ? 0 : quint64{indices[i]} + 1);
        }
    }
};

// `sorted` is memory that is used.
bool repeatsVertex(const quint32* corners, quint32 count, std::vector<quint32>& sorted) {
    if (count == 3)
        return corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
    if (count == 4)
        return corners[0] == corners[1] || corners[0] == corners[2] || corners[0] == corners[3] ||
               corners[1] == corners[2] || corners[1] == corners[3] || corners[2] == corners[3];
    sorted.assign(corners, corners + count);
    std::sort(sorted.begin(), sorted.end());
    return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

// The number that a file has for an index. Positive ones are at most 2^31 - 1.
QString asWritten(quint32 index, quint32 before) {
    if (index == kNoIndex)
        return QStringLiteral("0");
    const qint64 number = qint64(index) + 1;
    return QString::number(number <= 0x7FFFFFFF ? number : qint64(static_cast<qint32>(index - before)));
}

struct ValueName {
    const char* one;
    const char* many;
};

ValueName nameOf(CheckCode code) {
    if (code == CheckCode::PositionOutOfRange)
        return {"position", "positions"};
    return code == CheckCode::NormalOutOfRange ? ValueName{"normal", "normals"}
                                               : ValueName{"texture coordinate", "texture coordinates"};
}

// Which indices of a kind there are, for one that is out of their range.
QString rangeOf(CheckCode code, const QString& number, quint32 before, quint32 all) {
    if (number == QLatin1String("0"))
        return QStringLiteral("indices begin at 1");
    const bool isRelative = number.startsWith(QLatin1Char('-'));
    const quint32 count = isRelative ? before : all;
    const ValueName name = nameOf(code);
    const QString values =
        QStringLiteral("%1 %2").arg(count == 0 ? QStringLiteral("no") : QString::number(count),
                                    QLatin1String(count == 1 ? name.one : name.many));
    if (!isRelative)
        return QStringLiteral("the file has %1").arg(values);
    return (count == 1 ? QStringLiteral("%1 precedes the line") : QStringLiteral("%1 precede the line"))
        .arg(values);
}

QString percent(double share) {
    return QString::number(100 * share, 'g', 3);
}

} // namespace

FaceExamination::FaceExamination(QString file, FindingLog& log, const Options& options)
    : _file(std::move(file)), _log(log), _options(options) {}

void FaceExamination::addPositions(const float* values, quint64 count) {
    _positions.add(values, count);
    _used.resize(_positions.count());
}

void FaceExamination::addNormals(const float* values, quint64 count) {
    _normals.add(values, count);
}

template<typename Describe>
void FaceExamination::report(CheckCode code, const CheckedFace& face, int column, const Describe& describe) {
    if (_log.isFull(code))
        return _log.count(code);
    _log.add(code, {_file, face.line, column}, [&](CheckFinding& finding) {
        finding.message = describe();
        const IndexRange positions(face.positions, face.count);
        const bool isPlaced = !positions.hasNone && positions.end <= _used.size();
        for (quint32 i = 0; isPlaced && face.count <= CheckFinding::kMaxOutline && i < face.count; ++i) {
            const float* const position = _positions[face.positions[i]];
            finding.outline.append({position[0], position[1], position[2]});
        }
    });
}

void FaceExamination::add(const CheckedFace& face, const ObjLineCounts& counts) {
    const IndexRange positions(face.positions, face.count);
    const IndexRange texCoords(face.texCoords, face.count);
    const IndexRange normals(face.normals, face.count);
    if (!positions.hasNone && positions.end <= counts.positions && texCoords.end <= counts.texCoords &&
        normals.end <= counts.normals)
        return examineCorners(face, {texCoords.hasNone, normals.hasNone}, !normals.hasNone);
    defer(face, counts);
}

void FaceExamination::defer(const CheckedFace& face, const ObjLineCounts& counts) {
    if (_deferredCorners.size() + quint64{3} * face.count > 3 * _options.deferredCorners) {
        ++_notKept;
        return;
    }
    _deferred.push_back({face.count, face.material, face.line, counts});
    for (const quint32* list : {face.positions, face.texCoords, face.normals})
        _deferredCorners.insert(_deferredCorners.end(), list, list + face.count);
}

void FaceExamination::finish(const ObjLineCounts& counts) {
    const quint32* corners = _deferredCorners.data();
    for (const Deferred& face : _deferred) {
        examine({corners, corners + face.count, corners + quint64{2} * face.count, face.count, face.material,
                 face.line},
                face.counts, counts);
        corners += quint64{3} * face.count;
    }
    _notCompared += _matches.skipped();
}

void FaceExamination::examine(const CheckedFace& face, const ObjLineCounts& before,
                              const ObjLineCounts& all) {
    if (!hasValues(CheckCode::PositionOutOfRange, face.positions, face, before.positions, all.positions))
        return;
    hasValues(CheckCode::TexCoordOutOfRange, face.texCoords, face, before.texCoords, all.texCoords);
    const bool hasNormals =
        hasValues(CheckCode::NormalOutOfRange, face.normals, face, before.normals, all.normals);
    const Lacks lacks = {IndexRange(face.texCoords, face.count).hasNone,
                         IndexRange(face.normals, face.count).hasNone};
    examineCorners(face, lacks, hasNormals && !lacks.normals);
}

// Requires: all positions exist, and if `hasNormals`, all normals.
void FaceExamination::examineCorners(const CheckedFace& face, const Lacks& lacks, bool hasNormals) {
    for (quint32 i = 0; i < face.count; ++i)
        _used[face.positions[i]] = 1;
    if (face.count < 3)
        return report(CheckCode::FaceTooFewCorners, face, 0, [&face] {
            return QStringLiteral("The face has %1 of at least 3 corners, and is not drawn").arg(face.count);
        });
    countMissing(face, lacks);
    examineShape(face, hasNormals);
}

// Reports the first index that does not exist. A position has to be named.
bool FaceExamination::hasValues(CheckCode code, const quint32* indices, const CheckedFace& face,
                                quint32 before, quint32 all) {
    const bool isPosition = code == CheckCode::PositionOutOfRange;
    const quint32* const end = indices + face.count;
    const quint32* const bad = std::find_if(
        indices, end, [&](quint32 index) { return index >= all && (isPosition || index != kNoIndex); });
    if (bad == end)
        return true;
    const int word = static_cast<int>(bad - indices) + 1;
    report(code, face, columnOfWord(word), [&] {
        const QString number = asWritten(*bad, before);
        return QStringLiteral("There is no %1 %2: %3; %4")
            .arg(QLatin1String(nameOf(code).one), number, rangeOf(code, number, before, all),
                 isPosition ? QStringLiteral("the face is dropped") : QStringLiteral("the corner has none"));
    });
    return false;
}

void FaceExamination::countMissing(const CheckedFace& face, const Lacks& lacks) {
    if (_materials.size() <= static_cast<std::size_t>(face.material))
        _materials.resize(static_cast<std::size_t>(face.material) + 1);
    MaterialFaces& material = _materials[static_cast<std::size_t>(face.material)];
    ++material.faces;
    if (lacks.texCoords && material.withoutTexCoords++ == 0)
        material.firstWithoutTexCoords = face.line;
    if (lacks.normals && material.withoutNormals++ == 0)
        material.firstWithoutNormals = face.line;
}

void FaceExamination::examineShape(const CheckedFace& face, bool hasNormals) {
    const FaceShape shape = shapeOf(_positions.items(), face.positions, face.count);
    if (!shape.isFinite)
        return;
    const bool repeats = repeatsVertex(face.positions, face.count, _sorted);
    if (shape.isDegenerate) {
        report(CheckCode::FaceDegenerate, face, 0, [&] {
            return repeats ? QStringLiteral("The face names a vertex twice, and has no area")
                           : QStringLiteral("The corners of the face lie on a line: it has no area");
        });
    } else if (repeats) {
        report(CheckCode::FaceRepeatsVertex, face, 0,
               [] { return QStringLiteral("The face names a vertex more than once"); });
    }
    examineMatches(face);
    const bool crosses = face.count > 3 && examinePolygon(face, shape);
    if (hasNormals && !crosses && !shape.isDegenerate)
        examineNormals(face, shape);
}

bool FaceExamination::examinePolygon(const CheckedFace& face, const FaceShape& shape) {
    _largeFaces += face.count > kMaxCorners ? 1 : 0;
    examineCut(face);
    if (shape.isDegenerate)
        return false;
    if (shape.deviation > kPlanar * shape.size)
        report(CheckCode::FaceNotPlanar, face, 0, [&shape] {
            return QStringLiteral("A corner is %1 away from the mean plane of the face, %2 % of its size")
                .arg(QString::number(shape.deviation, 'g', 3), percent(shape.deviation / shape.size));
        });
    return examineCrossing(face, shape);
}

bool FaceExamination::examineCrossing(const CheckedFace& face, const FaceShape& shape) {
    if (face.count > kMaxCorners)
        return false;
    const EdgeCrossing crossing = findEdgeCrossing(
        _positions.items(), face.positions, static_cast<int>(face.count), shape.normal, _options.comparisons);
    _notCompared += crossing.isUndecided ? 1 : 0;
    if (crossing.first < 0)
        return false;
    const auto next = [&face](int corner) {
        return corner + 1 == static_cast<int>(face.count) ? 0 : corner + 1;
    };
    report(CheckCode::FaceCrossesItself, face, 0, [&] {
        return QStringLiteral("The edge from corner %1 to %2 crosses the edge from corner %3 to %4")
            .arg(crossing.first + 1)
            .arg(next(crossing.first) + 1)
            .arg(crossing.second + 1)
            .arg(next(crossing.second) + 1);
    });
    return true;
}

void FaceExamination::examineCut(const CheckedFace& face) {
    if (!_options.cutsPolygons)
        return;
    std::vector<int> corners(face.positions, face.positions + face.count);
    const auto& triangles =
        _triangulator.cornerTriangles(static_cast<int>(face.count), corners.data(), _positions.items());
    if (triangles.empty())
        report(CheckCode::FaceNotCut, face, 0,
               [] { return QStringLiteral("The face cannot be cut into triangles, and is not drawn"); });
}

void FaceExamination::examineMatches(const CheckedFace& face) {
    // Files of more lines have more faces than are compared.
    const auto tag = static_cast<quint32>(face.line);
    const FaceMatches::Result result = _matches.add(face.positions, face.count, tag);
    if (result.match == FaceMatches::Match::Same)
        report(CheckCode::FaceDuplicate, face, 0, [&result] {
            return QStringLiteral("The face has the same vertices as the face in line %1").arg(result.tag);
        });
    if (result.match == FaceMatches::Match::Opposite)
        report(CheckCode::FaceOpposite, face, 0, [&result] {
            return QStringLiteral("The face has the vertices of the face in line %1, in the opposite order")
                .arg(result.tag);
        });
}

// Whether all normals are clearly on the side of the face that is seen, as nearly all are.
bool FaceExamination::doNormalsAgree(const CheckedFace& face, const FaceShape& shape) const {
    return std::all_of(face.normals, face.normals + face.count,
                       [&](quint32 index) { return isOnSide(shape, _normals[index], kInPlane); });
}

// A normal between two faces may point a little against one of them, so all corners have to.
void FaceExamination::examineNormals(const CheckedFace& face, const FaceShape& shape) {
    if (doNormalsAgree(face, shape))
        return;
    double highest = -1;
    double flattest = 1;
    int flattestCorner = 0;
    for (quint32 i = 0; i < face.count; ++i) {
        const float* const normal = _normals[face.normals[i]];
        if (normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 0.0F)
            return;
        const double cosine = cosineTo(shape, normal);
        highest = std::max(highest, cosine);
        if (std::fabs(cosine) < flattest) {
            flattest = std::fabs(cosine);
            flattestCorner = static_cast<int>(i);
        }
    }
    if (highest < -kInPlane)
        return report(CheckCode::NormalAgainstFace, face, 0, [] {
            return QStringLiteral("All normals of the face point away from the side on which it is "
                                  "counter-clockwise");
        });
    if (flattest < kInPlane)
        report(CheckCode::NormalInFacePlane, face, columnOfWord(flattestCorner + 1),
               [] { return QStringLiteral("The normal of the corner lies in the plane of the face"); });
}

QStringList FaceExamination::notExamined() const {
    QStringList sentences;
    if (_notKept > 0)
        sentences.append(
            QStringLiteral("%1 faces of '%2', because they name values that follow or do not exist")
                .arg(QString::number(_notKept), _file));
    if (_largeFaces > 0)
        sentences.append(QStringLiteral("Whether %1 faces of '%2' with more than %3 corners cross themselves")
                             .arg(QString::number(_largeFaces), _file, QString::number(kMaxCorners)));
    if (_notCompared > 0)
        sentences.append(QStringLiteral("All other faces or edges, in the comparison of %1 faces of '%2'")
                             .arg(QString::number(_notCompared), _file));
    return sentences;
}

} // namespace Atelier::Vel

#pragma once

#include <algorithm>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "check/findinglog.h"
#include "geometry/shapes/facematches.h"
#include "geometry/shapes/faceshape.h"
#include "geometry/triangulation/polygontriangulator.h"
#include "import/obj/plainlines.h"
#include "memory/growinglist.h"

namespace Atelier::Vel {

/// The corners of a face of a file, by the numbers of their values from 0, or kNoIndex.
struct CheckedFace {
    const quint32* positions = nullptr;
    const quint32* texCoords = nullptr;
    const quint32* normals = nullptr;
    quint32 count = 0;
    int material = 0;
    qint64 line = 0;
};

/// What the faces of one material lack.
struct MaterialFaces {
    quint64 faces = 0;
    quint64 withoutTexCoords = 0;
    quint64 withoutNormals = 0;
    qint64 firstWithoutTexCoords = 0; ///< its line
    qint64 firstWithoutNormals = 0;
};

/// Vectors of three floats, in one list.
class FloatTriples {
public:
    void add(const float* values, quint64 count) {
        _values.reserve(3 * (_count + count), 3 * _count);
        std::copy_n(values, 3 * count, _values.items() + 3 * _count);
        _count += count;
    }
    quint64 count() const { return _count; }
    const float* items() const { return _values.items(); }
    const float* operator[](quint32 number) const { return items() + quint64{3} * number; }

private:
    GrowingList<float> _values;
    quint64 _count = 0;
};

/// Examines the faces of a file: their indices, their shape, and their normals.
class FaceExamination {
public:
    /// Larger polygons are not searched for edges that cross.
    static constexpr quint32 kMaxCorners = 10'000;

    struct Options {
        bool cutsPolygons = false; ///< whether polygons that cannot be cut are looked for
        /// The pairs of edges that are compared in all faces together.
        qint64 comparisons = 200'000'000;
        /// The corners of faces that are kept until values that follow are known.
        quint64 deferredCorners = 4'000'000;
    };

    /// `log` must outlive the object.
    FaceExamination(QString file, FindingLog& log, const Options& options);

    /// The values of the file so far, three floats for each position and normal.
    void addPositions(const float* values, quint64 count);
    void addNormals(const float* values, quint64 count);
    /// Examines a face, or keeps it if it names values that may follow. `counts` are those up to its line.
    void add(const CheckedFace& face, const ObjLineCounts& counts);
    /// Must be called at the end of the file. Examines the faces that were kept.
    void finish(const ObjLineCounts& counts);

    const float* positions() const { return _positions.items(); }
    /// For each position whether a face uses it.
    const std::vector<quint8>& used() const { return _used; }
    /// By the number of the material.
    const std::vector<MaterialFaces>& materials() const { return _materials; }
    QStringList notExamined() const;
    /// Whether all faces were examined, so that it is known which positions are used.
    bool isComplete() const { return _notKept == 0; }

private:
    struct Deferred {
        quint32 count;
        int material;
        qint64 line;
        ObjLineCounts counts;
    };

    /// Whether a corner of a face names no texture coordinates, or no normal.
    struct Lacks {
        bool texCoords;
        bool normals;
    };

    void defer(const CheckedFace& face, const ObjLineCounts& counts);
    void examine(const CheckedFace& face, const ObjLineCounts& before, const ObjLineCounts& all);
    bool hasValues(CheckCode code, const quint32* indices, const CheckedFace& face, quint32 before,
                   quint32 all);
    void examineCorners(const CheckedFace& face, const Lacks& lacks, bool hasNormals);
    void countMissing(const CheckedFace& face, const Lacks& lacks);
    void examineShape(const CheckedFace& face, bool hasNormals);
    // These two return whether the face crosses itself, and so has no side.
    bool examinePolygon(const CheckedFace& face, const FaceShape& shape);
    bool examineCrossing(const CheckedFace& face, const FaceShape& shape);
    void examineMatches(const CheckedFace& face);
    void examineNormals(const CheckedFace& face, const FaceShape& shape);
    bool doNormalsAgree(const CheckedFace& face, const FaceShape& shape) const;
    void examineCut(const CheckedFace& face);
    template<typename Describe>
    void report(CheckCode code, const CheckedFace& face, int column, const Describe& describe);

    QString _file;
    FindingLog& _log;
    Options _options;
    FloatTriples _positions;
    FloatTriples _normals;
    std::vector<quint8> _used;
    std::vector<MaterialFaces> _materials;
    FaceMatches _matches;
    PolygonTriangulator _triangulator;
    std::vector<quint32> _sorted; ///< the corners of a face, while it is examined
    std::vector<Deferred> _deferred;
    std::vector<quint32> _deferredCorners; ///< the three lists of each face
    quint64 _notKept = 0;                  ///< faces that could not be kept
    quint64 _largeFaces = 0;               ///< faces of more than kMaxCorners corners
    quint64 _notCompared = 0;              ///< faces whose edges were not all compared
};

} // namespace Atelier::Vel

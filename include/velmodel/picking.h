#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QtCore/QPointF>
#include <QtCore/QSize>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector3D>

#include <velmodel/drawdata.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// A half line. The direction may have any length.
struct PickRay {
    QVector3D origin;
    QVector3D direction;

    /// The ray of a pixel: from the near plane through the point at `position` of a viewport of `size` that
    /// is drawn with `viewProjection`. Both are in the same units, with the origin at the top left corner, as
    /// those of mouse events; the centre of the first pixel is at 0.5, 0.5.
    /// Returns: a ray without a direction, which hits nothing, if `size` is empty or the matrix has no
    /// inverse.
    VELMODEL_EXPORT static PickRay through(const QPointF& position, const QSize& size,
                                           const QMatrix4x4& viewProjection);
};

/// Where a ray hits a model.
struct PickHit {
    int drawable = 0;
    int command = 0;      ///< of the drawable
    quint32 triangle = 0; ///< of the command: its first index is firstIndex + 3 * triangle
    QVector3D point;      ///< on the triangle, in the coordinates of the ray
    double distance = 0;  ///< from the origin to the point, in the units of these coordinates
    QVector3D weights;    ///< of the three vertices at the point, with the sum 1, to interpolate attributes
};

/// Finds the triangle of draw data that a ray hits first, from either side.
///
/// Triangles are taken from the index list of the draw data, even if they are drawn as another primitive, and
/// from the attribute with the positions. The nearest hit is exact: it is the one that testing all triangles
/// would find. Of hits at equal distances, that of the lowest drawable counts, then of the lowest command and
/// triangle. No ray passes between two triangles that share the positions of two vertices, so none passes a
/// closed mesh.
///
/// Never hit are triangles with a position that is not finite, with an index out of range, or without an
/// area, and triangles that are seen edge-on. Draw data whose positions are not floats with at least three
/// components has no hits.
///
/// A value: copies are cheap and share their content. It keeps a copy of the draw data, whose streams
/// therefore stay in memory when upload() gets the original. Threads: const functions may be called on
/// several threads at a time.
class VELMODEL_EXPORT ModelPicker {
public:
    /// Whether a command can be hit, for example because it is not hidden. It has to be a constant function:
    /// which commands it is called for, and how often, is not specified.
    using Filter = std::function<bool(int drawable, int command)>;
    /// The matrix from the coordinates of the mesh to those of the ray, for a command. The last row of the
    /// matrix is taken as 0 0 0 1.
    using Placement = std::function<QMatrix4x4(int drawable, int command)>;

    /// Hits nothing.
    ModelPicker();
    /// Builds the tree of boxes that all picks need, unless an earlier picker or pick() has built it for
    /// `data` or a copy. Copies and pickers share it; it is freed with the last of them. Threads: any thread.
    /// Several at a time may each build the tree; the first one is kept. Errors:  throws std::bad_alloc when
    /// memory runs out. Cost:    about 0.3 µs and 45 bytes for each triangle, and 32 bytes more while it
    /// builds.
    explicit ModelPicker(const DrawData& data);
    ModelPicker(const ModelPicker& other);
    ModelPicker(ModelPicker&& other) noexcept;
    ModelPicker& operator=(const ModelPicker& other);
    ModelPicker& operator=(ModelPicker&& other) noexcept;
    ~ModelPicker();

    /// A picker of the same triangles in which the commands are placed by matrices, in place of those of an
    /// earlier call. Commands whose matrix has no inverse are never hit. `placement` is called once for each
    /// command, and not kept. Cost: n log n for n commands. The tree is shared. A pick then walks the tree
    /// once for each distinct matrix with a command whose box the ray meets.
    ModelPicker placed(const Placement& placement) const;

    /// The nearest hit of a command that passes the filter; all commands pass an empty filter.
    /// Returns: none if the ray hits nothing, if its direction is zero, or if one of its numbers is not
    /// finite. Errors:  what the filter throws. Cost:    microseconds for a million triangles; nothing is
    /// allocated.
    std::optional<PickHit> pick(const PickRay& ray, const Filter& filter = {}) const;

    /// The memory of the tree, in bytes.
    quint64 byteCount() const;

private:
    struct VELMODEL_NO_EXPORT Data;
    std::shared_ptr<const Data> _data;
};

/// ModelPicker(data).pick(ray): the first call for `data` or its copies builds the tree, which stays as long
/// as one of the copies lives.
VELMODEL_EXPORT std::optional<PickHit> pick(const DrawData& data, const PickRay& ray);

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedata.h>
#include <velmodel/loadprogress.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class GPUModel;
struct DrawDataContent;

/// What was found while draw data was made of a mesh.
struct PreparationStatistics {
    quint64 corners = 0;             ///< vertices before merging
    quint64 vertices = 0;            ///< vertices after merging
    quint64 triangles = 0;           ///< triangles of all commands
    quint64 untriangulatedFaces = 0; ///< faces in a group that gave no triangle
    quint64 substitutedCorners = 0;  ///< attribute values taken as zero for want of a valid index
};

/// A mesh as a GPU takes it, in plain memory: one list of triangle indices, one stream of values per vertex
/// attribute, and for each draw key the commands that draw its groups.
///
/// A value: copies share their content, which never changes. Calls of const functions may come from several
/// threads at a time. Data is addressed by pointers that stay valid while a copy of the draw data lives.
class VELMODEL_EXPORT DrawData {
public:
    /// The values of one attribute, packed, `components` of them for each vertex.
    struct Attribute {
        QString name;
        int components = 0;
        quint32 type = 0; ///< of a component, a GL scalar type
        quint64 vertexCount = 0;
        const void* data = nullptr; ///< null without bytes
        quint64 bytes = 0;
    };

    /// Three vertex numbers for each triangle.
    struct Indices {
        const quint32* data = nullptr;
        quint64 count = 0;
    };

    /// What one command draws.
    struct Group {
        QString name;
        QString objectName; ///< null where none was given
        qint32 id = 0;
        InstanceData material;
    };

    struct Box {
        QVector3D minimum;
        QVector3D maximum;
        bool isValid = false; ///< false without a position
    };

    /// How often a vertex is transformed, for a cache that holds the 16 vertices transformed last.
    struct VertexCacheStatistics {
        float acmr = 0; ///< transformed vertices per triangle, from 0.5 for a large grid to 3
        float atvr = 0; ///< transformations of each vertex in use, 1 at best
    };

    /// Null draw data: no attributes, no indices, no drawables.
    DrawData();
    DrawData(const DrawData& other);
    DrawData(DrawData&& other) noexcept;
    DrawData& operator=(const DrawData& other);
    DrawData& operator=(DrawData&& other) noexcept;
    ~DrawData();

    /// Whether nothing was prepared. Draw data of a mesh without triangles is not null.
    bool isNull() const;

    /// The attributes in the order of their names.
    QVector<Attribute> attributes() const;
    Indices indices() const;
    /// The number of values in the attribute that holds the positions.
    quint64 vertexCount() const;

    /// One for each draw key, in ascending order of the keys.
    int drawableCount() const;
    /// Requires for these: `drawable` is below drawableCount(), and `command` below commandCount().
    quint64 drawKey(int drawable) const;
    int commandCount(int drawable) const;
    const DrawElementsIndirectCommand& command(int drawable, int command) const;
    Group group(int drawable, int command) const;

    /// The box around the finite positions that a command uses, in the space of the mesh.
    /// Cost: linear in the indices of the command; nothing is stored.
    Box commandBox(int drawable, int command) const;

    /// Whether this build can reorder draw data: it can unless it was configured with
    /// VELMODEL_MESHOPTIMIZER=OFF.
    static bool canOptimise();

    /// The same mesh in an order that a GPU draws faster. Within each command, triangles are ordered for the
    /// vertex cache and then to draw fewer pixels twice; after that, vertices are ordered by their first use.
    /// Commands, their ranges, the winding of triangles and the vertices that no triangle uses are kept; the
    /// latter go behind the others. Draw data is taken as a list of triangles, whatever it is drawn as.
    /// The order is the same on every run, but may differ between versions of meshoptimizer.
    /// `progress` is called before the first command and after each one.
    /// Returns:  null draw data if `progress` cancels; this draw data, shared, if canOptimise() is false, if
    ///           the positions are not floats with at least three components, if an index is out of range,
    ///           or, after a warning, if the allocator of the streams has no new ones. A command keeps its
    ///           order if one of its positions is not finite, if its range overlaps another one or exceeds
    ///           the indices, or if its count is not divisible by three.
    /// Requires: the allocator may be called on this thread. Throws std::bad_alloc when memory runs out.
    /// Cost:     0.5 to 2 µs for each triangle; new streams, and 20 to 50 bytes of working memory for each
    ///           index of the largest command.
    DrawData optimised(const LoadProgress& progress = {}) const;

    /// Of all triangles, in their order. Zeros without triangles, with an index out of range, and if
    /// canOptimise() is false. Cost: linear in the indices and vertices.
    VertexCacheStatistics vertexCacheStatistics() const;

private:
    friend struct DrawDataAccess;

    VELMODEL_NO_EXPORT explicit DrawData(std::shared_ptr<DrawDataContent> content);

    std::shared_ptr<DrawDataContent> _content;
};

/// What is the same for all drawables of an upload.
struct UploadOptions {
    /// Copied once for each command.
    InstanceData instance;
    /// The member of the instance data that takes the group's id, 32 bits. Null hands the groups' materials
    /// to the drawables instead.
    QString groupIdMember = {};
    unsigned int usage = 0x88E4;    ///< a GL usage hint, GL_STATIC_DRAW
    unsigned int primitiveType = 4; ///< a GL primitive mode, GL_TRIANGLES
};

/// Adds draw data to `model`: one drawable per draw key over common buffers. To be called on the thread whose
/// context is current.
/// Returns: false, with `model` unchanged, for null draw data, without a context, and, after a warning, when
/// a buffer cannot be had. Cost: the indices of fewer than 65,535 vertices are copied to 16 bits; everything
/// else goes to VelGL as it is.
VELMODEL_EXPORT bool upload(const DrawData& data, GPUModel& model, const UploadOptions& options);
/// The same, and gives memory back as soon as VelGL has its content, when no copy shares it. `data` is null
/// then.
VELMODEL_EXPORT bool upload(DrawData&& data, GPUModel& model, const UploadOptions& options);

} // namespace Atelier::Vel

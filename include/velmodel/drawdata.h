#pragma once

#include <memory>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedata.h>
#include <velmodel/loadprogress.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class GPUModel;
struct DrawDataContent;

/// What a preparation counted while it made draw data of a mesh.
struct PreparationStatistics {
    quint64 corners = 0;             ///< vertices before merging
    quint64 vertices = 0;            ///< vertices after merging
    quint64 triangles = 0;           ///< triangles of all commands
    quint64 untriangulatedFaces = 0; ///< faces in a group that gave no triangle
    quint64 substitutedCorners = 0;  ///< attribute values that are zero because their index is not valid
};

/// A mesh as a GPU takes it, in plain memory: one list of triangle indices, one stream of values per vertex
/// attribute, and for each draw key the commands that draw its groups.
///
/// ModelBuilder::prepare() and readDrawDataFromOBJFile() make it; upload() hands it to the GPU. It holds no
/// OpenGL objects.
/// A value: copies are cheap and share their content, which never changes. The pointers that it returns stay
/// valid while a copy of the draw data lives.
/// Threads: const functions may be called on several threads at a time.
class VELMODEL_EXPORT DrawData {
public:
    /// The values of one attribute: `components` elements of `type` for each vertex, in the order of the
    /// vertices, without gaps.
    struct Attribute {
        QString name;
        int components = 0;
        quint32 type = 0;           ///< of a component, a GL scalar type
        quint64 vertexCount = 0;    ///< whole values in `data`
        const void* data = nullptr; ///< null if there are no bytes
        quint64 bytes = 0;          ///< size of `data`
    };

    /// The triangles of all commands: three vertex numbers for each.
    struct Indices {
        const quint32* data = nullptr;
        quint64 count = 0; ///< of indices, not of triangles
    };

    /// The material group that one command draws.
    struct Group {
        QString name;
        QString objectName; ///< null if none was given
        qint32 id = 0;      ///< see ModelBuilder::createMaterialGroup()
        InstanceData material;
    };

    /// An axis-aligned box.
    struct Box {
        QVector3D minimum;
        QVector3D maximum;
        bool isValid = false; ///< false if there is no position to enclose
    };

    /// How often a vertex is transformed, with a cache that holds the 16 vertices transformed last.
    struct VertexCacheStatistics {
        float acmr = 0; ///< transformations per triangle, from 0.5 for a large grid to 3
        float atvr = 0; ///< transformations of each vertex in use, 1 at best
    };

    /// Null draw data: no attributes, no indices, no drawables.
    DrawData();
    DrawData(const DrawData& other);
    DrawData(DrawData&& other) noexcept;
    DrawData& operator=(const DrawData& other);
    DrawData& operator=(DrawData&& other) noexcept;
    ~DrawData();

    /// Whether there is no content: after default construction, a failure or an upload that took the content.
    /// Draw data of a mesh without triangles is not null.
    bool isNull() const;
    /// Whether there is nothing to draw: no content, or no command with a triangle.
    bool isEmpty() const;

    /// The attributes, sorted by name. Cost: linear in their number; no values are copied.
    QVector<Attribute> attributes() const;
    /// The index list that all commands share.
    Indices indices() const;
    /// The number of values in the attribute that holds the positions.
    quint64 vertexCount() const;

    /// The number of drawables. There is one for each draw key, in ascending order of the keys. The commands
    /// of a drawable are in ascending order of their groups' ids, then of their names; groups without faces
    /// have none.
    /// The functions below require that `drawable` is less than drawableCount(), and `command` less than
    /// commandCount(); this is not checked.
    int drawableCount() const;
    /// The bits of the flags that the groups of a drawable share; see the constructor of ModelBuilder.
    quint64 drawKey(int drawable) const;
    /// The number of commands of a drawable.
    int commandCount(int drawable) const;
    /// The range of indices() that a command draws.
    const DrawElementsIndirectCommand& command(int drawable, int command) const;
    /// The group that a command draws.
    Group group(int drawable, int command) const;

    /// The paths of the textures that the materials name, each once, in the order of the commands. For
    /// DecodedTextures::decode().
    QStringList texturePaths() const;

    /// The box around the finite positions that a command uses, in the coordinates of the mesh.
    /// Returns: an invalid box if the positions are not floats with at least three components, or none of
    ///          them is finite.
    /// Cost:    linear in the indices of the command. The box is not stored.
    Box commandBox(int drawable, int command) const;

    /// Whether this build can reorder draw data: true unless it was configured with
    /// VELMODEL_MESHOPTIMIZER=OFF.
    static bool canOptimise();

    /// Reorders triangles and vertices so that a GPU draws the same mesh faster. Within each command,
    /// triangles are ordered for the vertex cache, and then to draw fewer pixels twice. After that, vertices
    /// are numbered in the order of their first use; vertices that no triangle uses follow in their old
    /// order. The commands, their ranges and the winding of the triangles do not change.
    /// The order is the same on every run, but may differ between versions of meshoptimizer.
    ///
    /// A command keeps its order if one of its positions is not finite, if its range overlaps another one or
    /// exceeds the indices, or if its count is not divisible by three. The indices are taken as a list of
    /// triangles, even if they are drawn as another primitive.
    ///
    /// `progress` is called before the first command and after each command.
    /// Requires: the allocator of the streams may be called on this thread.
    /// Returns:  null draw data if `progress` cancels. A copy of this draw data if canOptimise() is false, if
    ///           the positions are not floats with at least three components, if an index is out of range or,
    ///           after a warning, if the allocator makes no new streams.
    /// Errors:   throws std::bad_alloc when memory runs out, and what `progress` throws.
    /// Cost:     0.5 to 2 µs for each triangle; new streams, and 20 to 50 bytes of working memory for each
    ///           index of the largest command.
    DrawData optimised(const LoadProgress& progress = {}) const;

    /// The use of the vertex cache by all triangles, in their order.
    /// Returns: zeros if there are no triangles, if an index is out of range, or if canOptimise() is false.
    /// Cost:    linear in the indices and vertices.
    VertexCacheStatistics vertexCacheStatistics() const;

private:
    friend struct DrawDataAccess;

    VELMODEL_NO_EXPORT explicit DrawData(std::shared_ptr<DrawDataContent> content);

    std::shared_ptr<DrawDataContent> _content;
};

/// What is the same for all drawables of an upload.
struct UploadOptions {
    /// The instance data of every command. Each command gets a copy.
    InstanceData instance;
    /// The member of the instance data that is set to the id of the command's group, 32 bits. If the name is
    /// null, no member is set, and the drawables get the materials of the groups instead.
    QString groupIdMember = {};
    unsigned int usage = 0x88E4;    ///< a GL usage hint, GL_STATIC_DRAW
    unsigned int primitiveType = 4; ///< a GL primitive mode, GL_TRIANGLES
    /// Whether the model keeps the streams of the draw data, so that it can be drawn in a window that does
    /// not share with the first one, and after its context is gone: it sets GPUModel::setRefill(), which
    /// first calls the function that was set before. Else the streams are freed and such a model is not
    /// drawn.
    bool keepData = false;
    /// Whether the model gets the boxes of its commands, see DrawData::commandBox().
    /// GPUModel::commandBounds() returns them, and GPUModel::placedBounds() needs them.
    /// Cost: linear in the indices, once in the upload. 28 bytes for each command.
    bool commandBounds = false;
    /// The instances that each command is drawn in, in place of `instance`; none for that one. All of them
    /// have the name of the first. Instance i of command c becomes item c * instances.size() + i of
    /// GPUModel::instances(), see GPUModel::add().
    QList<InstanceData> instances = {};
};

/// Adds draw data to `model`: one drawable per draw key. All drawables share one index buffer, and one vertex
/// buffer per attribute.
/// Threads:  to be called on the thread whose context is current.
/// Returns:  false, with `model` unchanged, if `data` is null, if no context is current, or, after a warning,
///           if a buffer cannot be made.
/// Cost:     the indices of fewer than 65,535 vertices are copied to 16 bits; all other data is handed to
///           VelGL without a copy.
VELMODEL_EXPORT bool upload(const DrawData& data, GPUModel& model, const UploadOptions& options);
/// The same, and frees each stream as soon as VelGL has its content, unless another copy shares it or the
/// model keeps it. `data` is null afterwards if a context is current.
VELMODEL_EXPORT bool upload(DrawData&& data, GPUModel& model, const UploadOptions& options);

} // namespace Atelier::Vel

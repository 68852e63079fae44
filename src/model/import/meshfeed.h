#pragma once

#include <memory>

#include <QtCore/QString>

#include "import/obj/objrun.h"
#include "import/vertexcolours.h"

namespace Atelier::Vel {

class FaceGroups;
class ObjReader;
struct MaterialName;
struct Mesh;

/// Adds OBJ records to a mesh, many records per call. The result is the same as that of adding them one by
/// one.
class MeshFeed {
public:
    /// The arguments must outlive the feed.
    MeshFeed(Mesh& mesh, FaceGroups& groups);

    /// Adds colours of "v" lines as well. Must be called before the first record is added.
    void takeColours() { _run->takesColours = true; }

    /// A run that is not full, for adding records directly. A vertex line may be added directly only after
    /// another one of its kind was added by addRecord().
    ObjRun& run();

    /// Adds the records of another run, which is as run() would be.
    void addRun(const ObjRun& run);
    /// Adds the vertex line or face that `reader` has read.
    void addRecord(const ObjReader& reader);
    /// Sets the material of the following faces, whose group they join.
    void useMaterial(MaterialName name);
    /// Sets the object, or the group in the object, of the following faces.
    void useObject(const QString& name);
    void useGroup(const QString& name);
    /// Adds all records of the run to the mesh. Must be called before a group is created, so that earlier
    /// faces do not join it.
    void flush();

    /// Counts the corners before the first normal as corners without a normal. Must be called before the
    /// first record. Otherwise the indices of later corners go to the earlier ones, as those of other
    /// attributes do.
    void alignNormals() { _alignsNormals = true; }

    /// The number of corners added to the mesh so far.
    quint64 corners() const { return _corners; }
    /// The number of faces added so far, and the number of those whose group did not exist.
    quint64 faces() const { return _faces; }
    quint64 facesWithoutGroup() const { return _facesWithoutGroup; }
    /// The number of the next face.
    quint64 nextFace() const { return _faces + _run->cornerCounts.size - _joined; }
    /// Must be called at the end. Finishes the groups, and requests generated normals if the text has no
    /// normals.
    void finish();

private:
    struct Attribute {
        QString name;
        int components;
        bool declared = false;
    };

    void declare(Attribute& attribute);
    void addPosition(const ObjReader& reader);
    void addFace(const ObjReader& reader);
    template<size_t N>
    void addVertex(Attribute& attribute, FixedList<float, N>& values, const float* operands);
    template<size_t N>
    void flushValues(const Attribute& attribute, FixedList<float, N>& values);
    void flushCorners();
    void joinGroup();

    Mesh& _mesh;
    FaceGroups& _groups;
    std::unique_ptr<ObjRun> _run;
    Attribute _position;
    Attribute _normal;
    Attribute _texCoord;
    bool _alignsNormals = false;
    VertexColours _colours;
    size_t _joined = 0; ///< faces of the run that were added to their group
    quint64 _corners = 0;
    quint64 _faces = 0;
    quint64 _facesWithoutGroup = 0;
};

} // namespace Atelier::Vel

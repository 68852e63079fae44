#pragma once

#include <memory>

#include <QtCore/QString>

#include "import/obj/objrun.h"

namespace Atelier::Vel {

class ObjReader;
struct Mesh;

/// Hands OBJ records to a mesh, many with one call; the mesh becomes what it would record by record.
class MeshFeed {
public:
    /// `mesh` must outlive the feed. Faces join the group "<default>" until useMaterial() names another.
    explicit MeshFeed(Mesh& mesh);

    /// A run with room in it, to put records into. A vertex line may go in directly only behind one of its
    /// kind that came through addRecord().
    ObjRun& run();

    /// Takes the vertex line or face that `reader` has read.
    void addRecord(const ObjReader& reader);
    /// The group that the faces from now on join, if it exists when they are added.
    void useMaterial(const QString& name);
    /// Hands everything on. To be called before groups are made, too: they get no faces from before.
    void flush();

    /// Corners handed on so far.
    quint64 corners() const { return _corners; }
    /// Faces handed on so far, and those of them whose group did not exist.
    quint64 faces() const { return _faces; }
    quint64 facesWithoutGroup() const { return _facesWithoutGroup; }
    /// Makes normals where the text gave none.
    void finish();

private:
    struct Attribute {
        QString name;
        int components;
        bool declared = false;
    };

    void declare(Attribute& attribute);
    void addFace(const ObjReader& reader);
    template<size_t N>
    void addVertex(Attribute& attribute, FixedList<float, N>& values, const float* operands);
    template<size_t N>
    void flushValues(const Attribute& attribute, FixedList<float, N>& values);
    void flushCorners();
    void joinGroup();

    Mesh& _mesh;
    std::unique_ptr<ObjRun> _run;
    Attribute _position;
    Attribute _normal;
    Attribute _texCoord;
    QString _group;
    size_t _joined = 0; ///< faces of the run that were offered to their group
    quint64 _corners = 0;
    quint64 _faces = 0;
    quint64 _facesWithoutGroup = 0;
};

} // namespace Atelier::Vel

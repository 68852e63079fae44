#pragma once

#include <vector>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <velgl/instancedata.h>

#include "mesh/groupfaces.h"
#include "mesh/input.h"
#include "mesh/streamsource.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

/// A group of faces with one material.
struct MaterialGroup {
    QString name; ///< that its command has; usually its name in the store
    InstanceData material;
    qint32 id = 0;
    WhiteMaps whiteMaps; ///< of the material
    quint64 flags = 0;
    QString objectName;
    GroupFaces faces;
};

/// The material groups, and the faces that each one draws.
class GroupStore {
public:
    using Entry = QHash<QString, MaterialGroup>::iterator;

    /// `streams` must outlive the store.
    GroupStore(StreamSource& streams, Input input) : _streams(streams), _input(input) {}

    void clear() { _groups.clear(); }
    bool isEmpty() const { return _groups.isEmpty(); }
    bool contains(const QString& name) const { return _groups.contains(name); }
    /// Null if there is no such group.
    const MaterialGroup* find(const QString& name) const;

    /// A negative `id` stands for the number of groups before the call. Replaces a group of the same name.
    void create(const QString& name, const InstanceData& material, int id, quint64 flags,
                const WhiteMaps& whiteMaps = {});
    /// Makes the group `key` of faces that have the material of the group `material` and belong to the object
    /// `objectName`. Its command has the name of the material; adoptMaterials() gives it the material.
    void createPart(const QString& key, const QString& material, const QString& objectName, int id);
    /// Gives the groups that createPart() made the current material of the group that they name.
    void adoptMaterials();
    /// Gives an existing group another material.
    void replaceMaterial(const QString& name, const InstanceData& material, const WhiteMaps& whiteMaps);
    /// Adds face numbers. The group keeps the first object name that is not null; a different name causes a
    /// warning.
    /// Returns: false if there is no such group.
    bool addFaces(const QString& name, quint64 count, const unsigned int* faces, const QString& objectName);
    /// Adds `count` faces, starting at number `first`.
    /// Returns: false if there is no such group.
    bool addFaceRun(const QString& name, quint32 first, quint32 count);

    QHash<QString, MaterialGroup>& records() { return _groups; }
    /// The groups by id, then by name.
    std::vector<Entry> inOrder();

    /// A copy of a group. If the input is consumed, the group is removed from the store.
    MaterialGroup handOver(const QString& name);
    /// Releases the memory of the group's faces if the input is consumed.
    void releaseFaces(MaterialGroup& group) const;
    void releaseAll();

private:
    void addFacesOf(MaterialGroup& group, const QString& name, quint64 count, const unsigned int* faces);

    StreamSource& _streams;
    Input _input;
    QHash<QString, MaterialGroup> _groups;
};

} // namespace Atelier::Vel

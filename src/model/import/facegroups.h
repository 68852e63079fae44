#pragma once

#include <QtCore/QString>

#include "import/mtl/materialdefinitions.h"

namespace Atelier::Vel {

/// The group that the faces of a text join: that of the last material that the text has named, or
/// "<default>". If parts are split, there is one group for each part and material of a face. A part is an
/// object, a group of the text, or a group in an object.
class FaceGroups {
public:
    enum class Parts { Joined, Split };

    /// The arguments must outlive the object.
    FaceGroups(GroupStore& groups, MaterialDefinitions& materials, Parts parts = Parts::Joined);

    /// Sets the material of the following faces.
    void use(MaterialName material);
    /// Sets the object of the following faces; an empty name stands for none.
    void useObject(const QString& name);
    /// The same for the group in the object.
    void useGroup(const QString& name);
    /// Adds `count` faces, starting at number `first`.
    /// Returns: false if they have no group, because nothing has defined their material.
    bool add(quint32 first, quint32 count);
    /// Must be called at the end. Gives the groups of parts their materials, which definitions after their
    /// first face may change.
    void finish();

private:
    void findGroup();
    void reportUndrawn(quint32 faces);
    bool addToGroup(quint32 first, quint32 count);
    QString part() const;
    void findPartGroup();

    GroupStore& _groups;
    MaterialDefinitions& _materials;
    MaterialName _material;
    QString _group;
    quint64 _revision = 0; ///< of the materials when the group was found
    Parts _parts;
    QString _object;
    QString _objectGroup;
    QString _partGroup; ///< the group of the part and material; null if it is not known yet
    int _partGroups = 0;
    bool _isReported = true;       ///< how the name of the material was read
    bool _hasUndrawnFaces = false; ///< after the current name
};

} // namespace Atelier::Vel

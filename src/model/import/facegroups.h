#pragma once

#include <QtCore/QString>

#include "import/mtl/materialdefinitions.h"

namespace Atelier::Vel {

/// The group that the faces of a text join: that of the last material that the text has named, or
/// "<default>".
class FaceGroups {
public:
    /// The arguments must outlive the object. `file` is the file of the text.
    FaceGroups(GroupStore& groups, MaterialDefinitions& materials, QString file);

    /// Sets the material of the following faces.
    void use(const MaterialName& material);
    /// Adds `count` faces, starting at number `first`.
    /// Returns: false if they have no group, because nothing has defined their material.
    bool add(quint32 first, quint32 count);

private:
    void findGroup();

    GroupStore& _groups;
    MaterialDefinitions& _materials;
    QString _file;
    MaterialName _material;
    QString _group;
    quint64 _revision = 0; ///< of the materials when the group was found
    bool _isReported = true;
};

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QString>

#include "context/nativecontext.h"
#include "context/sharegroup.h"

namespace Atelier::Vel {

/// What a context can do beyond the least that VelGL asks for.
struct ContextFeatures {
    bool directStateAccess = true;
    bool drawParameters = true; ///< vertex shaders know the number of the draw within a multi-draw
};

/// What VelGL knows of one native context.
class ContextGL {
public:
    /// Requires: `native` is current; `group` is its group. `wanted` features stay where the driver has them.
    ContextGL(const NativeContext& native, std::shared_ptr<ShareGroup> group, const ContextFeatures& wanted);

    /// Tells contexts apart, also when one has the handle of an earlier one.
    quint64 serial() const { return _serial; }
    const NativeContext& native() const { return _native; }
    int version() const { return _version; }
    const QString& description() const { return _description; }
    const ContextFeatures& features() const { return _features; }

    /// Owner of the names that sharing contexts have in common: buffers, textures, programs.
    const std::shared_ptr<ShareGroup>& group() const { return _group; }
    /// Owner of the names of this context alone: vertex arrays.
    const std::shared_ptr<GLNameSpace>& ownNameSpace() const { return _ownNameSpace; }
    bool knows(const GLNameSpace& space) const {
        return &space == _group.get() || &space == _ownNameSpace.get();
    }
    /// Requires: this context is natively current.
    void deleteQueuedNames();

private:
    quint64 _serial;
    NativeContext _native;
    int _version;
    QString _description;
    ContextFeatures _features;
    std::shared_ptr<ShareGroup> _group;
    std::shared_ptr<GLNameSpace> _ownNameSpace;
};

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QString>

#include "context/nativecontext.h"
#include "context/sharegroup.h"

namespace Atelier::Vel {

/// Optional features of a context, which the minimum version of OpenGL does not guarantee.
struct ContextFeatures {
    bool directStateAccess = true;
    bool multiBind = true;      ///< glBindTextures() and glBindSamplers()
    bool drawParameters = true; ///< a vertex shader can read the number of the draw within a multi-draw
};

/// What VelGL knows of one native context.
class ContextGL {
public:
    /// Requires: `native` is current and belongs to `group`. A feature in `wanted` is used if the driver has
    /// it.
    ContextGL(const NativeContext& native, std::shared_ptr<ShareGroup> group, const ContextFeatures& wanted);
    /// The names of this context alone are gone with it.
    ~ContextGL();
    ContextGL(const ContextGL&) = delete;
    ContextGL& operator=(const ContextGL&) = delete;

    /// A number that no other context has, even one that reuses the native handle of an earlier context.
    quint64 serial() const { return _serial; }
    const NativeContext& native() const { return _native; }
    int version() const { return _version; }
    const QString& description() const { return _description; }
    const ContextFeatures& features() const { return _features; }

    /// The name space of buffers, textures, renderbuffers and programs, which sharing contexts have in
    /// common.
    const std::shared_ptr<ShareGroup>& group() const { return _group; }
    /// The name space of vertex arrays and framebuffers, which belong to this context alone.
    const std::shared_ptr<GLNameSpace>& ownNameSpace() const { return _ownNameSpace; }
    /// Returns: whether the names of `space` are valid in this context.
    bool knows(const GLNameSpace& space) const {
        return &space == _group.get() || &space == _ownNameSpace.get();
    }
    /// Requires: this context is natively current.
    void deleteQueuedNames() noexcept;

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

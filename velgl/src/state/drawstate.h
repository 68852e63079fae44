#pragma once

#include "state/scopedbinding.h"

#include <velgl/drawoptions.h>

namespace Atelier::Vel {

/// Saves what a draw of a model changes, and restores it on destruction. Nothing of a client's runs in
/// between. An object that only its binding kept, because it was deleted elsewhere, is not bound again.
class DrawState {
public:
    /// The textures of a material at most.
    static constexpr GLuint kMaxUnits = 32;
    /// Storage bindings from 0 that are saved.
    static constexpr GLuint kStorageCount = 2;

    struct Units {
        GLuint first = 0;
        GLuint count = 0; ///< at most kMaxUnits
    };

    /// Makes `program` current, unless it is 0. At most `units` are used. `hasMultiBind`: the context has
    /// glBindTextures().
    DrawState(StatePolicy policy, GLuint program, Units units, bool hasMultiBind) noexcept;
    ~DrawState();
    DrawState(const DrawState&) = delete;
    DrawState& operator=(const DrawState&) = delete;

    /// Binds two-dimensional textures, and no samplers, to the first `count` units. The others have what the
    /// client has bound there.
    void bindTextures(const GLuint* names, GLuint count) noexcept;
    /// Binds a buffer to a storage binding below kStorageCount; 0 for what the client has bound there.
    void bindStorage(GLuint point, GLuint buffer) noexcept;
    /// Turns primitive restart off for lists, and on again for other modes if the client has enabled it.
    void setPrimitiveMode(GLenum mode) noexcept;

private:
    struct Storage {
        GLint buffer = 0;
        GLint64 start = 0;
        GLint64 size = 0; ///< 0 for the whole buffer, whatever its size
    };
    struct Restart {
        bool atIndex = false;
        bool atFixedIndex = false;
    };

    void save() noexcept;
    void restore() noexcept;
    void takeUnits(GLuint count) noexcept;
    void restoreUnits(GLuint first) noexcept;
    void restoreStorage(GLuint point) noexcept;
    void setRestart(const Restart& restart) noexcept;

    StatePolicy _policy;
    Units _units;
    bool _hasMultiBind;
    bool _isProgramChanged;
    GLuint _usedUnits = 0; // units with the textures below
    GLuint _boundTextures[kMaxUnits] = {};
    bool _isStorageUsed[kStorageCount] = {};
    Restart _restartNow;

    // Of the client.
    GLuint _program = 0;
    GLuint _vertexArray = 0;
    GLuint _indirectBuffer = 0;
    GLuint _storage = 0;
    Storage _storages[kStorageCount];
    Restart _restart;
    GLenum _activeUnit = GL_TEXTURE0;
    GLuint _textures[kMaxUnits] = {};
    GLuint _samplers[kMaxUnits] = {};
};

} // namespace Atelier::Vel

#include "state/drawstate.h"

#include <algorithm>

#include "state/primitiverestart.h"

namespace Atelier::Vel {

namespace {

void setEnabled(GLenum capability, bool isEnabled) {
    if (isEnabled)
        glEnable(capability);
    else
        glDisable(capability);
}

} // namespace

DrawState::DrawState(StatePolicy policy, GLuint program, Units units, bool hasMultiBind) noexcept
    : _policy(policy), _units(units), _hasMultiBind(hasMultiBind), _isProgramChanged(program != 0) {
    if (_policy == StatePolicy::Restored)
        save();
    else
        _restart = {true, true}; // not known, so that it is turned off
    _restartNow = _restart;
    if (_isProgramChanged)
        glUseProgram(program);
}

DrawState::~DrawState() {
    if (_policy == StatePolicy::Restored)
        restore();
    else
        glBindVertexArray(0); // the client may not change one of VelGL by accident
}

void DrawState::bindTextures(const GLuint* names, GLuint count) noexcept {
    if (count < _usedUnits)
        restoreUnits(count);
    if (count <= _usedUnits && std::equal(names, names + count, _boundTextures))
        return;
    if (_hasMultiBind) {
        glBindTextures(_units.first, static_cast<GLsizei>(count), names);
    } else {
        for (GLuint i = 0; i < count; ++i) {
            if (i < _usedUnits && names[i] == _boundTextures[i])
                continue;
            glActiveTexture(GL_TEXTURE0 + _units.first + i);
            glBindTexture(GL_TEXTURE_2D, names[i]);
        }
    }
    std::copy(names, names + count, _boundTextures);
    takeUnits(count);
}

// A sampler of the client would replace the parameters of the textures.
void DrawState::takeUnits(GLuint count) noexcept {
    if (count <= _usedUnits)
        return;
    if (_hasMultiBind)
        glBindSamplers(_units.first + _usedUnits, static_cast<GLsizei>(count - _usedUnits), nullptr);
    else
        for (GLuint i = _usedUnits; i < count; ++i)
            glBindSampler(_units.first + i, 0);
    _usedUnits = count;
}

void DrawState::bindStorage(GLuint point, GLuint buffer) noexcept {
    if (buffer != 0) {
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, point, buffer);
        _isStorageUsed[point] = true;
    } else if (_isStorageUsed[point]) {
        restoreStorage(point);
    }
}

void DrawState::setPrimitiveMode(GLenum mode) noexcept {
    if (isPrimitiveList(mode))
        setRestart({});
    else if (_policy == StatePolicy::Restored)
        setRestart(_restart);
}

void DrawState::setRestart(const Restart& restart) noexcept {
    if (restart.atIndex != _restartNow.atIndex)
        setEnabled(GL_PRIMITIVE_RESTART, restart.atIndex);
    if (restart.atFixedIndex != _restartNow.atFixedIndex)
        setEnabled(GL_PRIMITIVE_RESTART_FIXED_INDEX, restart.atFixedIndex);
    _restartNow = restart;
}

void DrawState::save() noexcept {
    if (_isProgramChanged)
        _program = currentName(GL_CURRENT_PROGRAM);
    _vertexArray = currentName(GL_VERTEX_ARRAY_BINDING);
    _indirectBuffer = currentName(GL_DRAW_INDIRECT_BUFFER_BINDING);
    _storage = currentName(GL_SHADER_STORAGE_BUFFER_BINDING);
    for (GLuint point = 0; point < kStorageCount; ++point) {
        Storage& storage = _storages[point];
        glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, point, &storage.buffer);
        if (storage.buffer == 0)
            continue;
        glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_START, point, &storage.start);
        glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_SIZE, point, &storage.size);
    }
    _restart = {glIsEnabled(GL_PRIMITIVE_RESTART) == GL_TRUE,
                glIsEnabled(GL_PRIMITIVE_RESTART_FIXED_INDEX) == GL_TRUE};
    if (_units.count == 0)
        return;
    _activeUnit = currentName(GL_ACTIVE_TEXTURE);
    for (GLuint i = 0; i < _units.count; ++i) {
        glActiveTexture(GL_TEXTURE0 + _units.first + i);
        _textures[i] = currentName(GL_TEXTURE_BINDING_2D);
        _samplers[i] = currentName(GL_SAMPLER_BINDING);
    }
}

void DrawState::restore() noexcept {
    restoreUnits(0);
    if (_units.count > 0)
        glActiveTexture(_activeUnit);
    setRestart(_restart);
    bool isAnyStorageUsed = false;
    for (GLuint point = 0; point < kStorageCount; ++point) {
        isAnyStorageUsed = isAnyStorageUsed || _isStorageUsed[point];
        if (_isStorageUsed[point])
            restoreStorage(point);
    }
    // Binding to an indexed point binds to the target as well.
    if (isAnyStorageUsed)
        glBindBuffer(GL_SHADER_STORAGE_BUFFER, _storage);
    glBindBuffer(GL_DRAW_INDIRECT_BUFFER, _indirectBuffer);
    glBindVertexArray(_vertexArray);
    if (_isProgramChanged)
        rebindProgram(_program);
}

// Where the client restores the state itself, what it had bound is not known, and the units keep what they
// have.
void DrawState::restoreUnits(GLuint first) noexcept {
    if (_policy != StatePolicy::Restored)
        return;
    for (GLuint i = first; i < _usedUnits; ++i) {
        glActiveTexture(GL_TEXTURE0 + _units.first + i);
        if (_textures[i] == 0)
            glBindTexture(GL_TEXTURE_2D, 0);
        else
            rebindTexture(GL_TEXTURE_2D, _textures[i]);
        if (_samplers[i] != 0 && glIsSampler(_samplers[i]))
            glBindSampler(_units.first + i, _samplers[i]);
    }
    _usedUnits = first;
}

void DrawState::restoreStorage(GLuint point) noexcept {
    if (_policy != StatePolicy::Restored)
        return;
    const Storage& storage = _storages[point];
    auto buffer = static_cast<GLuint>(storage.buffer);
    if (buffer != 0 && !glIsBuffer(buffer))
        buffer = 0;
    if (buffer == 0 || storage.size == 0)
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, point, buffer);
    else
        glBindBufferRange(GL_SHADER_STORAGE_BUFFER, point, buffer, storage.start, storage.size);
}

} // namespace Atelier::Vel

#include <epoxy/gl.h>

#include "objects/glname.h"

#include <algorithm>

#include "context/contextgl.h"

namespace Atelier::Vel {

namespace {

void deleteName(GLKind kind, unsigned int name) {
    switch (kind) {
    case GLKind::Buffer:
        glDeleteBuffers(1, &name);
        return;
    case GLKind::Texture:
        glDeleteTextures(1, &name);
        return;
    case GLKind::Program:
        glDeleteProgram(name);
        return;
    case GLKind::VertexArray:
        glDeleteVertexArrays(1, &name);
        return;
    }
}

} // namespace

void NameOwner::release(GLKind kind, unsigned int name) {
    const ContextGL* gl = ContextGL::current();
    if (gl && gl->owns(*this))
        deleteName(kind, name);
    else
        _queued.emplace_back(kind, name);
}

void NameOwner::deleteQueued() {
    for (const auto& [kind, name] : std::exchange(_queued, {}))
        deleteName(kind, name);
}

GLName& GLName::operator=(GLName&& other) noexcept {
    if (this != &other) {
        release();
        _kind = other._kind;
        _name = std::exchange(other._name, 0U);
        _owner = std::move(other._owner);
    }
    return *this;
}

void GLName::release() {
    const std::shared_ptr<NameOwner> owner = _owner.lock();
    if (owner && _name)
        owner->release(_kind, _name);
}

const GLName* GLNames::find(const NameOwner& owner) const {
    for (const GLName& name : _names)
        if (name.livesIn(owner))
            return &name;
    return nullptr;
}

const GLName& GLNames::add(GLName name) {
    const auto isGone = [](const GLName& known) { return !known.isAlive(); };
    _names.erase(std::remove_if(_names.begin(), _names.end(), isGone), _names.end());
    return _names.emplace_back(std::move(name));
}

bool GLNames::isAlive() const {
    return std::any_of(_names.cbegin(), _names.cend(), [](const GLName& name) { return name.isAlive(); });
}

} // namespace Atelier::Vel

#include <epoxy/gl.h>

#include "context/sharegroup.h"

#include <QtCore/QUuid>

namespace Atelier::Vel {

ShareGroup::ShareGroup() : _label("velgl share group " + QUuid::createUuid().toByteArray()) {
    GLint previous = 0;
    glGetIntegerv(GL_COPY_WRITE_BUFFER_BINDING, &previous);
    glGenBuffers(1, &_tag);
    glBindBuffer(GL_COPY_WRITE_BUFFER, _tag);
    glObjectLabel(GL_BUFFER, _tag, _label.size(), _label.constData());
    glBindBuffer(GL_COPY_WRITE_BUFFER, static_cast<GLuint>(previous));
}

bool ShareGroup::isCurrent() const {
    if (!glIsBuffer(_tag))
        return false;
    QByteArray label(_label.size() + 1, '\0');
    GLsizei length = 0;
    glGetObjectLabel(GL_BUFFER, _tag, label.size(), &length, label.data());
    return label.left(length) == _label;
}

} // namespace Atelier::Vel

#include <epoxy/gl.h>

#include "context/contextgl.h"

#include <QtCore/QUuid>

#include "context/debugmessages.h"

namespace Atelier::Vel {

namespace {

QString driverText(GLenum name) {
    return QString::fromUtf8(reinterpret_cast<const char*>(glGetString(name)));
}

quint64 nextSerial() {
    static quint64 last = 0;
    return ++last;
}

} // namespace

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

ContextGL::ContextGL(const NativeContext& native, std::shared_ptr<ShareGroup> group,
                     const ContextFeatures& wanted)
    : _serial(nextSerial()),
      _native(native),
      _version(currentVersion()),
      _group(std::move(group)),
      _ownNames(std::make_shared<NameOwner>()) {
    _description = QStringLiteral("%1, %2, OpenGL %3")
                       .arg(driverText(GL_VENDOR), driverText(GL_RENDERER), driverText(GL_VERSION));
    _features.directStateAccess =
        wanted.directStateAccess && (_version >= 45 || epoxy_has_gl_extension("GL_ARB_direct_state_access"));
    _features.drawParameters =
        wanted.drawParameters && (_version >= 46 || epoxy_has_gl_extension("GL_ARB_shader_draw_parameters"));
    logDebugMessages();
}

void ContextGL::deleteQueued() {
    _group->deleteQueued();
    _ownNames->deleteQueued();
}

int currentVersion() {
    return epoxy_is_desktop_gl() ? epoxy_gl_version() : 0;
}

} // namespace Atelier::Vel

#include <epoxy/gl.h>

#include "context/contextgl.h"

#include "context/debugmessages.h"
#include "context/glversion.h"

namespace Atelier::Vel {

namespace {

QString driverText(GLenum name) {
    return QString::fromUtf8(reinterpret_cast<const char*>(glGetString(name)));
}

quint64 nextSerial() {
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

ContextGL::ContextGL(const NativeContext& native, std::shared_ptr<ShareGroup> group,
                     const ContextFeatures& wanted)
    : _serial(nextSerial()),
      _native(native),
      _version(currentVersion()),
      _group(std::move(group)),
      _ownNameSpace(std::make_shared<GLNameSpace>()) {
    _description = QStringLiteral("%1, %2, OpenGL %3")
                       .arg(driverText(GL_VENDOR), driverText(GL_RENDERER), driverText(GL_VERSION));
    _features.directStateAccess =
        wanted.directStateAccess && (_version >= 45 || epoxy_has_gl_extension("GL_ARB_direct_state_access"));
    _features.multiBind = wanted.multiBind && (_version >= 44 || epoxy_has_gl_extension("GL_ARB_multi_bind"));
    _features.drawParameters =
        wanted.drawParameters && (_version >= 46 || epoxy_has_gl_extension("GL_ARB_shader_draw_parameters"));
    logDebugMessages();
    _group->addContext();
}

ContextGL::~ContextGL() {
    _ownNameSpace->close();
    _group->removeContext();
}

void ContextGL::deleteQueuedNames() noexcept {
    _group->deleteQueuedNames();
    _ownNameSpace->deleteQueuedNames();
}

} // namespace Atelier::Vel

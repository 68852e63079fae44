#include <velgl/opengldevicecontext.h>

// In place of headlesscontext.cpp in a build without EGL (VELGL_HEADLESS=OFF).
namespace Atelier::Vel {

QSharedPointer<OpenGLDeviceContext> OpenGLDeviceContext::createHeadless(const HeadlessOptions& /*options*/,
                                                                        QString& error) {
    error = QStringLiteral("VelGL was built without headless contexts");
    return {};
}

} // namespace Atelier::Vel

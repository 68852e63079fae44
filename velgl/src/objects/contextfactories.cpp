#include <velgl/bufferobject.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/sharedpointer.h>
#include <velgl/vertexarrayobject.h>

// The factories are defined beside the objects that they make, because the sources of contexts use no
// objects.
namespace Atelier::Vel {

QSharedPointer<BufferObject> OpenGLDeviceContext::createBufferObject() {
    return shared(std::make_unique<BufferObject>());
}

QSharedPointer<VertexArrayObject> OpenGLDeviceContext::createVertexArrayObject() {
    return shared(std::make_unique<VertexArrayObject>());
}

} // namespace Atelier::Vel

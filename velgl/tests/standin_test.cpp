#include <gtest/gtest.h>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>

#include "memorybuffer.h"

// Classes of a client in place of those of VelGL.
namespace Atelier::Vel::Testing {

namespace {

class MemoryContext : public OpenGLDeviceContext {
public:
    QSharedPointer<BufferObject> createBufferObject() override {
        return QSharedPointer<MemoryBuffer>::create();
    }
};

class StandInTest : public ::testing::Test {
protected:
    void SetUp() override { OpenGLDeviceContext::setCurrent(QSharedPointer<MemoryContext>::create()); }
    void TearDown() override { OpenGLDeviceContext::setCurrent({}); }
};

} // namespace

TEST_F(StandInTest, FactoriesOfTheStandInAreUsed) {
    const auto buffer = OpenGLDeviceContext::current()->createBufferObject();
    const unsigned short indices[] = {1, 2};
    EXPECT_TRUE(buffer->uploadGLushortData(indices, 2, 0))
        << "both index uploads call the virtual function that is overridden";
    EXPECT_EQ(buffer->byteCount(), 4U);
    EXPECT_EQ(buffer->readBack().size(), 4);
}

TEST_F(StandInTest, ModelIsBuiltAndQueriedWithoutOpenGL) {
    const auto context = OpenGLDeviceContext::current();
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 2, 0};
    const unsigned int indices[] = {0, 1, 2};
    const auto stream = context->createBufferObject();
    stream->uploadArbitraryData(positions, 9, 0, 4);
    const auto indexBuffer = context->createBufferObject();
    indexBuffer->uploadGLuintData(indices, 3, 0);
    auto* buffers = new DrawBuffers;
    buffers->setVAO(context->createVertexArrayObject());
    buffers->VAO()->registerBO(QStringLiteral("va_Vertex"), stream, 3, 0x1406);
    buffers->setIndexedDraw(indexBuffer, 3, 0x1405);
    const DrawElementsIndirectCommand command{3, 1, 0, 0, 0};
    buffers->setDrawElementsIndirectCommands(&command, 1);
    GPUModel model;
    model.add(buffers, 1, nullptr, nullptr, 0);
    const GPUModel::Bounds bounds = model.bounds();
    EXPECT_TRUE(bounds.isValid);
    EXPECT_EQ(bounds.maximum, QVector3D(1, 2, 0));
    model.draw();
}

} // namespace Atelier::Vel::Testing

#include <velgl/drawbuffers.h>

#include <type_traits>

#include <gtest/gtest.h>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Testing {

static_assert(std::is_convertible_v<QObject*, DrawBuffers>);

TEST(DrawBuffersTest, StartsWithNothingToDraw) {
    const DrawBuffers buffers;
    EXPECT_EQ(buffers.parent(), nullptr);
    EXPECT_FALSE(buffers.VAO());
    EXPECT_FALSE(buffers.indexBuffer());
    EXPECT_EQ(buffers.indexCount(), 0);
    EXPECT_EQ(buffers.vertexCount(), 0U);
    EXPECT_EQ(buffers.primitiveType(), 4U);
    EXPECT_TRUE(buffers.drawElementsIndirectCommands().isEmpty());
}

TEST(DrawBuffersTest, KeepsWhatItIsGiven) {
    QObject parent;
    auto* buffers = new DrawBuffers(&parent);
    const auto vao = QSharedPointer<VertexArrayObject>::create();
    const auto indices = QSharedPointer<BufferObject>::create();
    buffers->setVAO(vao);
    buffers->setIndexedDraw(indices, 12, 0x1403);
    buffers->setVertexCount(7);
    buffers->setPrimitiveType(1);
    EXPECT_EQ(buffers->parent(), &parent);
    EXPECT_EQ(buffers->VAO(), vao);
    EXPECT_EQ(buffers->indexBuffer(), indices);
    EXPECT_EQ(buffers->indexCount(), 12);
    EXPECT_EQ(buffers->indexType(), 0x1403U);
    EXPECT_EQ(buffers->vertexCount(), 7U);
    EXPECT_EQ(buffers->primitiveType(), 1U);
}

TEST(DrawBuffersTest, CopiesTheCommands) {
    DrawBuffers buffers;
    DrawElementsIndirectCommand commands[] = {{3, 1, 0, 0, 0}, {6, 2, 3, 4, 5}};
    buffers.setDrawElementsIndirectCommands(commands, 2);
    commands[1].count = 99;
    ASSERT_EQ(buffers.drawElementsIndirectCommands().size(), 2);
    const DrawElementsIndirectCommand second = buffers.drawElementsIndirectCommands()[1];
    EXPECT_EQ(second.count, 6U);
    EXPECT_EQ(second.instanceCount, 2U);
    EXPECT_EQ(second.firstIndex, 3U);
    EXPECT_EQ(second.baseVertex, 4U);
    EXPECT_EQ(second.baseInstance, 5U);
    buffers.setDrawElementsIndirectCommands(nullptr, 2);
    EXPECT_TRUE(buffers.drawElementsIndirectCommands().isEmpty());
    buffers.setDrawElementsIndirectCommands(commands, -1);
    EXPECT_TRUE(buffers.drawElementsIndirectCommands().isEmpty());
}

} // namespace Atelier::Vel::Testing

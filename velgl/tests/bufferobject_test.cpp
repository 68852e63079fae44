#include <epoxy/gl.h>

#include <velgl/bufferobject.h>

#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

namespace {

class BufferObjectTest : public GLFixture {};

} // namespace

TEST_F(BufferObjectTest, IndicesOf32BitsArriveByteForByte) {
    const unsigned int indices[] = {0, 1, 0xFFFFFFFF, 70000};
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(indices, 4, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.byteCount(), 16U);
    EXPECT_EQ(buffer.readBack(), QByteArray(reinterpret_cast<const char*>(indices), sizeof indices));
}

} // namespace Atelier::Vel::Testing

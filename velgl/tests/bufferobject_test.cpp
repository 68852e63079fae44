#include <epoxy/gl.h>

#include <velgl/bufferobject.h>

#include <limits>

#include <velgl/autobinder.h>

#include "featurefixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

class BufferObjectTest : public FeatureFixture {};

GLuint bound(GLenum query) {
    GLint name = 0;
    glGetIntegerv(query, &name);
    return GLuint(name);
}

QByteArray bytesOf(const void* data, std::size_t size) {
    return {static_cast<const char*>(data), int(size)};
}

} // namespace

INSTANTIATE_FOR_DRIVERS(BufferObjectTest);

TEST_P(BufferObjectTest, IndicesOf32BitsArriveByteForByte) {
    const unsigned int indices[] = {0, 1, 0xFFFFFFFF, 70000};
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(indices, 4, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.byteCount(), 16U);
    EXPECT_EQ(buffer.readBack(), bytesOf(indices, sizeof indices));
}

TEST_P(BufferObjectTest, IndicesOf16BitsArriveByteForByte) {
    const unsigned short indices[] = {0, 1, 0xFFFF};
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLushortData(indices, 3, GL_DYNAMIC_DRAW));
    EXPECT_EQ(buffer.byteCount(), 6U);
    EXPECT_EQ(buffer.readBack(), bytesOf(indices, sizeof indices));
}

TEST_P(BufferObjectTest, ElementsOfAnySizeArriveByteForByte) {
    const char elements[] = "abcdefghijklmno";
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadArbitraryData(elements, 5, GL_STATIC_DRAW, 3));
    EXPECT_EQ(buffer.byteCount(), 15U);
    EXPECT_EQ(buffer.readBack(), QByteArray(elements, 15));
}

TEST_P(BufferObjectTest, LaterUploadReplacesTheContent) {
    const unsigned int first[] = {1, 2, 3};
    const unsigned short second[] = {4};
    BufferObject buffer;
    buffer.uploadGLuintData(first, 3, GL_STATIC_DRAW);
    const unsigned int name = buffer.name();
    buffer.uploadGLushortData(second, 1, GL_STATIC_DRAW);
    EXPECT_EQ(buffer.name(), name);
    EXPECT_EQ(buffer.readBack(), bytesOf(second, sizeof second));
}

TEST_P(BufferObjectTest, EmptyUploadMakesAnEmptyBuffer) {
    BufferObject buffer;
    EXPECT_TRUE(buffer.uploadGLuintData(nullptr, 0, GL_STATIC_DRAW));
    EXPECT_TRUE(glIsBuffer(buffer.name()));
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
}

TEST_P(BufferObjectTest, UploadsThatCannotBeAreRefused) {
    const unsigned int value = 1;
    BufferObject buffer;
    EXPECT_FALSE(buffer.uploadGLuintData(nullptr, 1, GL_STATIC_DRAW));
    EXPECT_FALSE(buffer.uploadGLuintData(&value, -1, GL_STATIC_DRAW));
    EXPECT_FALSE(buffer.uploadArbitraryData(&value, 2, GL_STATIC_DRAW,
                                            std::numeric_limits<unsigned long long>::max() / 2));
    EXPECT_EQ(buffer.byteCount(), 0U);
}

TEST_P(BufferObjectTest, NameIsMadeOnFirstUse) {
    BufferObject buffer;
    EXPECT_EQ(buffer.name(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
    EXPECT_TRUE(buffer.bind());
    EXPECT_NE(buffer.name(), 0U);
    buffer.unbind();
}

TEST_P(BufferObjectTest, UnbindPutsBackWhatWasBound) {
    BufferObject outer;
    BufferObject inner;
    ASSERT_TRUE(outer.bind());
    ASSERT_TRUE(inner.bind());
    ASSERT_TRUE(outer.bind());
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), outer.name());
    outer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), inner.name());
    inner.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), outer.name());
    outer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
}

TEST_P(BufferObjectTest, UnbindWithoutBindDoesNothing) {
    BufferObject bystander;
    BufferObject buffer;
    const AutoBinder binder(&bystander);
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), bystander.name());
}

TEST_P(BufferObjectTest, UnbindSkipsABufferThatIsGone) {
    auto gone = std::make_unique<BufferObject>();
    BufferObject buffer;
    gone->bind();
    buffer.bind();
    gone.reset();
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
}

TEST_P(BufferObjectTest, IndexBufferIsPutBackInTheVertexArrayThatHadIt) {
    GLuint arrays[2] = {};
    glGenVertexArrays(2, arrays);
    BufferObject first;
    BufferObject second;
    first.setTarget(GL_ELEMENT_ARRAY_BUFFER);
    second.setTarget(GL_ELEMENT_ARRAY_BUFFER);
    glBindVertexArray(arrays[0]);
    first.bind();
    second.bind();
    glBindVertexArray(arrays[1]);
    second.unbind();
    EXPECT_EQ(bound(GL_VERTEX_ARRAY_BINDING), arrays[1]);
    EXPECT_EQ(bound(GL_ELEMENT_ARRAY_BUFFER_BINDING), 0U);
    glBindVertexArray(arrays[0]);
    EXPECT_EQ(bound(GL_ELEMENT_ARRAY_BUFFER_BINDING), first.name());
    glDeleteVertexArrays(2, arrays);
}

TEST_P(BufferObjectTest, UnknownTargetDoesNotBind) {
    BufferObject buffer;
    buffer.setTarget(0x1234);
    EXPECT_FALSE(buffer.bind());
    buffer.unbind();
    const char byte = 'x';
    EXPECT_TRUE(buffer.uploadArbitraryData(&byte, 1, GL_STATIC_DRAW, 1));
}

TEST_P(BufferObjectTest, LabelNamesTheObjectForTheDriver) {
    BufferObject before;
    before.setLabel(QStringLiteral("before"));
    before.bind();
    before.unbind();
    BufferObject after;
    after.bind();
    after.unbind();
    after.setLabel(QStringLiteral("after"));
    char text[32] = {};
    glGetObjectLabel(GL_BUFFER, before.name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "before");
    glGetObjectLabel(GL_BUFFER, after.name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "after");
}

TEST_P(BufferObjectTest, DestroyedBufferIsDeletedAtOnceInItsContext) {
    auto buffer = std::make_unique<BufferObject>();
    buffer->bind();
    buffer->unbind();
    const unsigned int name = buffer->name();
    buffer.reset();
    EXPECT_FALSE(glIsBuffer(name));
}

} // namespace Atelier::Vel::Testing

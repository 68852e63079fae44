#include "glfaults.h"

#include <velgl/bufferobject.h>

#include <limits>

#include <gmock/gmock.h>

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

TEST_P(BufferObjectTest, InvalidUploadsAreRefused) {
    const unsigned int value = 1;
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    const MessageLog log;
    EXPECT_FALSE(buffer.uploadGLuintData(nullptr, 1, GL_STATIC_DRAW));
    EXPECT_FALSE(buffer.uploadGLuintData(&value, -1, GL_STATIC_DRAW));
    EXPECT_FALSE(buffer.uploadArbitraryData(&value, 2, GL_STATIC_DRAW,
                                            std::numeric_limits<unsigned long long>::max() / 2));
    EXPECT_EQ(buffer.name(), 0U) << "an invalid upload makes no buffer";
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_THAT(log.messages(), testing::IsEmpty());
}

// OpenGL takes sizes below 2 to the power of 63. Whether one of those is too large is decided by the driver.
TEST_P(BufferObjectTest, SizesThatOpenGLCannotExpressDoNotReachTheDriver) {
    constexpr auto kLargest = static_cast<unsigned long long>(std::numeric_limits<qint64>::max());
    const unsigned int value = 1;
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    const FaultyDriver driver(GLFault::NoBufferMemory);
    const MessageLog log;
    EXPECT_FALSE(buffer.uploadArbitraryData(&value, 1, GL_STATIC_DRAW, kLargest + 1));
    EXPECT_FALSE(buffer.uploadArbitraryData(&value, 7, GL_STATIC_DRAW, kLargest / 7 + 1));
    EXPECT_THAT(log.messages(), testing::IsEmpty());
    EXPECT_FALSE(buffer.uploadArbitraryData(&value, 7, GL_STATIC_DRAW, kLargest / 7));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre("Buffer 'mine' could not be filled (GL_OUT_OF_MEMORY)"));
}

TEST_P(BufferObjectTest, ElementsOfZeroSizeNeedNoData) {
    const unsigned int value = 1;
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(&value, 1, GL_STATIC_DRAW));
    EXPECT_TRUE(buffer.uploadArbitraryData(nullptr, 5, GL_STATIC_DRAW, 0));
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
}

TEST_P(BufferObjectTest, UsageReachesTheDriver) {
    const unsigned int value = 1;
    for (const GLenum usage : {GL_STREAM_COPY, GL_DYNAMIC_DRAW}) {
        BufferObject buffer;
        ASSERT_TRUE(buffer.uploadGLuintData(&value, 1, usage));
        const AutoBinder binder(&buffer);
        GLint found = 0;
        glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_USAGE, &found);
        EXPECT_EQ(GLenum(found), usage);
    }
}

// The maximum size of a QByteArray is 0x7FFFFFC0 bytes. The driver is made to report one byte more.
TEST_P(BufferObjectTest, ContentLargerThanAByteArrayReadsBackAsNothing) {
    const unsigned int value = 1;
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(&value, 1, GL_STATIC_DRAW));
    const PFNGLGETNAMEDBUFFERPARAMETERI64VPROC named = glGetNamedBufferParameteri64v;
    const PFNGLGETBUFFERPARAMETERI64VPROC bound = glGetBufferParameteri64v;
    glGetNamedBufferParameteri64v = [](GLuint, GLenum, GLint64* size) { *size = 0x7FFFFFC1; };
    glGetBufferParameteri64v = [](GLenum, GLenum, GLint64* size) { *size = 0x7FFFFFC1; };
    EXPECT_TRUE(buffer.readBack().isEmpty());
    glGetNamedBufferParameteri64v = named;
    glGetBufferParameteri64v = bound;
    EXPECT_EQ(buffer.readBack().size(), 4);
}

TEST_P(BufferObjectTest, NameIsMadeOnFirstUse) {
    BufferObject buffer;
    EXPECT_EQ(buffer.name(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
    EXPECT_TRUE(buffer.bind());
    EXPECT_NE(buffer.name(), 0U);
    buffer.unbind();
}

TEST_P(BufferObjectTest, UnbindRestoresTheBinding) {
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

TEST_P(BufferObjectTest, EachUnbindRevertsOneBind) {
    BufferObject outer;
    BufferObject inner;
    outer.bind();
    for (int round = 0; round < 4; ++round)
        inner.bind();
    for (int round = 0; round < 3; ++round) {
        inner.unbind();
        EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), inner.name()) << round;
    }
    inner.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), outer.name());
    inner.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), outer.name()) << "an unbind() without a bind() changes nothing";
    outer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
}

TEST_P(BufferObjectTest, BindsInSharingContextsAreRevertedInEach) {
    OpenGLDeviceContext::HeadlessOptions shared = options();
    shared.shareWith = _context;
    const auto sharing = makeContext(shared);
    BufferObject buffer;
    ASSERT_TRUE(buffer.bind());
    sharing->makeCurrent();
    watchMessages();
    ASSERT_TRUE(buffer.bind());
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), buffer.name());
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
    _context->makeCurrent();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), buffer.name());
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
}

TEST_P(BufferObjectTest, UnbindAfterAFailedBindChangesNothing) {
    BufferObject bystander;
    const AutoBinder binder(&bystander);
    BufferObject buffer;
    ASSERT_TRUE(buffer.bind());
    buffer.setTarget(0x1234);
    EXPECT_FALSE(buffer.bind());
    buffer.setTarget(GL_ARRAY_BUFFER);
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), buffer.name());
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), bystander.name());
}

TEST_P(BufferObjectTest, BufferMadeInANewContextIsEmpty) {
    const unsigned int values[] = {1, 2};
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(values, 2, GL_STATIC_DRAW));
    _context = makeContext(options());
    _context->makeCurrent();
    watchMessages();
    const AutoBinder binder(&buffer);
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
}

TEST_P(BufferObjectTest, UnbindWithoutBindDoesNothing) {
    BufferObject bystander;
    BufferObject buffer;
    const AutoBinder binder(&bystander);
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), bystander.name());
}

TEST_P(BufferObjectTest, UnbindSkipsADeletedBuffer) {
    auto gone = std::make_unique<BufferObject>();
    BufferObject buffer;
    gone->bind();
    buffer.bind();
    gone.reset();
    buffer.unbind();
    EXPECT_EQ(bound(GL_ARRAY_BUFFER_BINDING), 0U);
}

TEST_P(BufferObjectTest, IndexBufferIsRestoredInItsVertexArray) {
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

TEST_P(BufferObjectTest, IndexBufferBoundWithoutAVertexArrayIsRestored) {
    GLuint array = 0;
    glGenVertexArrays(1, &array);
    BufferObject first;
    BufferObject second;
    first.setTarget(GL_ELEMENT_ARRAY_BUFFER);
    second.setTarget(GL_ELEMENT_ARRAY_BUFFER);
    ASSERT_TRUE(first.bind());
    ASSERT_TRUE(second.bind());
    glBindVertexArray(array);
    second.unbind();
    EXPECT_EQ(bound(GL_VERTEX_ARRAY_BINDING), array);
    EXPECT_EQ(bound(GL_ELEMENT_ARRAY_BUFFER_BINDING), 0U);
    glBindVertexArray(0);
    EXPECT_EQ(bound(GL_ELEMENT_ARRAY_BUFFER_BINDING), first.name());
    glDeleteVertexArrays(1, &array);
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

TEST_P(BufferObjectTest, LabelIsCutAtTheLengthThatEveryDriverAccepts) {
    BufferObject buffer;
    buffer.bind();
    buffer.setLabel(QString(300, QLatin1Char('x')));
    char text[400] = {};
    GLsizei length = 0;
    glGetObjectLabel(GL_BUFFER, buffer.name(), sizeof text, &length, text);
    EXPECT_EQ(length, 255);
    EXPECT_EQ(buffer.label().size(), 300);
    buffer.unbind();
}

TEST_P(BufferObjectTest, LabelSetInAForeignContextDoesNotReachItsDriver) {
    const auto unrelated = makeContext(options());
    BufferObject buffer;
    buffer.bind();
    buffer.unbind();
    unrelated->makeCurrent();
    watchMessages();
    BufferObject others;
    others.bind();
    others.unbind();
    buffer.setLabel(QStringLiteral("mine"));
    char text[32] = {};
    glGetObjectLabel(GL_BUFFER, others.name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(buffer.label(), QStringLiteral("mine"));
    _context->makeCurrent();
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

#include <epoxy/gl.h>

#include <velgl/opengldevicecontext.h>

#include <thread>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "clientstate.h"
#include "foreigncontext.h"
#include "support/glfixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

// Each test makes its contexts itself.
class OpenGLDeviceContextTest : public ::testing::Test {
protected:
    void TearDown() override {
        OpenGLDeviceContext::setCurrent({});
        ForeignContext::doneCurrent();
    }
};

class StandInContext : public OpenGLDeviceContext {};

constexpr unsigned int kValue[] = {42};

bool canUpload() {
    BufferObject buffer;
    return buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW) && buffer.readBack().size() == 4;
}

} // namespace

TEST_F(OpenGLDeviceContextTest, NothingIsCurrentAtFirst) {
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(OpenGLDeviceContextTest, HeadlessContextIsMadeWithoutBecomingCurrent) {
    const auto context = GLFixture::makeContext({});
    EXPECT_FALSE(OpenGLDeviceContext::current());
    ASSERT_TRUE(context->makeCurrent());
    EXPECT_EQ(OpenGLDeviceContext::current(), context);
    EXPECT_GE(context->version(), 43);
    const auto text = [](GLenum name) { return reinterpret_cast<const char*>(glGetString(name)); };
    EXPECT_EQ(context->description(),
              QStringLiteral("%1, %2, OpenGL %3").arg(text(GL_VENDOR), text(GL_RENDERER), text(GL_VERSION)));
    EXPECT_TRUE(canUpload());
    context->doneCurrent();
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(OpenGLDeviceContextTest, HeadlessContextIsACoreProfile) {
    const auto context = GLFixture::makeContext({});
    context->makeCurrent();
    GLint profile = 0;
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
    EXPECT_EQ(profile, GL_CONTEXT_CORE_PROFILE_BIT);
}

TEST_F(OpenGLDeviceContextTest, DebugContextReportsWithinTheCall) {
    for (const bool isDebug : {false, true}) {
        OpenGLDeviceContext::HeadlessOptions options;
        options.debug = isDebug;
        const auto context = GLFixture::makeContext(options);
        context->makeCurrent();
        GLint flags = 0;
        glGetIntegerv(GL_CONTEXT_FLAGS, &flags);
        EXPECT_EQ((flags & GL_CONTEXT_FLAG_DEBUG_BIT) != 0, isDebug);
        EXPECT_TRUE(glIsEnabled(GL_DEBUG_OUTPUT));
        EXPECT_EQ(glIsEnabled(GL_DEBUG_OUTPUT_SYNCHRONOUS) == GL_TRUE, isDebug);
    }
}

TEST_F(OpenGLDeviceContextTest, OnlyTheCurrentContextCanBeReleased) {
    const auto first = GLFixture::makeContext({});
    const auto second = GLFixture::makeContext({});
    first->makeCurrent();
    second->doneCurrent();
    EXPECT_EQ(OpenGLDeviceContext::current(), first);
    first->doneCurrent();
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(OpenGLDeviceContextTest, DestroyedHeadlessContextIsNotCurrent) {
    auto context = GLFixture::makeContext({});
    context->makeCurrent();
    context.reset();
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(OpenGLDeviceContextTest, CreatingAHeadlessContextKeepsTheCurrentOne) {
    const auto first = GLFixture::makeContext({});
    first->makeCurrent();
    const auto second = GLFixture::makeContext({});
    EXPECT_EQ(OpenGLDeviceContext::current(), first);
    second->makeCurrent();
    EXPECT_EQ(OpenGLDeviceContext::current(), second);
}

TEST_F(OpenGLDeviceContextTest, UnknownDeviceFailsWithAListOfTheDevices) {
    OpenGLDeviceContext::HeadlessOptions options;
    options.device = QStringLiteral("no such device");
    QString error;
    EXPECT_FALSE(OpenGLDeviceContext::createHeadless(options, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("No OpenGL context could be made. Tried: EGL device 0")))
        << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral(": not 'no such device'"))) << error.toStdString();
}

TEST_F(OpenGLDeviceContextTest, DeviceIsFoundByPartOfItsName) {
    OpenGLDeviceContext::HeadlessOptions options;
    options.device = QStringLiteral("DEVICE 0");
    QString error = QStringLiteral("untouched");
    EXPECT_TRUE(OpenGLDeviceContext::createHeadless(options, error));
    EXPECT_EQ(error, QStringLiteral("untouched"));
}

TEST_F(OpenGLDeviceContextTest, SharingWithAStandInFails) {
    OpenGLDeviceContext::HeadlessOptions options;
    options.shareWith = QSharedPointer<StandInContext>::create();
    QString error;
    EXPECT_FALSE(OpenGLDeviceContext::createHeadless(options, error));
    EXPECT_EQ(error, QStringLiteral("No OpenGL context could be made. Tried: "
                                    "the context to share with was not created by EGL"));
}

TEST_F(OpenGLDeviceContextTest, ForeignContextIsRecognisedAndKeepsItsObject) {
    ForeignContext first;
    ForeignContext second;
    ASSERT_TRUE(first.makeCurrent());
    const auto firstSeen = OpenGLDeviceContext::current();
    ASSERT_TRUE(firstSeen);
    EXPECT_GE(firstSeen->version(), 43);
    EXPECT_TRUE(firstSeen->makeCurrent());
    EXPECT_TRUE(canUpload());
    second.makeCurrent();
    EXPECT_TRUE(OpenGLDeviceContext::current());
    EXPECT_NE(OpenGLDeviceContext::current(), firstSeen);
    EXPECT_FALSE(firstSeen->makeCurrent());
    first.makeCurrent();
    EXPECT_EQ(OpenGLDeviceContext::current(), firstSeen);
    firstSeen->doneCurrent();
    EXPECT_EQ(OpenGLDeviceContext::current(), firstSeen);
}

TEST_F(OpenGLDeviceContextTest, ConsecutiveContextsAreDistinguished) {
    BufferObject survivor;
    for (int round = 0; round < 20; ++round) {
        ForeignContext context;
        ASSERT_TRUE(context.makeCurrent());
        ASSERT_TRUE(OpenGLDeviceContext::current());
        EXPECT_EQ(survivor.name(), 0U) << "the buffer of an earlier context, round " << round;
        EXPECT_TRUE(survivor.uploadGLuintData(kValue, 1, GL_STATIC_DRAW));
        EXPECT_TRUE(glIsBuffer(survivor.name()));
    }
}

TEST_F(OpenGLDeviceContextTest, AdoptingAForeignContextKeepsItsState) {
    ForeignContext context;
    ASSERT_TRUE(context.makeCurrent());
    const GLDEBUGPROC own = [](GLenum, GLenum, GLuint, GLenum, GLsizei, const GLchar*, const void*) {};
    glDebugMessageCallback(own, nullptr);
    const BusyClient client;
    const ClientState before = ClientState::captured();
    ASSERT_TRUE(OpenGLDeviceContext::current());
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

// Both contexts exist at the same time, so that the second cannot reuse the handle of the first.
TEST_F(OpenGLDeviceContextTest, BufferOfADestroyedContextCanBeFilledInAnother) {
    auto first = std::make_unique<ForeignContext>();
    ForeignContext second;
    BufferObject buffer;
    first->makeCurrent();
    ASSERT_TRUE(buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW));
    first.reset();
    second.makeCurrent();
    EXPECT_TRUE(buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.readBack().size(), 4);
}

TEST_F(OpenGLDeviceContextTest, ObjectOfADestroyedContextIsEmpty) {
    BufferObject buffer;
    QSharedPointer<OpenGLDeviceContext> seen;
    ForeignContext other;
    {
        ForeignContext context;
        ASSERT_TRUE(context.makeCurrent());
        seen = OpenGLDeviceContext::current();
        ASSERT_TRUE(buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW));
    }
    other.makeCurrent();
    ASSERT_TRUE(OpenGLDeviceContext::current());
    EXPECT_EQ(seen->version(), 0);
    EXPECT_TRUE(seen->description().isEmpty());
    EXPECT_FALSE(seen->makeCurrent());
    EXPECT_TRUE(buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW))
        << "the object of a destroyed context owns no names";
}

// Other code makes a foreign context current, so its queued names are deleted with the next use of VelGL
// there.
TEST_F(OpenGLDeviceContextTest, NamesOfAForeignContextAreDeletedWhenItIsNextUsed) {
    ForeignContext context;
    ASSERT_TRUE(context.makeCurrent());
    auto buffer = std::make_unique<BufferObject>();
    ASSERT_TRUE(buffer->uploadGLuintData(kValue, 1, GL_STATIC_DRAW));
    const unsigned int name = buffer->name();
    ForeignContext::doneCurrent();
    buffer.reset();
    context.makeCurrent();
    EXPECT_TRUE(glIsBuffer(name));
    EXPECT_EQ(BufferObject().name(), 0U);
    EXPECT_FALSE(glIsBuffer(name));
}

// The headless context may reuse the handle of an earlier context.
TEST_F(OpenGLDeviceContextTest, HeadlessContextsBetweenForeignOnesAreDistinguished) {
    for (int round = 0; round < 20; ++round) {
        {
            ForeignContext context;
            ASSERT_TRUE(context.makeCurrent());
            ASSERT_TRUE(OpenGLDeviceContext::current());
        }
        const auto headless = GLFixture::makeContext({});
        ASSERT_TRUE(headless->makeCurrent());
        EXPECT_EQ(OpenGLDeviceContext::current(), headless) << round;
        EXPECT_TRUE(canUpload());
    }
}

TEST_F(OpenGLDeviceContextTest, ForeignContextCanBeSharedWith) {
    ForeignContext foreign;
    foreign.makeCurrent();
    BufferObject buffer;
    buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW);
    OpenGLDeviceContext::HeadlessOptions options;
    options.shareWith = OpenGLDeviceContext::current();
    const auto sharing = GLFixture::makeContext(options);
    ASSERT_TRUE(sharing && sharing->makeCurrent());
    EXPECT_EQ(buffer.readBack().size(), 4);
}

TEST_F(OpenGLDeviceContextTest, SharingBetweenForeignContextsIsDetected) {
    ForeignContext first;
    ForeignContext second(ForeignContext::Api::OpenGL, &first);
    first.makeCurrent();
    BufferObject buffer;
    buffer.uploadGLuintData(kValue, 1, GL_STATIC_DRAW);
    second.makeCurrent();
    EXPECT_EQ(buffer.readBack().size(), 4);
}

TEST_F(OpenGLDeviceContextTest, OpenGLESIsRefusedAndReportedOnce) {
    ForeignContext context(ForeignContext::Api::OpenGLES);
    ASSERT_TRUE(context.makeCurrent());
    const MessageLog log;
    EXPECT_FALSE(OpenGLDeviceContext::current());
    EXPECT_FALSE(OpenGLDeviceContext::current());
    EXPECT_FALSE(canUpload());
    EXPECT_THAT(log.texts(QtWarningMsg), testing::ElementsAre(QStringLiteral(
                                             "OpenGL ES is current, but OpenGL 4.3 or later is needed")));
}

TEST_F(OpenGLDeviceContextTest, EachUnusableContextIsReported) {
    ForeignContext first(ForeignContext::Api::OpenGLES);
    ForeignContext second(ForeignContext::Api::OpenGLES);
    const MessageLog log;
    for (int round = 0; round < 2; ++round)
        for (ForeignContext* context : {&first, &second}) {
            ASSERT_TRUE(context->makeCurrent());
            EXPECT_FALSE(OpenGLDeviceContext::current());
        }
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2U);
}

TEST_F(OpenGLDeviceContextTest, SubstituteContextIsLocalToItsThread) {
    OpenGLDeviceContext::setCurrent(QSharedPointer<StandInContext>::create());
    bool isCurrent = true;
    std::thread([&] { isCurrent = OpenGLDeviceContext::current() != nullptr; }).join();
    EXPECT_FALSE(isCurrent);
    EXPECT_TRUE(OpenGLDeviceContext::current());
}

TEST_F(OpenGLDeviceContextTest, SubstituteContextIsCurrentUntilItIsRemoved) {
    const auto native = GLFixture::makeContext({});
    native->makeCurrent();
    const auto standIn = QSharedPointer<StandInContext>::create();
    OpenGLDeviceContext::setCurrent(standIn);
    EXPECT_EQ(OpenGLDeviceContext::current(), standIn);
    EXPECT_EQ(standIn->version(), 0);
    EXPECT_TRUE(standIn->description().isEmpty());
    EXPECT_TRUE(standIn->makeCurrent());
    EXPECT_FALSE(canUpload()) << "a substitute has no OpenGL";
    OpenGLDeviceContext::setCurrent({});
    EXPECT_EQ(OpenGLDeviceContext::current(), native);
    EXPECT_FALSE(standIn->makeCurrent());
}

TEST_F(OpenGLDeviceContextTest, SubstituteContextThatIsNotNativelyCurrentFails) {
    const auto context = GLFixture::makeContext({});
    OpenGLDeviceContext::setCurrent(context);
    EXPECT_EQ(OpenGLDeviceContext::current(), context);
    EXPECT_FALSE(canUpload());
    context->makeCurrent();
    EXPECT_TRUE(canUpload());
}

TEST_F(OpenGLDeviceContextTest, FactoriesMakeEmptyObjects) {
    const auto context = QSharedPointer<StandInContext>::create();
    EXPECT_EQ(context->createBufferObject()->byteCount(), 0U);
    EXPECT_TRUE(context->createVertexArrayObject()->streams().isEmpty());
}

TEST_F(OpenGLDeviceContextTest, DriverMessagesGoToTheCategory) {
    OpenGLDeviceContext::HeadlessOptions options;
    options.debug = true;
    const auto context = GLFixture::makeContext(options);
    context->makeCurrent();
    const MessageLog log;
    glEnable(0x1234);
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_EQ(log.messages().front().level, QtCriticalMsg);
    EXPECT_EQ(log.messages().front().category, QStringLiteral("velgl"));
    EXPECT_TRUE(log.messages().front().text.contains(QStringLiteral("glEnable")))
        << log.messages().front().text.toStdString();
}

TEST_F(OpenGLDeviceContextTest, SeverityOfAMessageSelectsItsLevel) {
    OpenGLDeviceContext::HeadlessOptions options;
    options.debug = true;
    const auto context = GLFixture::makeContext(options);
    context->makeCurrent();
    glDebugMessageControl(GL_DONT_CARE, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, GL_TRUE);
    const MessageLog log;
    for (const auto& [severity, text] : {std::pair(GL_DEBUG_SEVERITY_HIGH, "100 % high"),
                                         {GL_DEBUG_SEVERITY_MEDIUM, "50 % medium"},
                                         {GL_DEBUG_SEVERITY_LOW, "10 % low"},
                                         {GL_DEBUG_SEVERITY_NOTIFICATION, "0 % notification"}})
        glDebugMessageInsert(GL_DEBUG_SOURCE_APPLICATION, GL_DEBUG_TYPE_OTHER, 1, GLenum(severity), -1, text);
    EXPECT_THAT(log.messages(),
                testing::ElementsAre(LoggedMessage{QtCriticalMsg, "100 % high", {}, false},
                                     LoggedMessage{QtWarningMsg, "50 % medium", {}, false},
                                     LoggedMessage{QtDebugMsg, "10 % low", {}, false},
                                     LoggedMessage{QtDebugMsg, "0 % notification", {}, false}));
}

// The text of a message need not end with a zero, unless its length is negative.
TEST_F(OpenGLDeviceContextTest, MessageEndsAtItsLength) {
    const auto context = GLFixture::makeContext({});
    context->makeCurrent();
    void* callback = nullptr;
    glGetPointerv(GL_DEBUG_CALLBACK_FUNCTION, &callback);
    ASSERT_NE(callback, nullptr);
    const MessageLog log;
    for (const int length : {3, 0, -1})
        reinterpret_cast<GLDEBUGPROC>(callback)(GL_DEBUG_SOURCE_API, GL_DEBUG_TYPE_OTHER, 1,
                                                GL_DEBUG_SEVERITY_MEDIUM, length, "abcdef", nullptr);
    EXPECT_THAT(log.texts(QtWarningMsg), testing::ElementsAre("abc", "", "abcdef"));
}

TEST_F(OpenGLDeviceContextTest, DebugCallbackOfTheClientStays) {
    ForeignContext context;
    context.makeCurrent();
    const GLDEBUGPROC own = [](GLenum, GLenum, GLuint, GLenum, GLsizei, const GLchar*, const void*) {};
    glDebugMessageCallback(own, nullptr);
    ASSERT_TRUE(OpenGLDeviceContext::current());
    void* callback = nullptr;
    glGetPointerv(GL_DEBUG_CALLBACK_FUNCTION, &callback);
    EXPECT_EQ(callback, reinterpret_cast<void*>(own));
}

} // namespace Atelier::Vel::Testing

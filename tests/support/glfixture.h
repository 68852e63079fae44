#pragma once

#include <memory>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <velgl/opengldevicecontext.h>

namespace Atelier::Vel::Testing {

/// An off-screen picture with colour and depth. Requires: during its lifetime, no other context is current.
class Framebuffer {
public:
    explicit Framebuffer(const QSize& size);
    ~Framebuffer();
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// Makes the picture the target of draws, sets the viewport to it and clears colour and depth.
    void begin(const QColor& background = Qt::black);
    /// The picture, top row first, as Format_RGBA8888.
    QImage pixels() const;

private:
    QSize _size;
    unsigned int _framebuffer = 0;
    unsigned int _renderbuffers[2] = {};
};

/// A test with its own headless OpenGL context, current from SetUp() to TearDown(). An unread debug message
/// of high severity or GL error fails the test.
class GLFixture : public ::testing::Test {
public:
    ~GLFixture() override;

    /// A further headless context, not made current. On failure, fails the test and returns null.
    static QSharedPointer<OpenGLDeviceContext>
    makeContext(const OpenGLDeviceContext::HeadlessOptions& options);
    /// Makes the current context report its messages to this test.
    void watchMessages();
    /// Returns the messages of high severity so far; they no longer fail the test.
    std::vector<QString> takeSevereMessages();

protected:
    void SetUp() override;
    void TearDown() override;

    /// The options of the test's own context; a debug context unless overridden.
    virtual OpenGLDeviceContext::HeadlessOptions options() const;
    QSharedPointer<OpenGLDeviceContext> _context;

private:
    std::vector<QString> _severeMessages;
};

} // namespace Atelier::Vel::Testing

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

/// An off-screen picture to draw into: colour and depth. Requires: while it lives, no context is current but
/// its own.
class Framebuffer {
public:
    explicit Framebuffer(const QSize& size);
    ~Framebuffer();
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// Makes it the target of draws, sets the viewport to it and clears colour and depth.
    void begin(const QColor& background = Qt::black);
    /// The picture, top row first, as Format_RGBA8888.
    QImage pixels() const;

private:
    QSize _size;
    unsigned int _framebuffer = 0;
    unsigned int _renderbuffers[2] = {};
};

/// A test with a headless OpenGL context of its own, current from SetUp() to TearDown(). A debug message of
/// high severity and a GL error that nobody has asked for fail the test.
class GLFixture : public ::testing::Test {
public:
    ~GLFixture() override;

    /// A further headless context, not made current; a failure and null when there is none.
    static QSharedPointer<OpenGLDeviceContext>
    makeContext(const OpenGLDeviceContext::HeadlessOptions& options);
    /// Has the context that is current report its messages to this test.
    void watchMessages();
    /// The messages of high severity so far, which then fail the test no longer.
    std::vector<QString> takeSevereMessages();

protected:
    void SetUp() override;
    void TearDown() override;

    /// How the test's own context is made; a debug context unless overridden.
    virtual OpenGLDeviceContext::HeadlessOptions options() const;
    QSharedPointer<OpenGLDeviceContext> _context;

private:
    std::vector<QString> _severeMessages;
};

} // namespace Atelier::Vel::Testing

#include <epoxy/gl.h>

#include "support/glfixture.h"

#include <utility>

namespace Atelier::Vel::Testing {

namespace {

void APIENTRY keepSevere(GLenum /*source*/, GLenum /*type*/, GLuint /*id*/, GLenum severity,
                         GLsizei /*length*/, const GLchar* text, const void* messages) {
    if (severity == GL_DEBUG_SEVERITY_HIGH)
        static_cast<std::vector<QString>*>(const_cast<void*>(messages))->push_back(QString::fromUtf8(text));
}

} // namespace

Framebuffer::Framebuffer(const QSize& size) : _size(size) {
    glGenFramebuffers(1, &_framebuffer);
    glGenRenderbuffers(2, _renderbuffers);
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffers[0]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, size.width(), size.height());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, _renderbuffers[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffers[1]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, size.width(), size.height());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, _renderbuffers[1]);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
}

Framebuffer::~Framebuffer() {
    if (!OpenGLDeviceContext::current())
        return; // it was destroyed with its context
    glDeleteFramebuffers(1, &_framebuffer);
    glDeleteRenderbuffers(2, _renderbuffers);
}

void Framebuffer::begin(const QColor& background) {
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glViewport(0, 0, _size.width(), _size.height());
    glClearColor(float(background.redF()), float(background.greenF()), float(background.blueF()),
                 float(background.alphaF()));
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

QImage Framebuffer::pixels() const {
    QImage image(_size, QImage::Format_RGBA8888);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, _framebuffer);
    glReadPixels(0, 0, _size.width(), _size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

GLFixture::~GLFixture() = default;

OpenGLDeviceContext::HeadlessOptions GLFixture::options() const {
    OpenGLDeviceContext::HeadlessOptions options;
    options.debug = true;
    return options;
}

QSharedPointer<OpenGLDeviceContext>
GLFixture::makeContext(const OpenGLDeviceContext::HeadlessOptions& options) {
    QString error;
    QSharedPointer<OpenGLDeviceContext> made = OpenGLDeviceContext::createHeadless(options, error);
    EXPECT_TRUE(made) << error.toStdString();
    return made;
}

void GLFixture::watchMessages() {
    glEnable(GL_DEBUG_OUTPUT);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
    glDebugMessageCallback(keepSevere, &_severeMessages);
}

std::vector<QString> GLFixture::takeSevereMessages() {
    return std::exchange(_severeMessages, {});
}

void GLFixture::SetUp() {
    _context = makeContext(options());
    ASSERT_TRUE(_context);
    ASSERT_TRUE(_context->makeCurrent());
    watchMessages();
}

void GLFixture::TearDown() {
    if (OpenGLDeviceContext::current()) {
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }
    for (const QString& message : _severeMessages)
        ADD_FAILURE() << "OpenGL says: " << message.toStdString();
    _context.reset();
    OpenGLDeviceContext::setCurrent({});
}

} // namespace Atelier::Vel::Testing

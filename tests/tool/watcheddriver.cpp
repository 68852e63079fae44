#include "watcheddriver.h"

#include <algorithm>

#include "picturetarget.h"

namespace Atelier::Vel::Testing {

/// The functions of OpenGL that are watched, as libepoxy holds them.
struct WatchedDriver::Functions {
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = glGenFramebuffers;
    PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = glDeleteFramebuffers;
    PFNGLCHECKFRAMEBUFFERSTATUSPROC checkFramebufferStatus = glCheckFramebufferStatus;
    PFNGLGETINTEGERVPROC getIntegerv = glGetIntegerv;
    PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC renderbufferStorage = glRenderbufferStorageMultisample;
};

namespace {

DriverWatch watched;

// libepoxy looks a function up on its first call and overwrites its placeholder.
void callEverythingOnce() {
    QString error;
    Tool::PictureTarget::create({1, 1}, error);
}

// A driver may claim more samples than it supports.
GLsizei available(GLsizei samples) {
    return std::min(samples, 4);
}

} // namespace

WatchedDriver::Functions& WatchedDriver::real() {
    static Functions functions;
    return functions;
}

WatchedDriver::WatchedDriver() {
    callEverythingOnce();
    real() = {};
    watched = {};
    glGenFramebuffers = [](GLsizei count, GLuint* names) {
        watched.framebuffersMade += count;
        watched.framebuffersAlive += count;
        watched.maxFramebuffersAlive = std::max(watched.maxFramebuffersAlive, watched.framebuffersAlive);
        real().genFramebuffers(count, names);
    };
    glDeleteFramebuffers = [](GLsizei count, const GLuint* names) {
        watched.framebuffersAlive -= count;
        real().deleteFramebuffers(count, names);
    };
    glCheckFramebufferStatus = [](GLenum target) {
        return watched.checksUntilIncomplete-- == 0 ? GLenum(GL_FRAMEBUFFER_UNSUPPORTED)
                                                    : real().checkFramebufferStatus(target);
    };
    glGetIntegerv = [](GLenum name, GLint* value) {
        if (name == GL_MAX_SAMPLES && watched.sampleLimit != 0)
            *value = watched.sampleLimit;
        else
            real().getIntegerv(name, value);
    };
    glRenderbufferStorageMultisample = [](GLenum target, GLsizei samples, GLenum format, GLsizei width,
                                          GLsizei height) {
        if (samples > 0)
            watched.samples.push_back(samples);
        real().renderbufferStorage(target, available(samples), format, width, height);
    };
}

WatchedDriver::~WatchedDriver() {
    glGenFramebuffers = real().genFramebuffers;
    glDeleteFramebuffers = real().deleteFramebuffers;
    glCheckFramebufferStatus = real().checkFramebufferStatus;
    glGetIntegerv = real().getIntegerv;
    glRenderbufferStorageMultisample = real().renderbufferStorage;
}

DriverWatch& WatchedDriver::watch() {
    return watched;
}

} // namespace Atelier::Vel::Testing

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include "foreigncontext.h"

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

namespace {

EGLDisplay display() {
    static const EGLDisplay opened = [] {
        const EGLDisplay made =
            eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EXPECT_TRUE(eglInitialize(made, nullptr, nullptr));
        return made;
    }();
    return opened;
}

} // namespace

ForeignContext::ForeignContext(Api api, const ForeignContext* shared) {
    eglBindAPI(api == Api::OpenGL ? EGL_OPENGL_API : EGL_OPENGL_ES_API);
    const EGLint renderable = api == Api::OpenGL ? EGL_OPENGL_BIT : EGL_OPENGL_ES3_BIT;
    const EGLint configAttributes[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, renderable, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    EXPECT_TRUE(eglChooseConfig(display(), configAttributes, &config, 1, &count) && count == 1);
    const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION,
                                 api == Api::OpenGL ? 2 : 0, EGL_NONE};
    _context = eglCreateContext(display(), config, shared ? shared->_context : EGL_NO_CONTEXT, attributes);
    EXPECT_NE(_context, EGL_NO_CONTEXT);
}

ForeignContext::~ForeignContext() {
    if (eglGetCurrentContext() == _context)
        doneCurrent();
    eglDestroyContext(display(), _context);
}

bool ForeignContext::makeCurrent() {
    return eglMakeCurrent(display(), EGL_NO_SURFACE, EGL_NO_SURFACE, _context) == EGL_TRUE;
}

void ForeignContext::doneCurrent() {
    eglMakeCurrent(display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

std::unique_ptr<ForeignContext> makeForeignContext(const ForeignContext* shared) {
    auto context = std::make_unique<ForeignContext>(ForeignContext::Api::OpenGL, shared);
    EXPECT_TRUE(context->makeCurrent());
    return context;
}

} // namespace Atelier::Vel::Testing

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <velgl/opengldevicecontext.h>

#include <QtCore/QStringList>

#include "context/contexttable.h"
#include "context/debugmessages.h"
#include "context/egldisplays.h"
#include "context/glversion.h"

namespace Atelier::Vel {

namespace {

using Options = OpenGLDeviceContext::HeadlessOptions;

// Restores the thread's EGL context and its client API on destruction.
class ScopedEglCurrent {
public:
    ScopedEglCurrent() = default;
    ~ScopedEglCurrent() {
        if (_context != EGL_NO_CONTEXT)
            eglMakeCurrent(_display, _draw, _read, _context);
        eglBindAPI(_api);
    }
    ScopedEglCurrent(const ScopedEglCurrent&) = delete;
    ScopedEglCurrent& operator=(const ScopedEglCurrent&) = delete;

private:
    EGLenum _api = eglQueryAPI();
    EGLDisplay _display = eglGetCurrentDisplay();
    EGLSurface _draw = eglGetCurrentSurface(EGL_DRAW);
    EGLSurface _read = eglGetCurrentSurface(EGL_READ);
    EGLContext _context = eglGetCurrentContext();
};

// An EGL context with no surface.
class EglContext {
public:
    EglContext(EGLDisplay display, EGLContext context) : _display(display), _context(context) {}
    ~EglContext() {
        if (_context == EGL_NO_CONTEXT)
            return;
        doneCurrent();
        eglDestroyContext(_display, _context);
    }
    EglContext(const EglContext&) = delete;
    EglContext& operator=(const EglContext&) = delete;

    bool isValid() const { return _context != EGL_NO_CONTEXT; }
    NativeContext native() const { return {NativeContext::Api::Egl, _context, _display}; }
    bool makeCurrent() {
        return eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, _context) == EGL_TRUE;
    }
    void doneCurrent() {
        if (eglGetCurrentContext() == _context)
            eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }

private:
    EGLDisplay _display;
    EGLContext _context;
};

class HeadlessContext : public OpenGLDeviceContext {
public:
    // Requires: `context` is current.
    HeadlessContext(std::unique_ptr<EglContext> context, std::shared_ptr<ShareGroup> group,
                    const ContextFeatures& features)
        : _context(std::move(context)) {
        ContextAccess::gl(*this) =
            std::make_unique<ContextGL>(_context->native(), std::move(group), features);
    }
    ~HeadlessContext() override {
        ContextTable::instance().remove(_context->native());
        ContextAccess::gl(*this).reset();
    }
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

    bool makeCurrent() override {
        const bool isMade = _context->makeCurrent();
        if (isMade)
            ContextAccess::gl(*this)->deleteQueuedNames();
        return isMade;
    }
    void doneCurrent() override { _context->doneCurrent(); }

private:
    std::unique_ptr<EglContext> _context;
};

EGLContext createContext(EGLDisplay display, EGLContext shared, int version, bool debug) {
    const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                 version / 10,
                                 EGL_CONTEXT_MINOR_VERSION,
                                 version % 10,
                                 EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                 EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                 EGL_CONTEXT_OPENGL_DEBUG,
                                 debug ? EGL_TRUE : EGL_FALSE,
                                 EGL_NONE};
    const EGLint configAttributes[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(display, configAttributes, &config, 1, &count);
    return eglCreateContext(display, count > 0 ? config : EGL_NO_CONFIG_KHR, shared, attributes);
}

// The highest core profile that the driver offers. 3.2 is below the minimum of VelGL: it is tried last, so
// that the error can name the version that was found.
std::unique_ptr<EglContext> createBestContext(EGLDisplay display, EGLContext shared, bool debug) {
    for (const int version : {46, 45, 44, 43, 32}) {
        auto context = std::make_unique<EglContext>(display, createContext(display, shared, version, debug));
        if (context->isValid())
            return context;
    }
    return nullptr;
}

QSharedPointer<OpenGLDeviceContext> createOn(EGLDisplay display, const Options& options, EGLContext shared,
                                             QString& problem) {
    if (!eglBindAPI(EGL_OPENGL_API)) {
        problem = QStringLiteral("no desktop OpenGL (%1)").arg(eglErrorText());
        return {};
    }
    std::unique_ptr<EglContext> context = createBestContext(display, shared, options.debug);
    if (!context) {
        problem = QStringLiteral("no core profile context (%1)").arg(eglErrorText());
        return {};
    }
    if (!context->makeCurrent()) {
        problem = QStringLiteral("the context cannot be used without a surface (%1)").arg(eglErrorText());
        return {};
    }
    if (const int version = currentVersion(); version < kMinVersion) {
        problem = QStringLiteral("OpenGL %1.%2 found, %3.%4 or later needed")
                      .arg(version / 10)
                      .arg(version % 10)
                      .arg(kMinVersion / 10)
                      .arg(kMinVersion % 10);
        return {};
    }
    const ContextFeatures features{options.directStateAccess, options.multiBind, options.drawParameters};
    ContextTable& table = ContextTable::instance();
    auto group = options.shareWith ? ContextAccess::gl(*options.shareWith)->group()
                                   : table.makeGroup(ShareGroup::Origin::VelGL);
    QSharedPointer<OpenGLDeviceContext> created(
        new HeadlessContext(std::move(context), std::move(group), features));
    table.add(created);
    enableDebugMessages(options.debug ? DebugDelivery::Synchronous : DebugDelivery::Asynchronous);
    created->doneCurrent();
    return created;
}

std::vector<EglDisplayCandidate> candidatesFor(const Options& options, EGLContext& shared) {
    if (!options.shareWith)
        return eglDisplays(options.device);
    const ContextGL* gl = ContextAccess::gl(*options.shareWith).get();
    if (!gl || gl->native().api != NativeContext::Api::Egl)
        return {{nullptr, QStringLiteral("the context to share with was not created by EGL")}};
    shared = gl->native().handle;
    return {{gl->native().display, QStringLiteral("the display of the context to share with")}};
}

} // namespace

QSharedPointer<OpenGLDeviceContext> OpenGLDeviceContext::createHeadless(const HeadlessOptions& options,
                                                                        QString& error) {
    const ScopedEglCurrent current;
    EGLContext shared = EGL_NO_CONTEXT;
    QStringList tried;
    for (const EglDisplayCandidate& candidate : candidatesFor(options, shared)) {
        QString problem;
        if (candidate.display)
            if (QSharedPointer<OpenGLDeviceContext> created =
                    createOn(candidate.display, options, shared, problem))
                return created;
        tried += candidate.display ? QStringLiteral("%1: %2").arg(candidate.description, problem)
                                   : candidate.description;
    }
    if (tried.isEmpty())
        tried += QStringLiteral("EGL lists no device and has no surfaceless platform");
    error =
        QStringLiteral("No OpenGL context could be made. Tried: %1").arg(tried.join(QStringLiteral("; ")));
    return {};
}

} // namespace Atelier::Vel

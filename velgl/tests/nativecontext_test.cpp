#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

#include "context/nativecontext.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

// Contexts of an EGL that another part of the process loads. This program links neither EGL nor VelGL.
namespace Atelier::Vel::Testing {

namespace {

/// EGL as a plug-in loads it: its functions are not visible to other libraries.
class PrivateEgl {
public:
    PrivateEgl() : _library(dlopen("libEGL.so.1", RTLD_LAZY | RTLD_LOCAL)) {
        EXPECT_TRUE(_library);
        _display = function<decltype(eglGetPlatformDisplay)>("eglGetPlatformDisplay")(
            EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EXPECT_TRUE(function<decltype(eglInitialize)>("eglInitialize")(_display, nullptr, nullptr));
    }
    ~PrivateEgl() { dlclose(_library); }
    PrivateEgl(const PrivateEgl&) = delete;
    PrivateEgl& operator=(const PrivateEgl&) = delete;

    static bool isLoaded() { return dlopen("libEGL.so.1", RTLD_LAZY | RTLD_NOLOAD) != nullptr; }

    EGLDisplay display() const { return _display; }
    EGLContext makeContext() const {
        function<decltype(eglBindAPI)>("eglBindAPI")(EGL_OPENGL_API);
        return function<decltype(eglCreateContext)>("eglCreateContext")(_display, EGL_NO_CONFIG_KHR,
                                                                        EGL_NO_CONTEXT, nullptr);
    }
    bool makeCurrent(EGLContext context) const {
        return function<decltype(eglMakeCurrent)>("eglMakeCurrent")(_display, EGL_NO_SURFACE, EGL_NO_SURFACE,
                                                                    context) == EGL_TRUE;
    }
    void destroy(EGLContext context) const {
        function<decltype(eglDestroyContext)>("eglDestroyContext")(_display, context);
    }

private:
    template<typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(_library, name));
    }

    void* _library;
    EGLDisplay _display = EGL_NO_DISPLAY;
};

} // namespace

// One test, since EGL stays loaded after it.
TEST(NativeContextTest, ContextsOfAnEglThatIsLoadedLaterAreFound) {
    ASSERT_FALSE(PrivateEgl::isLoaded());
    EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
    int unknown = 0;
    EXPECT_FALSE(isDestroyed({NativeContext::Api::Egl, &unknown, &unknown})) << "nothing is known of it";
    ASSERT_FALSE(PrivateEgl::isLoaded()) << "a search loads nothing";

    const PrivateEgl egl;
    ASSERT_FALSE(dlsym(RTLD_DEFAULT, "eglGetCurrentContext"));
    const EGLContext context = egl.makeContext();
    EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
    ASSERT_TRUE(egl.makeCurrent(context));
    NativeContext found = currentNativeContext();
    EXPECT_EQ(found.api, NativeContext::Api::Egl);
    EXPECT_EQ(found.handle, context);
    EXPECT_EQ(currentEglDisplay(), egl.display());
    found.display = currentEglDisplay();
    ASSERT_TRUE(egl.makeCurrent(EGL_NO_CONTEXT));
    EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
    EXPECT_FALSE(isDestroyed(found));
    egl.destroy(context);
    EXPECT_TRUE(isDestroyed(found));
}

TEST(NativeContextTest, EachThreadFindsItsOwnContext) {
    constexpr int kThreadCount = 4;
    const PrivateEgl egl;
    std::atomic<int> ready = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreadCount; ++i)
        threads.emplace_back([&] {
            const EGLContext context = egl.makeContext();
            EXPECT_TRUE(egl.makeCurrent(context));
            for (++ready; ready < kThreadCount;)
                std::this_thread::yield();
            EXPECT_EQ(currentNativeContext().handle, context);
            EXPECT_EQ(currentEglDisplay(), egl.display());
            egl.makeCurrent(EGL_NO_CONTEXT);
            EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
            EXPECT_FALSE(isDestroyed({NativeContext::Api::Egl, context, egl.display()}));
            egl.destroy(context);
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(NativeContextTest, LibraryWhoseFunctionIsKnownStaysLoaded) {
    void* library = dlopen(FAKE_GLX, RTLD_LAZY | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror();
    const auto setCurrent = reinterpret_cast<void (*)(void*)>(dlsym(library, "setCurrentContext"));
    ASSERT_TRUE(setCurrent);
    EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
    dlclose(library);
    ASSERT_TRUE(dlopen("libGLX.so.0", RTLD_LAZY | RTLD_NOLOAD));
    int context = 0;
    setCurrent(&context);
    NativeContext found = currentNativeContext();
    setCurrent(nullptr);
    EXPECT_EQ(found.api, NativeContext::Api::Glx);
    EXPECT_EQ(found.handle, &context);
    EXPECT_FALSE(found.display);
    EXPECT_FALSE(isDestroyed(found)) << "GLX has no query for that";
    EXPECT_EQ(currentNativeContext().api, NativeContext::Api::None);
}

} // namespace Atelier::Vel::Testing

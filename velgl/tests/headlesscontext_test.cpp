#include <epoxy/gl.h>

#include <velgl/opengldevicecontext.h>

#include <map>
#include <set>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>

#include "eglhooks.h"
#include "foreigncontext.h"
#include "glhooks.h"
#include "scenefixture.h"
#include "support/messagelog.h"

// Headless contexts with an EGL that fails, or that has other devices and versions than the real one.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A device that EGL lists: its extensions, and its strings by name.
struct FakeDevice {
    const char* extensions = "";
    std::map<EGLint, const char*> texts;
};

class HeadlessContextTest : public testing::Test {
protected:
    HeadlessContextTest() { _egl = EglFunctions::real(); }
    ~HeadlessContextTest() override {
        OpenGLDeviceContext::setCurrent({});
        _egl = EglFunctions::real();
        ForeignContext::doneCurrent(); // opens a display
    }

    void listDevices(const std::vector<FakeDevice>& devices) {
        _devices = devices;
        _egl.queryDevices = [this](EGLint capacity, EGLDeviceEXT* found, EGLint* count) -> EGLBoolean {
            *count = static_cast<EGLint>(_devices.size());
            for (EGLint i = 0; found && i < std::min(capacity, *count); ++i)
                found[i] = &_devices[std::size_t(i)];
            return EGL_TRUE;
        };
        _egl.queryDeviceString = [](EGLDeviceEXT device, EGLint name) {
            const auto& fake = *static_cast<const FakeDevice*>(device);
            const auto text = fake.texts.find(name);
            return name == EGL_EXTENSIONS     ? fake.extensions
                   : text == fake.texts.end() ? nullptr
                                              : text->second;
        };
    }
    void listClientExtensions(const char* extensions) {
        _egl.queryString = [extensions](EGLDisplay, EGLint) { return extensions; };
    }
    /// Makes the surfaceless platform the only candidate.
    void listSurfacelessOnly() {
        listDevices({});
        listClientExtensions("EGL_EXT_client_extensions EGL_MESA_platform_surfaceless");
    }
    void setError(EGLint error) {
        _egl.getError = [error] { return error; };
    }

    /// Counts the existing contexts in _contexts.
    void countContexts() {
        const EglFunctions real = EglFunctions::real();
        _egl.createContext = [this, real](EGLDisplay display, EGLConfig config, EGLContext shared,
                                          const EGLint* attributes) {
            const EGLContext made = real.createContext(display, config, shared, attributes);
            _contexts += made == EGL_NO_CONTEXT ? 0 : 1;
            return made;
        };
        _egl.destroyContext = [this, real](EGLDisplay display, EGLContext context) {
            --_contexts;
            return real.destroyContext(display, context);
        };
    }

    /// Returns: the error of createHeadless(), without the beginning that all errors share.
    static QString failure(const OpenGLDeviceContext::HeadlessOptions& options = {}) {
        QString error;
        EXPECT_FALSE(OpenGLDeviceContext::createHeadless(options, error));
        const QString start = QStringLiteral("No OpenGL context could be made. Tried: ");
        EXPECT_TRUE(error.startsWith(start)) << error.toStdString();
        return error.mid(start.size());
    }
    static QString failureOnDevice(const QString& device) {
        OpenGLDeviceContext::HeadlessOptions options;
        options.device = device;
        return failure(options);
    }

    EglFunctions& _egl = EglFunctions::current();
    int _contexts = 0;

private:
    std::vector<FakeDevice> _devices;
};

} // namespace

TEST_F(HeadlessContextTest, WithoutDevicesAndPlatformNothingIsTried) {
    const QString nothing = QStringLiteral("EGL lists no device and has no surfaceless platform");
    listDevices({});
    for (const char* extensions : {"EGL_EXT_client_extensions", "EGL_MESA_platform_surfaceless_not", ""}) {
        listClientExtensions(extensions);
        EXPECT_EQ(failure(), nothing) << extensions;
    }
    listClientExtensions(nullptr);
    EXPECT_EQ(failure(), nothing);
    _egl.queryDevices = {};
    EXPECT_EQ(failure(), nothing) << "EGL cannot list devices";
}

TEST_F(HeadlessContextTest, DevicesThatCannotBeListedAreNotTried) {
    listClientExtensions("");
    for (const bool failsAtOnce : {true, false}) {
        listDevices({{}, {}});
        const auto list = _egl.queryDevices;
        _egl.queryDevices = [=](EGLint capacity, EGLDeviceEXT* devices, EGLint* count) -> EGLBoolean {
            list(capacity, devices, count);
            return !failsAtOnce && devices == nullptr;
        };
        EXPECT_EQ(failure(), QStringLiteral("EGL lists no device and has no surfaceless platform"));
    }
}

TEST_F(HeadlessContextTest, DeviceRemovedAfterTheCountIsNotTried) {
    listClientExtensions("");
    listDevices({{}, {}});
    const auto list = _egl.queryDevices;
    _egl.queryDevices = [=](EGLint capacity, EGLDeviceEXT* devices, EGLint* count) -> EGLBoolean {
        list(capacity, devices, count);
        *count = devices ? 1 : 2;
        return EGL_TRUE;
    };
    EXPECT_EQ(failureOnDevice("x"), QStringLiteral("EGL device 0: not 'x'"));
}

TEST_F(HeadlessContextTest, DevicesAreDescribedByTheirExtensionsAndNames) {
    listClientExtensions("EGL_MESA_platform_surfaceless");
    listDevices({{"EGL_MESA_device_software", {}},
                 {"EGL_EXT_device_query_name EGL_EXT_device_drm EGL_EXT_device_drm_render_node",
                  {{EGL_RENDERER_EXT, "Fast One"},
                   {EGL_DRM_DEVICE_FILE_EXT, "/dev/dri/card7"},
                   {EGL_DRM_RENDER_NODE_FILE_EXT, "/dev/dri/renderD7"}}},
                 {"EGL_EXT_device_query_name EGL_EXT_device_drm EGL_EXT_device_drm_render_node", {}},
                 {nullptr, {{EGL_RENDERER_EXT, "not to be asked for"}}}});
    EXPECT_EQ(failureOnDevice("none"),
              QStringLiteral("EGL device 0, software: not 'none'; "
                             "EGL device 1, Fast One, /dev/dri/card7, /dev/dri/renderD7: not 'none'; "
                             "EGL device 2: not 'none'; EGL device 3: not 'none'"))
        << "the surfaceless platform is not a device";
    _egl.queryDeviceString = {};
    EXPECT_EQ(failureOnDevice("none").section(';', 0, 0), QStringLiteral("EGL device 0: not 'none'"));
}

TEST_F(HeadlessContextTest, DisplaysThatCannotBeOpenedAreNamedWithTheError) {
    listClientExtensions("EGL_MESA_platform_surfaceless");
    listDevices({{"EGL_MESA_device_software", {}}, {}});
    std::vector<std::pair<EGLenum, void*>> asked;
    _egl.getPlatformDisplay = [&](EGLenum platform, void* native, const EGLint* attributes) -> EGLDisplay {
        EXPECT_EQ(attributes, nullptr);
        asked.emplace_back(platform, native);
        return native; // null for the surfaceless platform
    };
    _egl.initialize = [](EGLDisplay display) -> EGLBoolean {
        EXPECT_NE(display, EGL_NO_DISPLAY);
        return EGL_FALSE;
    };
    setError(EGL_NOT_INITIALIZED);
    EXPECT_EQ(failure(), QStringLiteral("EGL device 0, software: cannot be opened (EGL_NOT_INITIALIZED); "
                                        "EGL device 1: cannot be opened (EGL_NOT_INITIALIZED); "
                                        "surfaceless platform: cannot be opened (EGL_NOT_INITIALIZED)"));
    ASSERT_EQ(asked.size(), 3U);
    EXPECT_EQ(asked[0].first, EGLenum(EGL_PLATFORM_DEVICE_EXT));
    EXPECT_EQ(asked[1].first, EGLenum(EGL_PLATFORM_DEVICE_EXT));
    EXPECT_NE(asked[0].second, asked[1].second);
    EXPECT_EQ(asked[2], std::pair(EGLenum(EGL_PLATFORM_SURFACELESS_MESA), static_cast<void*>(nullptr)));
    _egl.getPlatformDisplay = {};
    EXPECT_EQ(failureOnDevice("software"),
              QStringLiteral("EGL device 0, software: cannot be opened (EGL_NOT_INITIALIZED); "
                             "EGL device 1: not 'software'"));
}

TEST_F(HeadlessContextTest, ErrorsOfEglHaveNames) {
    listSurfacelessOnly();
    _egl.initialize = [](EGLDisplay) { return EGLBoolean(EGL_FALSE); };
    const std::map<EGLint, const char*> names = {
        {EGL_SUCCESS, "no reason given"},
        {EGL_NOT_INITIALIZED, "EGL_NOT_INITIALIZED"},
        {EGL_BAD_ACCESS, "EGL_BAD_ACCESS: another window system's context may be current"},
        {EGL_BAD_ALLOC, "EGL_BAD_ALLOC"},
        {EGL_BAD_MATCH, "EGL_BAD_MATCH"},
        {EGL_BAD_CONFIG, "EGL_BAD_CONFIG"},
        {EGL_BAD_ATTRIBUTE, "EGL_BAD_ATTRIBUTE"},
        {EGL_CONTEXT_LOST, "EGL error 0x300e"}};
    for (const auto& [error, name] : names) {
        setError(error);
        EXPECT_EQ(failure(), QStringLiteral("surfaceless platform: cannot be opened (%1)").arg(name));
    }
}

TEST_F(HeadlessContextTest, WithoutDesktopOpenGLThereIsNoContext) {
    listSurfacelessOnly();
    setError(EGL_BAD_MATCH);
    std::vector<EGLenum> apis;
    _egl.bindAPI = [&](EGLenum api) -> EGLBoolean {
        apis.push_back(api);
        return api != EGL_OPENGL_API;
    };
    EXPECT_EQ(failure(), QStringLiteral("surfaceless platform: no desktop OpenGL (EGL_BAD_MATCH)"));
    EXPECT_THAT(apis, ElementsAre(EGLenum(EGL_OPENGL_API), EGLenum(EGL_OPENGL_ES_API)))
        << "the API of the thread is restored";
}

TEST_F(HeadlessContextTest, VersionsAreTriedFromTheHighestDown) {
    listSurfacelessOnly();
    setError(EGL_BAD_CONFIG);
    std::vector<std::vector<EGLint>> tried;
    _egl.createContext = [&](EGLDisplay, EGLConfig, EGLContext shared, const EGLint* attributes) {
        EXPECT_EQ(shared, EGL_NO_CONTEXT);
        std::vector<EGLint> list;
        for (; *attributes != EGL_NONE; ++attributes)
            list.push_back(*attributes);
        tried.push_back(list);
        return EGL_NO_CONTEXT;
    };
    OpenGLDeviceContext::HeadlessOptions debugging;
    debugging.debug = true;
    const QString problem = QStringLiteral("surfaceless platform: no core profile context (EGL_BAD_CONFIG)");
    const auto attributes = [](EGLint major, EGLint minor, EGLint debug) {
        return std::vector<EGLint>{EGL_CONTEXT_MAJOR_VERSION,       major,
                                   EGL_CONTEXT_MINOR_VERSION,       minor,
                                   EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                   EGL_CONTEXT_OPENGL_DEBUG,        debug};
    };
    EXPECT_EQ(failure(debugging), problem);
    EXPECT_THAT(tried, ElementsAre(attributes(4, 6, 1), attributes(4, 5, 1), attributes(4, 4, 1),
                                   attributes(4, 3, 1), attributes(3, 2, 1)));
    tried.clear();
    EXPECT_EQ(failure(), problem);
    ASSERT_EQ(tried.size(), 5U);
    EXPECT_EQ(tried[0], attributes(4, 6, 0));
}

TEST_F(HeadlessContextTest, LowerVersionIsUsedIfTheHighestFails) {
    listSurfacelessOnly();
    const EglFunctions real = EglFunctions::real();
    int tries = 0;
    _egl.createContext = [&](EGLDisplay display, EGLConfig config, EGLContext shared,
                             const EGLint* attributes) {
        return ++tries < 4 ? EGL_NO_CONTEXT : real.createContext(display, config, shared, attributes);
    };
    EXPECT_TRUE(GLFixture::makeContext({}));
    EXPECT_EQ(tries, 4);
}

// A context without a surface needs no configuration with surfaces.
TEST_F(HeadlessContextTest, ConfigurationIsOneOfOpenGLOrNone) {
    listSurfacelessOnly();
    setError(EGL_BAD_CONFIG);
    int configuration = 0;
    EGLint found = 1;
    _egl.chooseConfig = [&](EGLDisplay, const EGLint* attributes, EGLConfig* configs, EGLint size,
                            EGLint* count) -> EGLBoolean {
        EXPECT_THAT(std::vector<EGLint>(attributes, attributes + 5),
                    ElementsAre(EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE));
        EXPECT_EQ(size, 1);
        *count = found;
        if (found > 0)
            configs[0] = &configuration;
        return EGL_TRUE;
    };
    std::set<EGLConfig> used;
    _egl.createContext = [&](EGLDisplay, EGLConfig config, EGLContext, const EGLint*) {
        used.insert(config);
        return EGL_NO_CONTEXT;
    };
    failure();
    EXPECT_THAT(used, ElementsAre(static_cast<EGLConfig>(&configuration)));
    used.clear();
    found = 0;
    failure();
    EXPECT_THAT(used, ElementsAre(EGL_NO_CONFIG_KHR));
}

TEST_F(HeadlessContextTest, ContextThatCannotBeUsedWithoutASurfaceIsDestroyed) {
    listSurfacelessOnly();
    countContexts();
    _egl.makeCurrent = [](EGLDisplay, EGLSurface, EGLSurface, EGLContext) { return EGLBoolean(EGL_FALSE); };
    setError(EGL_BAD_ACCESS);
    EXPECT_EQ(failure(), QStringLiteral("surfaceless platform: the context cannot be used without a surface "
                                        "(EGL_BAD_ACCESS: another window system's context may be current)"));
    EXPECT_EQ(_contexts, 0);
}

TEST_F(HeadlessContextTest, ReleasedContextsAreDestroyed) {
    countContexts();
    auto first = GLFixture::makeContext({});
    auto second = GLFixture::makeContext({});
    EXPECT_EQ(_contexts, 2);
    first->makeCurrent();
    first.reset();
    EXPECT_EQ(_contexts, 1);
    second.reset();
    EXPECT_EQ(_contexts, 0);
}

TEST_F(HeadlessContextTest, SharedContextIsPassedToEglOnItsOwnDisplay) {
    const auto first = GLFixture::makeContext({});
    first->makeCurrent();
    const EGLContext handle = eglGetCurrentContext();
    const EGLDisplay itsDisplay = eglGetCurrentDisplay();
    const EglFunctions real = EglFunctions::real();
    int calls = 0;
    _egl.createContext = [&](EGLDisplay display, EGLConfig config, EGLContext shared,
                             const EGLint* attributes) {
        ++calls;
        EXPECT_EQ(shared, handle);
        EXPECT_EQ(display, itsDisplay);
        return real.createContext(display, config, shared, attributes);
    };
    OpenGLDeviceContext::HeadlessOptions options;
    options.shareWith = first;
    options.device = QStringLiteral("no such device"); // ignored: the device of the shared context is used
    EXPECT_TRUE(GLFixture::makeContext(options));
    EXPECT_GT(calls, 0);
    _egl.createContext = [](EGLDisplay, EGLConfig, EGLContext, const EGLint*) { return EGL_NO_CONTEXT; };
    setError(EGL_BAD_ALLOC);
    EXPECT_EQ(failure(options), QStringLiteral("the display of the context to share with: no core profile "
                                               "context (EGL_BAD_ALLOC)"));
}

TEST_F(HeadlessContextTest, NextCandidateIsUsedIfOneFails) {
    const EglFunctions real = EglFunctions::real();
    int tries = 0;
    listClientExtensions("EGL_MESA_platform_surfaceless");
    listDevices({{}, {}});
    _egl.getPlatformDisplay = [&](EGLenum platform, void* native, const EGLint* attributes) -> EGLDisplay {
        ++tries;
        return platform == EGL_PLATFORM_DEVICE_EXT ? EGL_NO_DISPLAY
                                                   : real.getPlatformDisplay(platform, native, attributes);
    };
    QString error = QStringLiteral("untouched");
    EXPECT_TRUE(OpenGLDeviceContext::createHeadless({}, error));
    EXPECT_EQ(error, QStringLiteral("untouched"));
    EXPECT_EQ(tries, 3);
}

TEST_F(HeadlessContextTest, ApiAndContextOfTheThreadAreRestored) {
    ForeignContext clients;
    ASSERT_TRUE(clients.makeCurrent());
    const EGLContext handle = eglGetCurrentContext();
    eglBindAPI(EGL_OPENGL_ES_API);
    const auto context = GLFixture::makeContext({});
    EXPECT_EQ(eglQueryAPI(), EGLenum(EGL_OPENGL_ES_API));
    eglBindAPI(EGL_OPENGL_API);
    EXPECT_EQ(eglGetCurrentContext(), handle);
}

TEST_F(HeadlessContextTest, MinVersionIsFourPointThree) {
    listSurfacelessOnly();
    _egl.glVersion = [] { return 42; };
    EXPECT_EQ(failure(), QStringLiteral("surfaceless platform: OpenGL 4.2 found, 4.3 or later needed"));
    ForeignContext context;
    context.makeCurrent();
    const MessageLog log;
    EXPECT_FALSE(OpenGLDeviceContext::current());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("OpenGL 4.2 is current, but OpenGL 4.3 or later is needed"));
    _egl.glVersion = [] { return 43; };
    EXPECT_TRUE(OpenGLDeviceContext::current()) << "the version is queried again";
    ForeignContext::doneCurrent();
    const auto headless = GLFixture::makeContext({});
    ASSERT_TRUE(headless);
    EXPECT_EQ(headless->version(), 43);
}

namespace {

/// The version and the extensions of a driver, and the features that a context uses there.
struct FeatureCase {
    const char* name;
    int version;
    std::set<std::string> extensions;
    bool wanted;
    bool usesDirectStateAccess;
    bool usesDrawParameters;

    friend void PrintTo(const FeatureCase& feature, std::ostream* out) { *out << feature.name; }
};

const char* const kDirectStateAccess = "GL_ARB_direct_state_access";
const char* const kDrawParameters = "GL_ARB_shader_draw_parameters";

const FeatureCase kFeatureCases[] = {
    {"Plain43", 43, {}, true, false, false},
    {"Plain44", 44, {}, true, false, false},
    {"Plain45", 45, {}, true, true, false},
    {"Plain46", 46, {}, true, true, true},
    {"Extension43", 43, {kDirectStateAccess}, true, true, false},
    {"Parameters43", 43, {kDrawParameters}, true, false, true},
    {"Parameters45", 45, {kDrawParameters}, true, true, true},
    {"Unwanted46", 46, {kDirectStateAccess, kDrawParameters}, false, false, false},
};

class FeaturesTest : public HeadlessContextTest, public testing::WithParamInterface<FeatureCase> {};

/// Returns: whether VelGL makes a buffer by glCreateBuffers, a function of direct state access.
bool createsBuffers() {
    static bool isCreated = false;
    isCreated = false;
    const PFNGLCREATEBUFFERSPROC before = glCreateBuffers;
    glCreateBuffers = [](GLsizei count, GLuint* names) {
        isCreated = true;
        glGenBuffers(count, names);
        glBindBuffer(GL_ARRAY_BUFFER, *names);
    };
    BufferObject buffer;
    EXPECT_TRUE(buffer.bind());
    buffer.unbind();
    glCreateBuffers = before;
    return isCreated;
}

std::string featureName(const testing::TestParamInfo<FeatureCase>& info) {
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Version, FeaturesTest, testing::ValuesIn(kFeatureCases), featureName);

TEST_P(FeaturesTest, ContextUsesTheFeaturesOfItsVersionAndExtensions) {
    _egl.glVersion = [] { return GetParam().version; };
    _egl.hasGLExtension = [](const char* name) { return GetParam().extensions.count(name) != 0; };
    OpenGLDeviceContext::HeadlessOptions options;
    options.directStateAccess = GetParam().wanted;
    options.drawParameters = GetParam().wanted;
    const auto context = GLFixture::makeContext(options);
    ASSERT_TRUE(context && context->makeCurrent());
    EXPECT_EQ(context->version(), GetParam().version);
    EXPECT_EQ(createsBuffers(), GetParam().usesDirectStateAccess);
    const std::unique_ptr<Program> program = commandProgram();
    const std::unique_ptr<DrawBuffers> row(triangleRow(2));
    Framebuffer picture(QSize(8, 4));
    picture.begin();
    const DrawHook hook;
    const AutoBinder binder(program.get());
    row->draw(0, 2);
    EXPECT_EQ(hook.calls().size(), GetParam().usesDrawParameters ? 1U : 2U);
}

} // namespace Atelier::Vel::Testing

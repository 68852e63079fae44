#pragma once

#include <epoxy/gl.h>

#include <ostream>

#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

/// A kind of driver that a test runs against.
struct DriverKind {
    const char* name;
    bool directStateAccess;
    bool drawParameters;

    friend void PrintTo(const DriverKind& kind, std::ostream* out) { *out << kind.name; }
};

constexpr DriverKind kDriverKinds[] = {
    {"Full", true, true},
    {"WithoutDirectStateAccess", false, true},
    {"WithoutDrawParameters", true, false},
};

/// A test that runs once for every kind of driver. In a file: `INSTANTIATE_FOR_DRIVERS(NameOfTheTest)`.
class FeatureFixture : public GLFixture, public ::testing::WithParamInterface<DriverKind> {
protected:
    /// Returns: whether the context uses draw parameters: the test allows them and the driver has them.
    static bool hasDrawParameters() {
        return GetParam().drawParameters &&
               (epoxy_gl_version() >= 46 || epoxy_has_gl_extension("GL_ARB_shader_draw_parameters"));
    }

    OpenGLDeviceContext::HeadlessOptions options() const override {
        OpenGLDeviceContext::HeadlessOptions options;
        options.debug = true;
        options.directStateAccess = GetParam().directStateAccess;
        options.drawParameters = GetParam().drawParameters;
        return options;
    }
};

inline std::string driverName(const ::testing::TestParamInfo<DriverKind>& info) {
    return info.param.name;
}

} // namespace Atelier::Vel::Testing

#define INSTANTIATE_FOR_DRIVERS(test)                                                                        \
    INSTANTIATE_TEST_SUITE_P(Driver, test, ::testing::ValuesIn(kDriverKinds), driverName)

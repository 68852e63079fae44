#pragma once

#include <memory>
#include <string>

#include <velgl/framebuffer.h>
#include <velgl/program.h>

#include "featurefixture.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

/// A test with framebuffers of 5 x 3 pixels.
class FramebufferFixture : public FeatureFixture {
protected:
    using Picture = Vel::Framebuffer;
    using Color = Picture::Color;
    using Depth = Picture::Depth;

    static constexpr int kWidth = 5;
    static constexpr int kHeight = 3;
    const QSize _size = {kWidth, kHeight};

    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
    }

    std::unique_ptr<Picture> made(const Picture::Options& options) {
        std::unique_ptr<Picture> picture = Picture::create(options, _error);
        EXPECT_TRUE(picture) << _error.toStdString();
        return picture;
    }

    /// Returns: a program for Framebuffer::paint(), whose fragment shader has that text behind its version.
    static std::unique_ptr<Program> painter(const QByteArray& fragmentShader) {
        QString error;
        auto program = Program::fromSource(Picture::coveringVertexShader(),
                                           "#version 430 core\n" + fragmentShader, error);
        EXPECT_TRUE(program) << error.toStdString();
        return program;
    }
    /// Returns: one that paints the place of a pixel, counted from the lower left: x, y, -1.5, 2.
    static std::unique_ptr<Program> placePainter() {
        return painter("out vec4 pixel;\n"
                       "void main() { pixel = vec4(floor(gl_FragCoord.xy), -1.5, 2.0); }\n");
    }

    QString _error;
};

} // namespace Atelier::Vel::Testing

#pragma once

#include <memory>

#include "renderer.h"
#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

/// A test with a context and a renderer in it.
class RendererFixture : public GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        QString error;
        _renderer = Tool::Renderer::create(error);
        ASSERT_TRUE(_renderer) << error.toStdString();
    }
    void TearDown() override {
        _renderer.reset();
        GLFixture::TearDown();
    }

    QImage rendered(GPUModel& model, const Tool::Scene& scene) {
        QString error;
        const QImage picture = _renderer->render(model, scene, error);
        EXPECT_FALSE(picture.isNull()) << error.toStdString();
        return picture;
    }

    std::unique_ptr<Tool::Renderer> _renderer;
};

} // namespace Atelier::Vel::Testing

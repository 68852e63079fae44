#pragma once

#include <functional>

#include <velgl/autobinder.h>
#include <velgl/drawbuffers.h>
#include <velgl/program.h>
#include <velgl/texturemanager.h>

#include "featurefixture.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

/// A test that draws rows of triangles with the program of the test scene.
class SceneFixture : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
        _program = sceneProgram();
        ASSERT_TRUE(_program);
    }
    void TearDown() override {
        TextureManager::Instance().setLoader({});
        _program.reset();
        FeatureFixture::TearDown();
    }

    /// Returns: the colours of the cells of a row after `draw`; black where nothing was drawn.
    QList<QColor> colorsAfter(int cells, const std::function<void()>& draw) const {
        constexpr int kCellSize = 8;
        Framebuffer picture(QSize(cells * kCellSize, kCellSize));
        picture.begin();
        {
            const AutoBinder binder(_program.get());
            draw();
        }
        const QImage pixels = picture.pixels();
        QList<QColor> colors;
        for (int cell = 0; cell < cells; ++cell)
            colors << pixels.pixelColor(cell * kCellSize + 2, kCellSize / 2);
        return colors;
    }
    QList<QColor> drawnColors(GPUModel& model, int cells) const {
        return colorsAfter(cells, [&] { model.draw(); });
    }
    QList<QColor> drawnColors(DrawBuffers& buffers, int cells, int first, int count) const {
        return colorsAfter(cells, [&] { buffers.draw(first, count); });
    }

    std::unique_ptr<Program> _program;
};

/// Returns: the colours as values, for comparison with the colours of a picture.
inline QList<QColor> opaque(std::initializer_list<Qt::GlobalColor> names) {
    QList<QColor> colors;
    for (const Qt::GlobalColor name : names)
        colors << QColor(name);
    return colors;
}

} // namespace Atelier::Vel::Testing

#include "glhooks.h"

#include <cstring>
#include <functional>
#include <vector>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>

#include "support/glfixture.h"
#include "testscene.h"

// The code in docs/velgl.md stands in these tests.
namespace Atelier::Vel::Testing {

class SnippetsOfTheDocumentationTest : public GLFixture {};

TEST_F(SnippetsOfTheDocumentationTest, DivideOpaqueAndTransparentCommands) {
    registerTestPlans();
    const std::unique_ptr<Program> program = sceneProgram();
    InstanceData glass = coloredMaterial(Qt::green);
    constexpr float kOpacity = 0.5F;
    glass.set(QStringLiteral("opacity"), &kOpacity, sizeof kOpacity);
    GPUModel model;
    model.add(
        triangleRow(2), 1,
        new InstanceDataCollection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red), glass}),
        new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({}), movedInstance({})}),
        0);

    Framebuffer picture(QSize(16, 8));
    picture.begin();
    const AutoBinder binder(program.get());
    std::vector<QColor> inTheMiddle; // of the second triangle, before each draw
    const DrawHook hook([&] { inTheMiddle.push_back(picture.pixels().pixelColor(10, 4)); });

    const auto isOpaque = [&](int drawable, int command) {
        const InstanceData& material = model.materials(drawable)->items()[command];
        float opacity = 0;
        std::memcpy(&opacity, material.value(QStringLiteral("opacity")).constData(), sizeof opacity);
        return opacity == 1;
    };
    DrawOptions first;
    first.filter = DrawFilter(model, isOpaque);
    DrawOptions second;
    second.filter = DrawFilter(model, std::not_fn(isOpaque));

    model.draw(first); // in each frame
    model.draw(second);

    EXPECT_THAT(inTheMiddle, testing::ElementsAre(QColor(Qt::black), QColor(Qt::black)));
    EXPECT_EQ(picture.pixels().pixelColor(2, 4), QColor(Qt::red));
    EXPECT_NE(picture.pixels().pixelColor(10, 4), QColor(Qt::black));
}

TEST_F(SnippetsOfTheDocumentationTest, ChangesAreDrawn) {
    registerTestPlans();
    const std::unique_ptr<Program> program = sceneProgram();
    GPUModel model;
    addRow(model, {Qt::red, Qt::green, Qt::blue});
    Framebuffer picture(QSize(24, 8));
    picture.begin();
    const AutoBinder binder(program.get());

    model.materials(0)->set(1, coloredMaterial(Qt::yellow));
    model.instances(0)->set(0, movedInstance({1, 0, 0}));
    model.drawable(0)->setVisibility(2, DrawBuffers::Visibility::Hidden);
    model.draw();

    EXPECT_EQ(picture.pixels().pixelColor(2, 4), QColor(Qt::black)) << "the first triangle was moved";
    EXPECT_EQ(picture.pixels().pixelColor(10, 4), QColor(Qt::yellow));
    EXPECT_EQ(picture.pixels().pixelColor(22, 1), QColor(Qt::black)) << "the third one is hidden";
}

} // namespace Atelier::Vel::Testing

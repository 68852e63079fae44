#include "filterfixture.h"

#include <velgl/gpumodel.h>

#include <functional>
#include <limits>

#include <QtCore/QPointer>

#include <gmock/gmock.h>

#include <velgl/vertexarrayobject.h>

#include "support/messagelog.h"

// Drawables that are removed from a model, between its draws and in the middle of them.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RemovalTest : public FilterFixture {
protected:
    // Adds a row whose texture is loaded by path.
    static DrawBuffers* addLoaded(GPUModel& model, const QString& path) {
        InstanceData material = coloredMaterial(Qt::white);
        material.setTexture(QStringLiteral("first"), path);
        DrawBuffers* row = triangleRow(1);
        model.add(row, 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
        return row;
    }
};

/// Calls a function when it is bound.
class HookedVertexArray : public VertexArrayObject {
public:
    explicit HookedVertexArray(std::function<void()> onBind) : _onBind(std::move(onBind)) {}
    bool bind() override {
        _onBind();
        return VertexArrayObject::bind();
    }

private:
    std::function<void()> _onBind;
};

} // namespace

INSTANTIATE_FOR_DRIVERS(RemovalTest);

TEST_P(RemovalTest, RemovedDrawableIsNeitherDrawnNorFoundAndFreesItsNames) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green}));
    drawnColors(model, 2);
    {
        const NameCount names;
        addRow(model, opaque({Qt::blue, Qt::yellow}));
        model.addMaterialName(1, 0, QStringLiteral("blue"));
        EXPECT_EQ(drawnColors(model, 2), opaque({Qt::blue, Qt::yellow}));
        const QPointer<DrawBuffers> row = model.drawable(1);
        EXPECT_TRUE(model.remove(1));
        EXPECT_FALSE(row);
        EXPECT_EQ(drawnColors(model, 2), opaque({Qt::red, Qt::green}));
        EXPECT_THAT(names.imbalance(), IsEmpty());
    }
    EXPECT_EQ(model.drawable(1), nullptr);
    EXPECT_EQ(model.materials(1), nullptr);
    EXPECT_EQ(model.instances(1), nullptr);
    EXPECT_EQ(model.key(1), 0U);
    EXPECT_TRUE(model.materialName(1, 0).isNull());
    EXPECT_EQ(model.drawableCount(), 2);
}

TEST_P(RemovalTest, OtherDrawablesKeepTheirNumbersAndFilters) {
    GPUModel model;
    addTextured(model, {Qt::red});
    addTextured(model, {Qt::green, Qt::red, Qt::green}, 5);
    const DrawFilter filter = filterOf({"1", "101"});
    const QList<QColor> filtered = opaque({Qt::green, Qt::black, Qt::green});
    EXPECT_EQ(drawnWith(model, 3, drawing(filterOf({"0", "101"}))), filtered);
    EXPECT_TRUE(model.remove(0));
    for (const DrawOrder order : kOrders)
        EXPECT_EQ(drawnWith(model, 3, drawing(filter, order)), filtered);
    EXPECT_EQ(model.key(1), 5U);
    EXPECT_EQ(model.add(triangleRow(1), 1, nullptr, nullptr, 0), 2);
    EXPECT_TRUE(model.isUsable());
    const GPUModel::Bounds bounds = model.bounds();
    EXPECT_EQ(bounds.minimum, QVector3D(-1, -1, 0));
    const DrawFilter made(model, [](int drawable, int) { return drawable == 1; });
    EXPECT_EQ(drawnWith(model, 3, drawing(made)), opaque({Qt::green, Qt::red, Qt::green}));
}

TEST_P(RemovalTest, MissingDrawableIsReportedOnce) {
    GPUModel model;
    model.setLabel(QStringLiteral("scene"));
    addRow(model, opaque({Qt::red}));
    const MessageLog log;
    for (const int number : {1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(model.remove(number));
    EXPECT_TRUE(model.remove(0));
    EXPECT_FALSE(model.remove(0)) << "it was removed before";
    model.setCommandBounds(0, {});
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Model 'scene' has no drawable 1"));
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::black}));
    EXPECT_FALSE(model.bounds().isValid);
    EXPECT_FALSE(model.commandBounds(0, 0).isValid);
}

TEST_P(RemovalTest, ClearedModelStartsAgain) {
    int loads = 0;
    std::weak_ptr<Texture> loaded;
    GPUModel model;
    model.setLabel(QStringLiteral("scene"));
    model.setTextureLoader([&](const QString& path) {
        ++loads;
        std::shared_ptr<Texture> texture = Texture::ofColor(QColor(path));
        loaded = texture;
        return texture;
    });
    const NameCount names;
    addLoaded(model, QStringLiteral("red"));
    addRow(model, opaque({Qt::black, Qt::black}));
    model.setRefill([](GPUModel&) { return true; });
    drawnColors(model, 1);
    EXPECT_FALSE(loaded.expired());
    model.clear();
    EXPECT_TRUE(loaded.expired()) << "the textures of the model are released";
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_FALSE(model.refill());
    EXPECT_EQ(model.label(), QStringLiteral("scene"));
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::black}));
    EXPECT_THAT(names.imbalance().filter(QStringLiteral("buffer")), IsEmpty());
    addLoaded(model, QStringLiteral("red"));
    EXPECT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    EXPECT_EQ(loads, 2) << "the loader stays";
    model.clear();
    model.clear();
}

TEST_P(RemovalTest, LoaderMayRemoveTheDrawableThatIsDrawn) {
    for (const bool isCleared : {false, true}) {
        GPUModel model;
        addRow(model, opaque({Qt::green}));
        const QPointer<DrawBuffers> row = addLoaded(model, QStringLiteral("red"));
        addRow(model, opaque({Qt::black, Qt::blue}));
        model.setTextureLoader([&](const QString&) {
            if (isCleared)
                model.clear();
            else
                EXPECT_TRUE(model.remove(1));
            EXPECT_TRUE(row) << "it lives until the draw has ended";
            EXPECT_EQ(model.drawable(1), nullptr);
            return Texture::ofColor(Qt::red);
        });
        const QList<QColor> expected =
            isCleared ? opaque({Qt::black, Qt::black}) : opaque({Qt::black, Qt::blue});
        EXPECT_EQ(drawnColors(model, 2), expected);
        EXPECT_FALSE(row);
        EXPECT_EQ(drawnColors(model, 2), expected);
    }
}

TEST_P(RemovalTest, LoaderMayAddAndClearInTheMiddleOfADraw) {
    GPUModel model;
    for (int i = 0; i < 3; ++i)
        addLoaded(model, QStringLiteral("red"));
    int rounds = 0;
    model.setTextureLoader([&](const QString&) {
        if (rounds++ == 0) {
            model.clear();
            for (int i = 0; i < 40; ++i)
                addRow(model, opaque({Qt::blue}));
        }
        return Texture::ofColor(Qt::red);
    });
    drawnColors(model, 1);
    EXPECT_EQ(model.drawableCount(), 40);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::blue}));
}

TEST_P(RemovalTest, VertexArrayMayRemoveItsDrawableWhileItIsBound) {
    for (const bool isCleared : {false, true}) {
        GPUModel model;
        addRow(model, opaque({Qt::green, Qt::green}));
        DrawBuffers* row = triangleRow(2);
        auto vao = QSharedPointer<HookedVertexArray>::create([&] {
            if (isCleared)
                model.clear();
            else
                model.remove(1);
        });
        vao->registerBO(QStringLiteral("va_Vertex"), row->VAO()->streams()[0].buffer, 3, GL_FLOAT);
        row->setVAO(vao);
        model.add(row, 1, nullptr, nullptr, 0);
        vao.reset();
        drawnColors(model, 2);
        EXPECT_EQ(model.drawable(1), nullptr);
        EXPECT_EQ(drawnColors(model, 2),
                  isCleared ? opaque({Qt::black, Qt::black}) : opaque({Qt::green, Qt::green}));
    }
}

TEST_P(RemovalTest, DrawInsideADrawIsLeftOutAndReportedOnce) {
    GPUModel model;
    model.setLabel(QStringLiteral("scene"));
    addLoaded(model, QStringLiteral("red"));
    model.setTextureLoader([&](const QString&) {
        model.draw();
        model.draw();
        return Texture::ofColor(Qt::red);
    });
    const MessageLog log;
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("Model 'scene' is not drawn by a function that one of its draws calls"));
}

TEST_P(RemovalTest, RefillMayRemoveWhatIsLost) {
    GPUModel model;
    addRow(model, opaque({Qt::red}));
    model.setRefill([](GPUModel& lost) {
        lost.clear();
        addRow(lost, opaque({Qt::blue}));
        return true;
    });
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    EXPECT_EQ(rowColor(model), QColor(Qt::blue));
    EXPECT_EQ(model.drawableCount(), 1);
    _context->makeCurrent();
}

} // namespace Atelier::Vel::Testing

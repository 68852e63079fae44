#include <epoxy/gl.h>

#include <velgl/idpass.h>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>

#include "clientstate.h"
#include "featurefixture.h"
#include "glfaults.h"
#include "glhooks.h"
#include "support/messagelog.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

class IdPassTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
    }

    std::unique_ptr<IdPass> made(int radius = 0, RenderState::Sides sides = RenderState::Sides::Both) {
        IdPass::Options options;
        options.instances = QStringLiteral("TestInstance");
        options.placement = QStringLiteral("placement");
        options.radius = radius;
        options.sides = sides;
        auto pass = IdPass::create(options, _error);
        EXPECT_TRUE(pass) << _error.toStdString();
        return pass;
    }

    std::string refused(const IdPass::Options& options) {
        QString error;
        EXPECT_FALSE(IdPass::create(options, error));
        return error.toStdString();
    }

    QString _error;
};

// A row of `cells` triangles with the right angle at the lower left of each cell, moved by `offset`.
void addMovedRow(GPUModel& model, int cells, const QVector3D& offset, int instanceCount = 1) {
    QList<InstanceData> instances;
    for (int cell = 0; cell < cells; ++cell)
        instances.append(movedInstance(offset));
    model.add(triangleRow(cells), instanceCount, nullptr,
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
}

// The row in a picture of `cells` squares of eight pixels.
IdPass::View rowView(int cells) {
    return {{}, {8 * cells, 8}};
}

std::string text(const IdPass::Hit& hit) {
    return QStringLiteral("%1 %2 %3").arg(hit.drawable).arg(hit.command).arg(hit.instance).toStdString();
}

const std::string kNothing = "-1 -1 -1";

} // namespace

INSTANTIATE_FOR_DRIVERS(IdPassTest);

TEST_P(IdPassTest, EveryPixelOfAPictureHasItsCommand) {
    GPUModel model;
    addMovedRow(model, 3, {});
    const auto pass = made();
    // What the picture itself shows.
    const auto program = commandProgram();
    Framebuffer picture({24, 8});
    picture.begin();
    DrawOptions options;
    options.program = program.get();
    model.draw(options);
    const QImage expected = picture.pixels();
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 24; ++x) {
            const IdPass::Hit hit = pass->pick(model, rowView(3), {x, y}, _error);
            const int red = qRed(expected.pixel(x, y));
            EXPECT_EQ(text(hit), red == 0 ? kNothing : "0 " + std::to_string(red / 10 - 1) + " 0")
                << x << ' ' << y;
            if (hit.isValid()) {
                EXPECT_EQ(hit.pixel, QPoint(x, y));
                EXPECT_FLOAT_EQ(hit.depth, 0.5F);
            }
        }
    EXPECT_TRUE(_error.isNull());
}

TEST_P(IdPassTest, DrawablesAreNumberedAndTheNearestToTheEyeIsHit) {
    GPUModel model;
    addMovedRow(model, 2, {0, 0, 0.5F});
    addMovedRow(model, 2, {0, 0, -0.5F});
    addMovedRow(model, 2, {1, 0, -0.75F}); // one cell further right
    const auto pass = made();
    EXPECT_EQ(text(pass->pick(model, rowView(2), {1, 6}, _error)), "1 0 0");
    EXPECT_FLOAT_EQ(pass->pick(model, rowView(2), {1, 6}, _error).depth, 0.25F);
    EXPECT_EQ(text(pass->pick(model, rowView(2), {9, 6}, _error)), "2 0 0");
}

TEST_P(IdPassTest, FilterLeavesOutWhatDoesNotPass) {
    GPUModel model;
    addMovedRow(model, 2, {0, 0, 0.5F});
    addMovedRow(model, 2, {0, 0, -0.5F});
    const auto pass = made();
    const DrawFilter first(model, [](int drawable, int /*command*/) { return drawable == 0; });
    const DrawFilter second(model, [](int /*drawable*/, int command) { return command == 1; });
    EXPECT_EQ(text(pass->pick(model, rowView(2), {1, 6}, _error, first)), "0 0 0");
    EXPECT_EQ(text(pass->pick(model, rowView(2), {1, 6}, _error, second)), kNothing);
    EXPECT_EQ(text(pass->pick(model, rowView(2), {9, 6}, _error, second)), "1 1 0");
}

TEST_P(IdPassTest, NumberOfTheInstanceIsThatOfTheCommand) {
    GPUModel model;
    addMovedRow(model, 1, {}, 3);
    const IdPass::Hit hit = made()->pick(model, rowView(1), {1, 6}, _error);
    EXPECT_EQ(hit.drawable, 0);
    EXPECT_THAT(hit.instance, testing::AllOf(testing::Ge(0), testing::Lt(3)));
}

TEST_P(IdPassTest, NearestPixelWithinTheRadiusIsHit) {
    GPUModel model;
    addMovedRow(model, 2, {});
    // In the upper row the triangles cover four pixels of eight, in the next one five.
    for (const int radius : {0, 1})
        EXPECT_EQ(text(made(radius)->pick(model, rowView(2), {6, 0}, _error)), kNothing);
    const IdPass::Hit right = made(2)->pick(model, rowView(2), {6, 0}, _error);
    EXPECT_EQ(text(right), "0 1 0");
    EXPECT_EQ(right.pixel, QPoint(8, 0));
    const IdPass::Hit left = made(2)->pick(model, rowView(2), {5, 0}, _error);
    EXPECT_EQ(text(left), "0 0 0");
    EXPECT_EQ(left.pixel, QPoint(4, 1));
}

TEST_P(IdPassTest, AmongPixelsAtTheSameDistanceTheNearestToTheEyeIsHit) {
    GPUModel model;
    addMovedRow(model, 1, {-1.125F, 0, 0.5F}); // ends left of the middle
    addMovedRow(model, 1, {1.125F, 0, -0.5F}); // begins right of it
    IdPass::View view{{}, {16, 8}};
    QVector<int> hits;
    for (int x = 0; x < 16; ++x)
        hits.append(made(0)->pick(model, view, {x, 7}, _error).drawable);
    const int gapStart = hits.indexOf(-1);
    const int gapEnd = hits.lastIndexOf(-1);
    ASSERT_GT(gapStart, 0);
    ASSERT_EQ((gapEnd - gapStart) % 2, 0) << "the gap has a middle";
    EXPECT_EQ(made(4)->pick(model, view, {(gapStart + gapEnd) / 2, 7}, _error).drawable, 1);
}

TEST_P(IdPassTest, OnlyPixelsOfTheViewportCount) {
    GPUModel model;
    addMovedRow(model, 1, {2, 0, 0}); // right of the view, and not in it
    EXPECT_EQ(text(made(5)->pick(model, rowView(1), {7, 6}, _error)), kNothing);
    GPUModel visible;
    addMovedRow(visible, 1, {});
    EXPECT_EQ(text(made(2)->pick(visible, rowView(1), {-2, 7}, _error)), "0 0 0");
    EXPECT_EQ(text(made(2)->pick(visible, rowView(1), {-3, 7}, _error)), kNothing);
    EXPECT_EQ(text(made(2)->pick(visible, {{}, {0, 0}}, {0, 0}, _error)), kNothing);
    EXPECT_EQ(text(made(2)->pick(visible, {{}, {-5, 4}}, {-3, 1}, _error)), kNothing);
    EXPECT_EQ(text(made(0)->pick(visible, rowView(1), {std::numeric_limits<int>::max(), 7}, _error)),
              kNothing);
    EXPECT_TRUE(_error.isNull());
}

TEST_P(IdPassTest, SidesThatAreNotAskedForAreNotHit) {
    GPUModel model;
    addMovedRow(model, 1, {});
    const QPoint place(1, 6);
    const bool isFront = made(0, RenderState::Sides::Front)->pick(model, rowView(1), place, _error).isValid();
    const bool isBack = made(0, RenderState::Sides::Back)->pick(model, rowView(1), place, _error).isValid();
    EXPECT_NE(isFront, isBack);
}

TEST_P(IdPassTest, ModelWithoutInstancesIsTakenAsItIs) {
    GPUModel model;
    model.add(triangleRow(1), 1, nullptr, nullptr, 0);
    IdPass::Options options;
    options.instances = QString();
    const auto pass = IdPass::create(options, _error);
    ASSERT_TRUE(pass) << _error.toStdString();
    EXPECT_EQ(text(pass->pick(model, rowView(1), {1, 6}, _error)), "0 0 0");
}

TEST_P(IdPassTest, MatrixMovesTheModel) {
    GPUModel model;
    addMovedRow(model, 1, {});
    QMatrix4x4 matrix;
    matrix.translate(1, 0);
    const auto pass = made();
    EXPECT_EQ(text(pass->pick(model, {matrix, {8, 8}}, {1, 6}, _error)), kNothing);
    EXPECT_EQ(text(pass->pick(model, {matrix, {8, 8}}, {5, 6}, _error)), "0 0 0");
}

// The code in docs/velgl.md stands in this test.
TEST_P(IdPassTest, HitNamesTheMaterialAndThePlace) {
    GPUModel model;
    addMovedRow(model, 2, {0, 0, -4});
    model.addMaterialName(0, 1, QStringLiteral("sand"));
    QMatrix4x4 projection;
    projection.perspective(90, 2, 1, 10);
    QMatrix4x4 view;
    view.rotate(10, 0, 0, 1);
    const QSize size(200, 100);
    const QPoint cursor(115, 60);
    QString error;
    const auto pass = made(2);
    const MessageLog log;

    const IdPass::Hit hit = pass->pick(model, {projection * view, size}, cursor, error);
    if (hit.isValid())
        qInfo("%s", qPrintable(model.materialName(hit.drawable, hit.command)));

    EXPECT_THAT(log.texts(QtInfoMsg), testing::ElementsAre("sand"));
    const QVector3D place((2 * float(hit.pixel.x()) + 1) / 200 - 1, 1 - (2 * float(hit.pixel.y()) + 1) / 100,
                          2 * hit.depth - 1);
    const QVector3D point = (projection * view).inverted().map(place);
    EXPECT_NEAR(point.z(), -4, 1e-3);
    // The ray through the pixel, at the distance of the triangle.
    const QVector3D expected = view.inverted().map(QVector3D(place.x() * 8, place.y() * 4, -4));
    EXPECT_LT((point - expected).length(), 1e-3);
}

TEST_P(IdPassTest, StateOfTheClientIsUnchangedAndChangesNothing) {
    GPUModel model;
    addMovedRow(model, 1, {});
    const auto pass = made(2);
    const BusyClient client;
    const BusyPainter painter;
    const ClientState before = ClientState::captured();
    EXPECT_EQ(text(pass->pick(model, rowView(1), {1, 6}, _error)), "0 0 0");
    EXPECT_EQ(text(made(1)->pick(model, rowView(1), {1, 6}, _error)), "0 0 0");
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_P(IdPassTest, EveryPassIsOneDraw) {
    GPUModel model;
    addMovedRow(model, 4, {});
    const auto pass = made(2);
    pass->pick(model, rowView(4), {1, 6}, _error);
    const DrawHook draws;
    pass->pick(model, rowView(4), {1, 6}, _error);
    EXPECT_EQ(draws.calls().size(), hasDrawParameters() ? 1U : 4U);
}

TEST_P(IdPassTest, ImpossibleOptionsAreRefusedWithTheCause) {
    IdPass::Options options;
    options.instances = QStringLiteral("Lost");
    EXPECT_EQ(refused(options), "The plan 'Lost' is not registered");
    options.instances = QStringLiteral("TestInstance");
    options.placement = QStringLiteral("elsewhere");
    EXPECT_EQ(refused(options), "The plan 'TestInstance' has no matrix 'elsewhere'");
    options.instances = QStringLiteral("TestMaterial");
    options.placement = QStringLiteral("color");
    EXPECT_EQ(refused(options), "The plan 'TestMaterial' has no matrix 'color'");
    options.instances = QString();
    for (const int radius : {-1, 65}) {
        options.radius = radius;
        EXPECT_EQ(refused(options), "The radius " + std::to_string(radius) + " is not from 0 to 64");
    }
    options.radius = 64;
    EXPECT_TRUE(IdPass::create(options, _error)) << _error.toStdString();
}

TEST_P(IdPassTest, FailureOfTheDriverIsTheCause) {
    IdPass::Options options;
    options.instances = QString();
    glDisable(GL_DEBUG_OUTPUT);
    {
        const FaultyDriver driver(GLFault::NoFramebufferMemory);
        EXPECT_THAT(refused(options), testing::StartsWith("A framebuffer of 5 x 5 pixels cannot be made"));
    }
    {
        const FaultyDriver driver(GLFault::NoPrograms);
        EXPECT_THAT(refused(options), testing::StartsWith("Linking: "));
    }
    while (glGetError() != GL_NO_ERROR) {
    }
    glEnable(GL_DEBUG_OUTPUT);
}

TEST_P(IdPassTest, OtherContextsHitNothing) {
    GPUModel model;
    addMovedRow(model, 1, {});
    const auto pass = made();
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    watchMessages();
    EXPECT_FALSE(pass->pick(model, rowView(1), {1, 6}, _error).isValid());
    EXPECT_EQ(_error, "The framebuffer belongs to a context that does not share with the current one");
    unrelated->doneCurrent();
    EXPECT_FALSE(pass->pick(model, rowView(1), {1, 6}, _error).isValid());
    EXPECT_EQ(_error, "No OpenGL context is current");
    _context->makeCurrent();
}

} // namespace Atelier::Vel::Testing

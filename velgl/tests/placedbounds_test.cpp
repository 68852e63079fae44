#include <velgl/gpumodel.h>

#include <limits>
#include <random>

#include <QtGui/QMatrix4x4>

#include <gtest/gtest.h>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

// The boxes that a client gives to a model, and the box of the model in its places. No test needs OpenGL.
namespace Atelier::Vel::Testing {

namespace {

using Bounds = GPUModel::Bounds;
using Visibility = DrawBuffers::Visibility;

const QString kMatrix = QStringLiteral("ModelMatrix");

class PlacedBoundsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        auto* plan = new InstanceDataPlan(QStringLiteral("PlacedInstance"));
        plan->addMember(InstanceDataPlan::DataType::Float, QStringLiteral("weight"));
        plan->addMember(InstanceDataPlan::DataType::Mat4, kMatrix);
        plan->addMember(InstanceDataPlan::DataType::Mat4, QStringLiteral("other"));
        InstanceDataRegistry::Instance().registerPlan(plan);
    }

    static DrawBuffers* newBuffers(int commands) {
        auto* buffers = new DrawBuffers;
        const QVector<DrawElementsIndirectCommand> list(commands, {3, 1, 0, 0, 0});
        buffers->setDrawElementsIndirectCommands(list.constData(), list.size());
        return buffers;
    }
    static InstanceData placed(const QMatrix4x4& matrix, const QString& member = kMatrix) {
        InstanceData instance(QStringLiteral("PlacedInstance"));
        instance.set(member, matrix.constData(), 16 * sizeof(float));
        return instance;
    }
    static InstanceData movedBy(float x) {
        QMatrix4x4 matrix;
        matrix.translate(x, 0, 0);
        return placed(matrix);
    }
    static InstanceDataCollection* newInstances(const QList<InstanceData>& items) {
        return new InstanceDataCollection(QStringLiteral("PlacedInstance"), items);
    }
    // A box from `left` to `left + 1`, the same on each axis.
    static Bounds unitBox(float left) {
        return {QVector3D(left, left, left), QVector3D(left + 1, left + 1, left + 1), true};
    }
    void expectX(float minimum, float maximum, const char* what) {
        const Bounds bounds = _model.placedBounds();
        EXPECT_TRUE(bounds.isValid) << what;
        EXPECT_EQ(bounds.minimum.x(), minimum) << what;
        EXPECT_EQ(bounds.maximum.x(), maximum) << what;
    }

    GPUModel _model;
};

} // namespace

TEST_F(PlacedBoundsTest, BoxesBelongToTheirCommands) {
    _model.add(newBuffers(3), 1, nullptr, nullptr, 0);
    _model.add(newBuffers(1), 1, nullptr, nullptr, 0);
    EXPECT_FALSE(_model.commandBounds(0, 0).isValid);
    EXPECT_FALSE(_model.placedBounds().isValid);
    _model.setCommandBounds(0, {unitBox(1), unitBox(4)});
    EXPECT_EQ(_model.commandBounds(0, 1).minimum, QVector3D(4, 4, 4));
    EXPECT_EQ(_model.commandBounds(0, 1).maximum, QVector3D(5, 5, 5));
    EXPECT_TRUE(_model.commandBounds(0, 1).isValid);
    for (const int command : {-1, 2, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(_model.commandBounds(0, command).isValid) << command;
    for (const int drawable : {-1, 1, 2, std::numeric_limits<int>::max()})
        EXPECT_FALSE(_model.commandBounds(drawable, 0).isValid) << drawable;
    expectX(1, 5, "both");
    _model.setCommandBounds(1, {unitBox(7)});
    expectX(1, 8, "of both drawables");
    _model.setCommandBounds(0, {});
    expectX(7, 8, "the second drawable");
}

TEST_F(PlacedBoundsTest, BoxesThatAreNoneAreInvalid) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const Bounds bad[] = {{{0, 0, 0}, {1, 1, 1}, false},       {{2, 0, 0}, {1, 1, 1}, true},
                          {{0, 2, 0}, {1, 1, 1}, true},        {{0, 0, 2}, {1, 1, 1}, true},
                          {{nan, 0, 0}, {1, 1, 1}, true},      {{0, 0, 0}, {1, nan, 1}, true},
                          {{0, 0, 0}, {1, 1, infinity}, true}, {{-infinity, 0, 0}, {1, 1, 1}, true}};
    _model.add(newBuffers(2), 1, nullptr, nullptr, 0);
    for (const Bounds& box : bad) {
        _model.setCommandBounds(0, {box, unitBox(3)});
        EXPECT_FALSE(_model.commandBounds(0, 0).isValid);
        expectX(3, 4, "the other one");
    }
    _model.setCommandBounds(0, {{{2, 2, 2}, {2, 2, 2}, true}});
    expectX(2, 2, "a point is a box");
}

TEST_F(PlacedBoundsTest, BoxesAreTransformedByTheirInstances) {
    QMatrix4x4 turned;
    turned.translate(10, 20, 30);
    turned.rotate(90, 0, 0, 1);
    turned.scale(2, 3, 4);
    _model.add(newBuffers(1), 1, nullptr, newInstances({placed(turned)}), 0);
    _model.setCommandBounds(0, {{{1, 1, 1}, {2, 3, 4}, true}});
    const Bounds bounds = _model.placedBounds();
    EXPECT_TRUE(qFuzzyCompare(bounds.minimum, QVector3D(1, 22, 34)));
    EXPECT_TRUE(qFuzzyCompare(bounds.maximum, QVector3D(7, 24, 46)));
}

TEST_F(PlacedBoundsTest, IdentityGivesTheSameBits) {
    const Bounds box{{-0.1F, 1e-30F, 3e30F}, {0.3F, 0.7F, 3.1e30F}, true};
    _model.add(newBuffers(1), 1, nullptr, newInstances({placed(QMatrix4x4())}), 0);
    _model.setCommandBounds(0, {box});
    EXPECT_EQ(_model.placedBounds().minimum, box.minimum);
    EXPECT_EQ(_model.placedBounds().maximum, box.maximum);
}

TEST_F(PlacedBoundsTest, TransformedCornersLieInTheBox) {
    std::mt19937 random(12);
    std::uniform_real_distribution<float> number(-3, 3);
    for (int round = 0; round < 200; ++round) {
        QMatrix4x4 matrix;
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                matrix(row, column) = number(random);
        Bounds box{{number(random), number(random), number(random)}, {}, true};
        box.maximum = box.minimum + QVector3D(number(random) + 3, number(random) + 3, number(random) + 3);
        GPUModel model;
        model.add(newBuffers(1), 1, nullptr, newInstances({placed(matrix)}), 0);
        model.setCommandBounds(0, QVector<Bounds>(1, box)); // GCC warns of a list here
        const Bounds bounds = model.placedBounds();
        QVector3D smallest(1e9F, 1e9F, 1e9F);
        QVector3D largest = -smallest;
        for (int corner = 0; corner < 8; ++corner) {
            const QVector3D at((corner & 1) != 0 ? box.maximum.x() : box.minimum.x(),
                               (corner & 2) != 0 ? box.maximum.y() : box.minimum.y(),
                               (corner & 4) != 0 ? box.maximum.z() : box.minimum.z());
            const QVector3D to = matrix.map(at);
            for (int axis = 0; axis < 3; ++axis) {
                smallest[axis] = std::min(smallest[axis], to[axis]);
                largest[axis] = std::max(largest[axis], to[axis]);
            }
        }
        EXPECT_LT((bounds.minimum - smallest).length(), 1e-4F);
        EXPECT_LT((bounds.maximum - largest).length(), 1e-4F);
    }
}

TEST_F(PlacedBoundsTest, FollowsInstancesVisibilityCommandsAndDrawables) {
    _model.add(newBuffers(2), 1, nullptr, newInstances({movedBy(0), movedBy(10)}), 0);
    _model.setCommandBounds(0, {unitBox(0), unitBox(0)});
    expectX(0, 11, "as added");
    expectX(0, 11, "unchanged");
    _model.instances(0)->set(1, movedBy(20));
    expectX(0, 21, "another matrix");
    _model.drawable(0)->setVisibility(1, Visibility::Hidden);
    expectX(0, 1, "the second command is hidden");
    _model.drawable(0)->setVisibility(0, Visibility::Hidden);
    EXPECT_FALSE(_model.placedBounds().isValid) << "all are hidden";
    _model.drawable(0)->setVisibility(1, Visibility::Shown);
    expectX(20, 21, "the second command is shown again");
    _model.setCommandBounds(0, {unitBox(0), unitBox(5)});
    expectX(25, 26, "another box");
    _model.add(newBuffers(1), 1, nullptr, nullptr, 0);
    _model.setCommandBounds(1, {unitBox(-4)});
    expectX(-4, 26, "a further drawable");
    EXPECT_TRUE(_model.remove(0));
    expectX(-4, -3, "one is removed");
    const DrawElementsIndirectCommand nothing[] = {{0, 1, 0, 0, 0}, {3, 0, 0, 0, 0}};
    for (const DrawElementsIndirectCommand& command : nothing) {
        _model.drawable(1)->setDrawElementsIndirectCommands(&command, 1);
        EXPECT_FALSE(_model.placedBounds().isValid) << "a command that draws nothing";
    }
    _model.clear();
    EXPECT_FALSE(_model.placedBounds().isValid);
}

TEST_F(PlacedBoundsTest, EachInstanceOfACommandCounts) {
    _model.add(newBuffers(2), 3, nullptr,
               newInstances({movedBy(1), movedBy(2), movedBy(3), movedBy(100), movedBy(-50)}), 0);
    _model.setCommandBounds(0, {unitBox(0)});
    expectX(1, 4, "the instances of the first command");
    _model.setCommandBounds(0, {unitBox(0), unitBox(0)});
    expectX(-50, 101, "one instance is missing");
    _model.instances(0)->set(4, InstanceData());
    expectX(1, 101, "one has no matrix");
    _model.drawable(0)->setVisibility(1, Visibility::Hidden);
    expectX(1, 4, "the second command is hidden");
}

TEST_F(PlacedBoundsTest, MatrixIsFoundByItsMember) {
    InstanceData both = movedBy(3);
    QMatrix4x4 other;
    other.translate(9, 0, 0);
    both.set(QStringLiteral("other"), other.constData(), 16 * sizeof(float));
    _model.add(newBuffers(1), 1, nullptr, newInstances({both}), 0);
    _model.setCommandBounds(0, {unitBox(0)});
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(_model.placedBounds(QStringLiteral("other")).minimum.x(), 9);
        EXPECT_EQ(_model.placedBounds().minimum.x(), 3);
        EXPECT_EQ(_model.placedBounds(QStringLiteral("weight")).minimum.x(), 0) << "it is no matrix";
        EXPECT_EQ(_model.placedBounds(QStringLiteral("unknown")).minimum.x(), 0);
    }
}

TEST_F(PlacedBoundsTest, WithoutAPlanBoxesAreTakenAsTheyAre) {
    static int count = 0;
    auto plan = std::make_unique<InstanceDataPlan>(QStringLiteral("LatePlacedPlan%1").arg(count++));
    plan->addMember(InstanceDataPlan::DataType::Mat4, kMatrix);
    _model.add(newBuffers(1), 1, nullptr, new InstanceDataCollection(plan->name(), {movedBy(6)}), 0);
    _model.setCommandBounds(0, {unitBox(0)});
    expectX(0, 1, "without a plan");
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    expectX(6, 7, "with the plan");
}

TEST_F(PlacedBoundsTest, PlacesThatAreNotFiniteDoNotCount) {
    _model.add(newBuffers(2), 1, nullptr,
               newInstances({movedBy(std::numeric_limits<float>::infinity()), movedBy(2)}), 0);
    _model.setCommandBounds(0, {unitBox(0), unitBox(0)});
    expectX(2, 3, "infinite");
    _model.instances(0)->set(0, movedBy(std::numeric_limits<float>::quiet_NaN()));
    expectX(2, 3, "not a number");
}

} // namespace Atelier::Vel::Testing

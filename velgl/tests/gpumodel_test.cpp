#include <velgl/gpumodel.h>

#include <algorithm>
#include <limits>
#include <random>

#include <QtCore/QMap>
#include <QtCore/QPointer>

#include <gtest/gtest.h>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Testing {

namespace {

InstanceDataCollection* newCollection(const QString& name) {
    return new InstanceDataCollection(name, {});
}

} // namespace

TEST(GPUModelTest, DrawablesAreNumberedInOrderOfAddition) {
    GPUModel model;
    EXPECT_EQ(model.drawableCount(), 0);
    auto* first = new DrawBuffers;
    auto* second = new DrawBuffers;
    EXPECT_EQ(model.add(first, 1, nullptr, newCollection(QStringLiteral("i")), 5), 0);
    EXPECT_EQ(model.add(second, 1, newCollection(QStringLiteral("m")), nullptr, quint64(1) << 40), 1);
    EXPECT_EQ(model.drawableCount(), 2);
    EXPECT_EQ(model.drawable(0), first);
    EXPECT_EQ(model.drawable(1), second);
    EXPECT_EQ(model.materials(0), nullptr);
    EXPECT_EQ(model.instances(0)->name(), QStringLiteral("i"));
    EXPECT_EQ(model.materials(1)->name(), QStringLiteral("m"));
    EXPECT_EQ(model.instances(1), nullptr);
    EXPECT_EQ(model.key(0), 5U);
    EXPECT_EQ(model.key(1), quint64(1) << 40);
}

TEST(GPUModelTest, OwnsItsDrawables) {
    const QPointer<DrawBuffers> buffers = new DrawBuffers;
    {
        GPUModel model;
        model.add(buffers, 1, nullptr, nullptr, 0);
        EXPECT_TRUE(buffers);
    }
    EXPECT_FALSE(buffers);
}

TEST(GPUModelTest, TakesDrawablesFromTheirParents) {
    GPUModel model;
    {
        QObject parent;
        model.add(new DrawBuffers(&parent), 1, nullptr, nullptr, 0);
    }
    EXPECT_EQ(model.drawable(0)->parent(), nullptr);
}

TEST(GPUModelTest, NullDrawableIsRefusedAndItsCollectionsAreFreed) {
    GPUModel model;
    EXPECT_EQ(
        model.add(nullptr, 1, newCollection(QStringLiteral("m")), newCollection(QStringLiteral("i")), 0), -1);
    EXPECT_EQ(model.drawableCount(), 0);
}

TEST(GPUModelTest, DrawableIsAddedOnce) {
    GPUModel model;
    auto* buffers = new DrawBuffers;
    model.add(buffers, 1, nullptr, nullptr, 0);
    EXPECT_EQ(model.add(buffers, 1, nullptr, nullptr, 0), -1);
    EXPECT_EQ(model.drawableCount(), 1);
}

TEST(GPUModelTest, NamesBelongToDrawableAndCommand) {
    GPUModel model;
    model.add(new DrawBuffers, 1, nullptr, nullptr, 0);
    model.add(new DrawBuffers, 1, nullptr, nullptr, 1);
    model.addMaterialName(0, 0, QStringLiteral("red"));
    model.addMaterialName(1, 0, QStringLiteral("green"));
    model.addMaterialName(0, 3, QStringLiteral("blue"));
    model.addObjectName(0, 0, QStringLiteral("cube"));
    EXPECT_EQ(model.materialName(0, 0), QStringLiteral("red"));
    EXPECT_EQ(model.materialName(1, 0), QStringLiteral("green"));
    EXPECT_EQ(model.materialName(0, 3), QStringLiteral("blue"));
    EXPECT_TRUE(model.materialName(0, 1).isNull());
    EXPECT_EQ(model.objectName(0, 0), QStringLiteral("cube"));
    EXPECT_TRUE(model.objectName(1, 0).isNull());
}

TEST(GPUModelTest, NamesComeInAnyOrder) {
    GPUModel model;
    model.add(new DrawBuffers, 1, nullptr, nullptr, 0);
    QMap<int, QString> expected;
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        const int command = static_cast<int>(random() % 14) - 2;
        const QString name = random() % 4 == 0 ? QString() : QString::number(i);
        model.addMaterialName(0, command, name);
        expected[command] = name;
        for (int other = -3; other < 13; ++other) {
            ASSERT_EQ(model.materialName(0, other), expected.value(other));
            ASSERT_EQ(model.materialName(0, other).isNull(), expected.value(other).isNull());
        }
    }
    model.addObjectName(0, std::numeric_limits<int>::max(), QStringLiteral("last"));
    EXPECT_EQ(model.objectName(0, std::numeric_limits<int>::max()), QStringLiteral("last"));
}

TEST(GPUModelTest, NumbersOutOfRangeReturnNothing) {
    GPUModel model;
    for (const int number : {-1, 0, 1}) {
        model.addMaterialName(number, 0, QStringLiteral("red"));
        model.addObjectName(number, 0, QStringLiteral("cube"));
        EXPECT_EQ(model.drawable(number), nullptr);
        EXPECT_EQ(model.materials(number), nullptr);
        EXPECT_EQ(model.instances(number), nullptr);
        EXPECT_EQ(model.key(number), 0U);
        EXPECT_TRUE(model.materialName(number, 0).isNull());
        EXPECT_TRUE(model.objectName(number, 0).isNull());
    }
}

TEST(GPUModelTest, InstanceCountMultipliesThatOfEachCommand) {
    const DrawElementsIndirectCommand commands[] = {{3, 1, 0, 0, 0}, {6, 5, 3, 4, 2}, {9, 0, 0, 0, 0}};
    for (const int times : {2, 1, 0, -1}) {
        GPUModel model;
        auto* buffers = new DrawBuffers;
        buffers->setDrawElementsIndirectCommands(commands, 3);
        model.add(buffers, times, nullptr, nullptr, 0);
        const QVector<DrawElementsIndirectCommand> multiplied = buffers->drawElementsIndirectCommands();
        ASSERT_EQ(multiplied.size(), 3);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(multiplied[i].count, commands[i].count);
            EXPECT_EQ(multiplied[i].instanceCount, commands[i].instanceCount * unsigned(std::max(times, 0)));
            EXPECT_EQ(multiplied[i].firstIndex, commands[i].firstIndex);
            EXPECT_EQ(multiplied[i].baseVertex, commands[i].baseVertex);
            EXPECT_EQ(multiplied[i].baseInstance, commands[i].baseInstance);
        }
    }
}

TEST(GPUModelTest, VertexArrayWithoutALabelGetsTheNumberOfItsDrawable) {
    GPUModel model;
    QStringList labels;
    for (const char* label : {"", "mine", ""}) {
        auto* buffers = new DrawBuffers;
        buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
        buffers->VAO()->setLabel(QString::fromLatin1(label));
        model.add(buffers, 1, nullptr, nullptr, 0);
        labels << buffers->VAO()->label();
    }
    EXPECT_EQ(labels, (QStringList{"drawable 0", "mine", "drawable 2"}));
}

TEST(GPUModelTest, NullNameCountsAsNone) {
    GPUModel model;
    model.add(new DrawBuffers, 1, nullptr, nullptr, 0);
    model.addObjectName(0, 0, QString());
    model.addObjectName(0, 1, QStringLiteral("cube"));
    model.addObjectName(0, 2, QString());
    model.addObjectName(0, 3, QStringLiteral(""));
    EXPECT_TRUE(model.objectName(0, 0).isNull());
    EXPECT_EQ(model.objectName(0, 1), QStringLiteral("cube"));
    EXPECT_TRUE(model.objectName(0, 2).isNull());
    EXPECT_FALSE(model.objectName(0, 3).isNull());
    model.addObjectName(0, 1, QString());
    EXPECT_TRUE(model.objectName(0, 1).isNull());
}

TEST(GPUModelTest, EmptyModelHasNoBounds) {
    GPUModel model;
    EXPECT_FALSE(model.bounds().isValid);
    model.draw();
}

} // namespace Atelier::Vel::Testing

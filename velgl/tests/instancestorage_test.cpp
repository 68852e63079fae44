#include "glfaults.h"

#include <velgl/instancedatacollection.h>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "featurefixture.h"
#include "support/messagelog.h"
#include "testscene.h"

// The storage buffers of collections.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using DataType = InstanceDataPlan::DataType;

constexpr GLuint kPoint = 3;
constexpr int kStride = 32;

/// Returns: the name of a plan that is not registered. It is new in each call, because plans outlive tests.
QString freshPlanName() {
    static int count = 0;
    return QStringLiteral("FreshPlan%1").arg(count++);
}

/// Two materials of the plan "TestMaterial", 32 bytes each.
class InstanceStorageTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
    }

    static QByteArray withZeros(const QByteArray& packed, int items) {
        return packed + QByteArray(items * kStride - packed.size(), '\0');
    }
    static GLuint boundName() {
        GLint name = 0;
        glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, kPoint, &name);
        return GLuint(name);
    }

    InstanceDataCollection _materials{QStringLiteral("TestMaterial"),
                                      {coloredMaterial(Qt::red), coloredMaterial(Qt::green)}};
};

} // namespace

INSTANTIATE_FOR_DRIVERS(InstanceStorageTest);

TEST_P(InstanceStorageTest, HoldsTheItemsAndZerosUpToTheLargestCount) {
    const QByteArray packed = _materials.packed();
    ASSERT_EQ(packed.size(), 2 * kStride);
    ASSERT_TRUE(_materials.bindStorage(kPoint, 1));
    const GLuint name = boundName();
    EXPECT_EQ(_materials.readBack(), packed);
    ASSERT_TRUE(_materials.bindStorage(kPoint, 2));
    EXPECT_EQ(_materials.readBack(), packed);
    ASSERT_TRUE(_materials.bindStorage(kPoint, 3));
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 3));
    ASSERT_TRUE(_materials.bindStorage(kPoint, 5));
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 5));
    ASSERT_TRUE(_materials.bindStorage(kPoint, 4));
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 5)) << "the buffer does not shrink";
    EXPECT_EQ(boundName(), name) << "the binding keeps the same buffer";
}

TEST_P(InstanceStorageTest, GrowsInEachGroupOfContexts) {
    const QByteArray packed = _materials.packed();
    ASSERT_TRUE(_materials.bindStorage(kPoint));
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    ASSERT_TRUE(_materials.bindStorage(kPoint, 6));
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 6));
    _context->makeCurrent();
    ASSERT_TRUE(_materials.bindStorage(kPoint, 4));
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 4));
    unrelated->makeCurrent();
    EXPECT_EQ(_materials.readBack(), withZeros(packed, 6));
    _context->makeCurrent();
}

TEST_P(InstanceStorageTest, PlanMayBeRegisteredAfterTheFirstUse) {
    auto plan = std::make_unique<InstanceDataPlan>(freshPlanName());
    plan->addMember(DataType::UInt, QStringLiteral("number"));
    InstanceData item;
    item.set(QStringLiteral("number"), "abcd", 4);
    InstanceDataCollection collection(plan->name(), {item});
    EXPECT_FALSE(collection.bindStorage(kPoint, 2));
    EXPECT_TRUE(collection.readBack().isEmpty());
    EXPECT_EQ(boundName(), 0U);
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    EXPECT_EQ(collection.readBack(), QByteArray("abcd"));
    EXPECT_TRUE(collection.bindStorage(kPoint, 2));
    EXPECT_EQ(collection.readBack(), QByteArray("abcd\0\0\0\0", 8));
}

TEST_P(InstanceStorageTest, PlanWithoutValuesHasNoStorage) {
    auto plan = std::make_unique<InstanceDataPlan>(freshPlanName());
    plan->addMember(DataType::Texture, QStringLiteral("map"));
    InstanceDataCollection collection(plan->name(), {InstanceData()});
    InstanceDataRegistry::Instance().registerPlan(plan.release());
    EXPECT_FALSE(collection.bindStorage(kPoint, 1));
    EXPECT_TRUE(collection.readBack().isEmpty());
}

TEST_P(InstanceStorageTest, StorageWithoutItemsHoldsZeros) {
    InstanceDataCollection none(QStringLiteral("TestMaterial"), {});
    EXPECT_FALSE(none.bindStorage(kPoint));
    EXPECT_FALSE(none.bindStorage(kPoint, -1));
    EXPECT_TRUE(none.bindStorage(kPoint, 1));
    EXPECT_EQ(none.readBack(), QByteArray(kStride, '\0'));
}

TEST_P(InstanceStorageTest, NothingIsBoundUntilMemoryIsAvailable) {
    const MessageLog log;
    const QByteArray packed = _materials.packed();
    const QString warning = QStringLiteral("Storage 'TestMaterial' could not be filled (GL_OUT_OF_MEMORY)");
    for (const GLFault fault : {GLFault::NoBufferNames, GLFault::NoBufferMemory}) {
        const FaultyDriver driver(fault);
        EXPECT_FALSE(_materials.bindStorage(kPoint));
        EXPECT_FALSE(_materials.bindStorage(kPoint));
        EXPECT_TRUE(_materials.readBack().isEmpty());
    }
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(warning));
    EXPECT_EQ(boundName(), 0U);
    EXPECT_TRUE(_materials.bindStorage(kPoint));
    {
        const FaultyDriver driver(GLFault::NoBufferMemory);
        EXPECT_TRUE(_materials.bindStorage(kPoint, 2)) << "the buffer is large enough";
        EXPECT_FALSE(_materials.bindStorage(kPoint, 3));
    }
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(warning, warning)) << "there was a success in between";
    EXPECT_TRUE(_materials.bindStorage(kPoint, 1));
    EXPECT_EQ(_materials.readBack(), packed);
}

TEST_P(InstanceStorageTest, BufferIsLabelledWithTheNameOfTheCollection) {
    ASSERT_TRUE(_materials.bindStorage(kPoint));
    char text[32] = {};
    glGetObjectLabel(GL_BUFFER, boundName(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "TestMaterial");
}

} // namespace Atelier::Vel::Testing

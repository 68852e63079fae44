#include <epoxy/gl.h>

#include "glcalls.h"

#include <memory>
#include <vector>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>

#include "allocationcount.h"
#include "glhooks.h"
#include "lookups.h"
#include "support/glfixture.h"
#include "testscene.h"

// What a frame costs when all that it needs is there: calls, queries, look-ups, locks and allocations.
namespace Atelier::Vel::Testing {

namespace {

constexpr int kUnits = 2; // textures of the test scene's materials
constexpr int kCallsPerDrawable = 20;
constexpr int kCallsPerSet = 3;
constexpr int kQueries = 16;
constexpr int kQueriesPerUnit = 4;

class FrameTest : public GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        registerTestPlans();
        _program = sceneProgram();
        _picture = std::make_unique<Framebuffer>(QSize(4, 4));
        _picture->begin();
        for (int i = 0; i < kTextures; ++i)
            _textures.push_back(Texture::ofColor(QColor(i, 1, 2)));
        TextureManager::Instance().setLoader([this](const QString& path) {
            ++_loads;
            return _textures[std::size_t(path.toInt())].get();
        });
    }
    void TearDown() override {
        TextureManager::Instance().setLoader({});
        _textures.clear();
        _picture.reset();
        _program.reset();
        GLFixture::TearDown();
    }

    // Adds a drawable of `commands` commands, whose textures alternate.
    void addInterleaved(GPUModel& model, int commands, bool byPath) const {
        QList<InstanceData> materials;
        QList<InstanceData> instances;
        for (int command = 0; command < commands; ++command) {
            InstanceData material = coloredMaterial(Qt::white);
            const int texture = command % kTextures;
            if (byPath)
                material.setTexture(QStringLiteral("first"), QString::number(texture));
            else
                material.setTexture(QStringLiteral("first"), _textures[std::size_t(texture)].get());
            materials << material;
            instances << movedInstance({});
        }
        model.add(triangleRow(commands), 1,
                  new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    }

    DrawOptions drawing(StatePolicy state, DrawOrder order) const {
        DrawOptions result;
        result.state = state;
        result.order = order;
        result.program = _program.get();
        return result;
    }
    // The same for every second command of each drawable.
    DrawOptions halfDrawn(const GPUModel& model, StatePolicy state, DrawOrder order) const {
        DrawOptions result = drawing(state, order);
        result.filter = DrawFilter(model, [](int, int command) { return command % 2 == 0; });
        return result;
    }
    // Materials of other colours, in place of those of the first `count` commands.
    void recolor(GPUModel& model, int count, int level) const {
        for (int command = 0; command < count; ++command) {
            InstanceData material = coloredMaterial(QColor(level, level + 1, level + 2));
            material.setTexture(QStringLiteral("first"), _textures[std::size_t(command % kTextures)].get());
            model.materials(0)->set(command, material);
        }
    }
    // Draws until nothing is drawn first any more.
    static void warmUp(GPUModel& model, const DrawOptions& options) {
        for (int frame = 0; frame < 3; ++frame)
            model.draw(options);
        glFinish(); // threads of the driver allocate as well
    }

    static constexpr int kTextures = 8;
    std::unique_ptr<Program> _program;
    std::unique_ptr<Framebuffer> _picture;
    std::vector<std::unique_ptr<Texture>> _textures;
    int _loads = 0;
};

} // namespace

TEST_F(FrameTest, AllFunctionsOfOpenGLAreCounted) {
    const std::vector<std::string> names = GLCalls::importedNames();
    EXPECT_GT(names.size(), 50U);
    EXPECT_LT(names.size(), 256U);
    EXPECT_THAT(names,
                testing::IsSupersetOf({"glMultiDrawElementsIndirect", "glGetIntegerv", "glBindTextures"}));
    GPUModel model;
    addInterleaved(model, 2, false);
    warmUp(model, drawing(StatePolicy::Restored, DrawOrder::AsGiven));
    const GLCalls calls;
    model.draw(drawing(StatePolicy::Restored, DrawOrder::AsGiven));
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), 2);
    EXPECT_GT(GLCalls::queryCount(), 0);
}

TEST_F(FrameTest, NothingIsAskedWhereTheClientRestoresTheState) {
    for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures}) {
        GPUModel model;
        addInterleaved(model, 40, true);
        addInterleaved(model, 3, false);
        const DrawOptions how = drawing(StatePolicy::ClientRestores, order);
        warmUp(model, how);
        const GLCalls calls;
        model.draw(how);
        EXPECT_EQ(GLCalls::queryCount(), 0) << testing::PrintToString(GLCalls::byName());
    }
}

TEST_F(FrameTest, FilterCostsNoQueryAndNoFurtherDraw) {
    constexpr int kCommands = 160;
    GPUModel model;
    addInterleaved(model, kCommands, true);
    const DrawOptions sorted = halfDrawn(model, StatePolicy::ClientRestores, DrawOrder::ByTextures);
    const DrawOptions asGiven = halfDrawn(model, StatePolicy::ClientRestores, DrawOrder::AsGiven);
    warmUp(model, sorted);
    warmUp(model, asGiven);
    const GLCalls calls;
    model.draw(sorted);
    EXPECT_EQ(GLCalls::queryCount(), 0) << testing::PrintToString(GLCalls::byName());
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), kTextures / 2);
    EXPECT_LE(GLCalls::count(), kCallsPerSet * kTextures / 2 + kCallsPerDrawable)
        << testing::PrintToString(GLCalls::byName());
    GLCalls::restart();
    model.draw(asGiven);
    EXPECT_EQ(GLCalls::queryCount(), 0) << testing::PrintToString(GLCalls::byName());
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), kCommands / 2);
    EXPECT_LE(GLCalls::count(), kCallsPerSet * kCommands / 2 + kCallsPerDrawable)
        << testing::PrintToString(GLCalls::byName());
}

TEST_F(FrameTest, DrawableThatIsFilteredOutCostsNoCall) {
    GPUModel model;
    addInterleaved(model, 40, true);
    DrawOptions how = drawing(StatePolicy::ClientRestores, DrawOrder::AsGiven);
    warmUp(model, how);
    int ofOne = 0;
    {
        const GLCalls calls;
        model.draw(how);
        ofOne = GLCalls::count();
    }
    addInterleaved(model, 40, true);
    how.filter = DrawFilter(model, [](int drawable, int) { return drawable == 0; });
    warmUp(model, how);
    const GLCalls calls;
    model.draw(how);
    EXPECT_EQ(GLCalls::count(), ofOne);
}

TEST_F(FrameTest, StateIsSavedOnceForAllSets) {
    constexpr int kRangesOfStorages = 3 * 2; // queries if the client has bound buffers there
    for (const int commands : {1, 40}) {
        GPUModel model;
        addInterleaved(model, commands, true);
        addInterleaved(model, commands, false);
        const DrawOptions how = drawing(StatePolicy::Restored, DrawOrder::AsGiven);
        warmUp(model, how);
        const GLCalls calls;
        model.draw(how);
        EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), 2 * commands);
        EXPECT_EQ(GLCalls::count("glGetIntegeri_v"), 2) << "once for each storage binding";
        EXPECT_LE(GLCalls::queryCount() + kRangesOfStorages, kQueries + kQueriesPerUnit * kUnits)
            << testing::PrintToString(GLCalls::byName());
    }
}

TEST_F(FrameTest, EachSetOfTexturesIsDrawnOnceInTheOrderOfTextures) {
    constexpr int kCommands = 160;
    GPUModel model;
    addInterleaved(model, kCommands, true);
    const DrawOptions sorted = drawing(StatePolicy::ClientRestores, DrawOrder::ByTextures);
    const DrawOptions asGiven = drawing(StatePolicy::ClientRestores, DrawOrder::AsGiven);
    warmUp(model, sorted);
    warmUp(model, asGiven);
    const GLCalls calls;
    model.draw(sorted);
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), kTextures);
    EXPECT_LE(GLCalls::count(), kCallsPerSet * kTextures + kCallsPerDrawable)
        << testing::PrintToString(GLCalls::byName());
    GLCalls::restart();
    model.draw(asGiven);
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), kCommands);
    EXPECT_LE(GLCalls::count(), kCallsPerSet * kCommands + kCallsPerDrawable)
        << testing::PrintToString(GLCalls::byName());
}

TEST_F(FrameTest, WithoutMultiBindEachUnitThatChangesCostsTwoCalls) {
    OpenGLDeviceContext::HeadlessOptions old = options();
    old.multiBind = false;
    old.shareWith = _context;
    const auto context = makeContext(old);
    ASSERT_TRUE(context->makeCurrent());
    auto picture = std::make_unique<Framebuffer>(QSize(4, 4));
    picture->begin();
    GPUModel model;
    addInterleaved(model, 16, true);
    const DrawOptions sorted = drawing(StatePolicy::ClientRestores, DrawOrder::ByTextures);
    warmUp(model, sorted);
    {
        const GLCalls calls;
        model.draw(sorted);
        EXPECT_EQ(GLCalls::count("glBindTextures"), 0);
        EXPECT_EQ(GLCalls::count("glBindTexture"), kTextures + 1) << "the second unit has white all the time";
        EXPECT_LE(GLCalls::count(), (2 + 2) * kTextures + kCallsPerDrawable);
    }
    picture.reset();
    _context->makeCurrent();
}

TEST_F(FrameTest, TheContextIsLookedUpOnceAndNothingElseIsLocked) {
    for (const StatePolicy state : {StatePolicy::Restored, StatePolicy::ClientRestores})
        for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures}) {
            GPUModel model;
            addInterleaved(model, 40, true);
            addInterleaved(model, 5, false);
            const DrawOptions how = drawing(state, order);
            warmUp(model, how);
            const GLCalls calls;
            const int lookUps = contextLookUpCount();
            const int locks = lockCount();
            model.draw(how);
            EXPECT_EQ(contextLookUpCount() - lookUps, 1);
            if (countsLocks()) {
                EXPECT_EQ(lockCount() - locks, 1) << "that of the table of contexts";
            }
        }
}

TEST_F(FrameTest, NothingIsAllocatedAndNoLoaderIsAsked) {
    if (!countsAllocations())
        GTEST_SKIP() << "a sanitizer counts the allocations";
    for (const StatePolicy state : {StatePolicy::Restored, StatePolicy::ClientRestores})
        for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures}) {
            GPUModel model;
            addInterleaved(model, 40, true);
            addInterleaved(model, 5, false);
            const DrawOptions how = drawing(state, order);
            const DrawOptions half = halfDrawn(model, state, order);
            warmUp(model, how);
            warmUp(model, half);
            const int loads = _loads;
            const GLCalls calls;
            const std::size_t before = allocationCount();
            for (int frame = 0; frame < 3; ++frame) {
                model.draw(how);
                model.draw(half);
            }
            EXPECT_EQ(allocationCount() - before, 0U);
            EXPECT_EQ(_loads, loads);
        }
}

TEST_F(FrameTest, MaterialsThatChangeEachFrameCostOneCallAndNoAllocationAndNoQuery) {
    constexpr int kCommands = 160;
    for (const int changes : {1, kCommands})
        for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures}) {
            GPUModel model;
            addInterleaved(model, kCommands, false);
            const DrawOptions how = drawing(StatePolicy::ClientRestores, order);
            warmUp(model, how);
            int unchanged = 0;
            {
                const GLCalls calls;
                model.draw(how);
                unchanged = GLCalls::count();
            }
            recolor(model, changes, 100);
            warmUp(model, how);
            for (int frame = 0; frame < 3; ++frame) {
                recolor(model, changes, 10 * frame);
                const GLCalls calls;
                const std::size_t before = allocationCount();
                model.draw(how);
                if (countsAllocations()) {
                    EXPECT_EQ(allocationCount() - before, 0U);
                }
                EXPECT_EQ(GLCalls::count(), unchanged + 1) << testing::PrintToString(GLCalls::byName());
                EXPECT_EQ(GLCalls::count("glNamedBufferSubData"), 1);
                EXPECT_EQ(GLCalls::queryCount(), 0) << testing::PrintToString(GLCalls::byName());
            }
        }
}

TEST_F(FrameTest, OnlyTheBytesOfChangedMaterialsAreUploaded) {
    constexpr int kBytesOfColor = 12;
    GPUModel model;
    addInterleaved(model, 40, false);
    const DrawOptions how = drawing(StatePolicy::ClientRestores, DrawOrder::ByTextures);
    warmUp(model, how);
    for (int frame = 0; frame < 5; ++frame) {
        recolor(model, 3, 20 * frame);
        const UploadHook hook;
        model.draw(how);
        EXPECT_EQ(hook.wholeCount(), 0);
        EXPECT_GT(hook.partBytes(), 0);
        EXPECT_LE(hook.partBytes(), 3 * kBytesOfColor);
    }
    const UploadHook hook;
    model.draw(how);
    EXPECT_EQ(hook.partBytes(), 0);
}

TEST_F(FrameTest, CommandsThatAreHiddenEachFrameCostOneCallForEachBufferAndNoAllocation) {
    GPUModel model;
    addInterleaved(model, 40, false);
    const DrawOptions asGiven = drawing(StatePolicy::ClientRestores, DrawOrder::AsGiven);
    const DrawOptions sorted = drawing(StatePolicy::ClientRestores, DrawOrder::ByTextures);
    for (int frame = 0; frame < 6; ++frame) {
        const auto visibility =
            frame % 2 == 0 ? DrawBuffers::Visibility::Hidden : DrawBuffers::Visibility::Shown;
        for (int command = 0; command < 40; command += 2)
            model.drawable(0)->setVisibility(command, visibility);
        if (frame < 2) {
            warmUp(model, asGiven);
            warmUp(model, sorted);
            continue;
        }
        const GLCalls calls;
        const std::size_t before = allocationCount();
        model.draw(asGiven);
        model.draw(sorted);
        const std::size_t after = allocationCount();
        if (countsAllocations()) {
            EXPECT_EQ(after - before, 0U);
        }
        EXPECT_EQ(GLCalls::count("glNamedBufferSubData"), 2);
        EXPECT_EQ(GLCalls::queryCount(), 0);
    }
}

TEST_F(FrameTest, InstancesCostNoDrawOfTheirOwn) {
    constexpr int kCopies = 10000;
    GPUModel model;
    QList<InstanceData> instances;
    for (int i = 0; i < kCopies; ++i)
        instances << movedInstance({float(i), 0, 0});
    model.add(triangleRow(1), kCopies,
              new InstanceDataCollection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    const DrawOptions how = drawing(StatePolicy::ClientRestores, DrawOrder::AsGiven);
    warmUp(model, how);
    const GLCalls calls;
    model.draw(how);
    EXPECT_EQ(GLCalls::count("glMultiDrawElementsIndirect"), 1);
    EXPECT_LE(GLCalls::count(), kCallsPerSet + kCallsPerDrawable);
    EXPECT_EQ(GLCalls::queryCount(), 0);
}

TEST_F(FrameTest, AnotherTextureOfTheProgramCostsOneLookUpAndNoAllocation) {
    if (!countsAllocations())
        GTEST_SKIP() << "a sanitizer counts the allocations";
    GPUModel model;
    addInterleaved(model, 40, true);
    const DrawOptions how = drawing(StatePolicy::ClientRestores, DrawOrder::AsGiven);
    warmUp(model, how);
    std::unique_ptr<Texture> other = Texture::ofColor(Qt::red);
    other.reset();
    const GLCalls calls;
    const std::size_t before = allocationCount();
    model.draw(how);
    EXPECT_EQ(allocationCount() - before, 0U);
    EXPECT_EQ(GLCalls::queryCount(), 0);
}

} // namespace Atelier::Vel::Testing

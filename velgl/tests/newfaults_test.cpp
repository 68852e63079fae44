#include "clientstate.h"
#include "newfaults.h"

#include <functional>
#include <memory>
#include <new>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "foreigncontext.h"
#include "glhooks.h"
#include "support/glfixture.h"
#include "support/sanitizer.h"
#include "testscene.h"

// What VelGL does when there is no memory for its own data.
namespace Atelier::Vel::Testing {

namespace {

class NewFaultsTest : public GLFixture {
protected:
    void SetUp() override {
        if (VELMODEL_ADDRESS_SANITIZER != 0)
            GTEST_SKIP() << "the address sanitizer has an operator new of its own";
        GLFixture::SetUp();
        registerTestPlans();
        _picture = std::make_unique<Framebuffer>(QSize(4, 4));
        _picture->begin();
        TextureManager::Instance().setLoader(
            [](const QString&) { return TextureManager::Instance().colorTexture(Qt::blue); });
    }
    void TearDown() override {
        if (IsSkipped())
            return;
        TextureManager::Instance().setLoader({});
        _picture.reset();
        GLFixture::TearDown();
    }

    std::unique_ptr<Framebuffer> _picture;
};

constexpr unsigned int kValues[] = {1, 2, 3};

// A model with textures by object and by path.
void fillModel(GPUModel& model) {
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), TextureManager::Instance().colorTexture(Qt::green));
    material.setTexture(QStringLiteral("second"), QStringLiteral("a.png"));
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
}

// One of each kind of object, with a GL name in the current context.
struct Everything {
    BufferObject buffer;
    VertexArrayObject vao;
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    std::unique_ptr<Program> program = sceneProgram();
    GPUModel model;

    Everything() {
        buffer.uploadGLuintData(kValues, 3, 0x88E4);
        for (Bindable* bindable : std::initializer_list<Bindable*>{&vao, texture.get()})
            const AutoBinder binder(bindable);
        fillModel(model);
        const AutoBinder binder(program.get());
        model.draw();
    }
};

// Calls `prepare` and then `call`, each time with another request of `call` denied, until none is. Expects
// that the state of the client is the same after `call`, whether it threw or not.
void expectUntouchedWithoutMemory(const std::function<std::function<void()>()>& prepare) {
    constexpr std::size_t kEnough = 500;
    std::size_t throws = 0;
    for (std::size_t number = 0; number < kEnough; ++number) {
        const std::function<void()> call = prepare();
        const ClientState before = ClientState::captured();
        bool isDone = true;
        try {
            const NewFaults faults(number);
            call();
            isDone = NewFaults::deniedCount() == 0;
        } catch (const std::bad_alloc&) {
            isDone = false;
            ++throws;
        }
        EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << "request " << number;
        if (isDone) {
            EXPECT_GT(throws, 0U) << "nothing was denied";
            return;
        }
    }
    ADD_FAILURE() << "more than " << kEnough << " requests";
}

} // namespace

TEST_F(NewFaultsTest, FaultsReachVelGL) {
    const NewFaults faults;
    EXPECT_THROW(Texture::ofColor(Qt::red), std::bad_alloc);
    EXPECT_GT(NewFaults::deniedCount(), 0U);
}

TEST_F(NewFaultsTest, DestructionNeedsNoMemory) {
    TextureManager::Instance().colorTexture(Qt::white)->bind();
    TextureManager::Instance().colorTexture(Qt::white)->unbind();
    for (const char* place : {"own context", "no context", "context that VelGL has not met"}) {
        const NameCount names;
        auto everything = std::make_unique<Everything>();
        EXPECT_GT(names.made(), 0);
        if (place != std::string("own context"))
            _context->doneCurrent();
        std::unique_ptr<ForeignContext> stranger;
        if (place == std::string("context that VelGL has not met"))
            stranger = makeForeignContext();
        {
            const NewFaults faults;
            everything.reset();
            EXPECT_EQ(NewFaults::deniedCount(), 0U) << place;
        }
        ASSERT_TRUE(_context->makeCurrent());
        QStringList left = names.imbalance();
        EXPECT_LE(left.size(), 2) << place << ": more than the shared green and blue textures: "
                                  << left.join(QStringLiteral(", ")).toStdString();
    }
}

TEST_F(NewFaultsTest, UnbindNeedsNoMemory) {
    Everything everything;
    Bindable* const bindables[] = {&everything.buffer, &everything.vao, everything.texture.get(),
                                   everything.program.get()};
    const ClientState before = ClientState::captured();
    for (Bindable* bindable : bindables) {
        ASSERT_TRUE(bindable->bind());
        const NewFaults faults;
        bindable->unbind();
        EXPECT_EQ(NewFaults::deniedCount(), 0U);
    }
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_F(NewFaultsTest, DrawWithoutMemoryLeavesTheStateAsItWas) {
    const std::unique_ptr<Program> program = sceneProgram();
    const BusyClient client;
    program->bind();
    std::unique_ptr<GPUModel> model;
    expectUntouchedWithoutMemory([&]() -> std::function<void()> {
        model = std::make_unique<GPUModel>();
        fillModel(*model);
        return [&] { model->draw(); };
    });
    program->unbind();
}

TEST_F(NewFaultsTest, FirstBindWithoutMemoryLeavesTheStateAsItWas) {
    const std::unique_ptr<Program> program = sceneProgram();
    const BusyClient client;
    program->bind();
    std::unique_ptr<Bindable> object;
    const std::function<std::unique_ptr<Bindable>()> makers[] = {
        []() -> std::unique_ptr<Bindable> { return std::make_unique<BufferObject>(); },
        []() -> std::unique_ptr<Bindable> { return Texture::ofColor(Qt::red); },
        []() -> std::unique_ptr<Bindable> {
            auto vao = std::make_unique<VertexArrayObject>();
            vao->registerBO(QStringLiteral("va_Vertex"), bufferOf(QVector<float>{0, 0, 0}), 3, 0x1406);
            return vao;
        },
    };
    for (const auto& make : makers)
        expectUntouchedWithoutMemory([&]() -> std::function<void()> {
            object = make();
            return [&] { const AutoBinder binder(object.get()); };
        });
    program->unbind();
}

TEST_F(NewFaultsTest, UploadWithoutMemoryLeavesTheStateAsItWas) {
    const BusyClient client;
    std::unique_ptr<BufferObject> buffer;
    expectUntouchedWithoutMemory([&]() -> std::function<void()> {
        buffer = std::make_unique<BufferObject>();
        return [&] { buffer->uploadGLuintData(kValues, 3, 0x88E4); };
    });
    EXPECT_EQ(buffer->readBack().size(), 12);
}

TEST_F(NewFaultsTest, ChangesWithoutMemoryLeaveBuffersThatFitTheItems) {
    const std::unique_ptr<Program> program = sceneProgram();
    DrawOptions options;
    options.program = program.get();
    constexpr std::size_t kEnough = 200;
    bool isDone = false;
    for (std::size_t number = 0; number < kEnough && !isDone; ++number) {
        GPUModel model;
        addRow(model, {Qt::red, Qt::green});
        model.draw(options);
        const InstanceData material = coloredMaterial(Qt::blue);
        try {
            const NewFaults faults(number);
            model.materials(0)->set(1, material);
            model.drawable(0)->setVisibility(0, DrawBuffers::Visibility::Hidden);
            model.draw(options);
            isDone = NewFaults::deniedCount() == 0;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(model.materials(0)->readBack(), model.materials(0)->packed()) << number;
        const bool isShown = model.drawable(0)->visibility(0) == DrawBuffers::Visibility::Shown;
        EXPECT_EQ(model.drawable(0)->readBackCommands()[0].instanceCount, isShown ? 1U : 0U) << number;
    }
    EXPECT_TRUE(isDone);
}

TEST_F(NewFaultsTest, RemovalWithoutMemoryRemovesOrThrows) {
    for (std::size_t number = 0; number < 5; ++number) {
        GPUModel model;
        addRow(model, {Qt::red});
        addRow(model, {Qt::green});
        int expected = 0;
        try {
            const NewFaults faults(number);
            model.remove(1);
            expected = 1;
            model.clear();
            expected = 2;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(model.drawableCount(), expected == 2 ? 0 : 2) << number;
        EXPECT_EQ(model.drawable(1) != nullptr, expected == 0) << number;
    }
}

} // namespace Atelier::Vel::Testing

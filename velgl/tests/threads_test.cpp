#include <epoxy/gl.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/texturetoken.h>
#include <velgl/vertexarrayobject.h>

#include "support/glfixture.h"
#include "support/scale.h"
#include "testscene.h"

// What several threads may do at the same time. Also run under ThreadSanitizer.
namespace Atelier::Vel::Testing {

namespace {

constexpr int kThreads = 4;
constexpr unsigned int kValues[] = {1, 2, 3};

class ThreadsTest : public GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        registerTestPlans();
    }
};

// One of each kind of object, with a GL name in the current context.
struct Everything {
    BufferObject buffer;
    VertexArrayObject vao;
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    GPUModel model;

    explicit Everything(Program& program) {
        buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
        for (Bindable* bindable : std::initializer_list<Bindable*>{&vao, texture.get()})
            const AutoBinder binder(bindable);
        addRow(model, {Qt::red});
        const AutoBinder binder(&program);
        model.draw();
    }
};

int liveNames() {
    constexpr GLuint kHighestName = 5000;
    int count = 0;
    for (GLuint name = 1; name <= kHighestName; ++name)
        count += glIsBuffer(name) + glIsTexture(name) + glIsVertexArray(name);
    return count;
}

// Destroys the objects that other threads hand over.
class Undertaker {
public:
    // `start` runs on the thread first, and `end` last.
    Undertaker(const std::function<void()>& start, const std::function<void()>& end)
        : _thread([=] {
              start();
              while (!_isDone || !isEmpty())
                  take().reset();
              end();
          }) {}
    ~Undertaker() {
        _isDone = true;
        _thread.join();
    }
    Undertaker(const Undertaker&) = delete;
    Undertaker& operator=(const Undertaker&) = delete;

    void give(std::unique_ptr<Everything> object) {
        const std::lock_guard lock(_mutex);
        _objects.push_back(std::move(object));
    }

private:
    bool isEmpty() {
        const std::lock_guard lock(_mutex);
        return _objects.empty();
    }
    std::unique_ptr<Everything> take() {
        const std::lock_guard lock(_mutex);
        if (_objects.empty())
            return nullptr;
        std::unique_ptr<Everything> object = std::move(_objects.front());
        _objects.pop_front();
        return object;
    }

    std::mutex _mutex;
    std::deque<std::unique_ptr<Everything>> _objects;
    std::atomic<bool> _isDone{false};
    std::thread _thread; // last: it uses the other members
};

void onThreads(const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST_F(ThreadsTest, ObjectsMayBeDestroyedOnThreadsWithoutAContext) {
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const std::unique_ptr<Program> program = sceneProgram();
    { const Everything first(*program); } // makes the white texture, which stays
    const int before = liveNames();
    {
        std::deque<Undertaker> undertakers;
        for (int i = 0; i < kThreads; ++i)
            undertakers.emplace_back([] {}, [] {});
        const int rounds = scaled(200);
        for (int round = 0; round < rounds; ++round)
            undertakers[std::size_t(round % kThreads)].give(std::make_unique<Everything>(*program));
    }
    ASSERT_TRUE(_context->makeCurrent());
    EXPECT_EQ(liveNames(), before);
}

TEST_F(ThreadsTest, ObjectsMayBeDestroyedOnAThreadWithASharingContext) {
    OpenGLDeviceContext::HeadlessOptions sharing = options();
    sharing.shareWith = _context;
    const auto other = makeContext(sharing);
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const std::unique_ptr<Program> program = sceneProgram();
    { const Everything first(*program); }
    const int before = liveNames();
    {
        Undertaker undertaker([&] { EXPECT_TRUE(other->makeCurrent()); }, [&] { other->doneCurrent(); });
        const int rounds = scaled(100);
        for (int round = 0; round < rounds; ++round)
            undertaker.give(std::make_unique<Everything>(*program));
    }
    ASSERT_TRUE(_context->makeCurrent());
    EXPECT_EQ(liveNames(), before);
}

TEST_F(ThreadsTest, ObjectsMayBeDestroyedWhileTheirContextEnds) {
    const std::unique_ptr<Program> unused = sceneProgram();
    const int rounds = scaled(20);
    for (int round = 0; round < rounds; ++round) {
        auto context = makeContext(options());
        ASSERT_TRUE(context->makeCurrent());
        std::unique_ptr<Program> program = sceneProgram();
        auto everything = std::make_unique<Everything>(*program);
        std::thread undertaker([&] { everything.reset(); });
        context.reset();
        undertaker.join();
    }
    _context->makeCurrent();
}

TEST_F(ThreadsTest, ContextsOfSeveralThreadsDrawAtTheSameTime) {
    std::vector<QSharedPointer<OpenGLDeviceContext>> contexts;
    for (int i = 0; i < kThreads; ++i)
        contexts.push_back(makeContext(options()));
    onThreads([&](int number) {
        ASSERT_TRUE(contexts[std::size_t(number)]->makeCurrent());
        for (int round = 0; round < scaled(10); ++round) {
            GPUModel model;
            addRow(model, {Qt::green});
            EXPECT_EQ(rowColor(model), QColor(Qt::green));
        }
        contexts[std::size_t(number)]->doneCurrent();
    });
}

TEST_F(ThreadsTest, RegistryMayBeAskedAndExtendedOnAnyThread) {
    InstanceDataRegistry& registry = InstanceDataRegistry::Instance();
    onThreads([&](int number) {
        for (int i = 0; i < 50; ++i) {
            const QString own = QStringLiteral("Thread%1Plan%2").arg(number).arg(i);
            registry.registerPlan(new InstanceDataPlan(own));
            registry.registerPlan(new InstanceDataPlan(QStringLiteral("SharedPlan%1").arg(i)));
            EXPECT_NE(registry.plan(own), nullptr);
            EXPECT_NE(registry.plan(QStringLiteral("TestMaterial")), nullptr);
            EXPECT_GE(registry.plans().size(), i);
        }
    });
    for (int i = 0; i < 50; ++i) {
        int count = 0;
        for (const InstanceDataPlan* plan : registry.plans())
            count += plan->name() == QStringLiteral("SharedPlan%1").arg(i);
        EXPECT_EQ(count, 1);
    }
}

TEST_F(ThreadsTest, TextureManagerMayBeAskedOnAnyThread) {
    TextureManager& manager = TextureManager::Instance();
    std::vector<std::vector<Texture*>> found(kThreads);
    onThreads([&](int number) {
        const TextureToken token;
        for (int i = 0; i < 50; ++i) {
            Texture* const texture = manager.colorTexture(QColor(i, 7, 9));
            found[std::size_t(number)].push_back(texture);
            manager.setTexture(token, texture);
            EXPECT_EQ(manager.texture(token), texture);
            manager.setLoader([](const QString&) { return nullptr; });
        }
        manager.setTexture(token, nullptr);
    });
    for (const std::vector<Texture*>& others : found)
        EXPECT_EQ(others, found[0]) << "one object for each colour";
    manager.setLoader({});
}

} // namespace Atelier::Vel::Testing

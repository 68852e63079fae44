#include <epoxy/gl.h>

#include "clientstate.h"
#include "filterfixture.h"

#include <velgl/drawoptions.h>

#include <algorithm>

#include <gmock/gmock.h>

#include <velgl/glentrypoints.h>

#include "support/messagelog.h"

// The state of the client around draws of models whose textures are named by path.
namespace Atelier::Vel::Testing {

namespace {

using testing::UnorderedElementsAreArray;

constexpr unsigned int kFirstUnit = 1;

// Makes a texture as clients do, and leaves unpack settings of its own.
std::unique_ptr<Texture> loadedTexture(const QString& color) {
    const QColor value(color);
    const unsigned char texel[] = {static_cast<unsigned char>(value.red()),
                                   static_cast<unsigned char>(value.green()),
                                   static_cast<unsigned char>(value.blue()), 255};
    auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
    const AutoBinder binder(texture.get());
    glEntryPoints().pixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glEntryPoints().texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    return texture;
}

class ModelDrawStateTest : public FilterFixture {
protected:
    void SetUp() override {
        FilterFixture::SetUp();
        TextureManager::Instance().setLoader([this](const QString& path) {
            std::unique_ptr<Texture>& texture = _loaded[path];
            if (!texture && path != "none")
                texture = loadedTexture(path);
            return texture.get();
        });
    }
    void TearDown() override {
        _loaded.clear();
        FilterFixture::TearDown();
    }

    // Adds a row whose commands have these textures, by path; the second texture is blue.
    static void addTexturedByPath(GPUModel& model, const QStringList& paths) {
        QList<InstanceData> materials;
        QList<InstanceData> instances;
        for (const QString& path : paths) {
            InstanceData material = coloredMaterial(Qt::white);
            material.setTexture(QStringLiteral("first"), path);
            material.setTexture(QStringLiteral("second"), QStringLiteral("blue"));
            materials << material;
            instances << movedInstance({});
        }
        model.add(triangleRow(paths.size()), 1,
                  new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    }
    DrawOptions drawingWith(StatePolicy state, DrawOrder order, const DrawFilter& filter) const {
        DrawOptions options = drawing(filter, order);
        options.state = state;
        options.firstTextureUnit = kFirstUnit;
        options.program = _program.get();
        return options;
    }
    // Draws with all orders and filters.
    void expectRestoredState(GPUModel& model) const {
        const BusyClient client;
        for (const DrawOrder order : kOrders)
            for (const DrawFilter& filter : {DrawFilter(), filterOf({"101", "0"}), filterOf({"000", "00"})})
                for (int frame = 0; frame < 2; ++frame) {
                    const ClientState before = ClientState::captured();
                    model.draw(drawingWith(StatePolicy::Restored, order, filter));
                    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << frame;
                }
    }

    std::map<QString, std::unique_ptr<Texture>> _loaded;
};

GLuint boundTo(GLenum query) {
    GLint name = 0;
    glGetIntegerv(query, &name);
    return GLuint(name);
}

GLuint storageAt(GLuint point) {
    GLint name = 0;
    glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, point, &name);
    return GLuint(name);
}

GLuint storageOf(InstanceDataCollection& collection) {
    constexpr GLuint kOtherPoint = 3;
    EXPECT_TRUE(collection.bindStorage(kOtherPoint));
    return storageAt(kOtherPoint);
}

// What StatePolicy::ClientRestores may leave changed, besides the active unit.
std::vector<std::string> changesOfTheLastDrawable() {
    std::vector<std::string> names = {"vertex array",
                                      "element buffer",
                                      "attribute enabled 1",
                                      "attribute buffer 1",
                                      "primitive restart",
                                      "primitive restart at the fixed index",
                                      "program",
                                      "indirect buffer",
                                      "storage buffer",
                                      "storage binding 0",
                                      "storage binding 1",
                                      "storage binding 1 start",
                                      "storage binding 1 size"};
    for (const GLuint unit : {kFirstUnit, kFirstUnit + 1})
        for (const GLenum query : {GL_TEXTURE_BINDING_2D, GL_SAMPLER_BINDING})
            names.push_back("unit " + std::to_string(unit) + " " + std::to_string(query));
    return names;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ModelDrawStateTest);

TEST_P(ModelDrawStateTest, RestoredPolicyRestoresEverythingWithTexturesOfTheManager) {
    const MessageLog log; // of the texture that cannot be loaded
    GPUModel model;
    addTexturedByPath(model, {"red", "green", "red"});
    addTexturedByPath(model, {"none"});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    expectRestoredState(model);
}

TEST_P(ModelDrawStateTest, RestoredPolicyRestoresEverythingWithTexturesOfTheModel) {
    GPUModel model;
    model.setTextureLoader([](const QString& path) { return std::shared_ptr<Texture>(loadedTexture(path)); });
    addTexturedByPath(model, {"red", "green", "red"});
    addTexturedByPath(model, {"yellow"});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    expectRestoredState(model);
}

TEST_P(ModelDrawStateTest, RestoredPolicyRestoresEverythingWithoutMultiBind) {
    OpenGLDeviceContext::HeadlessOptions old = options();
    old.multiBind = false;
    const auto context = makeContext(old);
    ASSERT_TRUE(context->makeCurrent());
    {
        const std::unique_ptr<Program> outer = std::exchange(_program, sceneProgram());
        GPUModel model;
        addTexturedByPath(model, {"red", "green", "red"});
        addTexturedByPath(model, {"red"});
        Framebuffer picture(QSize(4, 4));
        picture.begin();
        expectRestoredState(model);
        _program.reset();
        _loaded.clear();
    }
    _context->makeCurrent();
}

TEST_P(ModelDrawStateTest, ClientThatRestoresFindsTheStateOfTheLastDrawable) {
    GPUModel model;
    addTexturedByPath(model, {"yellow"});
    addTexturedByPath(model, {"red", "green", "red"});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    for (const DrawOrder order : kOrders)
        for (const char* mask : {"111", "011", "010"}) {
            const BusyClient client;
            const GLuint storages[] = {storageOf(*model.materials(1)), storageOf(*model.instances(1))};
            const ClientState before = ClientState::captured();
            model.draw(drawingWith(StatePolicy::ClientRestores, order, filterOf({"1", mask})));
            std::vector<std::string> changed = ClientState::changes(before, ClientState::captured());
            changed.erase(std::remove(changed.begin(), changed.end(), "active texture"), changed.end());
            EXPECT_THAT(changed, UnorderedElementsAreArray(changesOfTheLastDrawable()));

            EXPECT_EQ(boundTo(GL_VERTEX_ARRAY_BINDING), 0U);
            EXPECT_EQ(boundTo(GL_PRIMITIVE_RESTART), 0U);
            EXPECT_EQ(boundTo(GL_PRIMITIVE_RESTART_FIXED_INDEX), 0U);
            EXPECT_NE(boundTo(GL_DRAW_INDIRECT_BUFFER_BINDING), 0U);
            for (const GLuint point : {0U, 1U})
                EXPECT_EQ(storageAt(point), storages[point]);
            const bool isSorted = order == DrawOrder::ByTextures && hasDrawParameters();
            const QString last = mask[2] == '1' && !isSorted ? "red" : "green";
            glActiveTexture(GL_TEXTURE0 + kFirstUnit);
            EXPECT_EQ(boundTo(GL_SAMPLER_BINDING), 0U);
            EXPECT_EQ(boundTo(GL_TEXTURE_BINDING_2D), _loaded[last]->name());
            glActiveTexture(GL_TEXTURE0 + kFirstUnit + 1);
            EXPECT_EQ(boundTo(GL_TEXTURE_BINDING_2D), _loaded["blue"]->name());
        }
}

TEST_P(ModelDrawStateTest, ClientThatRestoresFindsItsOwnStateWhereNothingPasses) {
    GPUModel model;
    addTexturedByPath(model, {"red", "green"});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const BusyClient client;
    DrawOptions options = drawingWith(StatePolicy::ClientRestores, DrawOrder::AsGiven, filterOf({"00"}));
    const ClientState before = ClientState::captured();
    model.draw(options);
    EXPECT_THAT(ClientState::changes(before, ClientState::captured()),
                testing::IsSubsetOf({"vertex array", "element buffer", "attribute enabled 1",
                                     "attribute buffer 1", "program"}));
}

} // namespace Atelier::Vel::Testing

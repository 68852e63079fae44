#include "glhooks.h"

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "featurefixture.h"
#include "testscene.h"

// Every GL name that is made is deleted exactly once.
namespace Atelier::Vel::Testing {

namespace {

class NamesTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
        // Made before the test counts, because the manager keeps it.
        const AutoBinder binder(TextureManager::Instance().colorTexture(Qt::white));
    }
};

// A model with a program and a texture of its own. These and two collections, commands, indices, positions
// and a vertex array have eight names; two shaders have two more.
struct DrawnModel {
    std::unique_ptr<Program> program = sceneProgram();
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::green);
    GPUModel model;

    DrawnModel() {
        InstanceData material = coloredMaterial(Qt::white);
        material.setTexture(QStringLiteral("first"), texture.get());
        model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
        draw();
    }
    void draw() {
        Framebuffer picture(QSize(4, 4));
        picture.begin();
        {
            const AutoBinder binder(program.get());
            model.draw();
        }
        EXPECT_EQ(picture.pixels().pixelColor(0, 1), QColor(Qt::green));
    }
};

} // namespace

INSTANTIATE_FOR_DRIVERS(NamesTest);

TEST_P(NamesTest, HelperDetectsLeakedAndDoublyDeletedNames) {
    NameCount count;
    GLuint names[2] = {};
    glGenTextures(2, names);
    EXPECT_EQ(count.imbalance().size(), 2);
    glDeleteTextures(2, names);
    EXPECT_TRUE(count.imbalance().isEmpty());
    glDeleteTextures(1, names);
    EXPECT_EQ(count.imbalance(), QStringList{QStringLiteral("texture %1 deleted too often").arg(names[0])});
    EXPECT_EQ(count.made(), 2);
}

TEST_P(NamesTest, DestroyedModelDeletesItsNames) {
    const NameCount count;
    {
        DrawnModel drawn;
        constexpr int kPicture = 3; // a framebuffer, its colour and its depths
        EXPECT_EQ(count.made(), 10 + kPicture);
        EXPECT_EQ(count.imbalance().size(), 8) << "the shaders are deleted already";
        drawn.draw();
        EXPECT_EQ(count.made(), 10 + 2 * kPicture) << "a second draw makes nothing but its picture";
    }
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, ReplacedNamesAreDeleted) {
    const NameCount count;
    {
        DrawnModel drawn;
        DrawBuffers& row = *drawn.model.drawable(0);
        const int live = count.imbalance().size();
        const DrawElementsIndirectCommand command = cellCommand(0);
        row.setDrawElementsIndirectCommands(&command, 1);
        drawn.draw();
        row.setIndexedDraw(row.indexBuffer(), 3, GL_UNSIGNED_SHORT);
        drawn.draw();
        EXPECT_EQ(count.imbalance().size(), live);
        row.VAO()->registerBO(QStringLiteral("va_Vertex"),
                              bufferOf(QVector<float>{-1, -1, 0, 3, -1, 0, -1, 3, 0}), 3, GL_FLOAT);
        drawn.draw();
        EXPECT_EQ(count.imbalance().size(), live) << "the stream that was replaced is gone";
    }
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, ObjectsDestroyedInASharingContextDeleteTheirNames) {
    OpenGLDeviceContext::HeadlessOptions sharedOptions = options();
    sharedOptions.shareWith = _context;
    const auto sharing = makeContext(sharedOptions);
    const NameCount count;
    auto drawn = std::make_unique<DrawnModel>();
    const int live = count.imbalance().size();
    sharing->makeCurrent();
    watchMessages();
    drawn->draw();
    EXPECT_EQ(count.imbalance().size(), live + 1) << "each context has a vertex array of its own";
    drawn.reset();
    EXPECT_EQ(count.imbalance().size(), 1) << "the vertex array of the first context is queued";
    _context->makeCurrent();
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, ObjectsDestroyedWithoutAContextDeleteTheirNamesLater) {
    const NameCount count;
    auto drawn = std::make_unique<DrawnModel>();
    _context->doneCurrent();
    drawn.reset();
    EXPECT_EQ(count.imbalance().size(), 8);
    _context->makeCurrent();
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, RefusedDrawablesAndTheirCollectionsAreDeleted) {
    const NameCount count;
    {
        GPUModel model;
        const auto newCollection = [] {
            auto collection = std::make_unique<InstanceDataCollection>(
                QStringLiteral("TestMaterial"), QList<InstanceData>{coloredMaterial(Qt::white)});
            EXPECT_EQ(collection->readBack().size(), 32);
            return collection.release();
        };
        EXPECT_EQ(model.add(nullptr, 1, newCollection(), newCollection(), 0), -1);
        EXPECT_EQ(count.imbalance(), QStringList());
        DrawBuffers* row = triangleRow(1);
        model.add(row, 1, nullptr, nullptr, 0);
        EXPECT_EQ(model.add(row, 1, newCollection(), newCollection(), 0), -1);
        EXPECT_EQ(count.made(), 6);
        EXPECT_EQ(count.imbalance().size(), 2) << "indices and positions of the one drawable";
    }
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, FailedProgramsLeaveNoNames) {
    const NameCount count;
    const QByteArray good = "#version 430 core\nvoid main() {}\n";
    const QByteArray bad = "#version 430 core\nvoid main() { nonsense; }\n";
    const QByteArray needy = "#version 430 core\nin vec4 missing;\nout vec4 pixel;\n"
                             "void main() { pixel = missing; }\n";
    QString error;
    EXPECT_EQ(Program::fromSource(bad, good, error), nullptr);
    EXPECT_EQ(Program::fromSource(good, bad, error), nullptr);
    EXPECT_EQ(Program::fromSource(good, needy, error), nullptr);
    EXPECT_EQ(count.made(), 6) << "five shaders, one program";
    EXPECT_EQ(count.imbalance(), QStringList());
    takeSevereMessages(); // the driver reports the faulty shaders
}

TEST_P(NamesTest, LinkedProgramKeepsNoShader) {
    QString error;
    const QByteArray source = "#version 430 core\nvoid main() {}\n";
    const auto program = Program::fromSource(source, source, error);
    ASSERT_TRUE(program);
    GLint attached = -1;
    glGetProgramiv(program->name(), GL_ATTACHED_SHADERS, &attached);
    EXPECT_EQ(attached, 0);
}

TEST_P(NamesTest, BoundObjectsDeleteTheirNames) {
    const NameCount count;
    {
        BufferObject buffer;
        VertexArrayObject vao;
        Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
        for (Bindable* bindable : std::initializer_list<Bindable*>{&buffer, &vao, &texture})
            for (int round = 0; round < 2; ++round)
                const AutoBinder binder(bindable);
        EXPECT_EQ(count.made(), 3);
        EXPECT_EQ(count.imbalance().size(), 3);
    }
    EXPECT_EQ(count.imbalance(), QStringList());
}

TEST_P(NamesTest, TextureOfTwoGroupsDeletesItsNameInEach) {
    const auto unrelated = makeContext(options());
    const NameCount count;
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    { const AutoBinder binder(texture.get()); }
    unrelated->makeCurrent();
    { const AutoBinder binder(texture.get()); }
    EXPECT_EQ(count.imbalance().size(), 2);
    _context->makeCurrent();
    texture.reset();
    unrelated->makeCurrent();
    _context->makeCurrent();
    EXPECT_EQ(count.imbalance(), QStringList());
}

} // namespace Atelier::Vel::Testing

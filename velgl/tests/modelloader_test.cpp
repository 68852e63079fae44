#include <epoxy/gl.h>

#include "clientstate.h"

#include <memory>
#include <stdexcept>

#include <QtCore/QPointer>

#include <gmock/gmock.h>

#include <velgl/glentrypoints.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>

#include "scenefixture.h"
#include "support/messagelog.h"

// The textures of a model that are named by path or deleted while the model uses them.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ModelLoaderTest : public SceneFixture {
protected:
    // Records what it is asked for, and makes blue textures.
    GPUModel::TextureLoader blueLoader() {
        return [this](const QString& path) -> std::shared_ptr<Texture> {
            _asked.append(path);
            return Texture::ofColor(Qt::blue);
        };
    }

    QStringList _asked;
};

InstanceData materialWithPath(const QString& path) {
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), path);
    return material;
}

// Adds a drawable of one triangle for each material.
void addMaterials(GPUModel& model, const QList<InstanceData>& materials) {
    QList<InstanceData> instances;
    for (int i = 0; i < materials.size(); ++i)
        instances << movedInstance({});
    model.add(triangleRow(materials.size()), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
}

const QString kPath = QStringLiteral("wood.png");
const QString kOther = QStringLiteral("stone.png");

} // namespace

INSTANTIATE_FOR_DRIVERS(ModelLoaderTest);

TEST_P(ModelLoaderTest, LoaderIsAskedOnceForEachPath) {
    GPUModel model;
    model.setTextureLoader(blueLoader());
    addMaterials(model, {materialWithPath(kPath), materialWithPath(kOther), materialWithPath(kPath)});
    addMaterials(model, {materialWithPath(kPath)});
    const MessageLog log;
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(drawnColors(model, 3), opaque({Qt::blue, Qt::blue, Qt::blue}));
    EXPECT_EQ(_asked, QStringList({kPath, kOther}));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(ModelLoaderTest, TexturesAreReleasedWithTheModelOrTheLoader) {
    QList<QPointer<Texture>> made;
    const auto loader = [&](const QString&) {
        std::shared_ptr<Texture> texture = Texture::ofColor(Qt::blue);
        made.append(texture.get());
        return texture;
    };
    {
        GPUModel model;
        model.setTextureLoader(loader);
        addMaterials(model, {materialWithPath(kPath)});
        drawnColors(model, 1);
        ASSERT_EQ(made.size(), 1);
        EXPECT_TRUE(made[0]);
        model.setTextureLoader(loader);
        EXPECT_FALSE(made[0]);
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::blue}));
        ASSERT_EQ(made.size(), 2) << "all paths are loaded again";
        EXPECT_TRUE(made[1]);
    }
    EXPECT_FALSE(made[1]);
}

TEST_P(ModelLoaderTest, ModelsLoaderComesBeforeThatOfTheManager) {
    int managerCalls = 0;
    const std::unique_ptr<Texture> red = Texture::ofColor(Qt::red);
    TextureManager::Instance().setLoader([&](const QString&) {
        ++managerCalls;
        return red.get();
    });
    GPUModel model;
    addMaterials(model, {materialWithPath(kPath)});
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    model.setTextureLoader(blueLoader());
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::blue}));
    model.setTextureLoader({});
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    EXPECT_EQ(managerCalls, 2);
}

TEST_P(ModelLoaderTest, PathIsResolvedOnceForEachLoaderOfTheManager) {
    int calls = 0;
    const std::unique_ptr<Texture> red = Texture::ofColor(Qt::red);
    const auto loader = [&](const QString&) {
        ++calls;
        return red.get();
    };
    TextureManager::Instance().setLoader(loader);
    GPUModel model;
    addMaterials(model, {materialWithPath(kPath)});
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    EXPECT_EQ(calls, 1);
    TextureManager::Instance().setLoader(loader);
    drawnColors(model, 1);
    EXPECT_EQ(calls, 2);
}

TEST_P(ModelLoaderTest, TextureDeletedByTheManagersLoaderIsAskedForAgain) {
    std::unique_ptr<Texture> texture;
    TextureManager::Instance().setLoader([&](const QString&) {
        if (!texture)
            texture = Texture::ofColor(Qt::red);
        return texture.get();
    });
    GPUModel model;
    addMaterials(model, {materialWithPath(kPath)});
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    texture.reset();
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
}

TEST_P(ModelLoaderTest, MissingTextureIsWhiteAfterOneWarning) {
    GPUModel model;
    int calls = 0;
    model.setTextureLoader([&](const QString&) {
        ++calls;
        return std::shared_ptr<Texture>();
    });
    addMaterials(model, {materialWithPath(kPath), materialWithPath(kPath)});
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawnColors(model, 2), opaque({Qt::white, Qt::white}));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(QStringLiteral("Texture 'wood.png' cannot be loaded")));
}

TEST_P(ModelLoaderTest, TextureWithoutContentIsWhiteUntilItCanBeFilled) {
    const auto texture = std::make_shared<Texture>(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture->setReadOnly();
    int calls = 0;
    GPUModel model;
    model.setTextureLoader([&](const QString&) {
        ++calls;
        return texture;
    });
    addMaterials(model, {materialWithPath(kPath)});
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::white}));
    EXPECT_EQ(texture->name(), 0U);
    texture->setRefill([](Texture&) {
        const unsigned char blue[] = {0, 0, 255, 255};
        glEntryPoints().texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, blue);
        return true;
    });
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::blue}));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(ModelLoaderTest, MissingLoaderIsAnotherWarningThanAMissingTexture) {
    TextureManager::Instance().setLoader({});
    GPUModel model;
    addMaterials(model, {materialWithPath(kPath)});
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::white}));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Texture 'wood.png' is not loaded: no texture loader is set")));
}

TEST_P(ModelLoaderTest, LoaderThatThrowsLeavesTheStateAsItWas) {
    GPUModel model;
    InstanceData material = materialWithPath(kPath);
    const std::unique_ptr<Texture> red = Texture::ofColor(Qt::red);
    material.setTexture(QStringLiteral("first"), red.get());
    material.setTexture(QStringLiteral("second"), kPath);
    addMaterials(model, {material});
    model.setTextureLoader([](const QString&) -> std::shared_ptr<Texture> {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        throw std::runtime_error("no disk");
    });
    const AutoBinder binder(_program.get());
    const BusyClient client;
    _program->bind();
    const ClientState before = ClientState::captured();
    EXPECT_THROW(model.draw(), std::runtime_error);
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    _program->unbind();
}

TEST_P(ModelLoaderTest, FirstDrawLeavesTheUnpackAlignmentAlone) {
    TextureManager::Instance().setLoader([texture = std::shared_ptr<Texture>()](const QString&) mutable {
        glEntryPoints().pixelStorei(GL_UNPACK_ALIGNMENT, 1);
        texture = Texture::ofColor(Qt::red);
        return texture.get();
    });
    GPUModel model;
    addMaterials(model, {materialWithPath(kPath)});
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    drawnColors(model, 1);
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 8);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

TEST_P(ModelLoaderTest, DeletedTextureIsDrawnWhite) {
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), texture.get());
    GPUModel model;
    addMaterials(model, {material});
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
    texture.reset();
    // Others take its memory.
    const std::unique_ptr<Texture> others[] = {Texture::ofColor(Qt::blue), Texture::ofColor(Qt::green)};
    const MessageLog log;
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::white}));
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::white}));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(ModelLoaderTest, TextureFiledUnderATokenMayBeDeleted) {
    const TextureToken token;
    std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    TextureManager::Instance().setTexture(token, texture.get());
    EXPECT_EQ(TextureManager::Instance().texture(token), texture.get());
    texture.reset();
    EXPECT_EQ(TextureManager::Instance().texture(token), nullptr);
}

} // namespace Atelier::Vel::Testing

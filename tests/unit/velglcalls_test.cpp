// The calls that VelModel makes to VelGL: all of them, with their arguments, in order.

#include <memory>
#include <string>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "callrecord.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using Testing::CallRecord;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kTriangles = 4;

const QString kPosition = QStringLiteral("position");

class Context : public OpenGLDeviceContext {};

class VelGLCallsTest : public testing::Test {
protected:
    static void SetUpTestSuite() { callsAtLoad(); }
    VelGLCallsTest() {
        CallRecord& record = CallRecord::instance();
        record.restart();
        record.succeeds = true;
        record.objectsLeft = 100;
        OpenGLDeviceContext::setCurrent(QSharedPointer<Context>::create());
    }
    ~VelGLCallsTest() override { OpenGLDeviceContext::setCurrent({}); }

    /// Those of the static objects, before the first test.
    static const std::string& callsAtLoad() {
        static const std::string calls = CallRecord::instance().take();
        return calls;
    }
    static std::string calls() { return CallRecord::instance().take(); }

    MessageLog _log;
};

/// Uploads a square of two triangles.
class UploadCallsTest : public VelGLCallsTest {
protected:
    UploadCallsTest() { makeBuilder({}, 0); }

    void makeBuilder(QSharedPointer<ModelDataStreamAllocator> allocator, quint64 mask) {
        _builder = std::make_unique<ModelBuilder>(std::move(allocator), mask);
        const float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
        const unsigned int corners[] = {0, 1, 2, 0, 2, 3};
        const unsigned int counts[] = {3, 3};
        _builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
        _builder->addValuesToVertexAttribute(kPosition, 12, positions, kFloat);
        _builder->addIndicesToVertexAttribute(kPosition, 6, corners);
        _builder->addVertexCountsToFaces(2, counts);
    }
    void addGroup(const QString& name, int id, quint64 flags, unsigned int face, const QString& objectName) {
        InstanceData material(QStringLiteral("material of ") + name);
        const float shine = static_cast<float>(id) + 0.5F;
        material.set(QStringLiteral("shine"), &shine, sizeof shine);
        _builder->createMaterialGroup(name, material, id, flags);
        _builder->addFacesToMaterialGroup(name, 1, &face, objectName);
    }
    /// One group for each of the triangles.
    void addBothGroups() {
        addGroup(QStringLiteral("second"), 8, 0x12, 1, QStringLiteral("upper"));
        addGroup(QStringLiteral("first"), 3, 0x21, 0, QStringLiteral("lower"));
    }
    /// The calls of an upload, including the destruction of the model.
    std::string uploadCalls(const QString& groupIdMember = QString(), const QString& position = kPosition) {
        GPUModel model;
        const InstanceData instance(QStringLiteral("instance"));
        calls();
        _builder->upload(&model, instance, position, groupIdMember, kStaticDraw, kTriangles);
        return calls();
    }

    std::unique_ptr<ModelBuilder> _builder;
};

/// Those before the first buffer.
const std::string kStartCalls = "current -> context\nsetDefaultLoader\n";

std::string bufferCalls(int number, const std::string& target, const std::string& upload) {
    const std::string buffer = "buffer " + std::to_string(number);
    return "context: createBufferObject -> " + buffer + "\n" + //
           buffer + ": setTarget " + target + "\n" +           //
           buffer + ": bind\n" +                               //
           buffer + ": " + upload + ", usage 0x88e4\n" +       //
           buffer + ": unbind\n";
}

std::string indexCalls(const std::string& indices) {
    return bufferCalls(0, "0x8893", "uploadGLushortData " + indices);
}

std::string positionCalls() {
    return bufferCalls(1, "0x8892", "uploadArbitraryData [0 0 0 1 0 0 1 1 0 0 1 0], 12 elements of 4 bytes");
}

/// The guards, and the two buffers of the square with a group for each triangle.
std::string squareCalls() {
    return kStartCalls + indexCalls("[0 1 2 0 2 3]") + positionCalls();
}

/// What makes a drawable of the square, up to its collections.
std::string drawableCalls(int number, int indexCount, const std::string& commands) {
    const std::string drawable = "drawable " + std::to_string(number);
    const std::string array = "array " + std::to_string(number);
    return "context: createVertexArrayObject -> " + array + "\n" +                                     //
           "new " + drawable + ", without parent\n" +                                                  //
           drawable + ": setVAO " + array + "\n" +                                                     //
           drawable + ": setIndexedDraw buffer 0, " + std::to_string(indexCount) + ", type 0x1403\n" + //
           drawable + ": setVertexCount 4\n" +                                                         //
           drawable + ": setPrimitiveType 0x4\n" +                                                     //
           drawable + ": setDrawElementsIndirectCommands " + commands + "\n" +                         //
           drawable + ": VAO\n" +                                                                      //
           array + ": registerBO 'position', buffer 1, 3 components, type 0x1406\n";
}

} // namespace

TEST_F(VelGLCallsTest, StaticObjectsCallInTheOrderOfTheirUnits) {
    EXPECT_EQ(callsAtLoad(), "new token 1\n"
                             "new plan 'InstanceInfo'\n"
                             "plan 'InstanceInfo': addMember 17, 'ModelMatrix'\n"
                             "plan 'InstanceInfo': addMember 17, 'ModelNormalMatrix'\n"
                             "registerPlan 'InstanceInfo'\n"
                             "new token 2\n"
                             "new plan 'OBJMaterial'\n"
                             "plan 'OBJMaterial': addMember 13, 'Ns'\n"
                             "plan 'OBJMaterial': addMember 13, 'd'\n"
                             "plan 'OBJMaterial': addMember 15, 'Kd'\n"
                             "plan 'OBJMaterial': addMember 15, 'Ks'\n"
                             "plan 'OBJMaterial': addMember 15, 'Ke'\n"
                             "plan 'OBJMaterial': addMember 0, 'map_Ns'\n"
                             "plan 'OBJMaterial': addMember 0, 'map_Kd'\n"
                             "plan 'OBJMaterial': addMember 0, 'map_Ks'\n"
                             "plan 'OBJMaterial': addMember 0, 'map_Ke'\n"
                             "registerPlan 'OBJMaterial'\n");
}

TEST_F(UploadCallsTest, EachDrawKeyGetsADrawableWithMaterials) {
    makeBuilder({}, 0x0F);
    addBothGroups();
    EXPECT_EQ(
        uploadCalls(),
        squareCalls() + drawableCalls(0, 6, "(3 1 0 0 0)") +
            "new collection 0, 'material of first', {material of first, shine = 3.5}\n"
            "new collection 1, 'instance', {instance}\n"
            "model 0: add drawable 0, instance count 1, materials collection 0, instances collection 1, "
            "key 1 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, 'lower'\n" +
            drawableCalls(1, 6, "(3 1 3 0 0)") +
            "new collection 2, 'material of second', {material of second, shine = 8.5}\n"
            "new collection 3, 'instance', {instance}\n"
            "model 0: add drawable 1, instance count 1, materials collection 2, instances collection 3, "
            "key 2 -> 11\n"
            "model 0: addMaterialName 11, 0, 'second'\n"
            "model 0: addObjectName 11, 0, 'upper'\n");
}

TEST_F(UploadCallsTest, GroupIdMemberReplacesTheMaterials) {
    makeBuilder({}, 0x0F);
    addBothGroups();
    EXPECT_EQ(
        uploadCalls(QStringLiteral("group")),
        squareCalls() + drawableCalls(0, 6, "(3 1 0 0 0)") +
            "instance data 'instance': set 'group' = 3\n"
            "new collection 0, 'instance', {instance, group = 3}\n"
            "model 0: add drawable 0, instance count 1, materials null, instances collection 0, key 1 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, 'lower'\n" +
            drawableCalls(1, 6, "(3 1 3 0 0)") +
            "instance data 'instance': set 'group' = 8\n"
            "new collection 1, 'instance', {instance, group = 8}\n"
            "model 0: add drawable 1, instance count 1, materials null, instances collection 1, key 2 -> 11\n"
            "model 0: addMaterialName 11, 0, 'second'\n"
            "model 0: addObjectName 11, 0, 'upper'\n");
}

TEST_F(UploadCallsTest, EachCommandGetsItsMaterialNameAndThenItsObjectName) {
    addBothGroups();
    addGroup(QStringLiteral("third"), 9, 0, 0, QStringLiteral("lower"));
    EXPECT_EQ(
        uploadCalls(),
        kStartCalls + indexCalls("[0 1 2 0 2 3 0 1 2]") + positionCalls() +
            drawableCalls(0, 9, "(3 1 0 0 0) (3 1 3 0 0) (3 1 6 0 0)") +
            "new collection 0, 'material of first', {material of first, shine = 3.5} "
            "{material of second, shine = 8.5} {material of third, shine = 9.5}\n"
            "new collection 1, 'instance', {instance} {instance} {instance}\n"
            "model 0: add drawable 0, instance count 1, materials collection 0, instances collection 1, "
            "key 0 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, 'lower'\n"
            "model 0: addMaterialName 10, 1, 'second'\n"
            "model 0: addObjectName 10, 1, 'upper'\n"
            "model 0: addMaterialName 10, 2, 'third'\n"
            "model 0: addObjectName 10, 2, 'lower'\n");
}

TEST_F(UploadCallsTest, CommandWithoutAnObjectGetsANullName) {
    addGroup(QStringLiteral("nameless"), 0, 0, 0, QString());
    addGroup(QStringLiteral("named"), 1, 0, 1, QStringLiteral("lower"));
    addGroup(QStringLiteral("empty"), 2, 0, 1, QStringLiteral(""));
    addGroup(QStringLiteral("last"), 3, 0, 1, QString());
    const std::string calls = uploadCalls(QStringLiteral("group"));
    EXPECT_EQ(calls.substr(calls.find("model 0: addMaterialName")),
              "model 0: addMaterialName 10, 0, 'nameless'\n"
              "model 0: addObjectName 10, 0, null\n"
              "model 0: addMaterialName 10, 1, 'named'\n"
              "model 0: addObjectName 10, 1, 'lower'\n"
              "model 0: addMaterialName 10, 2, 'empty'\n"
              "model 0: addObjectName 10, 2, ''\n"
              "model 0: addMaterialName 10, 3, 'last'\n"
              "model 0: addObjectName 10, 3, null\n");
}

TEST_F(UploadCallsTest, EachAttributeIsRegisteredWithTheArrayThatTheDrawableReturns) {
    const quint8 colors[] = {1, 2, 3, 4};
    const unsigned int corners[] = {0, 0, 0, 0, 0, 0};
    _builder->createVertexAttribute(QStringLiteral("color"), 4, 0x1401, 0, 0);
    _builder->addValuesToVertexAttribute(QStringLiteral("color"), 4, colors, 0x1401);
    _builder->addIndicesToVertexAttribute(QStringLiteral("color"), 6, corners);
    _builder->generateNormals(QStringLiteral("normal"));
    addGroup(QStringLiteral("first"), 0, 0, 0, QString());
    EXPECT_EQ(
        uploadCalls(),
        kStartCalls + indexCalls("[0 1 2]") +
            bufferCalls(1, "0x8892",
                        "uploadArbitraryData [1 2 3 4 1 2 3 4 1 2 3 4 1 2 3 4], 16 elements of 1 bytes") +
            bufferCalls(2, "0x8892",
                        "uploadArbitraryData [0 0 -1 0 0 -1 0 0 -1 0 0 0], 12 elements of 4 bytes") +
            bufferCalls(3, "0x8892",
                        "uploadArbitraryData [0 0 0 1 0 0 1 1 0 0 1 0], 12 elements of 4 bytes") +
            "context: createVertexArrayObject -> array 0\n"
            "new drawable 0, without parent\n"
            "drawable 0: setVAO array 0\n"
            "drawable 0: setIndexedDraw buffer 0, 3, type 0x1403\n"
            "drawable 0: setVertexCount 4\n"
            "drawable 0: setPrimitiveType 0x4\n"
            "drawable 0: setDrawElementsIndirectCommands (3 1 0 0 0)\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'color', buffer 1, 4 components, type 0x1401\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'normal', buffer 2, 3 components, type 0x1406\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'position', buffer 3, 3 components, type 0x1406\n"
            "new collection 0, 'material of first', {material of first, shine = 0.5}\n"
            "new collection 1, 'instance', {instance}\n"
            "model 0: add drawable 0, instance count 1, materials collection 0, instances collection 1, "
            "key 0 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, null\n");
}

TEST_F(UploadCallsTest, IndicesOfManyVerticesAreUploadedAsThirtyTwoBits) {
    constexpr unsigned int kVertexCount = 65535;
    _builder->clear();
    std::vector<float> positions;
    std::vector<unsigned int> corners;
    for (unsigned int i = 0; i < kVertexCount; ++i) {
        positions.insert(positions.end(), {static_cast<float>(i), static_cast<float>(i % 7), 0.0F});
        corners.push_back(i);
    }
    corners.insert(corners.end(), {0, 1, kVertexCount - 1});
    const unsigned int counts[] = {kVertexCount, 3};
    _builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    _builder->addValuesToVertexAttribute(kPosition, positions.size(), positions.data(), kFloat);
    _builder->addIndicesToVertexAttribute(kPosition, corners.size(), corners.data());
    _builder->addVertexCountsToFaces(2, counts);
    addGroup(QStringLiteral("first"), 0, 0, 1, QString());
    EXPECT_EQ(
        uploadCalls(QStringLiteral("group")),
        kStartCalls + bufferCalls(0, "0x8893", "uploadGLuintData [0 1 65534]") +
            bufferCalls(1, "0x8892",
                        "uploadArbitraryData [0 0 0 ... 196605 values ... 0], 196605 elements of 4 bytes") +
            "context: createVertexArrayObject -> array 0\n"
            "new drawable 0, without parent\n"
            "drawable 0: setVAO array 0\n"
            "drawable 0: setIndexedDraw buffer 0, 3, type 0x1405\n"
            "drawable 0: setVertexCount 65535\n"
            "drawable 0: setPrimitiveType 0x4\n"
            "drawable 0: setDrawElementsIndirectCommands (3 1 0 0 0)\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'position', buffer 1, 3 components, type 0x1406\n"
            "instance data 'instance': set 'group' = 0\n"
            "new collection 0, 'instance', {instance, group = 0}\n"
            "model 0: add drawable 0, instance count 1, materials null, instances collection 0, key 0 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, null\n");
}

TEST_F(UploadCallsTest, SecondUploadCallsTheSameWithNewObjects) {
    addBothGroups();
    const std::string first = uploadCalls();
    CallRecord::instance().restart();
    EXPECT_EQ(uploadCalls(), first);
}

TEST_F(UploadCallsTest, GroupsWithoutFacesMakeBuffersAndNoDrawable) {
    _builder->createMaterialGroup(QStringLiteral("empty"), InstanceData(), 0, 0);
    EXPECT_EQ(uploadCalls(), kStartCalls + indexCalls("[]") + positionCalls());
}

TEST_F(UploadCallsTest, WithoutAContextNothingElseIsCalled) {
    addBothGroups();
    OpenGLDeviceContext::setCurrent({});
    EXPECT_EQ(uploadCalls(), "current -> null\n");
    EXPECT_THAT(_log.messages(), IsEmpty());
}

TEST_F(UploadCallsTest, InvalidBuilderAndUnknownPositionsCallNothing) {
    EXPECT_EQ(uploadCalls(), "") << "there is no group";
    addBothGroups();
    EXPECT_EQ(uploadCalls(QString(), QStringLiteral("unknown")), "");
    _builder->upload(nullptr, InstanceData(), kPosition, QString(), kStaticDraw, kTriangles);
    EXPECT_EQ(calls(), "");
}

TEST_F(UploadCallsTest, MissingIndexBufferStopsTheUpload) {
    addBothGroups();
    CallRecord::instance().objectsLeft = 0;
    EXPECT_EQ(uploadCalls(), kStartCalls + "context: createBufferObject -> null\n");
    EXPECT_THAT(
        _log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: the context made no object for the index buffer")));
}

TEST_F(UploadCallsTest, MissingVertexBufferStopsTheUpload) {
    addBothGroups();
    CallRecord::instance().objectsLeft = 1;
    EXPECT_EQ(uploadCalls(),
              kStartCalls + indexCalls("[0 1 2 0 2 3]") + "context: createBufferObject -> null\n");
    EXPECT_THAT(_log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Unable to upload: the context made no object for the buffer of "
                                           "vertex attribute 'position'")));
}

TEST_F(UploadCallsTest, DrawableWithoutAnArrayIsAddedAndRegistersNothing) {
    addBothGroups();
    CallRecord::instance().objectsLeft = 2;
    EXPECT_EQ(
        uploadCalls(QStringLiteral("group")),
        squareCalls() +
            "context: createVertexArrayObject -> null\n"
            "new drawable 0, without parent\n"
            "drawable 0: setVAO null\n"
            "drawable 0: setIndexedDraw buffer 0, 6, type 0x1403\n"
            "drawable 0: setVertexCount 4\n"
            "drawable 0: setPrimitiveType 0x4\n"
            "drawable 0: setDrawElementsIndirectCommands (3 1 0 0 0) (3 1 3 0 0)\n"
            "instance data 'instance': set 'group' = 3\n"
            "instance data 'instance': set 'group' = 8\n"
            "new collection 0, 'instance', {instance, group = 3} {instance, group = 8}\n"
            "model 0: add drawable 0, instance count 1, materials null, instances collection 0, key 0 -> 10\n"
            "model 0: addMaterialName 10, 0, 'first'\n"
            "model 0: addObjectName 10, 0, 'lower'\n"
            "model 0: addMaterialName 10, 1, 'second'\n"
            "model 0: addObjectName 10, 1, 'upper'\n");
    EXPECT_THAT(
        _log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: the context made no object for the vertex array "
                                   "of a drawable, which draws nothing")));
}

TEST_F(UploadCallsTest, ResultsOfBindsAndUploadsAreIgnored) {
    addBothGroups();
    const std::string sound = uploadCalls();
    CallRecord::instance().restart();
    CallRecord::instance().succeeds = false;
    EXPECT_EQ(uploadCalls(), sound);
}

TEST_F(UploadCallsTest, MissingStreamsOnlyCallTheContext) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    makeBuilder(allocator, 0);
    addBothGroups();
    allocator->limit(0);
    EXPECT_EQ(uploadCalls(), "current -> context\n");
}

TEST_F(UploadCallsTest, NothingOutlivesTheModel) {
    makeBuilder({}, 0x0F);
    addBothGroups();
    for (int objects = 0; objects < 6; ++objects) {
        CallRecord::instance().objectsLeft = objects;
        uploadCalls();
        EXPECT_THAT(CallRecord::instance().liveObjects(), IsEmpty()) << objects;
    }
}

class LoadCallsTest : public VelGLCallsTest {
protected:
    QString write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    }
    QString path(const QString& name) const { return _folder.filePath(name); }

private:
    QTemporaryDir _folder;
};

const std::string kIdentity = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";

/// Those of a load before the first line of the file is read. Textures wait for the upload.
const std::string kDefaultMaterialCalls = "new instance data 'OBJMaterial'\n"
                                          "instance data 'OBJMaterial': set 'Ka' = 0 0 0\n"
                                          "instance data 'OBJMaterial': set 'Kd' = 0.7 0.7 0.7\n"
                                          "instance data 'OBJMaterial': set 'Ks' = 1 1 1\n"
                                          "instance data 'OBJMaterial': set 'Ns' = 10\n"
                                          "instance data 'OBJMaterial': set 'd' = 1\n";

TEST_F(LoadCallsTest, LoadOfAModelWithALibrary) {
    write("m.mtl", "newmtl red\nKd 1 0 0.5\nNs 8\nmap_Kd red.png\nnewmtl plain\n");
    const QString model = write("m.obj", "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"
                                         "usemtl red\nf 3 2 1\nusemtl plain\nf 2 1 3\n");
    const std::string picture = '\'' + path("red.png").toStdString() + "'";
    const std::string instance = "{InstanceInfo, ModelMatrix = " + kIdentity +
                                 ", ModelNormalMatrix = " + kIdentity +
                                 ", PreviousModelMatrix = " + kIdentity + "}";
    QString error;
    EXPECT_TRUE(std::unique_ptr<GPUModel>(loadModelFromOBJFile(model, error)));
    EXPECT_EQ(
        calls(),
        kDefaultMaterialCalls +
            "new instance data 'OBJMaterial'\n"
            "new instance data 'OBJMaterial'\n"
            "instance data 'OBJMaterial': set 'd' = 1\n"
            "instance data 'OBJMaterial': clear\n"
            "instance data 'OBJMaterial': set 'd' = 1\n"
            "instance data 'OBJMaterial': set 'Kd' = 1 0 0.5\n"
            "instance data 'OBJMaterial': set 'Ns' = 8\n"
            "instance data 'OBJMaterial': setTexture 'map_Kd', " +
            picture +
            "\n"
            "instance data 'OBJMaterial': clear\n"
            "instance data 'OBJMaterial': set 'd' = 1\n"
            "new model 0\n"
            "model 0: setLabel 'm.obj'\n"
            "new instance data 'InstanceInfo'\n"
            "instance data 'InstanceInfo': set 'ModelMatrix' = " +
            kIdentity +
            "\n"
            "instance data 'InstanceInfo': set 'PreviousModelMatrix' = " +
            kIdentity +
            "\n"
            "instance data 'InstanceInfo': set 'ModelNormalMatrix' = " +
            kIdentity +
            "\n"
            "current -> context\n"
            "setDefaultLoader\n"
            "colorTexture #ffffffff\n"
            "instance data 'OBJMaterial': setTexture 'map_Kd', texture of #ffffffff\n"
            "instance data 'OBJMaterial': setTexture 'map_Ks', texture of #ffffffff\n" +
            indexCalls("[0 1 2 2 1 0 1 0 2]") +
            bufferCalls(1, "0x8892", "uploadArbitraryData [0 0 1 0 0 1 0 0 1], 9 elements of 4 bytes") +
            bufferCalls(2, "0x8892", "uploadArbitraryData [0 0 0 1 0 0 0 1 0], 9 elements of 4 bytes") +
            "context: createVertexArrayObject -> array 0\n"
            "new drawable 0, without parent\n"
            "drawable 0: setVAO array 0\n"
            "drawable 0: setIndexedDraw buffer 0, 9, type 0x1403\n"
            "drawable 0: setVertexCount 3\n"
            "drawable 0: setPrimitiveType 0x4\n"
            "drawable 0: setDrawElementsIndirectCommands (3 1 0 0 0) (3 1 3 0 0) (3 1 6 0 0)\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'va_Normal', buffer 1, 3 components, type 0x1406\n"
            "drawable 0: VAO\n"
            "array 0: registerBO 'va_Vertex', buffer 2, 3 components, type 0x1406\n"
            "new collection 0, 'OBJMaterial', {OBJMaterial, Ka = 0 0 0, Kd = 0.7 0.7 0.7, Ks = 1 1 1, Ns = "
            "10, "
            "d = 1, map_Kd: texture of #ffffffff, map_Ks: texture of #ffffffff} "
            "{OBJMaterial, Kd = 1 0 0.5, Ns = 8, d = 1, map_Kd: " +
            picture +
            "} {OBJMaterial, d = 1}\n"
            "new collection 1, 'InstanceInfo', " +
            instance + ' ' + instance + ' ' + instance +
            "\n"
            "model 0: add drawable 0, instance count 1, materials collection 0, instances collection 1, "
            "key 0 -> 10\n"
            "model 0: addMaterialName 10, 0, '<default>'\n"
            "model 0: addObjectName 10, 0, null\n"
            "model 0: addMaterialName 10, 1, 'red'\n"
            "model 0: addObjectName 10, 1, null\n"
            "model 0: addMaterialName 10, 2, 'plain'\n"
            "model 0: addObjectName 10, 2, null\n");
}

TEST_F(LoadCallsTest, ReadingDrawDataNeedsNoContextAndNoTexture) {
    const QString model = write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    QString error;
    const DrawData data = readDrawDataFromOBJFile(model, error);
    EXPECT_FALSE(data.isNull());
    EXPECT_EQ(calls(), kDefaultMaterialCalls);
}

TEST_F(LoadCallsTest, UploadOfDrawDataCallsWhatALoadCalls) {
    const QString model = write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    QString error;
    EXPECT_TRUE(std::unique_ptr<GPUModel>(loadModelFromOBJFile(model, error)));
    const std::string all = calls();
    const std::string expected = all.substr(all.find("current -> context"));
    CallRecord::instance().restart();
    DrawData data = readDrawDataFromOBJFile(model, error);
    GPUModel other;
    const UploadOptions options{makeIdentityInstance()};
    calls();
    upload(std::move(data), other, options);
    EXPECT_EQ(calls(), expected);
}

TEST_F(LoadCallsTest, BoxesAreSetForTheNumberOfTheDrawable) {
    QString error;
    DrawData data = readDrawDataFromOBJFile(write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), error);
    GPUModel model;
    UploadOptions options{makeIdentityInstance()};
    options.commandBounds = true;
    calls();
    upload(std::move(data), model, options);
    const std::string all = calls();
    EXPECT_NE(all.find(": setCommandBounds 10 1\n"), std::string::npos) << all;
}

TEST_F(LoadCallsTest, LoadThatFailsMakesNoModel) {
    QString error;
    EXPECT_EQ(loadModelFromOBJFile(path("none.obj"), error), nullptr);
    EXPECT_EQ(calls(), "");
    const QString model = write("m.obj", "v 0 0 0\nf 1 1 1\nmtllib none.mtl\n");
    EXPECT_EQ(loadModelFromOBJFile(model, error), nullptr);
    EXPECT_EQ(calls(), kDefaultMaterialCalls);
}

TEST_F(LoadCallsTest, LoadWithoutFacesMakesAnEmptyModel) {
    QString error;
    EXPECT_TRUE(std::unique_ptr<GPUModel>(loadModelFromOBJFile(write("m.obj", "v 0 0 0\n"), error)));
    EXPECT_EQ(calls(), kDefaultMaterialCalls +
                           "new model 0\n"
                           "model 0: setLabel 'm.obj'\n"
                           "new instance data 'InstanceInfo'\n"
                           "instance data 'InstanceInfo': set 'ModelMatrix' = " +
                           kIdentity +
                           "\n"
                           "instance data 'InstanceInfo': set 'PreviousModelMatrix' = " +
                           kIdentity +
                           "\n"
                           "instance data 'InstanceInfo': set 'ModelNormalMatrix' = " +
                           kIdentity + "\n");
}

class TextureCallsTest : public LoadCallsTest {
protected:
    /// A picture of two pixels, red above blue.
    QString writePicture() const {
        QImage image(1, 2, QImage::Format_ARGB32);
        image.setPixel(0, 0, qRgba(255, 0, 0, 128));
        image.setPixel(0, 1, qRgba(0, 0, 255, 64));
        EXPECT_TRUE(image.save(path("a.png")));
        return path("a.png");
    }
};

/// The sizes of the file and of its image are compared with the largest one, whatever the format.
const std::string kSizeCalls = "getIntegerv 0xd33\ngetIntegerv 0xd33\ngetIntegerv 0xd33\ngetIntegerv 0xd33\n";

TEST_F(TextureCallsTest, TextureIsFilledFromTheBottomRowUpAndMarkedFinal) {
    const QString picture = writePicture();
    EXPECT_NE(LoadTexture(picture), nullptr);
    EXPECT_EQ(calls(), kSizeCalls +
                           "new texture 0, target 0xde1, format 0x1908, 1 x 2 x 0, without parent\n"
                           "texture 0: bind\n"
                           "texture 0: unbind\n"
                           "texture 0: bind\n"
                           "pixelStorei 0xcf5, 1\n"
                           "texParameteri 0xde1, 0x2801, 0x2703\n"
                           "texParameteri 0xde1, 0x2800, 0x2601\n"
                           "texParameteri 0xde1, 0x2802, 0x2901\n"
                           "texParameteri 0xde1, 0x2803, 0x2901\n"
                           "texParameteri 0xde1, 0x813c, 0x0\n"
                           "texParameteri 0xde1, 0x813d, 0x4\n"
                           "texImage2D 0xde1, 0, 0x1908, 1 x 2, 0, 0x80e1, 0x1401, [255 0 0 64 0 0 255 128]\n"
                           "texture 0: target\n"
                           "generateMipmap 0xde1\n"
                           "texture 0: setReadOnly\n"
                           "texture 0: setRefill\n"
                           "texture 0: unbind\n");
    EXPECT_NE(LoadTexture(picture), nullptr);
    EXPECT_EQ(calls(), "") << "the texture is cached";
}

TEST_F(TextureCallsTest, TextureThatCannotBeBoundIsNotFilled) {
    CallRecord::instance().succeeds = false;
    EXPECT_EQ(LoadTexture(writePicture()), nullptr);
    EXPECT_EQ(calls(), kSizeCalls + "new texture 0, target 0xde1, format 0x1908, 1 x 2 x 0, without parent\n"
                                    "texture 0: bind\n"
                                    "texture 0: unbind\n");
}

TEST_F(TextureCallsTest, FileThatIsNoImageMakesNoTexture) {
    EXPECT_EQ(LoadTexture(path("none.png")), nullptr);
    EXPECT_EQ(calls(), "");
}

} // namespace Atelier::Vel

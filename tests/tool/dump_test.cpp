// The JSON of `velmodel dump`, compared byte by byte if the bytes are predictable.

#include <algorithm>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>

#include <velmodel/drawdata.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

QJsonObject dumped(const QString& path, const QStringList& options = {}, int exitCode = 0) {
    const ProgramResult result = runProgram(QStringList{"dump", path} + options);
    EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
    return QJsonDocument::fromJson(result.output).object();
}

QByteArray decoded(const QJsonValue& value) {
    return QByteArray::fromBase64(value.toString().toLatin1());
}

QVector<float> floats(const QByteArray& bytes) {
    QVector<float> values(bytes.size() / int(sizeof(float)));
    std::copy(bytes.cbegin(), bytes.cend(), reinterpret_cast<char*>(values.data()));
    return values;
}

TEST(DumpTest, TriangleIsReadBackFromTheGPU) {
    const TemporaryFolder folder;
    const QString path = folder.write("t.obj", triangleText());
    const QJsonObject dump = dumped(path);
    EXPECT_EQ(dump.keys(), QStringList({"attributes", "drawables", "file", "indexCount", "indexType",
                                        "indices", "vertexCount"}));
    EXPECT_EQ(dump["file"], path);
    EXPECT_EQ(dump["vertexCount"], 3);
    EXPECT_EQ(dump["indexCount"], 3);
    EXPECT_EQ(dump["indexType"], "GL_UNSIGNED_SHORT");
    EXPECT_EQ(decoded(dump["indices"]).size(), 6);
    const QJsonArray attributes = dump["attributes"].toArray();
    ASSERT_EQ(attributes.size(), 2);
    EXPECT_EQ(attributes[0]["name"], "va_Normal");
    EXPECT_EQ(attributes[1]["name"], "va_Vertex");
    EXPECT_EQ(attributes[1]["components"], 3);
    EXPECT_EQ(attributes[1]["type"], "GL_FLOAT");
    EXPECT_EQ(floats(decoded(attributes[1]["data"])), QVector<float>({0, 0, 0, 1, 0, 0, 0, 1, 0}));
}

TEST(DumpTest, DrawableListsCommandsMaterialsAndInstancesInParallel) {
    const QJsonArray drawables = dumped(samplePath("gear"))["drawables"].toArray();
    ASSERT_EQ(drawables.size(), 1);
    const QJsonObject drawable = drawables[0].toObject();
    EXPECT_EQ(drawable.keys(), QStringList({"commands", "instances", "key", "materials", "primitive"}));
    EXPECT_EQ(drawable["key"], 0);
    EXPECT_EQ(drawable["primitive"], "GL_TRIANGLES");
    ASSERT_EQ(drawable["commands"].toArray().size(), 2);
    EXPECT_EQ(drawable["materials"].toArray().size(), 2);
    EXPECT_EQ(drawable["instances"].toArray().size(), 2);
    const QJsonObject first = drawable["commands"][0].toObject();
    EXPECT_EQ(first, (QJsonObject{{"count", 468},
                                  {"instanceCount", 1},
                                  {"firstIndex", 0},
                                  {"baseVertex", 0},
                                  {"baseInstance", 0},
                                  {"material", "steel"},
                                  {"object", QJsonValue()}}));
    EXPECT_EQ(drawable["commands"][1]["firstIndex"], 468);
}

TEST(DumpTest, MaterialsShowValuesAndTexturePaths) {
    const QJsonValue dump = dumped(samplePath("vase"), {"--exact"});
    const QJsonObject drawable = dump["drawables"][0].toObject();
    const QJsonObject material = drawable["materials"][0].toObject();
    EXPECT_EQ(material["name"], "OBJMaterial");
    EXPECT_EQ(material["values"]["Ks"], (QJsonArray{0.7, 0.7, 0.7}));
    EXPECT_EQ(material["values"]["d"], QJsonArray{1});
    EXPECT_EQ(material["textures"], (QJsonObject{{"map_Kd", VELMODEL_SOURCE_DIR "/samples/vase/glaze.png"}}));
    const QJsonObject instance = drawable["instances"][0].toObject();
    EXPECT_EQ(instance["name"], "InstanceInfo");
    EXPECT_EQ(instance["values"].toObject().keys(),
              QStringList({"ModelMatrix", "ModelNormalMatrix", "PreviousModelMatrix"}));
    EXPECT_EQ(instance["values"]["ModelMatrix"].toArray().size(), 16);
}

TEST(DumpTest, MaterialsAreExtendedUnlessTheLoadIsExact) {
    const QJsonValue dump = dumped(samplePath("vase"));
    const QJsonObject material = dump["drawables"][0]["materials"][0].toObject();
    EXPECT_EQ(material["name"], "OBJMaterialExtended");
    EXPECT_EQ(material["values"]["map_scale"], (QJsonArray{1, 1}));
    EXPECT_EQ(material["values"]["illum"], QJsonArray{2});
}

TEST(DumpTest, TextureSetAsAnObjectShowsAsNull) {
    const TemporaryFolder folder;
    const QJsonValue dump = dumped(folder.write("t.obj", triangleText()));
    const QJsonObject textures = dump["drawables"][0]["materials"][0]["textures"].toObject();
    EXPECT_EQ(textures, (QJsonObject{{"map_Kd", QJsonValue()}, {"map_Ks", QJsonValue()}}));
}

TEST(DumpTest, NumbersUnknownToJsonAreStrings) {
    const TemporaryFolder folder;
    folder.write("odd.mtl", "newmtl odd\nKd nan inf -inf\nKs -0 0.1 1e-40\n");
    const QString path = folder.write("t.obj", "mtllib odd.mtl\nusemtl odd\n" + triangleText());
    const QByteArray text = runProgram({"dump", path, "--no-data"}).output.simplified();
    EXPECT_TRUE(text.contains("\"Kd\": [ \"nan\", \"inf\", \"-inf\" ]")) << text.toStdString();
    EXPECT_TRUE(text.contains("\"Ks\": [ -0.0, 0.1, 1e-40 ]")) << text.toStdString();
}

TEST(DumpTest, ModelWithoutTrianglesHasZeroCountsAndEmptyLists) {
    const TemporaryFolder folder;
    const QString path = folder.write("empty.obj", "# nothing\n");
    EXPECT_EQ(dumped(path, {}, 1), (QJsonObject{{"file", path},
                                                {"vertexCount", 0},
                                                {"indexType", "GL_UNSIGNED_SHORT"},
                                                {"indexCount", 0},
                                                {"indices", ""},
                                                {"attributes", QJsonArray()},
                                                {"drawables", QJsonArray()}}));
}

TEST(DumpTest, NoDataOmitsOnlyTheContents) {
    QJsonObject full = dumped(samplePath("stairs"));
    full.remove("indices");
    QJsonArray attributes;
    for (const QJsonValue value : full["attributes"].toArray()) {
        QJsonObject attribute = value.toObject();
        attribute.remove("data");
        attributes.append(attribute);
    }
    full["attributes"] = attributes;
    EXPECT_EQ(dumped(samplePath("stairs"), {"--no-data"}), full);
}

class EveryDumpTest : public testing::TestWithParam<const char*> {};

TEST_P(EveryDumpTest, IsTheSameBytesTenTimes) {
    const QStringList arguments = {"dump", samplePath(GetParam())};
    const QByteArray first = runProgram(arguments).output;
    EXPECT_FALSE(first.isEmpty());
    for (int run = 1; run < 10; ++run)
        EXPECT_TRUE(runProgram(arguments).output == first) << "run " << run;
}

INSTANTIATE_TEST_SUITE_P(Samples, EveryDumpTest,
                         testing::Values("showpiece", "gear", "mosaic", "vase", "stairs", "oddities"));

/// The positions of the triangles that the first command draws, sorted. Each triangle begins with its
/// smallest position.
QVector<QVector<QVector<float>>> firstTriangles(const QJsonObject& dump) {
    const QVector<float> positions = floats(decoded(dump["attributes"].toArray().last()["data"]));
    const QByteArray indices = decoded(dump["indices"]);
    const auto* const shorts = reinterpret_cast<const quint16*>(indices.constData());
    const QJsonValue drawables = dump["drawables"];
    const QJsonValue command = drawables[0]["commands"][0];
    QVector<QVector<QVector<float>>> triangles;
    for (int i = 0; i < command["count"].toInt(); i += 3) {
        QVector<QVector<float>> triangle;
        for (int corner = 0; corner < 3; ++corner)
            triangle.append(positions.mid(3 * shorts[command["firstIndex"].toInt() + i + corner], 3));
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
        triangles.append(triangle);
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

TEST(DumpTest, OptimisedModelHasTheSameTrianglesAndCommands) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "this build cannot optimise";
    const QJsonObject before = dumped(samplePath("vase"));
    const QJsonObject after = dumped(samplePath("vase"), {"--optimise"});
    EXPECT_NE(after["indices"], before["indices"]);
    EXPECT_EQ(after["drawables"], before["drawables"]);
    EXPECT_EQ(after["vertexCount"], before["vertexCount"]);
    EXPECT_EQ(firstTriangles(after).size(), 512);
    EXPECT_EQ(firstTriangles(after), firstTriangles(before));
}

TEST(DumpTest, OptimisedModelWithNothingToDrawStaysEmpty) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "this build cannot optimise";
    const TemporaryFolder folder;
    const QString path = folder.write("empty.obj", "# nothing\n");
    const ProgramResult optimised = runProgram({"dump", path, "--optimise"});
    EXPECT_EQ(optimised.exitCode, 1);
    EXPECT_EQ(optimised.output, runProgram({"dump", path}).output);
}

TEST(DumpTest, ReportsItsOpenGLOnRequest) {
    const QStringList dump = {"dump", "--no-data", samplePath("gear")};
    EXPECT_FALSE(runProgram(dump).errors.contains("OpenGL: "));
    EXPECT_TRUE(runProgram(dump + QStringList{"--verbose", "info"}).errors.contains("velmodel: OpenGL: "));
}

TEST(DumpTest, OutputThatCannotBeWrittenIsExitCodeFour) {
    ProgramSurroundings surroundings;
    surroundings.outputFile = "/dev/full";
    const ProgramResult result = runProgram({"dump", samplePath("gear")}, surroundings);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors,
              "velmodel: samples/gear/gear.obj: The dump cannot be written: No space left on device\n");
}

} // namespace

} // namespace Atelier::Vel::Testing

#include <velmodel/objloader.h>

#include <cstring>
#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/texturemanager.h>

#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

std::vector<float> floats(const InstanceData& material, const char* name) {
    const QByteArray bytes = material.value(QString::fromLatin1(name));
    std::vector<float> values(static_cast<size_t>(bytes.size()) / sizeof(float));
    std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(float));
    return values;
}

/// Materials as they come out of a library, each on one face.
class MaterialLibraryTest : public testing::Test {
protected:
    /// Loads a library and a model that has a face in each of `materials`.
    void load(const QByteArray& library, const QStringList& materials = {QStringLiteral("red")}) {
        QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nmtllib lib.mtl\n";
        for (const QString& name : materials)
            text += "usemtl " + name.toUtf8() + "\nf 1 2 3\n";
        write(QStringLiteral("lib.mtl"), library);
        write(QStringLiteral("model.obj"), text);
        QString error;
        const RecordingContext context;
        const MessageLog log;
        _report = {};
        _model.reset(
            loadModelFromOBJFile(_directory.filePath(QStringLiteral("model.obj")), error, {}, &_report));
        ASSERT_NE(_model, nullptr) << error.toStdString();
    }
    QStringList names() const {
        QStringList result;
        for (int i = 0; _model->drawableCount() != 0 && i < _model->materials(0)->items().size(); ++i)
            result << _model->materialName(0, i);
        return result;
    }
    quint64 facesWithoutGroup() const { return _report.facesWithoutGroup; }
    InstanceData material(int command = 0) const { return _model->materials(0)->items().at(command); }
    QString directory() const { return _directory.path(); }

private:
    void write(const QString& name, const QByteArray& text) {
        QFile file(_directory.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir _directory;
    std::unique_ptr<GPUModel> _model;
    LoadReport _report;
};

} // namespace

TEST(DefaultMaterialTest, IsLightGreyWithWhiteMaps) {
    const InstanceData material = makeDefaultMaterial();
    EXPECT_EQ(material.name(), "OBJMaterial");
    EXPECT_EQ(material.valueNames(), QStringList({"Ka", "Kd", "Ks", "Ns", "d"}));
    EXPECT_THAT(floats(material, "Ka"), ElementsAre(0, 0, 0));
    EXPECT_EQ(material.value(QStringLiteral("Kd")).toHex(), "3333333f3333333f3333333f");
    EXPECT_THAT(floats(material, "Ks"), ElementsAre(1, 1, 1));
    EXPECT_THAT(floats(material, "Ns"), ElementsAre(10));
    EXPECT_THAT(floats(material, "d"), ElementsAre(1));
    Texture* white = TextureManager::Instance().colorTexture(Qt::white);
    EXPECT_EQ(material.textureNames(), QStringList({"map_Kd", "map_Ks"}));
    EXPECT_EQ(material.texture(QStringLiteral("map_Kd")), white);
    EXPECT_EQ(material.texture(QStringLiteral("map_Ks")), white);
}

TEST(MaterialPlanTest, DeclaresNineMembersInOrder) {
    using DataType = InstanceDataPlan::DataType;
    const InstanceDataPlan* plan = InstanceDataRegistry::Instance().plan(QStringLiteral("OBJMaterial"));
    ASSERT_NE(plan, nullptr);
    QStringList names;
    std::vector<DataType> types;
    for (const InstanceDataPlan::Member& member : plan->members()) {
        names << member.name;
        types.push_back(member.type);
    }
    EXPECT_EQ(names, QStringList({"Ns", "d", "Kd", "Ks", "Ke", "map_Ns", "map_Kd", "map_Ks", "map_Ke"}));
    EXPECT_THAT(types,
                ElementsAre(DataType::Float, DataType::Float, DataType::Vec3, DataType::Vec3, DataType::Vec3,
                            DataType::Texture, DataType::Texture, DataType::Texture, DataType::Texture));
}

TEST_F(MaterialLibraryTest, EmptyLibraryHasNoMaterials) {
    // A wrongly created group could have the empty name or an earlier one.
    for (const char* library : {"", "# comments\n\n  # only\n", "Kd 1 0 0\nillum 2\n"}) {
        load(library, {"", "red"});
        EXPECT_THAT(names(), IsEmpty()) << library;
        EXPECT_EQ(facesWithoutGroup(), 2u) << library;
    }
}

TEST_F(MaterialLibraryTest, MaterialHasItsGivenValuesAndIsOpaque) {
    load("newmtl red\nKd 1 0 0");
    EXPECT_EQ(names(), QStringList({"red"}));
    EXPECT_EQ(material().name(), "OBJMaterial");
    EXPECT_EQ(material().valueNames(), QStringList({"Kd", "d"}));
    EXPECT_THAT(floats(material(), "Kd"), ElementsAre(1, 0, 0));
    EXPECT_THAT(floats(material(), "d"), ElementsAre(1));
    EXPECT_TRUE(material().textureNames().isEmpty());
}

TEST_F(MaterialLibraryTest, EveryKeywordIsStoredUnderItsName) {
    load("newmtl red\nKa 1 2 3\nKd 4 5 6\nKs 7 8 9\nNs 10\nd 0.5\nmap_Kd a\nmap_Ks b\nmap_Ka c\nmap_Ns /d\n");
    EXPECT_THAT(floats(material(), "Ka"), ElementsAre(1, 2, 3));
    EXPECT_THAT(floats(material(), "Kd"), ElementsAre(4, 5, 6));
    EXPECT_THAT(floats(material(), "Ks"), ElementsAre(7, 8, 9));
    EXPECT_THAT(floats(material(), "Ns"), ElementsAre(10));
    EXPECT_THAT(floats(material(), "d"), ElementsAre(0.5F));
    EXPECT_EQ(material().texturePath(QStringLiteral("map_Kd")), directory() + "/a");
    EXPECT_EQ(material().texturePath(QStringLiteral("map_Ks")), directory() + "/b");
    EXPECT_EQ(material().texturePath(QStringLiteral("map_Ka")), directory() + "/c");
    EXPECT_EQ(material().texturePath(QStringLiteral("map_Ns")), "/d");
}

TEST_F(MaterialLibraryTest, FirstDefinitionOfAMaterialStays) {
    load("newmtl red\nKd 1 0 0\nnewmtl red\nKd 0 1 0\n");
    EXPECT_THAT(floats(material(), "Kd"), ElementsAre(1, 0, 0));
}

TEST_F(MaterialLibraryTest, ValuesBeforeTheFirstMaterialAreDiscarded) {
    load("Kd 1 0 0\nd 0.5\nnewmtl red\n");
    EXPECT_EQ(material().valueNames(), QStringList({"d"}));
    EXPECT_THAT(floats(material(), "d"), ElementsAre(1));
}

TEST_F(MaterialLibraryTest, MaterialWithoutANameContinuesTheLast) {
    load("newmtl red\nKd 1 0 0\nnewmtl\nKs 0 1 0\n");
    EXPECT_EQ(material().valueNames(), QStringList({"Kd", "Ks", "d"}));
}

TEST_F(MaterialLibraryTest, MalformedLinesStoreNothing) {
    load("newmtl red\nKd 1 1\nNs x\nKs 1 y 1\nmap_Kd\n");
    EXPECT_EQ(material().valueNames(), QStringList({"d"}));
    EXPECT_TRUE(material().textureNames().isEmpty());
}

TEST_F(MaterialLibraryTest, UnknownKeywordsAreSkipped) {
    load("newmtl red\nKe 1 1 1\nkd 1 0 0\nillum 2\nmap_Ke e.png\nTr 0.5\n");
    EXPECT_EQ(material().valueNames(), QStringList({"d"}));
    EXPECT_TRUE(material().textureNames().isEmpty());
}

TEST_F(MaterialLibraryTest, MaterialsAreGroupsInTheOrderOfTheFile) {
    load("newmtl z\nnewmtl a\nnewmtl m\n", {"a", "m", "z"});
    EXPECT_EQ(names(), QStringList({"z", "a", "m"}));
}

TEST_F(MaterialLibraryTest, MaterialsStartAnew) {
    load("newmtl a\nKd 1 0 0\nd 0.5\nmap_Kd x\nnewmtl b\nNs 5\n", {"a", "b"});
    EXPECT_EQ(material(1).valueNames(), QStringList({"Ns", "d"}));
    EXPECT_THAT(floats(material(1), "d"), ElementsAre(1));
    EXPECT_TRUE(material(1).textureNames().isEmpty());
}

} // namespace Atelier::Vel

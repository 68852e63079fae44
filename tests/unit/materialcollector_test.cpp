#include "import/mtl/materialcollector.h"

#include <cstring>
#include <vector>

#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include <velmodel/modelfiles.h>

#include "files/filesource.h"
#include "import/mtl/mtlreader.h"
#include "import/references/filereferences.h"
#include "mesh/mesh.h"
#include "support/messagelog.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The materials of MTL text, as extended ones.
class MaterialCollectorTest : public testing::Test {
protected:
    MaterialCollectorTest() { _options.extendedMaterials = true; }

    /// Returns: the material "a" of a library that is `lines` after its name.
    InstanceData collect(const QByteArray& lines, const ModelFiles& files = {}) {
        FileSource source(files);
        FileReferences references(source, QStringLiteral("/m/a.obj"), _options, _log);
        QString text = "newmtl a\n" + QString::fromUtf8(lines);
        QTextStream stream(&text);
        MtlReader reader(&stream, true, {}, {false, false, _options.extendedMaterials});
        MaterialCollector collector(QStringLiteral("/m/a.mtl"), _definitions, references, _options, _log);
        for (; reader.hasNext(); reader.next())
            if (reader.read())
                collector.take(reader);
        collector.finishMaterial();
        const InstanceData material = _mesh.groups.find("a")->material;
        _mesh.groups.clear();
        return material;
    }
    static std::vector<float> floats(const InstanceData& material, const char* name) {
        const QByteArray bytes = material.value(name);
        std::vector<float> values(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(float));
        return values;
    }

    Mesh _mesh{Input::Consumed};
    LoadOptions _options;
    DiagnosticLog _log;
    MaterialDefinitions _definitions{_mesh.groups, _options, _log};
};

} // namespace

TEST_F(MaterialCollectorTest, ExtendedMembersAreRead) {
    const InstanceData material =
        collect("Ke 1 2 3\nPr 0.25\nPm 0.5\nillum 4\nmap_Ke e.png\nmap_Pr r.png\n"
                "map_Pm m.png\nnorm n.png\nmap_Kd d.png\nKd 4 5 6\nKs 7 8 9\nNs 10\n");
    EXPECT_EQ(material.name(), "OBJMaterialExtended");
    EXPECT_THAT(floats(material, "Ke"), ElementsAre(1, 2, 3));
    EXPECT_THAT(floats(material, "Pr"), ElementsAre(0.25F));
    EXPECT_THAT(floats(material, "Pm"), ElementsAre(0.5F));
    EXPECT_THAT(floats(material, "Kd"), ElementsAre(4, 5, 6));
    EXPECT_THAT(floats(material, "Ks"), ElementsAre(7, 8, 9));
    EXPECT_THAT(floats(material, "Ns"), ElementsAre(10));
    EXPECT_THAT(floats(material, "map_offset"), ElementsAre(0, 0));
    EXPECT_THAT(floats(material, "map_scale"), ElementsAre(1, 1));
    qint32 illum = 0;
    std::memcpy(&illum, material.value("illum").constData(), sizeof illum);
    EXPECT_EQ(illum, 4);
    EXPECT_EQ(material.texturePath("map_Ke"), "/m/e.png");
    EXPECT_EQ(material.texturePath("map_Pr"), "/m/r.png");
    EXPECT_EQ(material.texturePath("map_Pm"), "/m/m.png");
    EXPECT_EQ(material.texturePath("norm"), "/m/n.png");
    EXPECT_EQ(material.texturePath("map_Kd"), "/m/d.png");
    EXPECT_EQ(collect("map_Kn n.png\n").texturePath("norm"), "/m/n.png");
}

TEST_F(MaterialCollectorTest, PlacementIsThatOfTheDiffuseMap) {
    const InstanceData material =
        collect("map_Kd -s 2 3 -o 0.5 0.25 0 d.png\nmap_Ks -s 7 7 7 -o 7 7 7 s.png\n");
    EXPECT_THAT(floats(material, "map_scale"), ElementsAre(2, 3));
    EXPECT_THAT(floats(material, "map_offset"), ElementsAre(0.5F, 0.25F));
}

TEST_F(MaterialCollectorTest, TransparencyCountsWithoutAnOpacity) {
    EXPECT_THAT(floats(collect("Tr 0.25\n"), "d"), ElementsAre(0.75F));
    EXPECT_THAT(floats(collect("d 0.5\nTr 0.25\n"), "d"), ElementsAre(0.5F));
    EXPECT_THAT(floats(collect("Tr 0.25\nd 0.5\n"), "d"), ElementsAre(0.5F));
    EXPECT_THAT(floats(collect("d 0.5\nnewmtl b\nTr 0.25\nnewmtl c\n"), "d"), ElementsAre(0.5F));
    EXPECT_THAT(floats(collect("\n"), "d"), ElementsAre(1.0F));
    EXPECT_THAT(floats(collect("Tr 1\n"), "d"), ElementsAre(1.0F)) << "which is meant as opaque";
    EXPECT_THAT(floats(collect("Tr 0\n"), "d"), ElementsAre(1.0F));
}

TEST_F(MaterialCollectorTest, OpacityOfOneMaterialDoesNotCountForTheNext) {
    QString text = QStringLiteral("newmtl a\nd 0.5\nnewmtl b\nTr 0.25\n");
    collect(text.section('\n', 1).toUtf8());
    QTextStream stream(&text);
    MtlReader reader(&stream, true, {}, {false, false, true});
    FileSource source{ModelFiles()};
    FileReferences references(source, QStringLiteral("/m/a.obj"), _options, _log);
    MaterialCollector collector(QStringLiteral("/m/a.mtl"), _definitions, references, _options, _log);
    for (; reader.hasNext(); reader.next())
        if (reader.read())
            collector.take(reader);
    collector.finishMaterial();
    EXPECT_THAT(floats(_mesh.groups.find("b")->material, "d"), ElementsAre(0.75F));
}

TEST_F(MaterialCollectorTest, IlluminationModelIsASmallNumber) {
    for (const auto& [text, expected] : {std::pair("illum 10", 10),
                                         {"illum -1", 0},
                                         {"illum 1e9", 0},
                                         {"illum nan", 0},
                                         {"illum 256", 0},
                                         {"illum", 2},
                                         {"illum x", 2}}) {
        qint32 illum = -1;
        std::memcpy(&illum, collect(text).value("illum").constData(), sizeof illum);
        EXPECT_EQ(illum, expected) << text;
    }
}

TEST_F(MaterialCollectorTest, ForbiddenMapIsWhiteAndForbiddenNormalsAreNone) {
    const Testing::MessageLog log;
    const QTemporaryDir folder;
    const ModelFiles files(folder.path());
    const InstanceData material = collect("map_Ke e.png\nnorm n.png\n", files);
    EXPECT_TRUE(material.hasTexture("map_Ke"));
    EXPECT_EQ(material.texturePath("map_Ke"), QString());
    EXPECT_FALSE(material.hasTexture("norm"));
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2u);
}

TEST_F(MaterialCollectorTest, PlainMaterialsHaveNoneOfIt) {
    _options.extendedMaterials = false;
    const InstanceData material =
        collect("Ke 1 2 3\nTr 0.25\nPr 1\nillum 3\nnorm n.png\nmap_Kd -s 2 2 2 d.png\n");
    EXPECT_EQ(material.name(), "OBJMaterial");
    EXPECT_EQ(material.valueNames(), QStringList("d"));
    EXPECT_THAT(floats(material, "d"), ElementsAre(1.0F));
    EXPECT_EQ(material.textureNames(), QStringList("map_Kd"));
}

} // namespace Atelier::Vel

#include "modelcontents.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Viewer::Testing {

class ModelContentsTest : public ::testing::Test {
public:
    ModelContents contents(const QByteArray& obj, const QByteArray& mtl) const {
        write("m.mtl", mtl);
        write("m.obj", "mtllib m.mtl\n" + obj);
        QString error;
        LoadOptions options = LoadOptions::forgiving();
        options.splitObjects = true;
        options.extendedMaterials = true;
        LoadReport report;
        const DrawData data = readDrawDataFromOBJFile(folder.filePath("m.obj"), error, {}, &report, options);
        EXPECT_TRUE(error.isNull()) << error.toStdString();
        return contentsOf(data, {}, report);
    }
    void write(const QString& name, const QByteArray& text) const {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QTemporaryDir folder;
};

TEST_F(ModelContentsTest, EachObjectAndMaterialIsAPart) {
    const ModelContents model = contents("v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\n"
                                         "o one\nusemtl red\nf 1 2 3\nusemtl blue\nf 1 2 3\nf 1 2 4\n"
                                         "o two\nusemtl red\nf 1 3 4\n",
                                         "newmtl red\nKd 1 0 0\nd 0.5\nNs 20\nnewmtl blue\nKd 0 0 2\n");
    ASSERT_EQ(model.parts.size(), 3);
    ASSERT_EQ(model.materials.size(), 2);
    EXPECT_EQ(model.parts[1].object, "one");
    EXPECT_EQ(model.materials[model.parts[1].material].name, "blue");
    EXPECT_EQ(model.parts[1].triangles, 2U);
    EXPECT_EQ(model.parts[2].object, "two");
    EXPECT_EQ(model.parts[2].material, model.parts[0].material);
    EXPECT_EQ(model.parts[0].box.maximum, QVector3D(1, 2, 0));
    EXPECT_EQ(model.box.maximum, QVector3D(1, 2, 3));
    const ModelMaterial& red = model.materials[model.parts[0].material];
    EXPECT_EQ(red.values.diffuse, QColor(Qt::red));
    EXPECT_FLOAT_EQ(red.values.opacity, 0.5F);
    EXPECT_FLOAT_EQ(red.values.shininess, 20);
    EXPECT_EQ(model.materials[model.parts[1].material].values.diffuse, QColor(Qt::blue))
        << "colours are limited";
}

TEST_F(ModelContentsTest, FindsThePartOfACommand) {
    const ModelContents model = contents("v 0 0 0\nv 1 0 0\nv 0 2 0\no one\nf 1 2 3\no two\nf 1 2 3\n", "");
    EXPECT_EQ(partOf(model, 0, 1), 1);
    EXPECT_EQ(partOf(model, 0, 2), -1);
    EXPECT_EQ(partOf(model, 1, 0), -1);
}

TEST_F(ModelContentsTest, TexturesAreThereOrMissing) {
    QImage image(6, 4, QImage::Format_RGB32);
    image.fill(Qt::green);
    ASSERT_TRUE(image.save(folder.filePath("there.png")));
    const ModelContents model = contents("v 0 0 0\nv 1 0 0\nv 0 2 0\nusemtl a\nf 1 2 3\n",
                                         "newmtl a\nmap_Kd there.png\nmap_Ks sub\\gone.png\n");
    ASSERT_EQ(model.materials.size(), 1);
    ASSERT_EQ(model.materials[0].textures.size(), 2);
    const MaterialTexture& there = model.materials[0].textures[0];
    EXPECT_EQ(there.map, "map_Kd");
    EXPECT_EQ(there.size, QSize(6, 4));
    EXPECT_FALSE(there.isMissing());
    EXPECT_THAT(there.tried, ::testing::IsEmpty());
    const MaterialTexture& gone = model.materials[0].textures[1];
    EXPECT_TRUE(gone.isMissing());
    EXPECT_THAT(gone.tried,
                ::testing::ElementsAre(folder.filePath("sub\\gone.png"), folder.filePath("sub/gone.png"),
                                       folder.filePath("gone.png")));
    EXPECT_TRUE(model.materials[0].hasMissingTexture());
}

TEST(ModelBoxTest, UnitesValidBoxes) {
    const ModelBox one{{0, 0, 0}, {1, 1, 1}, true};
    const ModelBox other{{-1, 0.5F, 0}, {0, 2, 1}, true};
    const ModelBox both = united(one, other);
    EXPECT_EQ(both.minimum, QVector3D(-1, 0, 0));
    EXPECT_EQ(both.maximum, QVector3D(1, 2, 1));
    EXPECT_EQ(united(one, {}).maximum, one.maximum);
    EXPECT_EQ(united({}, one).maximum, one.maximum);
    EXPECT_FALSE(united({}, {}).isValid);
    EXPECT_EQ(centreOf(both), QVector3D(0, 1, 0.5F));
    EXPECT_EQ(sizeOf(both), QVector3D(2, 2, 1));
}

} // namespace Atelier::Vel::Viewer::Testing

// What an examination finds in libraries and textures.
#include <velmodel/modelcheck.h>

#include <QtCore/QDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "checkedmodel.h"

namespace Atelier::Vel {

namespace {

using Testing::CheckedModel;
using testing::IsEmpty;
using Testing::soundTriangle;

QByteArray triangleWith(const QByteArray& material) {
    return "mtllib m.mtl\nusemtl " + material + "\nvt 0 0\n" + soundTriangle().replace("//", "/1/");
}

class MaterialFindingsTest : public testing::Test {
public:
    /// The findings of a triangle that uses the material "m" of a library.
    QStringList findings(const QByteArray& library) const {
        model.write("m.mtl", library);
        return model.findings();
    }

    CheckedModel model{triangleWith("m")};
};

TEST_F(MaterialFindingsTest, SoundLibraryHasNone) {
    EXPECT_THAT(findings("# x\nnewmtl m\nKa 0 0 0\nKd 1 0 0\nKs 0 0 0\nNs 1\nNi 1\nd 1\nillum 2\nTf 1 1 1\n"),
                IsEmpty());
}

TEST_F(MaterialFindingsTest, LibraryIsMissing) {
    EXPECT_EQ(
        model.findings(),
        QStringList(
            {"m.obj:1:8 warning library-missing 'm.mtl': 'm.mtl': no such file; the library is left out",
             "m.obj:2:8 warning material-undefined 'm': No library has defined the material 'm': the "
             "default material is used"}));
}

TEST_F(MaterialFindingsTest, MaterialIsUnusedOrDefinedTwice) {
    EXPECT_EQ(findings("newmtl m\nKd 1 0 0\n\n newmtl n\nKd 1 0 0\nnewmtl m\nKd 0 0 1\n"),
              QStringList(
                  {"m.mtl:6:1 warning material-defined-twice 'm': The material 'm' is already defined: this "
                   "definition has no effect",
                   "m.mtl:4:2 note material-unused 'n': No face uses the material 'n'"}));
}

TEST_F(MaterialFindingsTest, MaterialWithoutFacesIsUnused) {
    model.write("m.obj", triangleWith("m") + "usemtl n\n");
    EXPECT_EQ(findings("newmtl m\nKd 1 0 0\nnewmtl n\nKd 1 0 0\n"),
              QStringList("m.mtl:3:1 note material-unused 'n': No face uses the material 'n'"));
}

TEST_F(MaterialFindingsTest, MaterialOfFacesThatAreNotDrawnIsUnused) {
    model.write("m.obj", triangleWith("m") + "usemtl n\nf 1 2\nusemtl o\nv 1 1 0\nf 2/1/1 4/1/1 3/1/1\n");
    EXPECT_EQ(findings("newmtl n\nKd 1 0 0\nnewmtl m\nKd 1 0 0\nnewmtl o\nKd 1 0 0\n").filter("unused"),
              QStringList("m.mtl:1:1 note material-unused 'n': No face uses the material 'n'"));
}

TEST_F(MaterialFindingsTest, AllUndefinedMaterialsAreCounted) {
    QByteArray text = triangleWith("m");
    for (int i = 0; i < 12; ++i)
        text += "usemtl n" + QByteArray::number(i) + "\nf 1 2\n";
    model.write("m.obj", text);
    model.write("m.mtl", "newmtl m\nKd 1 0 0\n");
    EXPECT_EQ(model.check().counts.value(CheckCode::MaterialUndefined), 12U);
    EXPECT_EQ(model.findings().filter("material-undefined").size(), 10);
}

TEST_F(MaterialFindingsTest, MaterialWithSpacesIsUsed) {
    model.write("m.obj", triangleWith("a b # c"));
    EXPECT_EQ(findings("newmtl a b\nKd 1 0 0\n").filter("unused"), QStringList());
}

TEST_F(MaterialFindingsTest, MaterialIsBlack) {
    const QString black =
        "m.mtl:1:1 warning material-black 'm': The material 'm' is black: it has no colour and no map";
    EXPECT_EQ(findings("newmtl m\n"), QStringList(black));
    EXPECT_EQ(findings("newmtl m\nKa 1 1 1\nKd 0 0 0\nKs 0 0 0\nKe 0 0 0\n"), QStringList(black));
    EXPECT_THAT(findings("newmtl m\nKd 0 0 0\nKs 0 0 0.1\n"), IsEmpty());
    EXPECT_THAT(findings("newmtl m\nKd 0 0 0\nKe 0 0.1 0\n"), IsEmpty());
}

TEST_F(MaterialFindingsTest, TransparencyContradictsOpacity) {
    EXPECT_EQ(
        findings("newmtl m\nKd 1 1 1\nd 0.5\nTr 0.25\n"),
        QStringList("m.mtl:4:1 warning opacity-contradicts 'Tr 0.25': Tr 0.25 contradicts d 0.5, which is "
                    "used"));
    EXPECT_THAT(findings("newmtl m\nKd 1 1 1\nd 0.3\nTr 0.7\n"), IsEmpty());
    EXPECT_THAT(findings("newmtl m\nKd 1 1 1\nTr 0.7\n"), IsEmpty());
}

TEST_F(MaterialFindingsTest, NumbersAreMalformed) {
    EXPECT_EQ(
        findings("newmtl m\nKd 1 1 1\nKs 1\nNs x\nd 0,5\nKe 0.5 0,5 1\n"),
        QStringList({"m.mtl:5:3 warning decimal-comma '0,5': '0,5' has a decimal comma in place of a point: "
                     "the number ends before it",
                     "m.mtl:6:8 warning decimal-comma '0,5': '0,5' has a decimal comma in place of a point: "
                     "the number ends before it",
                     "m.mtl:3:1 warning number-missing 'Ks 1': An operand of the line is missing or is no "
                     "number: it has no effect",
                     "m.mtl:4:1 warning number-missing 'Ns x': An operand of the line is missing or is no "
                     "number: it has no effect",
                     "m.mtl:6:1 warning number-missing 'Ke 0.5 0,5 1': An operand of the line is missing or "
                     "is no number: it has no effect"}));
}

TEST_F(MaterialFindingsTest, KeywordsAreSkipped) {
    EXPECT_EQ(findings("newmtl m\nKd 1 1 1\nbump a.png\nkd 1 0 0\n  map_d b.png\nbump c.png\n"),
              QStringList(
                  {"m.mtl:4:1 warning keyword-unknown 'kd': 'kd' is not a keyword: 1 line is skipped",
                   "m.mtl:3:1 note keyword-skipped 'bump': 'bump' (bump maps) has no effect: 2 lines are "
                   "skipped",
                   "m.mtl:5:3 note keyword-skipped 'map_d': 'map_d' (maps of opacity) has no effect: 1 line "
                   "is skipped"}));
}

TEST_F(MaterialFindingsTest, BytesOfLibrariesAreExamined) {
    EXPECT_EQ(
        findings("newmtl m\rKd 1 1 1\nKd 1 1 1\n").filter("carriage-return"),
        QStringList(
            "m.mtl:1:9 warning carriage-return '': A carriage return without a line feed does not end a "
            "line: the text behind it belongs to this line"));
}

TEST_F(MaterialFindingsTest, TextureIsMissing) {
    QDir().mkpath(model.path("lib"));
    model.write("m.obj", triangleWith("m").replace("m.mtl", "lib/m.mtl"));
    model.write("lib/m.mtl", "newmtl m\nmap_Kd -s 1 1 1 maps\\a.png\n");
    const QStringList found = model.findings().filter("texture-missing");
    EXPECT_EQ(
        found,
        QStringList("m.mtl:2:17 error texture-missing 'maps\\a.png': 'maps\\a.png': no such file; tried: "
                    "lib/maps\\a.png, lib/-s, lib/maps/a.png, maps/a.png, lib/a.png, a.png, -s"));
}

TEST_F(MaterialFindingsTest, TextureIsUnreadable) {
    model.write("a.png", "no picture");
    EXPECT_EQ(findings("newmtl m\nmap_Kd a.png\nmap_Ks a.png\n"),
              QStringList("m.mtl:2:8 error texture-unreadable 'a.png': 'a.png' cannot be read as an image"));
}

TEST_F(MaterialFindingsTest, TextureIsCutOff) {
    QImage(64, 64, QImage::Format_RGB32).save(model.path("a b.png"));
    QFile file(model.path("a b.png"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.resize(file.size() / 2);
    file.close();
    EXPECT_EQ(
        findings("newmtl m\nmap_Kd a b.png\n").filter("texture-"),
        QStringList("m.mtl:2:8 error texture-unreadable 'a b.png': 'a b.png' cannot be read as an image"));
}

TEST_F(MaterialFindingsTest, TextureIsTooLarge) {
    model.write("a.pgm", "P5\n16385 1\n255\n");
    EXPECT_EQ(
        findings("newmtl m\nmap_Kd a.pgm\n"),
        QStringList("m.mtl:2:8 error texture-too-large 'a.pgm': 'a.pgm' has 16385 x 1 pixels; the limits are "
                    "16384 for a side and 1 GiB for all"));
    model.write("a.pgm", "P5\n16384 16385\n255\n");
    EXPECT_EQ(findings("newmtl m\nmap_Kd a.pgm\n").size(), 1);
}

TEST_F(MaterialFindingsTest, LargeTextureIsNotDecoded) {
    model.write("a.pgm", "P5\n16384 1025\n255\n");
    EXPECT_THAT(findings("newmtl m\nmap_Kd a.pgm\n"), IsEmpty());
    EXPECT_EQ(model.check().notExamined,
              QStringList("The pixels of '" + model.path("a.pgm") + "', because it is large"));
}

TEST_F(MaterialFindingsTest, SoundTextureHasNoFinding) {
    QImage(4, 4, QImage::Format_RGB32).save(model.path("a.png"));
    EXPECT_THAT(findings("newmtl m\nmap_Kd a.png\n"), IsEmpty());
}

TEST_F(MaterialFindingsTest, OptionsAndOtherPathsAreNotes) {
    QImage(4, 4, QImage::Format_RGB32).save(model.path("A.png"));
    const QStringList found = findings("newmtl m\nmap_Kd -clamp on maps\\a.png\n");
    ASSERT_EQ(found.size(), 2);
    EXPECT_TRUE(found[0].contains("note map-options")) << found[0].toStdString();
    EXPECT_TRUE(found[1].contains("note texture-relocated")) << found[1].toStdString();
}

TEST_F(MaterialFindingsTest, TextureOutsideOfTheFolderIsMissingIfConfined) {
    CheckOptions options;
    options.files = LoadOptions::Files::InOwnFolder;
    model.write("m.mtl", "newmtl m\nmap_Kd /a.png\n");
    EXPECT_EQ(model.findings(options).filter("texture-missing").size(), 1);
}

TEST_F(MaterialFindingsTest, SearchPathsAreTried) {
    CheckOptions options;
    options.searchPaths = QStringList("/nowhere");
    model.write("m.mtl", "newmtl m\nmap_Kd a.png\n");
    const QStringList found = model.findings(options).filter("texture-missing");
    ASSERT_EQ(found.size(), 1);
    EXPECT_TRUE(found[0].endsWith("tried: a.png, /nowhere/a.png")) << found[0].toStdString();
}

TEST_F(MaterialFindingsTest, TexturedFacesHaveNoTextureCoordinates) {
    QImage(4, 4, QImage::Format_RGB32).save(model.path("a.png"));
    model.write("m.obj", triangleWith("m") + "v 1 1 0\nf 2//1 4//1 3//1\n");
    EXPECT_EQ(
        findings("newmtl m\nmap_Kd a.png\n"),
        QStringList("m.obj:10:0 warning texcoords-missing 'm': 1 of 2 faces with the material 'm' have no "
                    "texture coordinates for its maps"));
    EXPECT_THAT(findings("newmtl m\nKd 1 1 1\n"), IsEmpty());
}

TEST_F(MaterialFindingsTest, LibraryNamedLateDefinesEarlierMaterials) {
    model.write("m.obj", "usemtl m\nvt 0 0\n" + soundTriangle().replace("//", "/1/") +
                             "mtllib m.mtl\nv 1 1 0\nf 2/1/1 4/1/1 3/1/1\n");
    EXPECT_EQ(findings("newmtl m\nKd 1 1 1\n").filter("unused"), QStringList());
}

} // namespace

} // namespace Atelier::Vel

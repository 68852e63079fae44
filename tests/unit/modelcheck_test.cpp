#include <velmodel/modelcheck.h>

#include <set>

#include <gmock/gmock.h>

#include "checkedmodel.h"

namespace Atelier::Vel {

namespace {

using Testing::CheckedModel;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::soundTriangle;

struct Row {
    const char* name;
    QByteArray text;
    QStringList findings; ///< all of them
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.name;
}

class FindingsTest : public testing::TestWithParam<Row> {};

TEST_P(FindingsTest, AreTheseAndNoOthers) {
    EXPECT_EQ(CheckedModel(GetParam().text).findings().join('\n').toStdString(),
              GetParam().findings.join('\n').toStdString());
}

// Lines 6 and later follow the sound triangle.
const Row kTextRows[] = {
    {"Sound", soundTriangle(), {}},
    {"SoundWithComments", "# v x\n\n  \t\n" + soundTriangle() + "#\n", {}},
    {"NamesOfParts", "o part\ng a b\ns off\ns 0\n" + soundTriangle(), {}},
    {"SmoothingGroups",
     "s 1\ns off\ns 2\n" + soundTriangle(),
     {"m.obj:1:1 note keyword-skipped 's': 's' (smoothing groups) has no effect: 2 lines are skipped"}},
    {"LinesAndPoints",
     soundTriangle() + " l 1 2\np 1\nl 2 3\n",
     {"m.obj:6:2 note keyword-skipped 'l': 'l' (lines) has no effect: 2 lines are skipped",
      "m.obj:7:1 note keyword-skipped 'p': 'p' (points) has no effect: 1 line is skipped"}},
    {"UnknownKeyword",
     soundTriangle() + "V 1 2 3\nt 1\nV 1 2 4\n",
     {"m.obj:6:1 warning keyword-unknown 'V': 'V' is not a keyword: 2 lines are skipped",
      "m.obj:7:1 warning keyword-unknown 't': 't' is not a keyword: 1 line is skipped"}},
    {"NumberMalformed",
     "v 0 0 0\nv 1 0x 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:2:5 warning number-malformed '0x': '0x' is not a number, and counts as 0"}},
    {"DecimalComma",
     "v 0 0 0\nv 1 0 0\nv 0 1 0,0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:3:7 warning decimal-comma '0,0': '0,0' has a decimal comma in place of a point, and counts as "
      "0"}},
    {"NumberMissing",
     "v 0 0 0\nv 1 0\nv 0 1 #0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:2:0 warning number-missing 'v': The line has 2 of 3 numbers: the others count as 0",
      "m.obj:3:0 warning number-missing 'v': The line has 2 of 3 numbers: the others count as 0"}},
    {"NotFinite",
     soundTriangle() + "v 0 -inf 1e40\nv nan 0 0\nf 1//1 4//1 5//1\n",
     {"m.obj:6:5 error coordinate-not-finite '-inf': '-inf' is not a finite number: triangles with it cannot "
      "be drawn",
      "m.obj:6:10 error coordinate-not-finite '1e40': '1e40' is not a finite number: triangles with it "
      "cannot "
      "be drawn",
      "m.obj:7:3 error coordinate-not-finite 'nan': 'nan' is not a finite number: triangles with it cannot "
      "be "
      "drawn"}},
    {"ExponentsAndSigns", "v +0 .0 0.\nv 1e0 0 -0\nv 0 1E+0 0\nvn 0 0 1\nf 1//1 2//1 3//1\n", {}},
    {"TextBehindNumbers",
     "v 0 0 0 x\nv 1 0 0\nv 0 1 0 0 0\nvn 0 0 1 1\nvt 0 0 0 4\nvt 1 1 0 # x\nvt 1\nf 1//1 2//1 3//1\n",
     {"m.obj:1:9 warning text-behind-numbers 'x': 'x' is behind the numbers of the line, and has no effect",
      "m.obj:3:9 warning text-behind-numbers '0': '0' is behind the numbers of the line, and has no effect",
      "m.obj:4:10 warning text-behind-numbers '1': '1' is behind the numbers of the line, and has no effect",
      "m.obj:5:10 warning text-behind-numbers '4': '4' is behind the numbers of the line, and has no "
      "effect"}},
    {"TextBehindNumbersOfPlainLines",
     soundTriangle() + "v 1 1 0\nvn 0 0 1\nvn 0 0 1 x\nvn 0 0 1\nvt 0 0\nvt 0 0 1\nvt 0 0 y\nvt 0 0 1 2\n"
                       "f 2/1/1 4/1/1 3/1/1\n",
     {"m.obj:8:10 warning text-behind-numbers 'x': 'x' is behind the numbers of the line, and has no effect",
      "m.obj:12:8 warning text-behind-numbers 'y': 'y' is behind the numbers of the line, and has no effect",
      "m.obj:13:10 warning text-behind-numbers '2': '2' is behind the numbers of the line, and has no "
      "effect"}},
    {"Weights",
     "v 0 0 0 1\nv 1 0 0 1.0\nv 0 1 0 0.5\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:3:9 note vertex-weight '0.5': The weight 0.5 has no effect"}},
    {"Colours",
     "v 0 0 0 1 1 1\nv 1 0 0 1 0 0 1\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:1:9 note vertex-colour '1': Vertices have colours, which only some programs read"}},
    {"ColoursOfPlainLines",
     "v 0 0 0\nv 1 0 0\nv 0 1 0 1 1 1\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:3:9 note vertex-colour '1': Vertices have colours, which only some programs read"}},
    {"ContinuedLine",
     "v 0 0 0\nv 1 0 0\nv 0 \\\n 1 \\\n 0x\nvn 0 0 1\nf 1//1 2//1 3//1\nx\n",
     {"m.obj:3:11 warning number-malformed '0x': '0x' is not a number, and counts as 0",
      "m.obj:8:1 warning keyword-unknown 'x': 'x' is not a keyword: 1 line is skipped"}},
    {"ColumnsAreCharacters",
     soundTriangle() + "\xC3\xA4\xC3\xB6 1\n v\xC2\xA0"
                       "0 0 \xC3\xBC\n",
     {"m.obj:7:8 warning number-malformed '\u00FC': '\u00FC' is not a number, and counts as 0",
      "m.obj:6:1 warning keyword-unknown '\u00E4\u00F6': '\u00E4\u00F6' is not a keyword: 1 line is skipped",
      "m.obj:7:0 note vertex-unused '': 1 of 4 vertices belong to no face",
      "m.obj:7:3 note foreign-blank '\u00A0': The character U+00a0 is read as a blank; other programs may "
      "read "
      "it as text"}},
    {"CarriageReturn",
     "v 0 0 0\r\nv 1 0 0\nv 0 1 0\nvn 0 0 1\r\r\nf 1//1 2//1 3//1\n#a\rv 1 1 1\n\r\n",
     {"m.obj:6:3 warning carriage-return '': A carriage return without a line feed does not end a line: the "
      "text behind it belongs to this line"}},
    {"NullCharacter",
     soundTriangle() + QByteArray("# a\0b\ng a\0b\n", 12),
     {"m.obj:7:4 warning null-character '': A null character is part of the text, and no blank"}},
    {"ByteOrderMark",
     "\xEF\xBB\xBF" + soundTriangle(),
     {"m.obj:1:0 note byte-order-mark '': The file begins with a byte-order mark, which other programs may "
      "read as part of the first line"}},
    {"WindowsLineEnds", soundTriangle().replace("\n", "\r\n"), {}},
    {"NoLastLineEnd", soundTriangle().trimmed(), {}},
};
INSTANTIATE_TEST_SUITE_P(Text, FindingsTest, testing::ValuesIn(kTextRows),
                         [](const auto& row) { return row.param.name; });

const QByteArray kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvn 0 0 1\n";

const Row kFaceRows[] = {
    {"Malformed",
     soundTriangle() + "f 1//1 2//1 3//1x\nf 1 2 3#\nf 1.5 2 3\nf 1//1 /1 3\nf 1 2 3/a #\n",
     {"m.obj:6:13 error face-malformed '3//1x': The corner '3//1x' is not made of integers with slashes "
      "between "
      "them: the face is dropped",
      "m.obj:7:7 error face-malformed '3#': The corner '3#' is not made of integers with slashes between "
      "them: "
      "the face is dropped",
      "m.obj:8:3 error face-malformed '1.5': The corner '1.5' is not made of integers with slashes between "
      "them: the face is dropped",
      "m.obj:9:8 error face-malformed '/1': The corner '/1' is not made of integers with slashes between "
      "them: "
      "the face is dropped",
      "m.obj:10:7 error face-malformed '3/a': The corner '3/a' is not made of integers with slashes between "
      "them: the face is dropped"}},
    {"TooFewCorners",
     soundTriangle() + "f 1//1 2//1\nf 3//1\nf\n",
     {"m.obj:6:0 error face-too-few-corners '': The face has 2 of at least 3 corners, and is not drawn",
      "m.obj:7:0 error face-too-few-corners '': The face has 1 of at least 3 corners, and is not drawn",
      "m.obj:8:0 error face-too-few-corners '': The face has 0 of at least 3 corners, and is not drawn"}},
    {"PositionOutOfRange",
     soundTriangle() + "f 1//1 9//1 3//1\nf 1//1 2//1 0//1\nf -4//1 2//1 3//1\nf -1//1 -3//1 2147483647//1\n",
     {"m.obj:6:8 error face-index-out-of-range '9//1': There is no position 9: the file has 3 positions; the "
      "face is dropped",
      "m.obj:7:13 error face-index-out-of-range '0//1': There is no position 0: indices begin at 1; the face "
      "is "
      "dropped",
      "m.obj:8:3 error face-index-out-of-range '-4//1': There is no position -4: 3 positions precede the "
      "line; "
      "the face is dropped",
      "m.obj:9:15 error face-index-out-of-range '2147483647//1': There is no position 2147483647: the file "
      "has "
      "3 positions; the face is dropped"}},
    {"ValuesThatFollow", "vn 0 0 1\nv 0 0 0\nf 1//1 2//1 3//1\nv 1 0 0\nv 0 1 0\n", {}},
    {"RelativePositionAmongVertexLines",
     "v 0 0 0\nv 1 0 0\nvn 0 0 1\nf -3//1 1//1 2//1\nv 0 1 0\nf -3//1 -2//1 -1//1\n",
     {"m.obj:4:3 error face-index-out-of-range '-3//1': There is no position -3: 2 positions precede the "
      "line; "
      "the face is dropped"}},
    {"ValuesOutOfRange",
     soundTriangle() + "v 1 1 0\nvt 0 0\nf 2/1/1 4/1/2 3/2/1\n",
     {"m.obj:8:15 warning texcoord-index-out-of-range '3/2/1': There is no texture coordinate 2: the file "
      "has 1 "
      "texture coordinate; the corner has none",
      "m.obj:8:9 warning normal-index-out-of-range '4/1/2': There is no normal 2: the file has 1 normal; the "
      "corner has none"}},
    {"ZeroValues",
     soundTriangle() + "v 1 1 0\nvt 0 0\nf 2/1/1 4/0/1 3/1/0\n",
     {"m.obj:8:9 warning texcoord-index-out-of-range '4/0/1': The corner '4/0/1' has the texture coordinates "
      "0: "
      "indices begin at 1",
      "m.obj:8:15 warning normal-index-out-of-range '3/1/0': The corner '3/1/0' has the normal 0: indices "
      "begin "
      "at 1",
      "m.obj:8:0 note normals-missing '<default>': 1 of 2 faces with the material '<default>' have corners "
      "without a normal, and get generated ones"}},
    {"NotCut",
     "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 3 0 0\nv 4 0 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 6//1\nf 1//1 2//1 3//1 "
     "4//1 "
     "5//1\n",
     {"m.obj:9:0 error face-not-cut '': The face cannot be cut into triangles, and is not drawn",
      "m.obj:9:0 warning face-degenerate '': The corners of the face lie on a line: it has no area"}},
    {"CrossesItself",
     kSquare + "f 1//1 2//1 4//1 3//1\n",
     {"m.obj:6:0 warning face-crosses-itself '': The edge from corner 2 to 3 crosses the edge from corner 4 "
      "to "
      "1"}},
    {"FirstIndicesThatDoNotExist",
     kSquare + "vt 0 0\nvt 1 0\nf 1/2/1 2/3/1 3/1/1\nf 1/2/1 3/1/2 4/1/1\n",
     {"m.obj:8:9 warning texcoord-index-out-of-range '2/3/1': There is no texture coordinate 3: the file has "
      "2 texture coordinates; the corner has none",
      "m.obj:9:9 warning normal-index-out-of-range '3/1/2': There is no normal 2: the file has 1 normal; "
      "the corner has none"}},
    {"FirstCornerLacksAttributes",
     kSquare + "vt 0 0\nf 1 2/1/1 3/1/1\n",
     {"m.obj:7:0 note normals-missing '<default>': 1 of 1 faces with the material '<default>' have corners "
      "without a normal, and get generated ones",
      "m.obj:4:0 note vertex-unused '': 1 of 4 vertices belong to no face"}},
    {"NormalsNearThePlane",
     kSquare + "vn 1 0 0.0095\nvn 1 0 0.0078\nf 1//2 2//2 3//2\nf 1//2 3//3 4//2\n",
     {"m.obj:9:8 note normal-in-face-plane '3//3': The normal of the corner lies in the plane of the face"}},
    {"Concave", kSquare + "v 0.2 0.2 0\nf 1//1 2//1 3//1 5//1 4//1\n", {}},
    {"Degenerate",
     kSquare + "v 2 0 0\nf 1//1 2//1 5//1\nf 1//1 1//1 3//1\nf 2//1 3//1 4//1\n",
     {"m.obj:7:0 warning face-degenerate '': The corners of the face lie on a line: it has no area",
      "m.obj:8:0 warning face-degenerate '': The face names a vertex twice, and has no area"}},
    {"Duplicate",
     soundTriangle() + "f 2//1 3//1 1//1\n",
     {"m.obj:6:0 warning face-duplicate '': The face has the same vertices as the face in line 5"}},
    {"Opposite",
     soundTriangle() + "f 3 2 1\n",
     {"m.obj:6:0 note face-opposite '': The face has the vertices of the face in line 5, in the opposite "
      "order",
      "m.obj:6:0 note normals-missing '<default>': 1 of 2 faces with the material '<default>' have corners "
      "without a normal, and get generated ones"}},
    {"NotPlanar",
     "v 0 0 0\nv 1 0 0\nv 1 1 0.2\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1 4//1\n",
     {"m.obj:6:0 note face-not-planar '': A corner is 0.0495 away from the mean plane of the face, 3.47 % of "
      "its "
      "size"}},
    {"RepeatsVertex",
     kSquare + "f 1//1 2//1 3//1 4//1 4//1\n",
     {"m.obj:6:0 note face-repeats-vertex '': The face names a vertex more than once"}},
    {"UnusedVertices",
     "v 9 9 9\n" + soundTriangle().replace("f 1//1 2//1 3//1", "f 2//1 3//1 4//1") + "v 1 1 1\n",
     {"m.obj:1:0 note vertex-unused '': 2 of 5 vertices belong to no face"}},
    {"UnusedVertexAmongOthers",
     "v 0 0 0\nvn 0 0 1\nv 1 0 0\nvn 0 0 1\nv 5 5 5\nvn 0 0 1\nv 0 1 0\nf 1//1 2//1 4//1\n",
     {"m.obj:5:0 note vertex-unused '': 1 of 4 vertices belong to no face"}},
    {"NormalsAgainstFace",
     soundTriangle() + "vn 0 0 -1\nv 1 1 0\nf 2//2 4//2 3//2\n",
     {"m.obj:8:0 warning normal-against-face '': All normals of the face point away from the side on which "
      "it "
      "is counter-clockwise"}},
    {"OneNormalAgainstFace", soundTriangle() + "vn 0 0 -1\nv 1 1 0\nf 2//2 4//1 3//1\n", {}},
    {"NormalInPlane",
     soundTriangle() + "vn 1 0 0\nv 1 1 0\nf 2//1 4//2 3//1\n",
     {"m.obj:8:8 note normal-in-face-plane '4//2': The normal of the corner lies in the plane of the face"}},
    {"AllNormalsInPlane",
     soundTriangle() + "vn 1 0 0\nv 1 1 0\nf 2//2 4//2 3//2\n",
     {"m.obj:8:3 note normal-in-face-plane '2//2': The normal of the corner lies in the plane of the face"}},
    {"UnusedVertexFarFromTheOthers",
     soundTriangle() + "v 1000000 0 0\n",
     {"m.obj:6:0 note vertex-unused '': 1 of 4 vertices belong to no face"}},
    {"NormalLengths",
     soundTriangle() + "vn 0 0 0\nvn 0 0 0.97\nvn 0 0 2\nvn 0.577 0.577 0.577\n",
     {"m.obj:6:0 warning normal-zero '': The normal is zero, and has no direction",
      "m.obj:7:0 note normal-not-unit '': The normal has a length of 0.97 instead of 1",
      "m.obj:8:0 note normal-not-unit '': The normal has a length of 2 instead of 1"}},
    {"NoNormals",
     "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n",
     {"m.obj:0:0 note normals-missing '': The file has no normals: smooth ones can be generated"}},
    {"FarFromOrigin",
     "v 100000 0 0\nv 100001 0 0\nv 100000 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:0:0 warning far-from-origin '': The model has a size of 1 and coordinates up to 1e+05, where "
      "floats "
      "have steps of 0.00781: 0.781 % of the size"}},
    {"Tiny",
     "v 0 0 0\nv 0.001 0 0\nv 0 0.001 0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:0:0 note unusual-size '': The model has a size of 0.001: its unit may be larger than the "
      "metre"}},
    {"Huge",
     "v 0 0 0\nv 20000 0 0\nv 0 20000 0\nvn 0 0 1\nf 1//1 2//1 3//1\n",
     {"m.obj:0:0 note unusual-size '': The model has a size of 2e+04: its unit may be smaller than the "
      "metre"}},
    {"NothingToDraw",
     "v 0 0 0\n",
     {"m.obj:0:0 error nothing-to-draw '': Nothing of the file can be drawn: it has no triangles",
      "m.obj:1:0 note vertex-unused '': 1 of 1 vertices belong to no face"}},
};
INSTANTIATE_TEST_SUITE_P(Faces, FindingsTest, testing::ValuesIn(kFaceRows),
                         [](const auto& row) { return row.param.name; });

TEST(ModelCheckTest, FileThatIsNotThereCannotBeRead) {
    const ModelCheck check = checkOBJFile(QStringLiteral("/nowhere/m.obj"));
    EXPECT_FALSE(check.isLoadable);
    ASSERT_EQ(check.findings.size(), 1);
    EXPECT_EQ(check.findings[0].code, CheckCode::FileUnreadable);
    EXPECT_EQ(check.findings[0].severity, LoadDiagnostic::Severity::Error);
}

TEST(ModelCheckTest, KeepsTheFirstTenOfACodeAndCountsAll) {
    const ModelCheck check = CheckedModel(soundTriangle() + QByteArray("vn 0 0 2\n").repeated(12)).check();
    ASSERT_EQ(check.findings.size(), 10);
    EXPECT_EQ(check.findings[0].line, 6);
    EXPECT_EQ(check.findings[9].line, 15);
    EXPECT_EQ(check.counts.value(CheckCode::NormalNotUnit), 12U);
    EXPECT_EQ(check.counts.size(), 1);
}

TEST(ModelCheckTest, OutlineIsTheCornersOfTheFace) {
    const ModelCheck check = CheckedModel(kSquare + "f 1//1 2//1 4//1 3//1\n").check();
    ASSERT_EQ(check.findings.size(), 1);
    EXPECT_THAT(check.findings[0].outline,
                ElementsAre(QVector3D(0, 0, 0), QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(1, 1, 0)));
}

TEST(ModelCheckTest, FindingsHaveTheTextOfTheirLine) {
    const ModelCheck check = CheckedModel(soundTriangle() + " \tvn 0 0 2\n").check();
    ASSERT_EQ(check.findings.size(), 1);
    EXPECT_EQ(check.findings[0].lineText, QStringLiteral(" \tvn 0 0 2"));
    EXPECT_EQ(check.findings[0].lineTextColumn, 1);
}

TEST(ModelCheckTest, LongLinesAreCutAroundTheColumn) {
    const QByteArray blanks(1000, ' ');
    const ModelCheck check = CheckedModel(soundTriangle() + "f" + blanks + "1 2 x" + blanks + "\n").check();
    ASSERT_EQ(check.findings.size(), 1);
    const CheckFinding& finding = check.findings[0];
    EXPECT_EQ(finding.column, 1006);
    EXPECT_EQ(finding.lineText.size(), CheckFinding::kLineTextSize);
    EXPECT_EQ(finding.lineText.at(finding.column - finding.lineTextColumn), QLatin1Char('x'));
}

TEST(ModelCheckTest, WorstFindingsComeFirst) {
    const ModelCheck check = CheckedModel("l 1\nx\n" + soundTriangle() + "f 1\n").check();
    ASSERT_EQ(check.findings.size(), 3);
    EXPECT_EQ(check.findings[0].severity, LoadDiagnostic::Severity::Error);
    EXPECT_EQ(check.findings[1].severity, LoadDiagnostic::Severity::Warning);
    EXPECT_EQ(check.findings[2].severity, LoadDiagnostic::Severity::Note);
    EXPECT_TRUE(check.hasAtLeast(LoadDiagnostic::Severity::Error));
}

TEST(ModelCheckTest, SoundFileHasNoFinding) {
    const ModelCheck check = CheckedModel(soundTriangle()).check();
    EXPECT_TRUE(check.isLoadable);
    EXPECT_EQ(check.triangles, 1U);
    EXPECT_THAT(check.findings, IsEmpty());
    EXPECT_THAT(check.counts, IsEmpty());
    EXPECT_THAT(check.notExamined, IsEmpty());
    EXPECT_FALSE(check.hasAtLeast(LoadDiagnostic::Severity::Note));
}

TEST(ModelCheckTest, Utf16IsExaminedExceptForItsBytes) {
    const QString text = QString::fromLatin1(soundTriangle() + "x\n");
    QByteArray bytes("\xFF\xFE", 2);
    for (const QChar character : text)
        bytes.append(char(character.cell())).append(char(character.row()));
    const CheckedModel model(bytes);
    EXPECT_EQ(
        model.findings(),
        QStringList({"m.obj:6:1 warning keyword-unknown 'x': 'x' is not a keyword: 1 line is skipped",
                     "m.obj:1:0 note byte-order-mark '': The file is UTF-16LE, which other programs may "
                     "not read"}));
    EXPECT_EQ(model.check().notExamined, QStringList("The line ends and null characters of '" +
                                                     model.path("m.obj") + "', because it is not UTF-8"));
}

TEST(ModelCheckTest, CancellingGivesNothing) {
    const CheckedModel model(soundTriangle() + "x\n");
    int calls = 0;
    ModelCheck all = checkOBJFile(model.path("m.obj"), {}, [&calls](const LoadStep&) { return ++calls > 0; });
    EXPECT_FALSE(all.isCancelled);
    for (int last = 1; last <= calls; ++last) {
        int left = last;
        const ModelCheck check =
            checkOBJFile(model.path("m.obj"), {}, [&left](const LoadStep&) { return --left > 0; });
        EXPECT_TRUE(check.isCancelled) << last;
        EXPECT_THAT(check.findings, IsEmpty());
    }
}

TEST(ModelCheckTest, NamesOfCodesAreDifferent) {
    std::set<QString> names;
    for (int code = 0; code <= static_cast<int>(CheckCode::UnusualSize); ++code)
        names.insert(checkCodeName(static_cast<CheckCode>(code)));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(CheckCode::UnusualSize) + 1);
}

TEST(ModelCheckTest, ManyDifferentKeywordsAreNotAllCounted) {
    QByteArray text = soundTriangle();
    for (int i = 0; i < 1002; ++i)
        text += "x" + QByteArray::number(i) + "\n";
    const CheckedModel model(text);
    EXPECT_EQ(model.check().counts.value(CheckCode::KeywordUnknown), 1000U);
    EXPECT_EQ(model.check().notExamined,
              QStringList("2 lines of '" + model.path("m.obj") + "', whose keywords come after 1000 others"));
}

// The same lines, read by the fast parsers and one by one.
TEST(ModelCheckTest, FindingsDoNotDependOnTheParser) {
    const QByteArray vertices = QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\n").repeated(40);
    QByteArray faces;
    for (int i = 0; i < 30; ++i)
        faces += "f " + QByteArray::number(i * 4 + 1) + " 2 3\nvn 0 0 " + QByteArray::number(i % 3) + "\n";
    const QStringList plain = CheckedModel(vertices + faces).findings();
    EXPECT_EQ(CheckedModel(QByteArray(vertices + faces).replace(" ", "\t")).findings(), plain);
    EXPECT_FALSE(plain.isEmpty());
}

} // namespace

} // namespace Atelier::Vel

// Loads that split the parts of a file.

#include <algorithm>
#include <memory>
#include <ostream>
#include <random>
#include <tuple>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/objloader.h>

#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

const QString kDefault = QStringLiteral("<default>");

LoadOptions split() {
    LoadOptions options;
    options.splitObjects = true;
    return options;
}

/// A command, and the faces that it draws. Face k of a text uses position k alone.
struct Command {
    QString object;
    QString material;
    std::vector<int> faces;

    friend bool operator==(const Command& a, const Command& b) {
        return a.object == b.object && a.object.isNull() == b.object.isNull() && a.material == b.material &&
               a.faces == b.faces;
    }
    friend void PrintTo(const Command& command, std::ostream* out) {
        *out << (command.object.isNull() ? "null" : command.object.toStdString()) << '|'
             << command.material.toStdString() << ':';
        for (const int face : command.faces)
            *out << ' ' << face;
    }
};

std::vector<Command> commandsOf(const DrawData& data) {
    std::vector<Command> commands;
    const QVector<DrawData::Attribute> attributes = data.attributes();
    const auto position = std::find_if(attributes.begin(), attributes.end(), [](const auto& attribute) {
        return attribute.name == QStringLiteral("va_Vertex");
    });
    for (int i = 0; data.drawableCount() != 0 && i < data.commandCount(0); ++i) {
        const DrawData::Group group = data.group(0, i);
        EXPECT_EQ(group.id, i) << "ids count the groups";
        Command command{group.objectName, group.name, {}};
        const DrawElementsIndirectCommand& range = data.command(0, i);
        for (quint32 index = range.firstIndex; index < range.firstIndex + range.count; index += 3)
            command.faces.push_back(
                static_cast<int>(static_cast<const float*>(position->data)[3 * data.indices().data[index]]));
        commands.push_back(command);
    }
    return commands;
}

float redOf(const DrawData::Group& group) {
    float red = 0;
    const QByteArray kd = group.material.value(QStringLiteral("Kd"));
    std::copy_n(kd.constData(), std::min<std::size_t>(sizeof red, kd.size()), reinterpret_cast<char*>(&red));
    return red;
}

class SplitObjectsTest : public testing::Test {
protected:
    SplitObjectsTest() { write("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0.5 0 1\n"); }

    QString write(const char* name, const QByteArray& text) const {
        QFile file(_directory.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    /// Writes a model. In `text`, each line "f" is a face with a position of its own; red and blue are
    /// defined.
    QString writeModel(const QByteArray& text) const {
        QByteArray all;
        QByteArray rest;
        int faces = 0;
        for (const QByteArray& line : text.split('\n')) {
            if (line == "f") {
                const QByteArray number = QByteArray::number(faces);
                all += "v " + number + " 0 0\nv " + number + " 1 0\nv " + number + " 1 1\n";
                rest += "f " + QByteArray::number(3 * faces + 1) + ' ' + QByteArray::number(3 * faces + 2) +
                        ' ' + QByteArray::number(3 * faces + 3) + '\n';
                ++faces;
            } else {
                rest += line + '\n';
            }
        }
        return write("m.obj", all + rest);
    }
    DrawData read(const QByteArray& text, const LoadOptions& options = split()) const {
        QString error;
        DrawData data = readDrawDataFromOBJFile(writeModel(text), error, {}, &_report, options);
        EXPECT_TRUE(error.isNull()) << error.toStdString();
        return data;
    }
    std::vector<Command> commands(const QByteArray& text, const LoadOptions& options = split()) const {
        return commandsOf(read(text, options));
    }

    mutable LoadReport _report;

private:
    QTemporaryDir _directory;
};

} // namespace

TEST_F(SplitObjectsTest, PartsAreNotSplitUnlessThatIsWanted) {
    EXPECT_FALSE(LoadOptions().splitObjects);
    EXPECT_FALSE(LoadOptions::forgiving().splitObjects) << "it is no repair";
    for (const LoadOptions& options : {LoadOptions(), LoadOptions::forgiving()})
        EXPECT_THAT(commands("o a\nf\ng b\nf\n", options), ElementsAre(Command{{}, kDefault, {0, 1}}));
}

TEST_F(SplitObjectsTest, EachPartAndMaterialHasAGroupInTheOrderOfFirstFaces) {
    EXPECT_THAT(commands("mtllib m.mtl\no a\nusemtl blue\nf\nusemtl red\nf\no b\nf\nusemtl blue\nf\n"),
                ElementsAre(Command{"a", "blue", {0}}, Command{"a", "red", {1}}, Command{"b", "red", {2}},
                            Command{"b", "blue", {3}}));
}

TEST_F(SplitObjectsTest, GroupsHaveTheMaterialOfTheirName) {
    const DrawData data =
        read("mtllib m.mtl\no a\nusemtl blue\nf\no b\nusemtl red\nf\no c\nusemtl blue\nf\n");
    ASSERT_EQ(data.commandCount(0), 3);
    EXPECT_EQ(redOf(data.group(0, 0)), 0.5F);
    EXPECT_EQ(redOf(data.group(0, 1)), 1);
    EXPECT_EQ(redOf(data.group(0, 2)), 0.5F);
}

TEST_F(SplitObjectsTest, PartIsTheObjectElseTheGroupElseBoth) {
    EXPECT_THAT(commands("f\ng left\nf\no car\nf\ng right\nf\no bus\nf\n"),
                ElementsAre(Command{{}, kDefault, {0}}, Command{"left", kDefault, {1}},
                            Command{"car/left", kDefault, {2}}, Command{"car/right", kDefault, {3}},
                            Command{"bus/right", kDefault, {4}}));
    EXPECT_THAT(commands("o car\nf\n"), ElementsAre(Command{"car", kDefault, {0}}));
}

TEST_F(SplitObjectsTest, EmptyNameEndsAPart) {
    EXPECT_THAT(commands("o car\ng left\nf\ng\nf\no  \nf\ng left\nf\n"),
                ElementsAre(Command{"car/left", kDefault, {0}}, Command{"car", kDefault, {1}},
                            Command{{}, kDefault, {2}}, Command{"left", kDefault, {3}}));
}

TEST_F(SplitObjectsTest, NameIsTheWholeRestOfTheLine) {
    EXPECT_THAT(commands("o  a b\tc # d \nf\ng \xC3\xA9 f/g\r\nf\n"),
                ElementsAre(Command{"a b\tc # d", kDefault, {0}},
                            Command{QString::fromUtf8("a b\tc # d/\xC3\xA9 f/g"), kDefault, {1}}));
}

TEST_F(SplitObjectsTest, PartThatComesAgainGoesOn) {
    const MessageLog log;
    EXPECT_THAT(commands("o a\nf\no b\nf\no a\nf\nf\no b\nf\n"),
                ElementsAre(Command{"a", kDefault, {0, 2, 3}}, Command{"b", kDefault, {1, 4}}));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(SplitObjectsTest, EmptyPartsVanish) {
    EXPECT_THAT(commands("mtllib m.mtl\no a\no b\nusemtl red\nusemtl blue\nf\ng c\no d\n"),
                ElementsAre(Command{"b", "blue", {0}}));
    EXPECT_TRUE(read("o a\ng b\n").isNull());
}

TEST_F(SplitObjectsTest, FacesWithoutADefinedMaterialAreNotDrawn) {
    EXPECT_THAT(commands("o a\nusemtl red\nf\nf\nusemtl <default>\nf\n"),
                ElementsAre(Command{"a", kDefault, {2}}));
    EXPECT_EQ(_report.facesWithoutGroup, 2U);
    EXPECT_EQ(_report.faces, 3U);
}

TEST_F(SplitObjectsTest, FacesJoinOnceTheirMaterialIsDefined) {
    EXPECT_THAT(commands("o a\nusemtl red\nf\nmtllib m.mtl\nf\no b\nf\n"),
                ElementsAre(Command{"a", "red", {1}}, Command{"b", "red", {2}}));
    EXPECT_EQ(_report.facesWithoutGroup, 1U);
}

TEST_F(SplitObjectsTest, FacesWithoutAMaterialLineHaveTheDefaultMaterial) {
    const DrawData data = read("mtllib m.mtl\no a\nf\no b\nf\n");
    ASSERT_THAT(commandsOf(data), ElementsAre(Command{"a", kDefault, {0}}, Command{"b", kDefault, {1}}));
    EXPECT_EQ(redOf(data.group(0, 1)), 0.7F);
}

TEST_F(SplitObjectsTest, WithoutPartsThereIsOneGroupForEachMaterial) {
    EXPECT_THAT(commands("mtllib m.mtl\nusemtl blue\nf\nusemtl red\nf\nusemtl blue\nf\n"),
                ElementsAre(Command{{}, "blue", {0, 2}}, Command{{}, "red", {1}}));
}

TEST_F(SplitObjectsTest, MissingMaterialIsDefinedForAllPartsIfThatIsRepaired) {
    LoadOptions options = split();
    options.repairs.defineMaterials = true;
    const DrawData data =
        read("o a\nusemtl red\nf\no b\nf\nusemtl none\nf\nmtllib m.mtl\nusemtl red\nf\n", options);
    ASSERT_THAT(commandsOf(data), ElementsAre(Command{"a", "red", {0}}, Command{"b", "red", {1, 3}},
                                              Command{"b", "none", {2}}));
    EXPECT_EQ(redOf(data.group(0, 0)), 1) << "the later definition";
    EXPECT_EQ(redOf(data.group(0, 1)), 1);
    EXPECT_EQ(redOf(data.group(0, 2)), 0.7F) << "the default material";
}

TEST_F(SplitObjectsTest, UndefinedMaterialIsNotTakenForAnEmptyName) {
    LoadOptions options = split();
    options.repairs.defineMaterials = true;
    EXPECT_THAT(commands("usemtl\nf\nusemtl x\no a\nf\n", options),
                ElementsAre(Command{{}, "", {0}}, Command{"a", "x", {1}}));
}

TEST_F(SplitObjectsTest, NamesOfMaterialsAreMatchedIfThatIsRepaired) {
    LoadOptions options = split();
    options.repairs.matchNames = true;
    write("m.mtl", "newmtl light red\nKd 1 0 0\n");
    const DrawData data = read("mtllib m.mtl\no a\nusemtl light red\nf\no b\nf\n", options);
    ASSERT_THAT(commandsOf(data),
                ElementsAre(Command{"a", "light red", {0}}, Command{"b", "light red", {1}}));
    EXPECT_EQ(redOf(data.group(0, 1)), 1);
}

TEST_F(SplitObjectsTest, FacesWithoutAPositionLeaveTheirPartIfThatIsRepaired) {
    LoadOptions options = split();
    options.repairs.dropUnplacedFaces = true;
    const DrawData data = read("o a\nf\nf 1 2 99\no b\nf\n", options);
    EXPECT_THAT(commandsOf(data), ElementsAre(Command{"a", kDefault, {0}}, Command{"b", kDefault, {1}}));
}

TEST_F(SplitObjectsTest, ColoursAreReadWithParts) {
    LoadOptions options = split();
    options.vertexColours = true;
    const DrawData data = read("v 9 9 9 1 0 0\no a\nf\no b\nf 1 2 7\n", options);
    EXPECT_EQ(data.commandCount(0), 2);
    EXPECT_EQ(data.attributes().front().name, QStringLiteral("va_Color"));
}

TEST_F(SplitObjectsTest, MillionsOfNamesMakeGroupsOnlyForFaces) {
    QByteArray text = "o a\nf\n";
    for (int i = 0; i < 200'000; ++i)
        text += "g " + QByteArray::number(i) + '\n';
    text += "f\n" + QByteArray("g x\ng y\n").repeated(10'000) + "f\n";
    EXPECT_THAT(commands(text), ElementsAre(Command{"a", kDefault, {0}}, Command{"a/199999", kDefault, {1}},
                                            Command{"a/y", kDefault, {2}}));
}

TEST_F(SplitObjectsTest, NamesReachTheModel) {
    const RecordingContext context;
    QString error;
    const std::unique_ptr<GPUModel> model =
        loadModelFromOBJFile(writeModel("mtllib m.mtl\nf\no a\nusemtl red\nf\no b\nf\n"), error, split());
    ASSERT_NE(model, nullptr) << error.toStdString();
    ASSERT_EQ(model->drawableCount(), 1);
    const auto names = [&](int command) {
        return std::make_tuple(model->materialName(0, command), model->objectName(0, command));
    };
    EXPECT_EQ(names(0), std::make_tuple(kDefault, QString()));
    EXPECT_EQ(names(1), std::make_tuple(QStringLiteral("red"), QStringLiteral("a")));
    EXPECT_EQ(names(2), std::make_tuple(QStringLiteral("red"), QStringLiteral("b")));
}

/// What a random text amounts to, line by line.
class PlainSplit {
public:
    explicit PlainSplit(unsigned int seed) {
        std::mt19937 random(seed);
        const auto anyOf = [&random](std::initializer_list<const char*> choices) {
            return QByteArray(*(choices.begin() + random() % choices.size()));
        };
        _text = "mtllib m.mtl\n";
        for (int line = 0; line < 400; ++line)
            addLine(anyOf({"f", "f", "f", "o", "g", "usemtl"}), anyOf({"", "a", "b", "c d", "red", "blue"}));
    }

    const QByteArray& text() const { return _text; }
    const std::vector<Command>& commands() const { return _commands; }
    quint64 undefined() const { return _undefined; }

private:
    void addLine(const QByteArray& keyword, const QByteArray& name) {
        _text += (keyword == "f" ? keyword : keyword + ' ' + name) + '\n';
        if (keyword == "o")
            _object = QString::fromLatin1(name);
        else if (keyword == "g")
            _group = QString::fromLatin1(name);
        else if (keyword == "usemtl")
            _material = QString::fromLatin1(name.split(' ').first());
        else
            addFace();
    }
    void addFace() {
        const int face = _faces++;
        if (_material != kDefault && _material != "red" && _material != "blue") {
            ++_undefined;
            return;
        }
        const QStringList names = QStringList{_object, _group}.filter(QRegExp(QStringLiteral(".")));
        const QString part = names.isEmpty() ? QString() : names.join(QLatin1Char('/'));
        const auto known = std::find_if(_commands.begin(), _commands.end(), [&](const Command& command) {
            return command.object == part && command.material == _material;
        });
        if (known != _commands.end())
            known->faces.push_back(face);
        else
            _commands.push_back({part, _material, {face}});
    }

    QByteArray _text;
    QString _object;
    QString _group;
    QString _material = kDefault;
    std::vector<Command> _commands;
    int _faces = 0;
    quint64 _undefined = 0;
};

TEST_F(SplitObjectsTest, RandomTextsAreSplitLineByLine) {
    for (unsigned int seed = 0; seed < 20; ++seed) {
        const PlainSplit plain(seed);
        ASSERT_EQ(commands(plain.text()), plain.commands()) << seed;
        ASSERT_EQ(_report.facesWithoutGroup, plain.undefined()) << seed;
    }
}

} // namespace Atelier::Vel

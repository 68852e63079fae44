#include "files/filefinder.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "askedpaths.h"
#include "support/opendescriptors.h"
#include "support/withoutrootsrights.h"

namespace Atelier::Vel {

namespace {

using Testing::AskedPaths;
using testing::IsEmpty;
using Testing::openDescriptors;

/// Files that a test makes in folders of its own, and what a finder finds of them.
class FileFinderTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _top.path() + '/' + name; }
    void write(const QString& name) const {
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void link(const QString& target, const QString& name) const {
        EXPECT_EQ(symlink(qPrintable(target), qPrintable(path(name))), 0);
    }
    /// The file that `finder` finds from the folder "model", relative to the top; null if it finds none.
    QString found(FileFinder& finder, const QString& name, const QStringList& folders = {"model"}) const {
        return found(finder, QStringList(name), folders);
    }
    QString found(FileFinder& finder, const QStringList& names,
                  const QStringList& folders = {"model"}) const {
        QStringList paths;
        for (const QString& folder : folders)
            paths.append(path(folder));
        const std::optional<FileFinder::Found> file = finder.find(paths, names);
        return file ? file->path.mid(path(QString()).size()) : QString();
    }
    QString found(const QString& name) const {
        FileFinder finder(ModelFiles(), {});
        return found(finder, name);
    }

private:
    QTemporaryDir _top;
};

} // namespace

TEST_F(FileFinderTest, FileThatExistsIsFoundAsNamed) {
    write("model/tex/wood.png");
    write("model/back\\slash.png");
    FileFinder finder(ModelFiles(), {});
    for (const char* name : {"tex/wood.png", "./tex/../tex/wood.png", "back\\slash.png"}) {
        const auto file = finder.find({path("model")}, {name});
        ASSERT_TRUE(file) << name;
        EXPECT_EQ(file->path, path("model/") + name);
        EXPECT_EQ(file->name, name);
        EXPECT_TRUE(file->isAsNamed);
    }
    const auto absolute = finder.find({path("elsewhere")}, {path("model/tex/wood.png")});
    ASSERT_TRUE(absolute);
    EXPECT_EQ(absolute->path, path("model/tex/wood.png"));
    EXPECT_TRUE(absolute->isAsNamed);
}

TEST_F(FileFinderTest, PathsOfOtherSystemsAreFound) {
    write("model/tex/wood.png");
    write("model/a.png");
    const struct {
        const char* name;
        const char* file;
    } cases[] = {
        {"tex\\wood.png", "model/tex/wood.png"},
        {".\\tex\\wood.png", "model/tex/wood.png"},
        {"tex\\..\\tex/wood.png", "model/tex/../tex/wood.png"},
        {"C:\\tex\\wood.png", "model/tex/wood.png"},
        {"C:tex\\..\\a.png", "model/tex/../a.png"},
        {"d:a.png", "model/a.png"},
        {"\\\\server\\share\\a.png", "model/a.png"},
        {"/home/me/tex/a.png", "model/a.png"},
        {"/home/me/Tex/Wood.PNG", "model/tex/wood.png"},
        {"Tex/Wood.PNG", "model/tex/wood.png"},
        {"TEX\\WOOD.png", "model/tex/wood.png"},
        {"missing/folder/tex/wood.png", "model/tex/wood.png"},
        {"../tex/wood.png", "model/tex/wood.png"},
    };
    for (const auto& [name, file] : cases)
        EXPECT_EQ(found(name), file) << name;
}

TEST_F(FileFinderTest, RepairIsNotAsNamed) {
    write("model/a.png");
    FileFinder finder(ModelFiles(), {});
    const auto file = finder.find({path("model")}, {"no.png", "A.PNG"});
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, path("model/a.png"));
    EXPECT_EQ(file->name, "A.PNG");
    EXPECT_FALSE(file->isAsNamed);
}

TEST_F(FileFinderTest, NothingIsFoundByOtherNamesAndInFoldersAbove) {
    write("wood.png");
    write("model/tex/wood.png");
    for (const char* name : {"", ".", "..", "/", "\\", "C:", "wood.png", "tex", "Tex", "tex/", "tex/wood",
                             "wood.png/tex", "tex/wood.png/x", "model/no.png"})
        EXPECT_EQ(found(name), QString()) << name;
    EXPECT_EQ(found(QString("Tex") + QChar(QChar::Null) + "/wood.png"), QString());
}

TEST_F(FileFinderTest, LongTextIsNoPath) {
    write("model/wood.png");
    FileFinder finder(ModelFiles(), {});
    const AskedPaths asked;
    EXPECT_EQ(found(finder, QString(PATH_MAX - 9, '/') + "/Wood.png"), QString());
    EXPECT_EQ(found(finder, QString(PATH_MAX, 'x')), QString());
    EXPECT_THAT(asked.below(path(QString())), IsEmpty());
    EXPECT_EQ(found(finder, QString(PATH_MAX - 9, '/') + "Wood.png"), "model/wood.png");
}

// Letters beyond ASCII, too.
TEST_F(FileFinderTest, CaseIsThatOfUnicode) {
    write(QString::fromUtf8("model/h\xC3\xB6lzer/\xCE\xA9.png"));
    EXPECT_EQ(found(QString::fromUtf8("H\xC3\x96LZER/\xCF\x89.PNG")),
              QString::fromUtf8("model/h\xC3\xB6lzer/\xCE\xA9.png"));
}

TEST_F(FileFinderTest, EqualNameWinsAndThenTheFirstByBytes) {
    for (const char* name : {"model/wood.png", "model/Wood.png", "model/wOOD.PNG", "model/woOD.png"})
        write(name);
    EXPECT_EQ(found("no/wood.png"), "model/wood.png");
    EXPECT_EQ(found("no/woOD.png"), "model/woOD.png");
    EXPECT_EQ(found("WOOD.png"), "model/Wood.png");
    EXPECT_EQ(found("WOOD.PNG"), "model/Wood.png");
}

TEST_F(FileFinderTest, LongestEndWinsInAnyFolder) {
    write("model/a.png");
    write("library/me/tex/A.png");
    write("search/tex/a.png");
    FileFinder finder(ModelFiles(), {path("search")});
    const QStringList folders = {"model", "library"};
    EXPECT_EQ(found(finder, "/home/me/tex/a.png", folders), "library/me/tex/A.png");
    EXPECT_EQ(found(finder, "/home/you/tex/a.png", folders), "search/tex/a.png");
    EXPECT_EQ(found(finder, "/home/you/maps/a.png", folders), "model/a.png");
}

TEST_F(FileFinderTest, FoldersAreSearchedInTheirOrderAndSearchPathsLast) {
    FileFinder finder(ModelFiles(), {path("search1"), path("search2")});
    const QStringList folders = {"library", "model"};
    const QStringList places = {"search2", "search1", "model", "library"};
    for (const QString& place : places)
        write(place + "/a" + QString::number(places.indexOf(place)) + ".png");
    for (int i = 0; i < places.size(); ++i)
        EXPECT_EQ(found(finder, QString("X/A%1.png").arg(i), folders),
                  places[i] + "/a" + QString::number(i) + ".png");
    for (const QString& place : places)
        write(place + "/b/same.png");
    FileFinder fresh(ModelFiles(), {path("search1"), path("search2")});
    EXPECT_EQ(found(fresh, "B/same.png", folders), "library/b/same.png");
    EXPECT_EQ(found(fresh, "B/same.png", {"no", "model"}), "model/b/same.png");
    EXPECT_EQ(found(fresh, "B/same.png", {"no"}), "search1/b/same.png");
}

TEST_F(FileFinderTest, RelativeSearchPathStartsFromTheCurrentDirectory) {
    write("search/a.png");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(path(QString())));
    FileFinder finder(ModelFiles(), {"search"});
    ASSERT_TRUE(QDir::setCurrent(before));
    const auto file = finder.find({path("model")}, {"a.png"});
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, path("search/a.png"));
}

TEST_F(FileFinderTest, FirstNameThatExistsWins) {
    write("model/my wood.png");
    write("model/my");
    FileFinder finder(ModelFiles(), {});
    EXPECT_EQ(found(finder, {"my wood.png # oak", "my wood.png", "my"}), "model/my wood.png");
    EXPECT_EQ(found(finder, {"x # oak", "x", "My"}), "model/my");
    EXPECT_EQ(found(finder, {"My Wood.png", "x"}), "model/my wood.png");
    EXPECT_EQ(found(finder, {"no", "x"}), QString());
}

TEST_F(FileFinderTest, NameThatNeedsNoRepairWinsOverEarlierOnes) {
    write("model/my wood.png");
    write("model/my");
    FileFinder finder(ModelFiles(), {});
    EXPECT_EQ(found(finder, {"My Wood.png", "my"}), "model/my");
}

TEST_F(FileFinderTest, NamesAloneAreFoundWithoutListings) {
    write("model/wood.png");
    const FileFinder finder(ModelFiles(), {path("model")});
    const AskedPaths asked;
    EXPECT_TRUE(finder.findAsNamed(path("model"), {"no.png", "wood.png"}));
    EXPECT_FALSE(finder.findAsNamed(path("model"), {"Wood.png", "no\\wood.png"}));
    EXPECT_EQ(asked.listings(path("model")), 0);
}

TEST_F(FileFinderTest, SixteenEndsAreLookedForAndNoMore) {
    const auto longPath = [](int folders, const char* file) {
        QString name;
        for (int i = folders; i > 0; --i)
            name += QString("f%1/").arg(i);
        return name + file;
    };
    write("model/" + longPath(15, "a.png"));
    write("model/" + longPath(16, "b.png"));
    EXPECT_EQ(found("x/" + longPath(15, "A.png")), "model/" + longPath(15, "a.png"));
    EXPECT_EQ(found("x/" + longPath(16, "B.png")), QString());
    EXPECT_EQ(found(longPath(16, "b.png")), "model/" + longPath(16, "b.png")) << "as named";
}

TEST_F(FileFinderTest, EachFolderIsListedOnce) {
    for (int i = 0; i < 20; ++i)
        write(QString("model/tex/%1.png").arg(i));
    FileFinder finder(ModelFiles(), {path("search"), path("model")});
    const AskedPaths asked;
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(found(finder, QString("C:\\TEX\\%1.png").arg(i)).isNull(), i >= 20);
    EXPECT_EQ(asked.listings(path("model")), 1);
    EXPECT_EQ(asked.listings(path("model/tex")), 1);
    EXPECT_EQ(asked.listings(path("search")), 1) << "it does not exist";
    EXPECT_EQ(asked.below(path("model")).size(), 2 + 40 + 20) << "listings, names unchanged, found files";
}

TEST_F(FileFinderTest, BeyondTheLimitOfNamesCasesMustMatch) {
    write("model/a/x.png");
    write("model/b/x.png");
    write("model/b/y.png");
    // Two listings and their names, among which are "." and "..".
    constexpr int kOfModel = 1 + 4;
    constexpr int kOfA = 1 + 3;
    FileFinder enough(ModelFiles(), {}, kOfModel + kOfA);
    EXPECT_EQ(found(enough, "A\\X.png"), "model/a/x.png");
    FileFinder scarce(ModelFiles(), {}, kOfModel);
    const AskedPaths asked;
    EXPECT_EQ(found(scarce, "A\\x.png"), "model/a/x.png");
    EXPECT_EQ(found(scarce, "A\\X.png"), QString());
    EXPECT_EQ(found(scarce, "B\\y.png"), "model/b/y.png");
    EXPECT_EQ(asked.listings(path("model/a")), 0) << "the names are used up";
}

TEST_F(FileFinderTest, FolderThatCannotBeListedIsEntered) {
    write("model/tex/wood.png");
    ASSERT_EQ(chmod(qPrintable(path(QString())), 0711), 0);
    ASSERT_EQ(chmod(qPrintable(path("model/tex")), 0711), 0);
    FileFinder finder(ModelFiles(), {});
    const Testing::WithoutRootsRights user;
    EXPECT_EQ(found(finder, "Tex\\wood.png"), "model/tex/wood.png");
    EXPECT_EQ(found(finder, "Tex\\Wood.png"), QString());
}

TEST_F(FileFinderTest, OnlyRegularFilesAreFound) {
    write("model/tex/wood.png");
    ASSERT_EQ(mkfifo(qPrintable(path("model/pipe.png")), 0600), 0);
    link("tex/wood.png", "model/Link.png");
    link("no.png", "model/dangling.png");
    EXPECT_EQ(found("LINK.png"), "model/Link.png");
    for (const char* name : {"pipe.png", "PIPE.png", "x/TEX", "Dangling.png"})
        EXPECT_EQ(found(name), QString()) << name;
}

TEST_F(FileFinderTest, ConfinedToAFolderItFindsAndAsksForNothingElse) {
    for (const char* name :
         {"out.png", "search/wood.png", "search/tex/in.png", "model/tex/in.png", "model/sub/near.png"})
        write(name);
    link("../search", "model/away");
    link("../search/wood.png", "model/wood.png");
    link("tex", "model/folder");
    FileFinder finder(ModelFiles(path("model")),
                      {path("search"), path("model/sub"), path("model/../search")});
    const AskedPaths asked;
    EXPECT_EQ(found(finder, "../Search/tex/IN.png"), "model/tex/in.png");
    EXPECT_EQ(found(finder, path("search/tex/in.png")), "model/tex/in.png");
    EXPECT_EQ(found(finder, "/home/me/Near.png"), "model/sub/near.png");
    EXPECT_EQ(found(finder, "Folder/IN.png"), "model/folder/in.png");
    for (const QString& name : {QString("out.png"), QString("../out.png"), QString("..\\OUT.png"),
                                path("out.png"), QString("Away/tex/no.png"), QString("Away/wood.png"),
                                QString("Wood.png"), QString("wood.png"), QString("\\home\\me\\a.png")})
        EXPECT_EQ(found(finder, name), QString()) << name.toStdString();
    for (const QString& place : asked.below(path(QString())))
        EXPECT_TRUE((place + '/').startsWith(path("model/"))) << place.toStdString();
    EXPECT_GT(asked.below(path("model/")).size(), 0);
    EXPECT_THAT(asked.below("/home"), IsEmpty());
    EXPECT_EQ(asked.below("/").size(), asked.below(path("model")).size());
}

TEST_F(FileFinderTest, DescriptorsAreClosed) {
    write("model/tex/wood.png");
    const std::vector<int> before = openDescriptors();
    {
        FileFinder anywhere(ModelFiles(), {path("search")});
        FileFinder confined(ModelFiles(path("model")), {path("search")});
        for (FileFinder* finder : {&anywhere, &confined}) {
            EXPECT_EQ(found(*finder, "TEX/wood.png"), "model/tex/wood.png");
            EXPECT_EQ(found(*finder, "TEX/wood.png/x"), QString());
        }
        EXPECT_EQ(openDescriptors().size(), before.size() + 1) << "the folder itself is open";
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FileFinderTest, ResourcesAreFound) {
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(":/")}) {
        FileFinder finder(files, {":/"});
        const auto file = finder.find({":/no"}, {"C:\\Models\\Red.OBJ"});
        ASSERT_TRUE(file);
        EXPECT_EQ(file->path, ":/models/red.obj");
        EXPECT_FALSE(finder.find({":/models"}, {"no.obj"}));
    }
}

} // namespace Atelier::Vel

#include <velmodel/modelfiles.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <linux/magic.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "files/folderlistings.h"
#include "support/hangguard.h"
#include "support/opendescriptors.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using Testing::HangGuard;
using testing::IsEmpty;
using Testing::openDescriptors;

constexpr QIODevice::OpenMode kText = QIODevice::ReadOnly | QIODevice::Text;

/// A folder "model" with a file "in", a file "out" beside it, and links of all kinds.
class ModelFilesTest : public testing::Test {
protected:
    ModelFilesTest() {
        for (const char* name : {"model/sub", "model2"})
            EXPECT_TRUE(QDir(_top.path()).mkpath(name));
        write("out");
        write("model/in");
        write("model/sub/in");
        write("model2/in");
        link("model", "other-name");
        link("in", "model/in-by-link");
        link("../out", "model/out-by-link");
        link(path("model/in"), "model/in-by-absolute-link");
        link(path("other-name/in"), "model/in-by-other-name");
        link(path("out"), "model/out-by-absolute-link");
        link("sub", "model/folder");
        link("..", "model/folder-above");
        link(_top.path(), "model/folder-above-by-absolute-link");
        link("../in", "model/sub/up");
        link("../../out", "model/sub/out");
        link("loop2", "model/loop1");
        link("loop1", "model/loop2");
        link("missing", "model/dangling");
        link("../missing", "model/dangling-out");
    }

    QString path(const QString& name) const { return _top.path() + '/' + name; }
    void write(const QString& name) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(name.toUtf8()) > 0);
    }
    void link(const QString& target, const QString& name) const {
        EXPECT_EQ(symlink(qPrintable(target), qPrintable(path(name))), 0);
    }
    /// What `files` read under a path; null if they do not open it.
    static QByteArray read(const ModelFiles& files, const QString& path) {
        const std::unique_ptr<QFile> file = files.open(path);
        return file ? file->readAll() : QByteArray();
    }

private:
    QTemporaryDir _top;
};

/// Records the opened names and the flags during its lifetime.
class Openings {
public:
    using Opening = std::pair<QByteArray, int>;

    Openings() { current = this; }
    ~Openings() { current = nullptr; }
    Openings(const Openings&) = delete;
    Openings& operator=(const Openings&) = delete;

    const std::vector<Opening>& all() const { return _all; }

    static void notice(const char* name, int flags) {
        if (current != nullptr)
            current->_all.emplace_back(name, flags);
    }

private:
    static inline Openings* current = nullptr;
    std::vector<Opening> _all;
};

/// Makes every file seem to lie on a file system of this kind during its lifetime.
class FileSystem {
public:
    explicit FileSystem(long kind) { standIn = kind; }
    ~FileSystem() { standIn = 0; }
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    /// The query of the file system fails.
    static constexpr long kUnknown = -1;
    static inline long standIn = 0;
};

/// Runs an action between the library's check of a file and its opening, the first time that a name is
/// opened.
class BeforeOpening {
public:
    BeforeOpening(QByteArray name, std::function<void()> action)
        : _name(std::move(name)), _action(std::move(action)) {
        current = this;
    }
    ~BeforeOpening() {
        current = nullptr;
        EXPECT_FALSE(_action) << "nobody opened " << _name.toStdString();
    }
    BeforeOpening(const BeforeOpening&) = delete;
    BeforeOpening& operator=(const BeforeOpening&) = delete;

    static void notice(const char* name) {
        if (current != nullptr && current->_name == name)
            if (const auto action = std::exchange(current->_action, nullptr))
                action();
    }

private:
    static inline BeforeOpening* current = nullptr;
    QByteArray _name;
    std::function<void()> _action;
};

void replace(const QString& file, const QString& by) {
    EXPECT_EQ(rename(qPrintable(by), qPrintable(file)), 0);
}

} // namespace

TEST_F(ModelFilesTest, AnywhereIsAnyRegularFile) {
    const ModelFiles files;
    EXPECT_TRUE(files.folder().isNull());
    EXPECT_EQ(read(files, path("out")), "out");
    EXPECT_EQ(read(files, path("model/out-by-link")), "out");
    EXPECT_EQ(read(files, path("model/folder-above/out")), "out");
    EXPECT_TRUE(files.allows("/no/such/file"));
    EXPECT_EQ(read(files, "/no/such/file"), QByteArray());
}

TEST_F(ModelFilesTest, FolderHoldsTheFilesInItAndBelow) {
    const ModelFiles files(path("model"));
    EXPECT_EQ(files.folder(), path("model"));
    for (const char* name :
         {"model/in", "model/./in", "model//in", "model/sub/../in", "model/in-by-link",
          "model/in-by-absolute-link", "model/sub/up", "model/folder/up", "model/folder/../in"}) {
        EXPECT_TRUE(files.allows(path(name))) << name;
        EXPECT_EQ(read(files, path(name)), "model/in") << name;
    }
    EXPECT_EQ(read(files, path("model/sub/in")), "model/sub/in");
    EXPECT_EQ(read(files, path("model/folder/in")), "model/sub/in");
}

// An absolute path has to begin with the folder's path, as given or with its links resolved.
TEST_F(ModelFilesTest, FolderHoldsNothingElse) {
    const ModelFiles files(path("model"));
    for (const char* name :
         {"out", "model2/in", "mode", "model/../out", "model/../model/in", "model/sub/../../out",
          "model/out-by-link", "model/out-by-absolute-link", "model/sub/out", "model/folder/out",
          "model/folder-above", "model/folder-above/out", "model/folder-above/model/in",
          "model/folder-above-by-absolute-link/out", "model/dangling-out", "model/missing/../in",
          "model/in/../in", "model/in-by-other-name"}) {
        EXPECT_FALSE(files.allows(path(name))) << name;
        EXPECT_EQ(read(files, path(name)), QByteArray()) << name;
    }
    for (const char* name : {"/", "/etc/passwd", "/proc/self/environ", ":/x", "../out", "in"}) {
        EXPECT_FALSE(files.allows(name)) << name;
        EXPECT_EQ(read(files, name), QByteArray()) << name;
    }
}

TEST_F(ModelFilesTest, FolderMayHoldOtherItemsWhichAreNotOpened) {
    const ModelFiles files(path("model"));
    for (const char* name :
         {"model", "model/", "model/sub", "model/folder", "model/missing", "model/missing/in", "model/in/x",
          "model/dangling", "model/loop1", "model/loop1/x"}) {
        EXPECT_TRUE(files.allows(path(name))) << name;
        EXPECT_EQ(read(files, path(name)), QByteArray()) << name;
    }
}

// A file that the user may not read is there, too.
TEST_F(ModelFilesTest, ContainsTheFilesThatItOpens) {
    ASSERT_EQ(mkfifo(qPrintable(path("model/pipe")), 0600), 0);
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(path("model"))}) {
        for (const char* name : {"model/in", "model/sub/../in", "model/in-by-link", "model/sub/up",
                                 "model/folder/in", "model/pipe", "model", "model/sub", "model/missing",
                                 "model/dangling", "model/loop1", "model/in/x", "out", "model/../out",
                                 "model/sub/out", "model/out-by-link", "model/folder-above/out"})
            EXPECT_EQ(files.contains(path(name)), files.open(path(name)) != nullptr) << name;
        EXPECT_FALSE(files.contains(path("model/in") + QChar(QChar::Null)));
        EXPECT_FALSE(files.contains(QString()));
        EXPECT_FALSE(files.contains(":/models"));
    }
    EXPECT_TRUE(ModelFiles().contains(":/models/red.obj"));
    EXPECT_TRUE(ModelFiles(":/models").contains(":/models/red.obj"));
    EXPECT_FALSE(ModelFiles(":/models").contains(":/blue.mtl"));
    const Openings openings;
    EXPECT_TRUE(ModelFiles().contains(path("model/in")));
    EXPECT_THAT(openings.all(), IsEmpty());
}

TEST_F(ModelFilesTest, FolderIsRecognisedByEveryName) {
    for (const char* folder : {"other-name", "model/", "model/sub/..", "./model/."}) {
        const ModelFiles files(path(folder));
        EXPECT_EQ(read(files, path("model/in")), "model/in") << folder;
        EXPECT_FALSE(files.allows(path("out"))) << folder;
    }
    EXPECT_EQ(read(ModelFiles(path("other-name")), path("other-name/in")), "model/in");
    EXPECT_EQ(read(ModelFiles("/"), path("out")), "out");
}

TEST_F(ModelFilesTest, RelativeFolderIsResolvedAtConstruction) {
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(path("model")));
    const ModelFiles files(".");
    EXPECT_EQ(read(files, "in"), "model/in");
    EXPECT_EQ(read(files, "../out"), QByteArray());
    ASSERT_TRUE(QDir::setCurrent(before));
    EXPECT_EQ(read(files, path("model/in")), "model/in");
}

TEST_F(ModelFilesTest, MissingFolderHoldsNothing) {
    const ModelFiles files(path("missing"));
    ASSERT_TRUE(QDir(path(QString())).mkpath("missing"));
    write("missing/in");
    EXPECT_EQ(read(files, path("missing/in")), QByteArray());
    EXPECT_EQ(read(files, path("out")), QByteArray());
}

TEST_F(ModelFilesTest, FolderStaysTheSameWhenItsNameChanges) {
    const ModelFiles files(path("model"));
    ASSERT_EQ(rename(qPrintable(path("model")), qPrintable(path("moved"))), 0);
    ASSERT_EQ(rename(qPrintable(path("model2")), qPrintable(path("model"))), 0);
    EXPECT_EQ(read(files, path("model/in")), "model/in");
}

TEST_F(ModelFilesTest, FileIsReadAsTextOnRequest) {
    QFile made(path("model/lines"));
    ASSERT_TRUE(made.open(QIODevice::WriteOnly) && made.write("a\r\nb") == 4);
    made.close();
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(path("model"))}) {
        const std::unique_ptr<QFile> file = files.open(path("model/lines"), kText);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->fileName(), path("model/lines"));
        EXPECT_EQ(file->size(), 4);
        EXPECT_FALSE(file->isSequential());
        EXPECT_EQ(file->readAll(), "a\nb");
    }
}

TEST_F(ModelFilesTest, DescriptorsAreClosed) {
    ASSERT_TRUE(QDir(path("model")).mkpath("a/b/c/d"));
    write("model/a/b/c/d/in");
    link("a/b/c/d/in", "model/deep-link");
    ASSERT_EQ(mkfifo(qPrintable(path("model/a/b/pipe")), 0600), 0);
    const std::vector<int> before = openDescriptors();
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(path("model"))}) {
        EXPECT_EQ(openDescriptors().size(), before.size() + 1) << "the folder itself is open";
        for (const char* name :
             {"model/in", "model/sub/up", "model/sub/in", "model/a/b/c/d/in", "model/deep-link", "model/sub",
              "model/a/b/c", "model/a/b/pipe", "model/missing/x", "model/a/b/missing/c/x",
              "model/a/b/c/d/in/x", "model/a/b/c/d/missing", "out", "model/../out", "model/sub/out",
              "model/loop1", "model/a/b/../../../out"})
            read(files, path(name));
        EXPECT_EQ(openDescriptors().size(), before.size() + 1);
        const std::unique_ptr<QFile> file = files.open(path("model/a/b/c/d/in"));
        EXPECT_EQ(openDescriptors().size(), before.size() + 2)
            << "one for the file, none for the folders above it";
    }
    EXPECT_EQ(openDescriptors(), before);
}

// A terminal would not become this process's own, and no child gets the descriptors.
TEST_F(ModelFilesTest, NamesAreOpenedOneByOneAndForReadingOnly) {
    constexpr int kFile = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;
    const ModelFiles folder(path("model"));
    const Openings openings;
    EXPECT_EQ(read(ModelFiles(), path("model/sub/in")), "model/sub/in");
    EXPECT_EQ(read(folder, path("model/folder/in")), "model/sub/in");
    EXPECT_THAT(openings.all(),
                ElementsAre(Openings::Opening(QFile::encodeName(path("model/sub/in")), kFile),
                            Openings::Opening("sub", kFolder), Openings::Opening("in", kFile | O_NOFOLLOW)));
}

// Opening a pipe or a device has effects by itself.
TEST_F(ModelFilesTest, OnlyRegularFilesAreOpened) {
    ASSERT_EQ(mkfifo(qPrintable(path("model/pipe")), 0600), 0);
    const ModelFiles folder(path("model"));
    const Openings openings;
    for (const char* name : {"model/pipe", "model/sub", "model/missing", "model/dangling"}) {
        EXPECT_EQ(ModelFiles().open(path(name)), nullptr) << name;
        EXPECT_EQ(folder.open(path(name)), nullptr) << name;
    }
    EXPECT_EQ(ModelFiles().open("/dev/null"), nullptr);
    EXPECT_THAT(openings.all(), IsEmpty());
}

TEST_F(ModelFilesTest, DescriptorOfTheFolderIsForItsNameOnlyAndNotForChildren) {
    const std::vector<int> before = openDescriptors();
    const ModelFiles files(path("model"));
    std::vector<int> opened = openDescriptors();
    opened.erase(std::remove_if(opened.begin(), opened.end(),
                                [&](int descriptor) {
                                    return std::find(before.begin(), before.end(), descriptor) !=
                                           before.end();
                                }),
                 opened.end());
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(fcntl(opened.front(), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(fcntl(opened.front(), F_GETFL) & (O_PATH | O_DIRECTORY), O_PATH | O_DIRECTORY);
}

TEST_F(ModelFilesTest, FilesOfTheKernelAreNotRead) {
    for (const long kind : {PROC_SUPER_MAGIC, SYSFS_MAGIC, DEBUGFS_MAGIC, TRACEFS_MAGIC}) {
        const FileSystem standIn(kind);
        EXPECT_EQ(ModelFiles().open(path("out")), nullptr) << kind;
        EXPECT_EQ(ModelFiles(path("model")).open(path("model/in")), nullptr) << kind;
    }
    for (const long kind : {TMPFS_MAGIC, EXT4_SUPER_MAGIC, NFS_SUPER_MAGIC}) {
        const FileSystem standIn(kind);
        EXPECT_EQ(read(ModelFiles(), path("out")), "out") << kind;
        EXPECT_EQ(read(ModelFiles(path("model")), path("model/in")), "model/in") << kind;
    }
}

TEST_F(ModelFilesTest, FileWhoseFileSystemIsUnknownIsRead) {
    const FileSystem standIn(FileSystem::kUnknown);
    EXPECT_EQ(read(ModelFiles(), path("out")), "out");
}

// The system itself follows forty links.
TEST_F(ModelFilesTest, FortyLinksAreFollowedAndNoMore) {
    link("in", "model/link1");
    for (int i = 2; i <= 41; ++i)
        link(QString("link%1").arg(i - 1), QString("model/link%1").arg(i));
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(path("model"))}) {
        EXPECT_EQ(read(files, path("model/link40")), "model/in");
        EXPECT_TRUE(files.allows(path("model/link41")));
        EXPECT_EQ(files.open(path("model/link41")), nullptr);
    }
}

TEST_F(ModelFilesTest, NameWithAZeroByteIsInvalid) {
    const QString name = path("model/in") + QChar(QChar::Null) + "x";
    EXPECT_EQ(ModelFiles().open(name), nullptr);
    const ModelFiles files(path("model"));
    EXPECT_FALSE(files.allows(name));
    EXPECT_EQ(files.open(name), nullptr);
    EXPECT_EQ(files.open(QString()), nullptr);
}

TEST_F(ModelFilesTest, FileThatBecomesAPipeIsNotWaitedFor) {
    for (const ModelFiles& files : {ModelFiles(), ModelFiles(path("model"))}) {
        const QString name = path("model/in");
        ASSERT_EQ(mkfifo(qPrintable(path("model/pipe")), 0600), 0);
        EXPECT_EQ(read(files, name), "model/in");
        const HangGuard guard(5);
        const BeforeOpening swap(files.folder().isNull() ? QFile::encodeName(name) : QByteArray("in"),
                                 [&] { replace(name, path("model/pipe")); });
        EXPECT_EQ(files.open(name), nullptr);
        ASSERT_TRUE(QFile::remove(name));
        write("model/in");
    }
}

TEST_F(ModelFilesTest, FileThatBecomesALinkOutOfItsFolderIsNotRead) {
    const BeforeOpening swap("in", [&] { replace(path("model/in"), path("model/out-by-link")); });
    EXPECT_EQ(read(ModelFiles(path("model")), path("model/in")), QByteArray());
}

TEST_F(ModelFilesTest, FolderThatBecomesALinkOutOfItsFolderIsNotEntered) {
    ASSERT_TRUE(QDir(path(QString())).mkpath("elsewhere"));
    write("elsewhere/in");
    link("../elsewhere", "model/link");
    const BeforeOpening swap("sub", [&] {
        ASSERT_EQ(rename(qPrintable(path("model/sub")), qPrintable(path("model/moved"))), 0);
        replace(path("model/sub"), path("model/link"));
    });
    EXPECT_EQ(read(ModelFiles(path("model")), path("model/sub/in")), QByteArray());
}

TEST_F(ModelFilesTest, FolderThatBecomesALinkOutOfItsFolderIsNotListed) {
    ASSERT_TRUE(QDir(path(QString())).mkpath("elsewhere"));
    write("elsewhere/in");
    link("../elsewhere", "model/link");
    FolderListings listings(ModelFiles(path("model")), 100);
    const BeforeOpening swap("sub", [&] {
        ASSERT_EQ(rename(qPrintable(path("model/sub")), qPrintable(path("model/moved"))), 0);
        replace(path("model/sub"), path("model/link"));
    });
    EXPECT_EQ(listings.find(path("model/sub"), "in"), QString());
    EXPECT_EQ(listings.find(path("model/moved"), "IN"), "in");
}

} // namespace Atelier::Vel

// Replaces the C library's function, also for the library's calls.
extern "C" __attribute__((visibility("default"))) int openat(int folder, const char* name, int flags, ...) {
    Atelier::Vel::BeforeOpening::notice(name);
    Atelier::Vel::Openings::notice(name, flags);
    return static_cast<int>(syscall(SYS_openat, folder, name, flags, 0));
}

// The same.
extern "C" __attribute__((visibility("default"))) int fstatfs(int file, struct statfs* system) {
    using Atelier::Vel::FileSystem;
    if (FileSystem::standIn == FileSystem::kUnknown)
        return -1;
    const long result = syscall(SYS_fstatfs, file, system);
    if (FileSystem::standIn != 0)
        system->f_type = FileSystem::standIn;
    return static_cast<int>(result);
}

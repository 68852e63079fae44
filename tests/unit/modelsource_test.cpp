#include <velmodel/modelsource.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <vector>

#include <sys/stat.h>

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>

#include "files/filesource.h"
#include "modeldescription.h"
#include "nastytext.h"
#include "support/clientsource.h"
#include "support/hangguard.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using Testing::ClientDevice;
using Testing::ClientSource;
using Testing::DeviceBehaviour;
using Testing::HangGuard;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::NastyText;
using Testing::RecordingContext;

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
const QByteArray kModel = "mtllib lib.mtl\nusemtl red\n" + kTriangle;
const QByteArray kLibrary = "newmtl red\nmap_Kd wood.png\n";

QString loadFailure(const QString& name) {
    return QString("Failed to load OBJ file '%1'").arg(name);
}

/// Loads models of a source without a file.
class ModelSourceTest : public testing::Test {
protected:
    ModelSourceTest() { _source->files = {{"in/model.obj", kModel}, {"in/lib.mtl", kLibrary}}; }

    /// Reads the model. Returns: the error.
    QString read(const QString& name = "in/model.obj", const LoadProgress& progress = {}) {
        QString error;
        _report = {};
        _data = readDrawDataFromOBJ(_source, name, error, _options, progress, &_report);
        return error;
    }
    QString texture() const {
        return _data.isNull() ? QString() : _data.group(0, 0).material.texturePath("map_Kd");
    }

    std::shared_ptr<ClientSource> _source = std::make_shared<ClientSource>();
    LoadOptions _options;
    LoadReport _report;
    DrawData _data;

private:
    MessageLog _log; // the loads write a line each
};

/// Calls, bytes and facts of what `make` puts into a model.
template<typename Make>
QStringList uploaded(const Make& make) {
    const RecordingContext context;
    const std::unique_ptr<GPUModel> model(make());
    QStringList result = context.calls();
    for (const auto& buffer : context.recording().uploads)
        result.append(QString::fromLatin1(buffer.bytes.toHex()));
    return model ? result + Testing::describe(*model) : result + QStringList("null");
}

} // namespace

TEST_F(ModelSourceTest, ModelsAreThoseOfFiles) {
    const QTemporaryDir folder;
    const auto write = [&](const QString& name, const QByteArray& text) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        _source->files[folder.filePath(name)] = text;
    };
    for (unsigned int seed = 0; seed < 20; ++seed) {
        NastyText nasty(seed);
        write("lib.mtl", nasty.encoded(nasty.mtl(30)));
        write("model.obj", nasty.encoded("mtllib lib.mtl\n" + nasty.plain(80) +
                                         nasty.obj(120).replace("mtllib", "# mtllib")));
        const QString path = folder.filePath("model.obj");
        QString error;
        const QStringList expected = uploaded([&] { return loadModelFromOBJFile(path, error, _options); });
        for (const bool isSequential : {false, true}) {
            _source->behaviour.isSequential = isSequential;
            _source->behaviour.mustBeWaitedFor = isSequential;
            _source->behaviour.mostPerRead = 1000;
            const QString expectedError = std::exchange(error, QString());
            EXPECT_EQ(uploaded([&] { return loadModelFromOBJ(_source, path, error, _options); }), expected);
            EXPECT_EQ(error, expectedError);
        }
        EXPECT_EQ(uploaded([&] { return loadModelFromOBJ(ModelFiles().source(), path, error, _options); }),
                  expected);
    }
}

TEST_F(ModelSourceTest, NamesAreResolvedByTheSource) {
    EXPECT_EQ(read(), QString());
    EXPECT_EQ(texture(), "in/wood.png");
    EXPECT_EQ(_source->opened, QStringList({"in/model.obj", "in/lib.mtl"}));
    _source->files["model.obj"] = kModel;
    EXPECT_EQ(read("model.obj"), "Failed to load MTL file 'lib.mtl'");
}

TEST_F(ModelSourceTest, NothingIsReadTwice) {
    _source->files["in/model.obj"] = QByteArray("mtllib lib.mtl\n").repeated(1000) + kModel;
    for (const bool isSequential : {false, true}) {
        _source->behaviour.isSequential = isSequential;
        _source->bytesRead = 0;
        _source->opened.clear();
        EXPECT_EQ(read(), QString());
        EXPECT_EQ(_source->opened, QStringList({"in/model.obj", "in/lib.mtl"}));
        EXPECT_EQ(_source->bytesRead, _source->files["in/model.obj"].size() + kLibrary.size());
    }
}

TEST_F(ModelSourceTest, MissingFilesFailTheLoad) {
    EXPECT_EQ(read("no.obj"), loadFailure("no.obj"));
    EXPECT_TRUE(_data.isNull());
    _source->files.remove("in/lib.mtl");
    EXPECT_EQ(read(), "Failed to load MTL file 'in/lib.mtl'");
    _options.repairs.skipMissingLibraries = true;
    _options.repairs.findFiles = true;
    EXPECT_EQ(read(), QString());
    _source.reset();
    EXPECT_EQ(read(), loadFailure("in/model.obj"));
}

TEST_F(ModelSourceTest, DeviceThatIsNotOpenForReadingIsMissing) {
    _source->behaviour.mode = QIODevice::NotOpen;
    EXPECT_EQ(read(), loadFailure("in/model.obj"));
    _source->behaviour.mode = QIODevice::WriteOnly;
    EXPECT_EQ(read(), loadFailure("in/model.obj"));
}

TEST_F(ModelSourceTest, ReadErrorsFailTheLoad) {
    _source->behaviour.failsAt = 20;
    _source->files["in/model.obj"] = kTriangle;
    EXPECT_EQ(read(), loadFailure("in/model.obj"));
    EXPECT_TRUE(_data.isNull());
    _source->files["in/model.obj"] = "mtllib lib.mtl\n";
    EXPECT_EQ(read(), "Failed to load MTL file 'in/lib.mtl'");
}

TEST_F(ModelSourceTest, ExceptionsPassThrough) {
    for (const bool isSequential : {false, true}) {
        _source->behaviour.isSequential = isSequential;
        _source->behaviour.beforeRead = [](qint64) { throw std::runtime_error("lost"); };
        EXPECT_THROW(read(), std::runtime_error);
    }
    class Throwing : public ClientSource {
        QString resolve(const QString&, const QString&) override { throw std::runtime_error("unknown"); }
    };
    const auto files = _source->files;
    _source = std::make_shared<Throwing>();
    _source->files = files;
    EXPECT_THROW(read(), std::runtime_error);
}

TEST_F(ModelSourceTest, TextModeOfDevicesDoesNotMatter) {
    for (const QIODevice::OpenMode mode :
         {QIODevice::OpenMode(QIODevice::ReadOnly), QIODevice::ReadOnly | QIODevice::Text}) {
        _source->behaviour.mode = mode;
        _source->files["in/model.obj"] = QByteArray(kModel).replace("\n", "\r\n");
        EXPECT_EQ(read(), QString());
        EXPECT_EQ(texture(), "in/wood.png");
    }
}

TEST_F(ModelSourceTest, ProgressOfASequentialDeviceHasNoTotal) {
    _source->files["in/model.obj"] = kModel + QByteArray("# comment\n").repeated(500'000);
    _source->behaviour.isSequential = true;
    std::vector<LoadStep> steps;
    EXPECT_EQ(read("in/model.obj",
                   [&](const LoadStep& step) {
                       if (step.phase == LoadPhase::Reading)
                           steps.push_back(step);
                       return true;
                   }),
              QString());
    ASSERT_GE(steps.size(), 2u);
    EXPECT_LE(steps.size(), 6u) << "one for each MiB";
    for (const LoadStep& step : steps)
        EXPECT_EQ(step.total, -1);
    EXPECT_EQ(steps.front().done, 0);
    EXPECT_GT(steps.back().done, 1 << 20);
    EXPECT_EQ(_report.bytesRead, _source->files["in/model.obj"].size());
    EXPECT_EQ(read("in/model.obj", [](const LoadStep& step) { return step.done < 1000; }),
              "Loading OBJ file 'in/model.obj' was cancelled");
}

TEST_F(ModelSourceTest, ProgressOfOtherDevicesEndsAtTheirSize) {
    LoadStep last;
    EXPECT_EQ(read("in/model.obj",
                   [&](const LoadStep& step) {
                       last = step.phase == LoadPhase::Reading ? step : last;
                       return true;
                   }),
              QString());
    EXPECT_EQ(last.total, kModel.size());
    EXPECT_EQ(_report.bytesRead, kModel.size());
}

TEST_F(ModelSourceTest, SourcesMayBeReadOnSeveralThreads) {
    const auto files = ModelFiles().source();
    const QTemporaryDir folder;
    QFile file(folder.filePath("model.obj"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(kTriangle) > 0);
    file.close();
    std::vector<std::future<bool>> loads;
    for (int i = 0; i < 4; ++i)
        loads.push_back(
            std::async(std::launch::async, [&, own = std::make_shared<ClientSource>(_source->files)] {
                QString error;
                bool good = true;
                for (int round = 0; round < 20; ++round)
                    good = good && !readDrawDataFromOBJ(own, "in/model.obj", error).isNull() &&
                           !readDrawDataFromOBJ(files, file.fileName(), error).isNull();
                return good && error.isNull();
            }));
    for (std::future<bool>& load : loads)
        EXPECT_TRUE(load.get());
}

TEST_F(ModelSourceTest, ModelIsRefusedBeforeAnythingIsReadWithoutAContext) {
    QString error;
    EXPECT_EQ(loadModelFromOBJ(_source, "in/model.obj", error), nullptr);
    EXPECT_EQ(error, "OBJ file 'in/model.obj' needs a current context of OpenGL 4.3 or later");
    EXPECT_THAT(_source->opened, IsEmpty());
}

TEST_F(ModelSourceTest, ModelKeepsItsSource) {
    const std::weak_ptr<ClientSource> watched = _source;
    const RecordingContext context;
    QString error;
    std::unique_ptr<GPUModel> model = loadModelFromOBJ(_source, "in/model.obj", error);
    ASSERT_NE(model, nullptr) << error.toStdString();
    _source.reset();
    EXPECT_FALSE(watched.expired());
    model.reset();
    EXPECT_TRUE(watched.expired());
}

// A library of a source may be a file on a disk by two names; what was read is known by its version.
TEST_F(ModelSourceTest, FilesOfAClientAreReadAsFiles) {
    class Disk : public ModelSource {
    public:
        std::unique_ptr<QIODevice> open(const QString& name) override {
            ++opened;
            auto file = std::make_unique<QFile>(folder.filePath(name));
            EXPECT_TRUE(file->open(QIODevice::ReadOnly));
            return file;
        }
        QString resolve(const QString&, const QString& name) override { return name; }
        QTemporaryDir folder;
        int opened = 0;
    };
    const auto disk = std::make_shared<Disk>();
    for (const auto& [name, text] : {std::pair("a.obj", "mtllib a.mtl\nmtllib ./a.mtl\n" + kTriangle),
                                     std::pair("a.mtl", QByteArray("newmtl red\n"))}) {
        QFile file(disk->folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) > 0);
    }
    QString error;
    EXPECT_FALSE(readDrawDataFromOBJ(disk, "a.obj", error).isNull());
    EXPECT_EQ(disk->opened, 3);
}

TEST_F(ModelSourceTest, FileOfAClientMayBeAPipe) {
    class Pipe : public ModelSource {
    public:
        std::unique_ptr<QIODevice> open(const QString& name) override {
            auto file = std::make_unique<QFile>(name);
            EXPECT_TRUE(file->open(QIODevice::ReadOnly));
            return file;
        }
        QString resolve(const QString&, const QString& name) override { return name; }
    };
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe.obj");
    ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
    const HangGuard guard(60);
    const auto writer = std::async(std::launch::async, [&] {
        QFile file(pipe);
        if (file.open(QIODevice::WriteOnly))
            file.write(kTriangle);
    });
    QString error;
    EXPECT_FALSE(readDrawDataFromOBJ(std::make_shared<Pipe>(), pipe, error, {}, {}, &_report).isNull());
    EXPECT_EQ(_report.bytesRead, kTriangle.size());
}

TEST_F(ModelSourceTest, FileThatIsNotOpenIsMissing) {
    class Closed : public ModelSource {
    public:
        std::unique_ptr<QIODevice> open(const QString& name) override {
            return std::make_unique<QFile>(name);
        }
        QString resolve(const QString&, const QString& name) override { return name; }
    };
    QString error;
    EXPECT_TRUE(readDrawDataFromOBJ(std::make_shared<Closed>(), "a.obj", error).isNull());
    EXPECT_EQ(error, loadFailure("a.obj"));
}

TEST_F(ModelSourceTest, ConfinedFilesStayConfined) {
    const QTemporaryDir top;
    ASSERT_TRUE(QDir(top.path()).mkpath("model"));
    const auto write = [&](const QString& name, const QByteArray& text) {
        QFile file(top.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    };
    write("out.mtl", "newmtl red\n");
    write("model/in.mtl", "newmtl red\nmap_Kd ../out.png\n");
    const QString hostile = write("model/hostile.obj", "mtllib ../out.mtl\n" + kTriangle);
    const QString model = write("model/model.obj", "mtllib in.mtl\nusemtl red\n" + kTriangle);
    const auto files = ModelFiles(top.filePath("model")).source();
    const MessageLog log;
    QString error;
    EXPECT_TRUE(readDrawDataFromOBJ(files, hostile, error).isNull());
    EXPECT_EQ(error, "Failed to load MTL file '" + top.filePath("model/../out.mtl") + "'");
    _data = readDrawDataFromOBJ(files, model, error);
    EXPECT_TRUE(texture().isNull());
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2u);
    EXPECT_TRUE(readDrawDataFromOBJ(files, write("out.obj", kTriangle), error).isNull());
    EXPECT_EQ(error, loadFailure(top.filePath("out.obj")));
}

TEST_F(ModelSourceTest, PipesAreRefusedWithoutWaiting) {
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe.obj");
    ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
    const HangGuard guard(20);
    QString error;
    EXPECT_TRUE(readDrawDataFromOBJ(ModelFiles().source(), pipe, error).isNull());
    EXPECT_EQ(error, loadFailure(pipe));
}

// The rule for files, which is that of QDir.
TEST(FileSourceTest, NamesStartFromTheFolderOfTheFile) {
    FileSource source{ModelFiles()};
    for (const char* base :
         {"/a/b/c.obj", "/c.obj", "c.obj", "a/c.obj", "./c.obj", "../a/c.obj", "/a/../b/c.obj", "/a/./c.obj",
          "/a//c.obj", "/a/.b/c.obj", "/a/b/..c.obj", ":/a/c.obj", ":/c.obj", "", "/", "/a/"})
        for (const char* name : {"m.mtl", "x/m.mtl", "../m.mtl", "a/../m.mtl", "/abs/m.mtl", ":/m.mtl", "",
                                 ".", "C:\\m.mtl", "~/m.mtl", "//m.mtl"}) {
            const QDir folder(QFileInfo(base).dir().absolutePath());
            const QString expected = QDir::isRelativePath(name) ? folder.absoluteFilePath(name) : name;
            EXPECT_EQ(source.resolve(base, name), expected) << base << " names " << name;
        }
}

} // namespace Atelier::Vel

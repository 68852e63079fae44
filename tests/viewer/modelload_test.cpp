#include "modelload.h"

#include <numeric>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "loadflags.h"

namespace Atelier::Vel::Viewer::Testing {

namespace {

constexpr int kLong = 10'000; // milliseconds

} // namespace

class ModelLoadTest : public ::testing::Test {
public:
    QString write(const QString& name, const QByteArray& text) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    // A grid of that many squares in each direction.
    static QByteArray grid(int side) {
        QByteArray text;
        for (int y = 0; y <= side; ++y)
            for (int x = 0; x <= side; ++x)
                text += "v " + QByteArray::number(x) + ' ' + QByteArray::number(y) + " 0\n";
        const auto number = [side](int x, int y) { return ' ' + QByteArray::number(y * (side + 1) + x + 1); };
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                text +=
                    'f' + number(x, y) + number(x + 1, y) + number(x + 1, y + 1) + number(x, y + 1) + '\n';
        return text;
    }
    static LoadRequest request(const QString& path) {
        LoadRequest made{path, LoadOptions::forgiving()};
        made.options.splitObjects = true;
        return made;
    }
    static ReadModel loaded(const LoadRequest& wanted) {
        ModelLoad load(wanted);
        EXPECT_TRUE(load.waitFor(kLong));
        return load.take();
    }
    static ReadModel loaded(const QString& path) { return loaded(request(path)); }

    QTemporaryDir folder;
};

TEST_F(ModelLoadTest, ReadsAModelWithItsPartsAndTimes) {
    const QString path =
        write("a.obj", "o one\nv 0 0 0\nv 2 0 0\nv 0 3 0\nf 1 2 3\no two\nv 0 0 4\nf 1 2 4\n");
    const ReadModel model = loaded(path);
    EXPECT_TRUE(model.error.isNull()) << model.error.toStdString();
    EXPECT_FALSE(model.isCancelled);
    EXPECT_EQ(model.path, path);
    ASSERT_EQ(model.contents.parts.size(), 2);
    EXPECT_EQ(model.contents.parts[0].object, "one");
    EXPECT_EQ(model.contents.parts[1].object, "two");
    EXPECT_EQ(model.contents.box.maximum, QVector3D(2, 3, 4));
    EXPECT_EQ(model.report.statistics.triangles, 2U);
    EXPECT_GT(std::accumulate(std::begin(model.milliseconds), std::end(model.milliseconds), 0.0), 0);
}

TEST_F(ModelLoadTest, DecodesTexturesOfTheLoad) {
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(folder.filePath("red.png")));
    write("a.mtl", "newmtl red\nmap_Kd red.png\n");
    const ReadModel model =
        loaded(write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n"));
    EXPECT_EQ(model.textures.waitingCount(), 1);
}

TEST_F(ModelLoadTest, ErrorsNameTheFileAndTheCause) {
    EXPECT_EQ(loaded("/no/such.obj").error, "Failed to load OBJ file '/no/such.obj': No such file");
    EXPECT_EQ(loaded(folder.path()).error, "Failed to load OBJ file '" + folder.path() + "': Is a directory");
    const QString empty = write("empty.obj", "v 0 0 0\n");
    EXPECT_EQ(loaded(empty).error, empty + ": There is nothing to draw: the model has no triangles");
    const QString nowhere = write("nan.obj", "v nan 0 0\nv nan 1 0\nv nan 0 1\nf 1 2 3\n");
    EXPECT_EQ(loaded(nowhere).error, nowhere + ": There is nothing to draw: no position is finite");
    EXPECT_TRUE(loaded(nowhere).data.isNull());
}

TEST_F(ModelLoadTest, AConfinedModelReadsOnlyItsOwnFolder) {
    LoadRequest confined = request(write("a.obj", "mtllib ../b.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
    confined.options.files = LoadOptions::Files::InOwnFolder;
    const ReadModel model = loaded(confined);
    EXPECT_EQ(model.files.folder(), QFileInfo(folder.path()).canonicalFilePath());
}

TEST_F(ModelLoadTest, CanBeCancelled) {
    ModelLoad load(request(write("grid.obj", grid(300))));
    load.cancel();
    ASSERT_TRUE(load.waitFor(kLong));
    const ReadModel model = load.take();
    EXPECT_TRUE(model.isCancelled);
    EXPECT_EQ(model.error, "Loading was cancelled");
    EXPECT_TRUE(model.data.isNull());
}

TEST_F(ModelLoadTest, ProgressNeverDecreases) {
    LoadRequest plain = request(write("grid.obj", grid(300)));
    LoadRequest creased = plain;
    creased.options.normals = NormalOptions::crease(30); // which are made before vertices are merged
    for (const LoadRequest& wanted : {plain, creased}) {
        ModelLoad load(wanted);
        LoadState before = load.state();
        while (!load.waitFor(0)) {
            const LoadState state = load.state();
            EXPECT_GE(state.done, before.done);
            before = state;
        }
        EXPECT_EQ(load.state().done, 1);
        EXPECT_TRUE(load.take().error.isNull());
    }
}

TEST_F(ModelLoadTest, AnAbandonedLoadEndsOnItsOwn) {
    const QString path = write("grid.obj", grid(300));
    for (int round = 0; round < 5; ++round)
        const ModelLoad abandoned(request(path));
    EXPECT_GE(RunningWork::count(), 0);
    for (int wait = 0; RunningWork::count() > 0 && wait < kLong; wait += 10)
        ModelLoad(request("/no/such.obj")).waitFor(10);
    EXPECT_EQ(RunningWork::count(), 0);
}

TEST_F(ModelLoadTest, OptimisedModelsMissTheCacheLess) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "built without meshoptimizer";
    LoadRequest optimised = request(write("grid.obj", grid(60)));
    const ReadModel plain = loaded(optimised);
    optimised.isOptimised = true;
    const ReadModel model = loaded(optimised);
    EXPECT_LT(model.cache.acmr, plain.cache.acmr);
    EXPECT_GT(model.milliseconds[static_cast<int>(LoadStage::Optimising)], 0);
}

} // namespace Atelier::Vel::Viewer::Testing

// Decoding textures, without a context.
#include <velmodel/decodedtextures.h>

#include <future>
#include <stdexcept>
#include <vector>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "support/hangguard.h"
#include "support/hostilepaths.h"
#include "support/messagelog.h"
#include "support/scale.h"
#include "support/withoutrootsrights.h"

namespace Atelier::Vel {

bool operator==(const DecodeStep& a, const DecodeStep& b) {
    return a.done == b.done && a.total == b.total && a.bytes == b.bytes;
}
void PrintTo(const DecodeStep& step, std::ostream* out) {
    *out << step.done << " of " << step.total << ", " << step.bytes << " bytes";
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DecodedTexturesTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _folder.filePath(name); }
    /// Returns: the path of an image that takes `width` * `height` * 4 bytes.
    QString save(const QString& name, int width = 2, int height = 2) const {
        QImage image(width, height, QImage::Format_Grayscale8);
        image.fill(0);
        EXPECT_TRUE(image.save(path(name)));
        return path(name);
    }
    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path(name);
    }
    /// Appends each step to `steps`, and cancels when there are `limit`.
    static DecodeProgress recordTo(std::vector<DecodeStep>& steps, std::size_t limit = 1000) {
        return [&steps, limit](const DecodeStep& step) {
            steps.push_back(step);
            return steps.size() < limit;
        };
    }
    /// The number of images among the files.
    static int decodedCount(const QStringList& paths, const ModelFiles& files = {}) {
        DecodedTextures textures(files);
        EXPECT_TRUE(textures.decode(paths));
        return textures.waitingCount();
    }

private:
    QTemporaryDir _folder;
};

} // namespace

TEST_F(DecodedTexturesTest, ProgressIsReportedBeforeEachImageAndAfterTheLast) {
    DecodedTextures textures;
    std::vector<DecodeStep> steps;
    EXPECT_TRUE(textures.decode({save("a.png"), path("missing.png"), save("b.png", 3, 5)}, recordTo(steps)));
    EXPECT_THAT(steps, ElementsAre(DecodeStep{0, 3, 0}, DecodeStep{1, 3, 16}, DecodeStep{2, 3, 16},
                                   DecodeStep{3, 3, 76}));
    EXPECT_EQ(textures.waitingCount(), 2);
}

TEST_F(DecodedTexturesTest, FileIsDecodedOnce) {
    DecodedTextures textures;
    std::vector<DecodeStep> steps;
    const QString first = save("a.png");
    EXPECT_TRUE(textures.decode({first, path("missing.png"), first}, recordTo(steps)));
    EXPECT_EQ(steps.back(), (DecodeStep{2, 2, 16}));
    steps.clear();
    EXPECT_TRUE(textures.decode({first, path("missing.png")}, recordTo(steps)));
    EXPECT_TRUE(textures.decode({}, recordTo(steps)));
    EXPECT_THAT(steps, IsEmpty());
    EXPECT_TRUE(textures.decode({first, save("b.png")}, recordTo(steps)));
    EXPECT_THAT(steps, ElementsAre(DecodeStep{0, 1, 16}, DecodeStep{1, 1, 32}));
}

TEST_F(DecodedTexturesTest, CancelledWorkKeepsItsImagesAndCanGoOn) {
    const QStringList paths = {save("a.png"), save("b.png"), save("c.png")};
    for (int done = 0; done <= 3; ++done) {
        DecodedTextures textures;
        std::vector<DecodeStep> steps;
        EXPECT_FALSE(textures.decode(paths, recordTo(steps, static_cast<std::size_t>(done) + 1)));
        EXPECT_EQ(textures.waitingCount(), done);
        EXPECT_TRUE(textures.decode(paths));
        EXPECT_EQ(textures.waitingCount(), 3);
    }
}

TEST_F(DecodedTexturesTest, ExceptionOfTheProgressFunctionReachesTheCaller) {
    DecodedTextures textures;
    const QStringList paths = {save("a.png"), save("b.png")};
    const auto failing = [](const DecodeStep& step) {
        if (step.done == 1)
            throw std::runtime_error("no window");
        return true;
    };
    EXPECT_THROW(textures.decode(paths, failing), std::runtime_error);
    EXPECT_EQ(textures.waitingCount(), 1);
    EXPECT_TRUE(textures.decode(paths));
    EXPECT_EQ(textures.waitingCount(), 2);
}

TEST_F(DecodedTexturesTest, FaultyFilesHaveNoImage) {
    const QByteArray svg = "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'/>";
    const QString whole = save("whole.png");
    QFile file(whole);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList faulty = {path("missing.png"), QString(),
                                path(QString()),     write("text.png", "this is no picture"),
                                write("a.svg", svg), write("header.png", file.read(30))};
    EXPECT_EQ(decodedCount(faulty), 0);
    EXPECT_EQ(decodedCount(faulty + QStringList{whole}), 1);
}

TEST_F(DecodedTexturesTest, HostilePathsHaveNoImage) {
    const Testing::HostilePaths hostile;
    for (const Testing::HostilePath& one : hostile.paths()) {
        const Testing::WithoutRootsRights asAnybody;
        const Testing::HangGuard guard(5);
        EXPECT_EQ(decodedCount({one.path}), 0) << one.kind;
    }
}

TEST_F(DecodedTexturesTest, TooLargeImagesAreNotDecoded) {
    EXPECT_EQ(decodedCount({save("wide.png", 32'768, 1), save("high.png", 1, 32'768)}), 2);
    EXPECT_EQ(decodedCount({save("wider.png", 32'769, 1), save("higher.png", 1, 32'769)}), 0);
    // A sparse file; the decoded image would take 1.6 GB.
    QFile file(write("huge.pgm", "P5\n20000 20000\n255\n"));
    ASSERT_TRUE(file.resize(20'000 * 20'001));
    EXPECT_EQ(decodedCount({file.fileName()}), 0);
}

TEST_F(DecodedTexturesTest, OnlyTheFilesOfTheFolderAreDecoded) {
    ASSERT_TRUE(QDir(path({})).mkpath("model/maps"));
    const ModelFiles files(path("model"));
    save("model/maps/in.png");
    const QString outside = save("out.png");
    EXPECT_EQ(decodedCount({path("model/maps/in.png")}, files), 1);
    EXPECT_EQ(decodedCount({path("model\\maps\\in.png")}, files), 1);
    EXPECT_EQ(decodedCount({outside, path("model/../out.png")}, files), 0);
    EXPECT_EQ(decodedCount({outside, path("model/../out.png")}), 2);
}

TEST_F(DecodedTexturesTest, NothingIsHandedOverWithoutAContext) {
    DecodedTextures textures;
    EXPECT_TRUE(textures.decode({save("a.png")}));
    EXPECT_EQ(textures.handOver(), 1);
    EXPECT_EQ(textures.waitingCount(), 1);
}

TEST_F(DecodedTexturesTest, SeveralThreadsDecodeAtTheSameTime) {
    constexpr int kThreads = 4;
    const Testing::MessageLog log;
    QStringList paths = {path("missing.png"), write("text.png", "this is no picture")};
    const int images = Testing::scaled(40);
    for (int i = 0; i < images; ++i)
        paths << save(QStringLiteral("%1.%2").arg(i).arg(i % 2 == 0 ? "png" : "jpg"), 9, 7);
    std::vector<std::future<DecodedTextures>> results;
    for (int thread = 0; thread < kThreads; ++thread)
        results.push_back(std::async(std::launch::async, [paths] {
            DecodedTextures textures;
            EXPECT_TRUE(textures.decode(paths, [](const DecodeStep&) { return true; }));
            return textures;
        }));
    for (auto& result : results)
        EXPECT_EQ(result.get().waitingCount(), images);
}

} // namespace Atelier::Vel

#include <cstddef>
#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/objloader.h>

#include "allocationcount.h"
#include "import/obj/objreader.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using Testing::allocationCount;
using Testing::RecordingContext;

// Arrays grow once more each time the input doubles: the maximum of allocations for a hundred times the
// input.
constexpr size_t kFurtherAllocations = 400;

class AllocationsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!Testing::countsAllocations())
            GTEST_SKIP() << "allocations cannot be counted here";
    }

    QString write(const QByteArray& text) const {
        QString path = _directory.filePath(QStringLiteral("model.obj"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }

    /// The allocations of a whole load.
    size_t ofLoading(const QByteArray& text) const {
        const QString path = write(text);
        const RecordingContext context;
        QString error;
        const size_t before = allocationCount();
        const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path, error));
        const size_t count = allocationCount() - before;
        EXPECT_NE(model, nullptr);
        return count;
    }

    /// The allocations of reading every record one by one.
    size_t ofReading(const QByteArray& text) const {
        QFile file(write(text));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const size_t before = allocationCount();
        QTextStream stream(&file);
        ObjReader reader(&stream);
        for (; reader.hasNext(); reader.next())
            reader.read();
        return allocationCount() - before;
    }

private:
    QTemporaryDir _directory;
};

const QByteArray kVertices = "v 0.0 0.0 0.0\nv 1.0 0.0 0.0\nv 0.0 1.0 0.0\nvt 0.5 0.5\nvn 0.0 0.0 1.0\n";

} // namespace

TEST_F(AllocationsTest, CountersCount) {
    const size_t before = allocationCount();
    const QString text = QString(1000, QLatin1Char('x'));
    EXPECT_EQ(text.size(), 1000);
    EXPECT_GT(allocationCount(), before);
}

TEST_F(AllocationsTest, PlainLinesAllocateNothing) {
    const QByteArray lines = kVertices + "f 1/1/1 2/1/1 3/1/1\n";
    ofLoading(lines);
    const size_t few = ofLoading(lines.repeated(1000));
    EXPECT_LE(ofLoading(lines.repeated(100'000)), few + kFurtherAllocations);
}

TEST_F(AllocationsTest, AsciiLinesReadOneByOneAllocateNothing) {
    const QByteArray lines = kVertices +
                             "v\t1e-1  2.5E0 -3.\t# note\r\nvn +1 .5 12345678901234567890\n# comment\n\n"
                             "g group\ns off\nf 1/1/1\t2/1/1 -1//1 # note\nf 1 2 3#x\nf\n";
    ofReading(lines);
    // Only a dropped face uses QString, for the bad corner.
    const size_t few = ofReading(QByteArray(lines).replace("f 1 2 3#x\n", ""));
    EXPECT_LE(ofReading(QByteArray(lines).replace("f 1 2 3#x\n", "").repeated(20'000)), few + 40);
}

TEST_F(AllocationsTest, UnusualLinesOfALoadAllocateNothing) {
    const QByteArray lines =
        kVertices + "v\t1e-1  2.5E0 -3.25\t# note\r\n# comment\n\ng group\nf 1/1/1\t2/1/1 -1//1 # note\n";
    ofLoading(lines);
    const size_t few = ofLoading(lines.repeated(300));
    EXPECT_LE(ofLoading(lines.repeated(30'000)), few + kFurtherAllocations);
}

} // namespace Atelier::Vel

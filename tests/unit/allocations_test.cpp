<<<<<<< HEAD
#include <cstddef>
#include <cstdlib>
#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>
=======
#include <atomic>
#include <cstdlib>
#include <new>
>>>>>>> 68745d2 (Count what an upload allocates)

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
<<<<<<< HEAD
#include <velmodel/objloader.h>

#include "import/objreader.h"
#include "support/recordingcontext.h"

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#define VELMODEL_COUNTS_ALLOCATIONS 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#undef VELMODEL_COUNTS_ALLOCATIONS
#endif
#endif

namespace {

size_t allocationCount = 0;

} // namespace

#ifdef VELMODEL_COUNTS_ALLOCATIONS
// Everything in the process allocates through these, Qt's strings included.
extern "C" {
void* __libc_malloc(size_t bytes);                // NOLINT
void* __libc_realloc(void* memory, size_t bytes); // NOLINT
void* __libc_calloc(size_t count, size_t bytes);  // NOLINT
void* malloc(size_t bytes) {                      // NOLINT
    ++allocationCount;
    return __libc_malloc(bytes);
}
void* realloc(void* memory, size_t bytes) { // NOLINT
    ++allocationCount;
    return __libc_realloc(memory, bytes);
}
void* calloc(size_t count, size_t bytes) { // NOLINT
    ++allocationCount;
    return __libc_calloc(count, bytes);
}
}
#endif

namespace Atelier::Vel {

namespace {

using Testing::RecordingContext;

// What doubles with the input grows its arrays once more: so many allocations for a hundred times the input.
constexpr size_t kFurtherAllocations = 400;

class AllocationsTest : public testing::Test {
protected:
    void SetUp() override {
#ifndef VELMODEL_COUNTS_ALLOCATIONS
        GTEST_SKIP() << "allocations cannot be counted here";
#endif
    }

    QString write(const QByteArray& text) const {
        const QString path = _directory.filePath(QStringLiteral("model.obj"));
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
        const size_t before = allocationCount;
        const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path, error));
        const size_t count = allocationCount - before;
        EXPECT_NE(model, nullptr);
        return count;
    }

    /// The allocations of reading every record one by one.
    size_t ofReading(const QByteArray& text) const {
        QFile file(write(text));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const size_t before = allocationCount;
        QTextStream stream(&file);
        ObjReader reader(&stream);
        for (; reader.hasNext(); reader.next())
            reader.read();
        return allocationCount - before;
    }

private:
    QTemporaryDir _directory;
};

const QByteArray kVertices = "v 0.0 0.0 0.0\nv 1.0 0.0 0.0\nv 0.0 1.0 0.0\nvt 0.5 0.5\nvn 0.0 0.0 1.0\n";

} // namespace

TEST_F(AllocationsTest, CountersCount) {
    const size_t before = allocationCount;
    const QString text = QString(1000, QLatin1Char('x'));
    EXPECT_EQ(text.size(), 1000);
    EXPECT_GT(allocationCount, before);
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
    // A dropped face asks QString about the bad corner; nothing else does.
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

=======
#include <velmodel/modelbuilder.h>

#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace {

std::atomic<long> allocationCount{0};

void* allocate(std::size_t bytes) {
    ++allocationCount;
    if (void* const block = std::malloc(bytes == 0 ? 1 : bytes))
        return block;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t bytes) {
    return allocate(bytes);
}
void* operator new[](std::size_t bytes) {
    return allocate(bytes);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*bytes*/) noexcept {
    std::free(block);
}

namespace Atelier::Vel {
namespace {

constexpr unsigned int kFloat = 0x1406;

/// Uploads a strip of `faceCount` triangles, quadrilaterals and pentagons and counts what that allocates with
/// operator new, which is all that the library uses besides Qt's arrays.
long allocationsOfUpload(unsigned int faceCount) {
    ModelBuilder builder;
    const QString position = QStringLiteral("position");
    const QString other = QStringLiteral("other");
    const QString group = QStringLiteral("group");
    std::vector<float> values;
    std::vector<unsigned int> corners;
    std::vector<unsigned int> counts;
    std::vector<unsigned int> faces;
    for (unsigned int face = 0; face < faceCount; ++face) {
        const float x = static_cast<float>(face % 1000);
        const float y = static_cast<float>(face / 1000);
        const float polygon[] = {x, y, 0, x + 1, y, 0, x + 1.5F, y + 0.5F, 0, x + 1, y + 1, 0, x, y + 1, 0};
        counts.push_back(3 + face % 3);
        faces.push_back(face);
        for (unsigned int corner = 0; corner < counts.back(); ++corner)
            corners.push_back(face * 5 + corner);
        values.insert(values.end(), std::begin(polygon), std::end(polygon));
    }
    for (const QString& name : {position, other}) {
        builder.createVertexAttribute(name, 3, kFloat, 0, 0);
        builder.addValuesToVertexAttribute(name, values.size(), values.data(), kFloat);
        builder.addIndicesToVertexAttribute(name, corners.size(), corners.data());
    }
    builder.addVertexCountsToFaces(counts.size(), counts.data());
    builder.createMaterialGroup(group, InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup(group, faces.size(), faces.data(), QString());
    builder.generateNormals(QStringLiteral("normal"));
    const Testing::RecordingContext context;
    const Testing::MessageLog log;
    GPUModel model;
    const long before = allocationCount;
    builder.upload(&model, InstanceData(), position, QString(), 0x88E4, 4);
    const long after = allocationCount;
    EXPECT_EQ(model.drawableCount(), 1);
    return after - before;
}

TEST(AllocationsTest, UploadAllocatesNothingPerVertexOrFace) {
    allocationsOfUpload(10);
    const long few = allocationsOfUpload(100);
    const long many = allocationsOfUpload(100000);
    EXPECT_GT(few, 0) << "nothing was counted";
    EXPECT_LE(many, few + 20);
    EXPECT_LE(few, 300);
}

} // namespace
>>>>>>> 68745d2 (Count what an upload allocates)
} // namespace Atelier::Vel

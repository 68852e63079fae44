// Loads whose builder gets streams that are too small for the text. A separate program, because it replaces
// the streams of the library's own builders.

#include <velmodel/objloader.h>

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modeldataarray.h>

#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::PlainStream;
using Testing::RecordingContext;

quint64 maxElements = 0;

/// Does not grow beyond `maxElements`.
class NarrowStream : public PlainStream {
public:
    using PlainStream::PlainStream;

    void append(quint64 count, const void* src) override {
        if (size() + count <= maxElements)
            PlainStream::append(count, src);
    }
};

class RefusedStreamsTest : public testing::Test {
protected:
    /// Loads a model. Returns: its error.
    QString load(const QByteArray& text, quint64 most) {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        maxElements = most;
        QString error;
        const RecordingContext context;
        const MessageLog log;
        _model.reset(loadModelFromOBJFile(path(), error));
        _warnings = log.texts(QtWarningMsg);
        EXPECT_TRUE(_model != nullptr || context.calls().isEmpty());
        return error;
    }
    QString path() const { return _directory.filePath("model.obj"); }

    std::unique_ptr<GPUModel> _model;
    std::vector<QString> _warnings;

private:
    QTemporaryDir _directory;
};

} // namespace

ModelDataStream* ModelDataArrayAllocator::alloc(unsigned int type, quint64 count) {
    return new NarrowStream(type, count);
}

TEST_F(RefusedStreamsTest, TextThatFitsLoads) {
    EXPECT_EQ(load("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", 9), QString());
    EXPECT_NE(_model, nullptr);
    EXPECT_THAT(_warnings, IsEmpty());
}

TEST_F(RefusedStreamsTest, TextThatDoesNotFitFailsTheLoad) {
    EXPECT_EQ(load("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", 8),
              QString("Failed to load OBJ file '%1'").arg(path()));
    EXPECT_EQ(_model, nullptr);
    EXPECT_THAT(
        _warnings,
        ElementsAre(
            "Data for vertex attribute 'va_Vertex' refused: a stream holds at most 2147483647 bytes"));
}

} // namespace Atelier::Vel

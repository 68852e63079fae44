#include "modeldump.h"

#include <unistd.h>

#include <QtCore/QJsonArray>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/gpumodel.h>

#include "capturedstream.h"
#include "commands.h"
#include "mixedmodel.h"
#include "support/glfixture.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Tool {

namespace {

using Testing::CapturedStream;
using Testing::mixedModel;
using Testing::TemporaryFolder;

class ModelDumpTest : public Testing::GLFixture {};

QJsonObject command(const QVector<int>& numbers, const QJsonValue& material, const QJsonValue& object) {
    return {{"count", numbers[0]},      {"instanceCount", numbers[1]}, {"firstIndex", numbers[2]},
            {"baseVertex", numbers[3]}, {"baseInstance", numbers[4]},  {"material", material},
            {"object", object}};
}

QJsonObject named(const char* name, const QJsonObject& values, const QJsonObject& textures) {
    return {{"name", name}, {"values", values}, {"textures", textures}};
}

TEST_F(ModelDumpTest, EveryDrawableHasItsOwnKeyCommandsAndData) {
    const QJsonArray drawables = dumpModel(*mixedModel(), {false})["drawables"].toArray();
    const QJsonValue null;
    const QJsonObject triangles{{"key", 7},
                                {"primitive", "GL_TRIANGLES"},
                                {"commands", QJsonArray{command({3, 1, 0, 5, 7}, "metal", null),
                                                        command({6, 2, 3, 1, 4}, "paint", "door"),
                                                        command({0, 8, 9, 10, 11}, null, null)}},
                                {"materials", QJsonArray{named("OBJMaterial", {{"d", QJsonArray{0.25}}},
                                                               {{"map_Kd", "/maps/metal.png"}}),
                                                         named("OBJMaterial", {}, {{"map_Ks", null}})}},
                                {"instances", QJsonArray()}};
    const QJsonObject lines{
        {"key", qint64(1) << 40},
        {"primitive", "GL_LINES"},
        {"commands", QJsonArray{command({2, 3, 9, 1, 0}, null, "wire")}},
        {"materials", QJsonArray()},
        {"instances", QJsonArray{named("InstanceInfo", {{"tag", QJsonArray{0.5, -2}}}, {})}}};
    ASSERT_EQ(drawables.size(), 2);
    EXPECT_EQ(drawables[0], triangles);
    EXPECT_EQ(drawables[1], lines);
}

TEST_F(ModelDumpTest, BuffersAreSharedByAllDrawables) {
    const QJsonObject dump = dumpModel(*mixedModel(), {true});
    EXPECT_EQ(dump["vertexCount"], 12);
    EXPECT_EQ(dump["indexCount"], 12);
    EXPECT_EQ(dump["indexType"], "GL_UNSIGNED_SHORT");
    EXPECT_EQ(QByteArray::fromBase64(dump["indices"].toString().toLatin1()).toHex(),
              "000001000200030004000500060007000800090"
              "00a000b00");
    const QJsonArray attributes = dump["attributes"].toArray();
    ASSERT_EQ(attributes.size(), 2);
    EXPECT_EQ(attributes[0]["name"], "aa_Weight") << "sorted";
    EXPECT_EQ(attributes[0]["components"], 4);
    EXPECT_EQ(attributes[0]["type"], "GL_UNSIGNED_BYTE");
    EXPECT_EQ(QByteArray::fromBase64(attributes[0]["data"].toString().toLatin1()).left(3).toHex(), "646566");
    EXPECT_EQ(attributes[1]["name"], "va_Vertex");
    EXPECT_EQ(attributes[1]["components"], 3);
    EXPECT_EQ(attributes[1]["type"], "GL_FLOAT");
}

TEST_F(ModelDumpTest, BytesIncludeIndicesAndAttributes) {
    EXPECT_EQ(dumpedByteCount(*mixedModel()), 12U * 2 + 12 * 12 + 12 * 4);
    EXPECT_EQ(dumpedByteCount(GPUModel()), 0U);
}

quint64 claimedBytes = 0;

/// Accepts any data and claims the size that the test sets. The first buffer holds its data; the others hold
/// one byte each.
class BoastfulBuffer : public BufferObject {
public:
    explicit BoastfulBuffer(bool isFirst) : _isFirst(isFirst) {}
    bool uploadArbitraryData(const void* /*data*/, int /*count*/, unsigned int /*usage*/,
                             unsigned long long /*elementSize*/) override {
        return true;
    }
    bool uploadGLushortData(const unsigned short* /*data*/, int /*count*/, unsigned int /*usage*/) override {
        return true;
    }
    quint64 byteCount() const override { return _isFirst ? claimedBytes : 1; }
    QByteArray readBack() const override { return "abc"; }

private:
    bool _isFirst;
};

class BoastfulContext : public OpenGLDeviceContext {
public:
    QSharedPointer<BufferObject> createBufferObject() override {
        return QSharedPointer<BoastfulBuffer>::create(std::exchange(_isFirst, false));
    }

private:
    bool _isFirst = true;
};

/// `velmodel dump` in this process, with a model of three buffers that claims a size of `bytes` bytes.
class DumpLimitTest : public testing::Test {
protected:
    ExitCode dump(quint64 bytes, const QStringList& options = {}) {
        claimedBytes = bytes - 2;
        OpenGLDeviceContext::setCurrent(QSharedPointer<BoastfulContext>::create());
        CapturedStream output(STDOUT_FILENO);
        CapturedStream errors(STDERR_FILENO);
        const ExitCode exitCode = runDump(QStringList(_model) + options);
        OpenGLDeviceContext::setCurrent({});
        _output = output.text();
        _errors = QString::fromLocal8Bit(errors.text());
        return exitCode;
    }

    TemporaryFolder _folder;
    const QString _model = _folder.write("m.obj", Testing::triangleText());
    QByteArray _output;
    QString _errors;
};

constexpr quint64 kLimit = quint64(256) * 1024 * 1024;

TEST_F(DumpLimitTest, BuffersOf256MegabytesAreDumped) {
    EXPECT_EQ(dump(kLimit), ExitCode::Done);
    EXPECT_TRUE(_output.contains("\"indices\": \"YWJj\"")) << _output.toStdString();
    EXPECT_EQ(_output.count("\"data\": \"YWJj\""), 2);
}

TEST_F(DumpLimitTest, OneByteMoreIsAnErrorUnlessTheDataIsOmitted) {
    EXPECT_EQ(dump(kLimit + 1), ExitCode::CannotWrite);
    EXPECT_EQ(_output, "");
    EXPECT_TRUE(
        _errors.endsWith(QStringLiteral("velmodel: %1: The dump cannot be written: its buffers are too big "
                                        "for one JSON text; --no-data leaves them out\n")
                             .arg(_model)))
        << _errors.toStdString();
    EXPECT_EQ(dump(kLimit + 1, {"--no-data"}), ExitCode::Done);
    EXPECT_FALSE(_output.isEmpty());
}

} // namespace

} // namespace Atelier::Vel::Tool

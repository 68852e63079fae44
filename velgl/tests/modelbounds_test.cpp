#include <velgl/gpumodel.h>

#include <limits>

#include <QtCore/QFloat16>

#include <gtest/gtest.h>

#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

#include "memorybuffer.h"

// The box around the positions that the commands of a model reach.
namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kByte = 0x1400;
constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kShort = 0x1402;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kInt = 0x1404;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kDouble = 0x140A;
constexpr unsigned int kHalfFloat = 0x140B;
constexpr unsigned int kFixed = 0x140C; // a type that VelGL does not read

const QString kPosition = QStringLiteral("va_Vertex");
const float kInfinity = std::numeric_limits<float>::infinity();
const float kNotANumber = std::numeric_limits<float>::quiet_NaN();

/// A model of four points with three components each, one command that draws all of them and one drawable.
class ModelBoundsTest : public testing::Test {
protected:
    ModelBoundsTest() : _buffers(new DrawBuffers) {
        _buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
        setPositions(QVector<float>{1, 2, 3, 4, 5, 6, -1, -2, -3, 0, 0, 9}, 3, kFloat);
        setIndices(QVector<unsigned short>{0, 1, 2, 3}, kUnsignedShort);
        setCommands({{4, 1, 0, 0, 0}});
        _model.add(_buffers, 1, nullptr, nullptr, 0);
    }

    template<typename Element>
    void setPositions(const QVector<Element>& elements, int components, unsigned int type) {
        _positions = MemoryBuffer::of(elements);
        _buffers->VAO()->registerBO(kPosition, _positions, components, type);
    }
    template<typename Element>
    void setIndices(const QVector<Element>& elements, unsigned int type) {
        _indices = MemoryBuffer::of(elements);
        _buffers->setIndexedDraw(_indices, elements.size(), type);
    }
    void setCommands(const QVector<DrawElementsIndirectCommand>& commands) {
        _buffers->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    }
    void expectBox(const QVector3D& minimum, const QVector3D& maximum) {
        const GPUModel::Bounds bounds = _model.bounds();
        EXPECT_TRUE(bounds.isValid);
        EXPECT_EQ(bounds.minimum, minimum);
        EXPECT_EQ(bounds.maximum, maximum);
    }
    void expectNone() { EXPECT_FALSE(_model.bounds().isValid); }

    GPUModel _model;
    DrawBuffers* _buffers;
    QSharedPointer<MemoryBuffer> _positions;
    QSharedPointer<MemoryBuffer> _indices;
};

/// Returns: the maximum of the box around one point whose elements have the type `type`.
template<typename Element>
QVector3D largestOf(unsigned int type, const QVector<Element>& elements) {
    auto* buffers = new DrawBuffers;
    buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
    buffers->VAO()->registerBO(kPosition, MemoryBuffer::of(elements), 3, type);
    buffers->setIndexedDraw(MemoryBuffer::of(QVector<unsigned int>{1}), 1, kUnsignedInt);
    const DrawElementsIndirectCommand command{1, 1, 0, 0, 0};
    buffers->setDrawElementsIndirectCommands(&command, 1);
    GPUModel model;
    model.add(buffers, 1, nullptr, nullptr, 0);
    return model.bounds().maximum;
}

} // namespace

TEST_F(ModelBoundsTest, EncloseAllPoints) {
    expectBox({-1, -2, -3}, {4, 5, 9});
}

TEST_F(ModelBoundsTest, OnePointIsABox) {
    setCommands({{1, 1, 1, 0, 0}});
    expectBox({4, 5, 6}, {4, 5, 6});
}

TEST_F(ModelBoundsTest, OnlyDrawnPointsCount) {
    setCommands({{2, 1, 0, 0, 0}, {1, 0, 2, 0, 0}});
    expectBox({1, 2, 3}, {4, 5, 6});
}

TEST_F(ModelBoundsTest, CommandsCountTogether) {
    setCommands({{1, 1, 0, 0, 0}, {0, 1, 1, 0, 0}, {1, 1, 3, 0, 0}});
    expectBox({0, 0, 3}, {1, 2, 9});
}

TEST_F(ModelBoundsTest, CommandBeyondTheIndicesIsSkipped) {
    setCommands({{1, 1, 0, 0, 0}, {2, 1, 3, 0, 0}, {1, 1, 4, 0, 0}, {0xFFFFFFFF, 1, 0xFFFFFFFF, 0, 0}});
    expectBox({1, 2, 3}, {1, 2, 3});
}

TEST_F(ModelBoundsTest, BaseVertexIsAddedAndMayBeNegative) {
    setCommands({{1, 1, 0, 1, 0}, {1, 1, 3, static_cast<std::uint32_t>(-1), 0}});
    expectBox({-1, -2, -3}, {4, 5, 6});
}

TEST_F(ModelBoundsTest, IndexBeyondThePositionsIsSkipped) {
    setCommands({{4, 1, 0, 2, 0}, {1, 1, 0, static_cast<std::uint32_t>(-1), 0}});
    expectBox({-1, -2, -3}, {0, 0, 9});
}

TEST_F(ModelBoundsTest, PointThatIsNotFiniteIsSkipped) {
    for (const float bad : {kInfinity, -kInfinity, kNotANumber})
        for (int component = 0; component < 3; ++component) {
            QVector<float> positions = {1, 2, 3, 100, 100, 100, 0, 0, 0, 0, 0, 9};
            positions[3 + component] = bad;
            GPUModel model;
            setPositions(positions, 3, kFloat);
            auto* buffers = new DrawBuffers;
            buffers->setVAO(_buffers->VAO());
            buffers->setIndexedDraw(_indices, 4, kUnsignedShort);
            const DrawElementsIndirectCommand command{4, 1, 0, 0, 0};
            buffers->setDrawElementsIndirectCommands(&command, 1);
            model.add(buffers, 1, nullptr, nullptr, 0);
            EXPECT_EQ(model.bounds().minimum, QVector3D(0, 0, 0)) << component;
            EXPECT_EQ(model.bounds().maximum, QVector3D(1, 2, 9)) << component;
        }
}

TEST_F(ModelBoundsTest, MissingComponentsAreZero) {
    setPositions(QVector<float>{1, 2, 3, 4, 5, 6, 7, 8}, 2, kFloat);
    expectBox({1, 2, 0}, {7, 8, 0});
}

TEST_F(ModelBoundsTest, FourthComponentIsIgnored) {
    setPositions(QVector<float>{1, 2, 3, 99, 4, 5, 6, 99, 7, 8, 9, 99, 1}, 4, kFloat);
    expectBox({1, 2, 3}, {7, 8, 9});
}

TEST_F(ModelBoundsTest, EachScalarTypeIsReadAsItsValue) {
    const QVector3D expected(5, -6, 7);
    EXPECT_EQ(largestOf(kByte, QVector<signed char>{0, 0, 0, 5, -6, 7}), expected);
    EXPECT_EQ(largestOf(kShort, QVector<short>{0, 0, 0, 5, -6, 7}), expected);
    EXPECT_EQ(largestOf(kInt, QVector<int>{0, 0, 0, 5, -6, 7}), expected);
    EXPECT_EQ(largestOf(kFloat, QVector<float>{0, 0, 0, 5, -6, 7}), expected);
    EXPECT_EQ(largestOf(kDouble, QVector<double>{0, 0, 0, 5, -6, 7}), expected);
    EXPECT_EQ(largestOf(kHalfFloat, QVector<qfloat16>{qfloat16(0), qfloat16(0), qfloat16(0), qfloat16(5),
                                                      qfloat16(-6), qfloat16(7)}),
              expected);
    EXPECT_EQ(largestOf(kUnsignedByte, QVector<unsigned char>{0, 0, 0, 5, 250, 7}), QVector3D(5, 250, 7));
    EXPECT_EQ(largestOf(kUnsignedShort, QVector<unsigned short>{0, 0, 0, 5, 65000, 7}),
              QVector3D(5, 65000, 7));
    EXPECT_EQ(largestOf(kUnsignedInt, QVector<unsigned int>{0, 0, 0, 5, 3000000000U, 7}),
              QVector3D(5, 3e9F, 7));
}

TEST_F(ModelBoundsTest, EachIndexTypeIsRead) {
    setIndices(QVector<unsigned char>{3, 0, 0, 3}, kUnsignedByte);
    expectBox({0, 0, 3}, {1, 2, 9});
}

TEST_F(ModelBoundsTest, WideIndicesAreRead) {
    setIndices(QVector<unsigned int>{3, 0xFFFFFFFF, 4, 0}, kUnsignedInt);
    expectBox({0, 0, 3}, {1, 2, 9});
}

TEST_F(ModelBoundsTest, IncompleteDrawableHasNoBounds) {
    _buffers->setIndexedDraw({}, 4, kUnsignedShort);
    expectNone();
    _buffers->setIndexedDraw(_indices, 4, kFixed);
    expectNone();
    setIndices(QVector<unsigned short>{0, 1, 2, 3}, kUnsignedShort);
    expectBox({-1, -2, -3}, {4, 5, 9});
}

TEST_F(ModelBoundsTest, DrawableWithoutAVertexArrayHasNoBounds) {
    _buffers->setVAO({});
    expectNone();
}

TEST_F(ModelBoundsTest, UnreadableStreamHasNoBounds) {
    _buffers->VAO()->registerBO(kPosition, {}, 3, kFloat);
    expectNone();
    for (const int components : {0, -1}) {
        _buffers->VAO()->registerBO(kPosition, _positions, components, kFloat);
        expectNone();
    }
    _buffers->VAO()->registerBO(kPosition, _positions, 3, kFixed);
    expectNone();
    _buffers->VAO()->registerBO(kPosition, _positions, 3, kFloat);
    expectBox({-1, -2, -3}, {4, 5, 9});
}

TEST_F(ModelBoundsTest, StreamIsFoundByItsName) {
    _buffers->VAO()->registerBO(QStringLiteral("other"), MemoryBuffer::of(QVector<float>(12, 7)), 3, kFloat);
    EXPECT_EQ(_model.bounds(QStringLiteral("other")).minimum, QVector3D(7, 7, 7));
    EXPECT_FALSE(_model.bounds(QStringLiteral("unknown")).isValid);
    expectBox({-1, -2, -3}, {4, 5, 9});
}

TEST_F(ModelBoundsTest, BoxFollowsEachChange) {
    expectBox({-1, -2, -3}, {4, 5, 9});
    setCommands({{2, 1, 0, 0, 0}});
    expectBox({1, 2, 3}, {4, 5, 6});
    setIndices(QVector<unsigned short>{3, 3, 0, 0}, kUnsignedShort);
    expectBox({0, 0, 9}, {0, 0, 9});
    setPositions(QVector<float>(), 3, kFloat);
    expectNone();
    setPositions(QVector<float>(12, 1), 3, kFloat);
    expectBox({1, 1, 1}, {1, 1, 1});
}

// VelGL cannot detect that an object of a client's class changes its content.
TEST_F(ModelBoundsTest, BufferOfAClientsClassIsReadByEachCall) {
    expectBox({-1, -2, -3}, {4, 5, 9});
    const QVector<float> others(12, 7);
    _positions->uploadArbitraryData(others.constData(), 12, 0, sizeof(float));
    expectBox({7, 7, 7}, {7, 7, 7});
    const unsigned short beyond[] = {4, 5, 6, 7};
    _indices->uploadArbitraryData(beyond, 4, 0, sizeof *beyond);
    expectNone();
}

TEST_F(ModelBoundsTest, CommandBeyondTheNumberOfIndicesIsSkipped) {
    setCommands({{1, 1, 0, 0, 0}, {2, 1, 2, 0, 0}});
    _buffers->setIndexedDraw(_indices, 3, kUnsignedShort);
    expectBox({1, 2, 3}, {1, 2, 3});
}

TEST_F(ModelBoundsTest, AddedDrawableUpdatesTheBox) {
    expectBox({-1, -2, -3}, {4, 5, 9});
    auto* further = new DrawBuffers;
    further->setVAO(QSharedPointer<VertexArrayObject>::create());
    further->VAO()->registerBO(kPosition, MemoryBuffer::of(QVector<float>{50, 0, 0}), 3, kFloat);
    further->setIndexedDraw(_indices, 4, kUnsignedShort);
    const DrawElementsIndirectCommand command{1, 1, 0, 0, 0};
    further->setDrawElementsIndirectCommands(&command, 1);
    _model.add(further, 1, nullptr, nullptr, 0);
    expectBox({-1, -2, -3}, {50, 5, 9});
}

TEST_F(ModelBoundsTest, BuffersThatDrawablesShareAreReadOnce) {
    for (int i = 0; i < 3; ++i) {
        auto* further = new DrawBuffers;
        further->setVAO(_buffers->VAO());
        further->setIndexedDraw(_indices, 4, kUnsignedShort);
        const DrawElementsIndirectCommand command{1, 1, 0, 0, 0};
        further->setDrawElementsIndirectCommands(&command, 1);
        _model.add(further, 1, nullptr, nullptr, 0);
    }
    expectBox({-1, -2, -3}, {4, 5, 9});
    EXPECT_EQ(_positions->readCount(), 1);
    EXPECT_EQ(_indices->readCount(), 1);
}

} // namespace Atelier::Vel::Testing

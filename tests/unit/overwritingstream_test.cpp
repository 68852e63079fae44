#include "drawdata/overwritingstream.h"

#include <vector>

#include <velmodel/modeldataarray.h>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

constexpr unsigned int kIndexType = 0x1405; // GL_UNSIGNED_INT

std::vector<quint32> contentOf(ModelDataStream& stream) {
    const auto* const items = static_cast<const quint32*>(stream.data(0));
    return {items, items + stream.size()};
}

class OverwritingStreamTest : public testing::Test {
protected:
    OverwritingStreamTest() : _target(new ModelDataArray(kIndexType, 0)), _stream(_target) {
        const quint32 before[] = {10, 11, 12, 13, 14};
        _target->append(5, before);
    }

    QSharedPointer<ModelDataStream> _target;
    OverwritingStream _stream;
};

} // namespace

TEST_F(OverwritingStreamTest, AppendsOverwriteTheOtherStream) {
    EXPECT_EQ(_stream.type(), kIndexType);
    EXPECT_EQ(_stream.size(), 0u);
    const quint32 first[] = {1, 2};
    _stream.append(2, first);
    _stream.append(1, first);
    EXPECT_THAT(contentOf(_stream), testing::ElementsAre(1, 2, 1));
    EXPECT_THAT(contentOf(*_target), testing::ElementsAre(1, 2, 1, 13, 14));
}

TEST_F(OverwritingStreamTest, AppendsBeyondTheOtherStreamAreRefused) {
    const quint32 many[] = {1, 2, 3, 4, 5, 6};
    _stream.append(4, many);
    _stream.append(2, many);
    EXPECT_EQ(_stream.size(), 4u);
    EXPECT_THAT(contentOf(*_target), testing::ElementsAre(1, 2, 3, 4, 14));
    _stream.resize(6);
    EXPECT_EQ(_stream.size(), 4u);
    _stream.resize(1);
    _stream.append(1, many + 5);
    EXPECT_THAT(contentOf(_stream), testing::ElementsAre(1, 6));
}

TEST_F(OverwritingStreamTest, DataAndTypeBelongToTheOtherStream) {
    EXPECT_EQ(_stream.data(3), _target->data(3));
    const quint32 one = 1;
    _stream.setData(3, 1, &one);
    _stream.setType(0x1406); // GL_FLOAT
    EXPECT_EQ(_target->type(), 0x1406u);
    EXPECT_THAT(contentOf(*_target), testing::ElementsAre(10, 11, 12, 1, 14));
}

} // namespace Atelier::Vel

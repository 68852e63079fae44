#include "streams/streamview.h"

#include <gmock/gmock.h>

#include <velmodel/modeldataarray.h>

#include "support/clientstreams.h"

namespace Atelier::Vel {
namespace {

using Testing::Lie;
using Testing::PlainStream;
using Liar = Testing::LyingStream<PlainStream>;

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kDouble = 0x140A;

TEST(WordViewTest, HasTheWholeWordsOfTheBytesAndAtMostOnePerElement) {
    const struct {
        unsigned int type;
        quint64 elements;
        quint64 words;
    } rows[] = {{kUnsignedInt, 0, 0},   {kUnsignedInt, 1, 1},   {kUnsignedInt, 5, 5},  {kUnsignedShort, 1, 0},
                {kUnsignedShort, 2, 1}, {kUnsignedShort, 5, 2}, {kUnsignedByte, 3, 0}, {kUnsignedByte, 4, 1},
                {kUnsignedByte, 7, 1},  {kDouble, 1, 1},        {kDouble, 3, 3}};
    for (const auto& row : rows) {
        PlainStream stream(row.type, row.elements);
        EXPECT_EQ(WordView::of(&stream).count, row.words) << row.type << ' ' << row.elements;
        if (row.words != 0) {
            EXPECT_EQ(WordView::of(&stream).words, stream.data(0));
        }
    }
}

TEST(ByteViewTest, HasAllBytes) {
    PlainStream stream(kUnsignedShort, 3);
    EXPECT_EQ(ByteView::of(&stream).count, 6U);
    EXPECT_EQ(ByteView::of(&stream).bytes, stream.data(0));
}

TEST(ByteViewTest, NullEmptyAndUnreachableBytesAreNone) {
    PlainStream empty(kUnsignedInt, 0);
    Liar unreachable(Lie::NoData, kUnsignedInt, 3);
    for (ModelDataStream* const stream :
         {static_cast<ModelDataStream*>(nullptr), static_cast<ModelDataStream*>(&empty),
          static_cast<ModelDataStream*>(&unreachable)}) {
        EXPECT_EQ(ByteView::of(stream).bytes, nullptr);
        EXPECT_EQ(ByteView::of(stream).count, 0U);
        EXPECT_EQ(WordView::of(stream).words, nullptr);
        EXPECT_EQ(WordView::of(stream).count, 0U);
        EXPECT_TRUE(isEmpty(stream));
    }
    PlainStream one(kUnsignedByte, 1);
    EXPECT_FALSE(isEmpty(&one));
}

TEST(AppendToTest, PutsElementsAfterTheLastOne) {
    PlainStream stream(kUnsignedInt, 0);
    const quint32 words[] = {1, 2, 3};
    EXPECT_TRUE(appendTo(stream, 2, words, sizeof *words));
    EXPECT_TRUE(appendTo(stream, 1, words + 2, sizeof *words));
    EXPECT_EQ(stream.size(), 3U);
    EXPECT_EQ(WordView::of(&stream).words[2], 3U);
}

TEST(AppendToTest, ReportsWhatWasRefused) {
    const quint32 words[] = {1, 2};
    for (const Lie lie : {Lie::NoAppend, Lie::NoResize, Lie::NoData, Lie::NoType}) {
        Liar stream(lie, kUnsignedInt, 0);
        EXPECT_FALSE(appendTo(stream, 2, words, sizeof *words)) << static_cast<int>(lie);
    }
}

TEST(AppendToTest, WiderElementsAreNotReadFromTheData) {
    const Testing::GuardedMemory words(2 * sizeof(quint32));
    PlainStream wide(kDouble, 0);
    EXPECT_FALSE(appendTo(wide, 2, words.as<quint32>(), sizeof(quint32)));
    EXPECT_EQ(wide.size(), 0U);
    PlainStream narrow(kUnsignedShort, 0);
    EXPECT_TRUE(appendTo(narrow, 2, words.as<quint32>(), sizeof(quint32)));
    EXPECT_EQ(narrow.size(), 2U);
}

} // namespace
} // namespace Atelier::Vel

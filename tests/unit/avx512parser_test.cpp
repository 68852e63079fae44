#include "import/obj/plainlines.h"

#include <gmock/gmock.h>

#include "emulation/emulatedavx512.h"
#include "wideparserclaims.h"

namespace Atelier::Vel {
namespace {

VELMODEL_WIDE_PARSER_TESTS(Avx512ParserTest, findAvx512Parser)
VELMODEL_WIDE_PARSER_TESTS(EmulatedAvx512ParserTest, findEmulatedAvx512Parser)

// The features that it is compiled for and those that it checks are one list.
TEST(FindAvx512ParserTest, NeedsEachOfItsFeatures) {
    if (findEmulatedAvx512Parser() == nullptr)
        GTEST_SKIP() << "this processor lacks the instructions of the parser EmulatedAvx512";
    for (const char* feature : {"sse4.1", "popcnt", "bmi", "bmi2", "avx2", "avx512f", "avx512bw", "avx512vl",
                                "avx512vbmi", "avx512vbmi2"}) {
        const Testing::WithoutFeature without(feature);
        EXPECT_EQ(findEmulatedAvx512Parser(), nullptr) << feature;
    }
}

} // namespace
} // namespace Atelier::Vel

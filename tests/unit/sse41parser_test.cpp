#include "import/obj/plainlines.h"

#include <gmock/gmock.h>

#include "wideparserclaims.h"

namespace Atelier::Vel {
namespace {

VELMODEL_WIDE_PARSER_TESTS(Sse41ParserTest, findSse41Parser)

TEST(FindSse41ParserTest, IsFoundOnEveryProcessorWithItsInstructions) {
#if defined(__x86_64__)
    EXPECT_EQ(findSse41Parser() != nullptr, __builtin_cpu_supports("sse4.1") != 0);
#else
    EXPECT_EQ(findSse41Parser(), nullptr);
#endif
}

} // namespace
} // namespace Atelier::Vel

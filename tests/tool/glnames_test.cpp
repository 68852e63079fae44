#include "glnames.h"

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

TEST(GLNamesTest, KnowsScalarTypes) {
    EXPECT_EQ(glTypeName(0x1403), "GL_UNSIGNED_SHORT");
    EXPECT_EQ(glTypeName(0x1405), "GL_UNSIGNED_INT");
    EXPECT_EQ(glTypeName(0x1406), "GL_FLOAT");
    EXPECT_EQ(glTypeName(0x140A), "GL_DOUBLE");
}

TEST(GLNamesTest, KnowsPrimitives) {
    EXPECT_EQ(glPrimitiveName(0), "GL_POINTS");
    EXPECT_EQ(glPrimitiveName(4), "GL_TRIANGLES");
}

TEST(GLNamesTest, SpellsUnknownCodesAsNumbers) {
    EXPECT_EQ(glTypeName(0x12), "0x0012");
    EXPECT_EQ(glPrimitiveName(0x20), "0x0020");
}

} // namespace

} // namespace Atelier::Vel::Tool

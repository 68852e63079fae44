#include "glnames.h"

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

struct Code {
    unsigned int code;
    const char* name;
};

TEST(GLNamesTest, KnowsScalarTypes) {
    constexpr Code kTypes[] = {
        {0x1400, "GL_BYTE"},           {0x1401, "GL_UNSIGNED_BYTE"}, {0x1402, "GL_SHORT"},
        {0x1403, "GL_UNSIGNED_SHORT"}, {0x1404, "GL_INT"},           {0x1405, "GL_UNSIGNED_INT"},
        {0x1406, "GL_FLOAT"},          {0x140A, "GL_DOUBLE"},        {0x140B, "GL_HALF_FLOAT"}};
    for (const Code& type : kTypes)
        EXPECT_EQ(glTypeName(type.code), type.name);
}

TEST(GLNamesTest, KnowsPrimitives) {
    constexpr Code kPrimitives[] = {{0, "GL_POINTS"},       {1, "GL_LINES"},     {2, "GL_LINE_LOOP"},
                                    {3, "GL_LINE_STRIP"},   {4, "GL_TRIANGLES"}, {5, "GL_TRIANGLE_STRIP"},
                                    {6, "GL_TRIANGLE_FAN"}, {14, "GL_PATCHES"}};
    for (const Code& primitive : kPrimitives)
        EXPECT_EQ(glPrimitiveName(primitive.code), primitive.name);
}

TEST(GLNamesTest, SpellsUnknownCodesAsNumbers) {
    EXPECT_EQ(glTypeName(0x12), "0x0012");
    EXPECT_EQ(glTypeName(0x1407), "0x1407");
    EXPECT_EQ(glPrimitiveName(0x20), "0x0020");
    EXPECT_EQ(glPrimitiveName(7), "0x0007");
    EXPECT_EQ(glPrimitiveName(0xABCDEF), "0xabcdef");
}

} // namespace

} // namespace Atelier::Vel::Tool

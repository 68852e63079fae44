#include "drawing/shadertext.h"

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

namespace {

struct Source {
    const char* head; ///< what the declarations follow
    const char* tail;
    int line; ///< the number of the first line of `tail`
};

// Each declaration stands behind its head, and the tail keeps its line number.
const Source kSources[] = {
    {"#version 430 core\n", "void main() {}\n", 2},
    {"#version 430 core\n", "", 2},
    {"#version 430 core\n", "\n\nvoid main() {}", 2},
    {"\n// a comment\n/* two\nlines */ #version 430 core // why\n", "in vec3 a;\n", 5},
    {"#version 430 core\r\n", "void main() {}\r\n", 2},
    {"#version 430 core\n#extension GL_A : enable\n", "in vec3 a;\n#extension GL_B : enable\n", 3},
    {"#version 430 core\n\n// why\n#extension GL_A : enable\n#extension GL_B : enable\n", "\nint a;\n", 6},
    {"#version 430 core\n#ifdef GL_A\n#extension GL_A : enable\n#endif\n", "int a;\n", 5},
    {"#version 430 core\n#if A\n#if B\n#extension GL_A : enable\n#endif\n#else\n#endif\n", "int a;\n", 8},
    {"#version 430 core\n", "#ifdef A\nint a;\n#extension GL_A : enable\n#endif\n", 2},
    {"#version 430 core\n#define B 1\n# extension GL_A : enable\n", "#define A 2\n", 4},
    {"#version 430 core\n/* #extension GL_A : enable */ # extension \\\nGL_B : enable\n", "int a;\n", 4},
    {"#version 430 core\n", "// #extension GL_A : enable\nint a;\n", 2},
    {"#version 430 core\n", "// goes on \\\n#extension GL_A : enable\nint a;\n", 2},
    {"#version 430 core\n", "#define A \\\n#extension\nint a;\n", 2},
    {"#version 430 core\n", "/* never ends\n#extension GL_A : enable\n", 2},
    {"#version 430 core\n", "#ifdef A\n#extension GL_A : enable\n", 2},
};

} // namespace

TEST(ShaderTextTest, DeclarationsStandBehindVersionAndExtensions) {
    for (const Source& source : kSources)
        EXPECT_EQ(withDeclarations(QByteArray(source.head) + source.tail, "int declared;\n").toStdString(),
                  (QByteArray(source.head) + "#line 1 1\nint declared;\n#line " +
                   QByteArray::number(source.line) + " 0\n" + source.tail)
                      .toStdString());
}

TEST(ShaderTextTest, VersionWithoutALineBreakGetsOne) {
    EXPECT_EQ(withDeclarations("#version 430 core", "int a;\n"),
              "#version 430 core\n#line 1 1\nint a;\n#line 1 0\n");
}

TEST(ShaderTextTest, ByteOrderMarkIsDropped) {
    EXPECT_EQ(withDeclarations("\xEF\xBB\xBF#version 430 core\nint b;\n", "int a;\n"),
              "#version 430 core\n#line 1 1\nint a;\n#line 2 0\nint b;\n");
}

TEST(ShaderTextTest, SourceWithoutAVersionFirstGivesNothing) {
    for (const char* source : {"", "\n\n", "void main() {}\n", "int a;\n#version 430 core\n", "#define A\n",
                               "// #version 430 core\n", "/* #version 430 core", "#versions 430\n", "/"})
        EXPECT_EQ(withDeclarations(source, "int a;\n"), QByteArray()) << source;
}

} // namespace Atelier::Vel::Testing

#include "glnames.h"

namespace Atelier::Vel::Tool {

namespace {

struct Name {
    unsigned int code;
    const char* text;
};

constexpr Name kTypes[] = {
    {0x1400, "GL_BYTE"},           {0x1401, "GL_UNSIGNED_BYTE"}, {0x1402, "GL_SHORT"},
    {0x1403, "GL_UNSIGNED_SHORT"}, {0x1404, "GL_INT"},           {0x1405, "GL_UNSIGNED_INT"},
    {0x1406, "GL_FLOAT"},          {0x140A, "GL_DOUBLE"},        {0x140B, "GL_HALF_FLOAT"},
};

constexpr Name kPrimitives[] = {
    {0, "GL_POINTS"},    {1, "GL_LINES"},          {2, "GL_LINE_LOOP"},    {3, "GL_LINE_STRIP"},
    {4, "GL_TRIANGLES"}, {5, "GL_TRIANGLE_STRIP"}, {6, "GL_TRIANGLE_FAN"}, {14, "GL_PATCHES"},
};

template<std::size_t Count>
QString nameOf(const Name (&names)[Count], unsigned int code) {
    for (const Name& name : names)
        if (name.code == code)
            return QLatin1String(name.text);
    return QStringLiteral("0x%1").arg(code, 4, 16, QLatin1Char('0'));
}

} // namespace

QString glTypeName(unsigned int type) {
    return nameOf(kTypes, type);
}

QString glPrimitiveName(unsigned int primitive) {
    return nameOf(kPrimitives, primitive);
}

} // namespace Atelier::Vel::Tool

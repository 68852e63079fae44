#include <epoxy/gl.h>

#include "objects/scalartype.h"

#include <cstring>

#include <QtCore/QFloat16>

namespace Atelier::Vel {

namespace {

template<typename Scalar>
double valueAt(const char* data, long long index) {
    Scalar value;
    std::memcpy(&value, data + index * static_cast<long long>(sizeof value), sizeof value);
    return static_cast<double>(value);
}

double halfAt(const char* data, long long index) {
    qfloat16 value;
    std::memcpy(&value, data + index * static_cast<long long>(sizeof value), sizeof value);
    return static_cast<double>(static_cast<float>(value));
}

} // namespace

int scalarSize(unsigned int type) {
    switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
        return 1;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
    case GL_HALF_FLOAT:
        return 2;
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_FLOAT:
        return 4;
    case GL_DOUBLE:
        return 8;
    default:
        return 0;
    }
}

bool isIntegerType(unsigned int type) {
    return type >= GL_BYTE && type <= GL_UNSIGNED_INT;
}

double scalarAt(const char* data, unsigned int type, long long index) {
    switch (type) {
    case GL_BYTE:
        return valueAt<GLbyte>(data, index);
    case GL_UNSIGNED_BYTE:
        return valueAt<GLubyte>(data, index);
    case GL_SHORT:
        return valueAt<GLshort>(data, index);
    case GL_UNSIGNED_SHORT:
        return valueAt<GLushort>(data, index);
    case GL_INT:
        return valueAt<GLint>(data, index);
    case GL_UNSIGNED_INT:
        return valueAt<GLuint>(data, index);
    case GL_HALF_FLOAT:
        return halfAt(data, index);
    case GL_DOUBLE:
        return valueAt<GLdouble>(data, index);
    default:
        return valueAt<GLfloat>(data, index);
    }
}

} // namespace Atelier::Vel

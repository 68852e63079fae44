#include <epoxy/gl.h>

#include "objects/uniforms.h"

#include <algorithm>
#include <utility>

#include "context/log.h"

namespace Atelier::Vel {

namespace {

// OpenGL knows the type of an array by its name without an index.
std::string resourceName(const std::string& name) {
    const std::size_t bracket = name.empty() || name.back() != ']' ? std::string::npos : name.rfind('[');
    return bracket == std::string::npos ? name : name.substr(0, bracket);
}

GLenum typeOf(GLuint program, const std::string& name) {
    const GLuint index = glGetProgramResourceIndex(program, GL_UNIFORM, resourceName(name).c_str());
    if (index == GL_INVALID_INDEX)
        return GL_NONE;
    constexpr GLenum kType = GL_TYPE;
    GLint type = GL_NONE;
    glGetProgramResourceiv(program, GL_UNIFORM, index, 1, &kType, 1, nullptr, &type);
    return static_cast<GLenum>(type);
}

// The types of samplers and images, which have no order among OpenGL's constants.
bool takesTextureUnit(GLenum type) {
    struct Range {
        GLenum first;
        GLenum last;
    };
    constexpr Range kRanges[] = {
        {GL_SAMPLER_1D, GL_SAMPLER_2D_RECT_SHADOW},
        {GL_SAMPLER_1D_ARRAY, GL_SAMPLER_CUBE_SHADOW},
        {GL_INT_SAMPLER_1D, GL_UNSIGNED_INT_SAMPLER_BUFFER},
        {GL_SAMPLER_CUBE_MAP_ARRAY, GL_UNSIGNED_INT_SAMPLER_CUBE_MAP_ARRAY},
        {GL_SAMPLER_2D_MULTISAMPLE, GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE_ARRAY},
        {GL_IMAGE_1D, GL_UNSIGNED_INT_IMAGE_2D_MULTISAMPLE_ARRAY},
    };
    return std::any_of(std::begin(kRanges), std::end(kRanges),
                       [type](const Range& range) { return type >= range.first && type <= range.last; });
}

} // namespace

Uniforms::Uniform& Uniforms::find(unsigned int program, const char* name) {
    for (Uniform& known : _uniforms)
        if (known.name == name)
            return known;
    Uniform uniform;
    uniform.name = name;
    uniform.location = glGetUniformLocation(program, name);
    uniform.type = typeOf(program, uniform.name);
    return _uniforms.emplace_back(std::move(uniform));
}

bool Uniforms::finish(bool isSet, const QString& label, Uniform& uniform) {
    if (isSet || std::exchange(uniform.isReported, true))
        return isSet;
    qCWarning(velglLog,
              uniform.location < 0 ? "Program '%s' does not use a uniform '%s'"
                                   : "Uniform of program '%s' does not take such a value: '%s'",
              qPrintable(label), uniform.name.c_str());
    return false;
}

bool Uniforms::set(unsigned int program, const QString& label, const char* name, int value) {
    Uniform& uniform = find(program, name);
    const bool isSigned = uniform.type == GL_INT || uniform.type == GL_BOOL || takesTextureUnit(uniform.type);
    const bool isUnsigned = uniform.type == GL_UNSIGNED_INT && value >= 0;
    if (uniform.location >= 0 && isSigned)
        glProgramUniform1i(program, uniform.location, value);
    else if (uniform.location >= 0 && isUnsigned)
        glProgramUniform1ui(program, uniform.location, static_cast<GLuint>(value));
    return finish(uniform.location >= 0 && (isSigned || isUnsigned), label, uniform);
}

bool Uniforms::set(unsigned int program, const QString& label, const char* name, const QVector4D& value,
                   int count) {
    constexpr GLenum kTypes[] = {GL_FLOAT, GL_FLOAT_VEC2, GL_FLOAT_VEC3, GL_FLOAT_VEC4};
    Uniform& uniform = find(program, name);
    if (uniform.location < 0 || uniform.type != kTypes[count - 1])
        return finish(false, label, uniform);
    if (count == 1)
        glProgramUniform1f(program, uniform.location, value.x());
    else if (count == 2)
        glProgramUniform2f(program, uniform.location, value.x(), value.y());
    else if (count == 3)
        glProgramUniform3f(program, uniform.location, value.x(), value.y(), value.z());
    else
        glProgramUniform4f(program, uniform.location, value.x(), value.y(), value.z(), value.w());
    return true;
}

bool Uniforms::set(unsigned int program, const QString& label, const char* name, const QColor& value) {
    const QColor rgb = value.toRgb();
    const QVector4D vector(float(rgb.redF()), float(rgb.greenF()), float(rgb.blueF()), float(rgb.alphaF()));
    return set(program, label, name, vector, find(program, name).type == GL_FLOAT_VEC3 ? 3 : 4);
}

bool Uniforms::set(unsigned int program, const QString& label, const char* name, const QMatrix4x4& value) {
    Uniform& uniform = find(program, name);
    if (uniform.location >= 0 && uniform.type == GL_FLOAT_MAT4)
        glProgramUniformMatrix4fv(program, uniform.location, 1, GL_FALSE, value.constData());
    else if (uniform.location >= 0 && uniform.type == GL_FLOAT_MAT3)
        glProgramUniformMatrix3fv(program, uniform.location, 1, GL_FALSE,
                                  value.toGenericMatrix<3, 3>().constData());
    else
        return finish(false, label, uniform);
    return true;
}

} // namespace Atelier::Vel

#include "state/scopedbinding.h"

#include "state/programinputs.h"

namespace Atelier::Vel {

namespace {

GLuint currentProgram(GLenum stage) {
    if (const GLuint program = currentName(GL_CURRENT_PROGRAM))
        return program;
    GLint program = 0;
    if (const GLuint pipeline = currentName(GL_PROGRAM_PIPELINE_BINDING))
        glGetProgramPipelineiv(pipeline, stage, &program);
    return static_cast<GLuint>(program);
}

InputKind inputKind(GLint type) {
    switch (type) {
    case GL_INT:
    case GL_INT_VEC2:
    case GL_INT_VEC3:
    case GL_INT_VEC4:
    case GL_UNSIGNED_INT:
    case GL_UNSIGNED_INT_VEC2:
    case GL_UNSIGNED_INT_VEC3:
    case GL_UNSIGNED_INT_VEC4:
        return InputKind::Integer;
    case GL_DOUBLE:
    case GL_DOUBLE_VEC2:
    case GL_DOUBLE_VEC3:
    case GL_DOUBLE_VEC4:
        return InputKind::Double;
    default:
        return InputKind::Float;
    }
}

} // namespace

unsigned int currentVertexProgram() {
    return currentProgram(GL_VERTEX_SHADER);
}

unsigned int currentFragmentProgram() {
    return currentProgram(GL_FRAGMENT_SHADER);
}

ProgramInput programInput(unsigned int program, const QString& name) {
    const GLuint index = glGetProgramResourceIndex(program, GL_PROGRAM_INPUT, name.toUtf8().constData());
    if (index == GL_INVALID_INDEX)
        return {};
    constexpr GLenum kProperties[] = {GL_LOCATION, GL_TYPE};
    GLint values[] = {-1, 0};
    glGetProgramResourceiv(program, GL_PROGRAM_INPUT, index, 2, kProperties, 2, nullptr, values);
    return {values[0], inputKind(values[1])};
}

} // namespace Atelier::Vel

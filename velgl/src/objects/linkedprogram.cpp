#include "state/scopedbinding.h"

#include "objects/linkedprogram.h"

#include "objects/programaccess.h"

namespace Atelier::Vel {

std::shared_ptr<const LinkedProgram> LinkedProgram::of(unsigned int program,
                                                       const QHash<QString, QString>& streams) {
    auto linked = std::make_shared<LinkedProgram>();
    GLint count = 0;
    GLint length = 0;
    glGetProgramInterfaceiv(program, GL_PROGRAM_INPUT, GL_ACTIVE_RESOURCES, &count);
    glGetProgramInterfaceiv(program, GL_PROGRAM_INPUT, GL_MAX_NAME_LENGTH, &length);
    QByteArray name(length + 1, '\0');
    for (GLint i = 0; i < count; ++i) {
        glGetProgramResourceName(program, GL_PROGRAM_INPUT, static_cast<GLuint>(i), name.size(), nullptr,
                                 name.data());
        const QString text = QString::fromUtf8(name.constData());
        linked->inputs.insert(streams.value(text, text), programInput(program, text));
    }
    linked->firstCommand = glGetUniformLocation(program, "velgl_firstCommand");
    linked->lastInstance = glGetUniformLocation(program, "velgl_lastInstance");
    linked->textures = glGetUniformLocation(program, "velgl_textures");
    linked->drawable = glGetUniformLocation(program, "velgl_drawable");
    return linked;
}

DrawProgram::Stage DrawProgram::stageOf(unsigned int name, std::shared_ptr<const LinkedProgram> linked) {
    Stage stage{name, nullptr, linked->firstCommand, linked->lastInstance, linked->textures};
    stage.linked = std::move(linked);
    return stage;
}

DrawProgram::Stage DrawProgram::stageOf(const ContextGL& gl, unsigned int name) {
    if (name == 0)
        return {};
    if (std::shared_ptr<const LinkedProgram> linked = gl.group()->linkedProgram(name))
        return stageOf(name, std::move(linked));
    return {name, nullptr, glGetUniformLocation(name, "velgl_firstCommand"),
            glGetUniformLocation(name, "velgl_lastInstance"), glGetUniformLocation(name, "velgl_textures")};
}

DrawProgram DrawProgram::current(const ContextGL& gl) {
    DrawProgram program;
    program._vertex = stageOf(gl, currentName(GL_CURRENT_PROGRAM));
    if (program._vertex.name != 0)
        return program;
    program._vertex = stageOf(gl, currentVertexProgram());
    program._fragment = stageOf(gl, currentFragmentProgram());
    program._isPipeline = true;
    return program;
}

DrawProgram DrawProgram::of(const ContextGL& gl, const Program& program) {
    DrawProgram result;
    if (const unsigned int name = ProgramAccess::nameIn(gl, program))
        result._vertex = stageOf(name, ProgramAccess::linked(program));
    return result;
}

ProgramInput DrawProgram::input(const QString& name) const {
    return _vertex.linked ? _vertex.linked->inputs.value(name) : programInput(_vertex.name, name);
}

void DrawProgram::setFirstCommand(int number) const noexcept {
    set(_vertex, _vertex.firstCommand, number);
}

void DrawProgram::setLastInstance(int number) const noexcept {
    set(_vertex, _vertex.lastInstance, number);
}

// For the current program there is a function that costs drivers half as much.
void DrawProgram::set(const Stage& stage, int location, int value) const noexcept {
    if (location < 0)
        return;
    if (_isPipeline)
        glProgramUniform1i(stage.name, location, value);
    else
        glUniform1i(location, value);
}

void DrawProgram::setDrawable(int number) const noexcept {
    if (_vertex.linked)
        set(_vertex, _vertex.linked->drawable, number);
}

void DrawProgram::setTextures(int bits) const noexcept {
    set(_vertex, _vertex.textures, bits);
    if (_isPipeline && _fragment.name != _vertex.name)
        set(_fragment, _fragment.textures, bits);
}

} // namespace Atelier::Vel

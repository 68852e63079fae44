#include "state/scopedbinding.h"

#include <velgl/program.h>

#include <algorithm>
#include <initializer_list>

#include "context/currentcontext.h"
#include "objects/glnames.h"
#include "objects/labels.h"
#include "objects/linkedprogram.h"
#include "objects/programaccess.h"
#include "objects/uniforms.h"
#include "state/bindingstack.h"

namespace Atelier::Vel {

namespace {

// Compiles a shader. After destruction OpenGL deletes it as soon as no program has it attached.
class Shader {
public:
    Shader(GLenum stage, const QByteArray& source) : _name(glCreateShader(stage)) {
        const GLchar* text = source.constData();
        const GLint length = source.size();
        glShaderSource(_name, 1, &text, &length);
        glCompileShader(_name);
    }
    ~Shader() { glDeleteShader(_name); }
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;

    GLuint name() const { return _name; }

    bool isCompiled() const {
        GLint status = GL_FALSE;
        glGetShaderiv(_name, GL_COMPILE_STATUS, &status);
        return status == GL_TRUE;
    }

    QString log() const {
        GLint length = 0;
        glGetShaderiv(_name, GL_INFO_LOG_LENGTH, &length);
        QByteArray text(std::max(length, 1), '\0');
        glGetShaderInfoLog(_name, text.size(), nullptr, text.data());
        return QString::fromUtf8(text.constData()).trimmed();
    }

private:
    GLuint _name;
};

QString programLog(GLuint program) {
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    QByteArray text(std::max(length, 1), '\0');
    glGetProgramInfoLog(program, text.size(), nullptr, text.data());
    return QString::fromUtf8(text.constData()).trimmed();
}

// Returns: why OpenGL refuses the locations; null if it does not.
QString fault(const QHash<QString, int>& locations) {
    GLint count = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &count);
    for (auto it = locations.cbegin(); it != locations.cend(); ++it)
        if (it.value() < 0 || it.value() >= count || it.key().startsWith(QLatin1String("gl_")))
            return QStringLiteral("Attribute '%1' cannot have location %2").arg(it.key()).arg(it.value());
    return {};
}

void bindLocations(GLuint program, const QHash<QString, int>& locations) {
    for (auto it = locations.cbegin(); it != locations.cend(); ++it)
        glBindAttribLocation(program, static_cast<GLuint>(it.value()), it.key().toUtf8().constData());
}

bool link(GLuint program, std::initializer_list<const Shader*> shaders) {
    for (const Shader* shader : shaders)
        glAttachShader(program, shader->name());
    glLinkProgram(program);
    for (const Shader* shader : shaders)
        glDetachShader(program, shader->name());
    GLint status = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &status);
    return status == GL_TRUE;
}

} // namespace

struct Program::Data {
    GLNames names; // one at most: a program is linked in one group of contexts
    BindingStack bindings;
    std::shared_ptr<ShareGroup> group;
    GLuint name = 0;
    std::shared_ptr<const LinkedProgram> linked;
    Uniforms uniforms;
    QString label;

    ~Data() {
        if (group)
            group->removeLinkedProgram(name);
    }
};

Program::Program() : _data(std::make_unique<Data>()) {}

Program::~Program() = default;

std::unique_ptr<Program> Program::fromSource(const QByteArray& vertexShader, const QByteArray& fragmentShader,
                                             QString& error) {
    return fromSource(vertexShader, fragmentShader, {}, error);
}

std::unique_ptr<Program> Program::fromSource(const QByteArray& vertexShader, const QByteArray& fragmentShader,
                                             const ProgramOptions& options, QString& error) {
    return ProgramAccess::make({QStringLiteral("Vertex shader"), vertexShader},
                               {QStringLiteral("Fragment shader"), fragmentShader}, options, error);
}

std::unique_ptr<Program> ProgramAccess::make(const ShaderText& vertexText, const ShaderText& fragmentText,
                                             const ProgramOptions& options, QString& error) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl) {
        error = QStringLiteral("No OpenGL context is current");
        return nullptr;
    }
    const Shader vertex(GL_VERTEX_SHADER, vertexText.source);
    if (!vertex.isCompiled()) {
        error = QStringLiteral("%1: %2").arg(vertexText.name, vertex.log());
        return nullptr;
    }
    const Shader fragment(GL_FRAGMENT_SHADER, fragmentText.source);
    if (!fragment.isCompiled()) {
        error = QStringLiteral("%1: %2").arg(fragmentText.name, fragment.log());
        return nullptr;
    }
    const QString cause = fault(options.attributeLocations);
    if (!cause.isNull()) {
        error = cause;
        return nullptr;
    }
    std::unique_ptr<Program> program(new Program);
    GLName owned(GLKind::Program, gl->group());
    owned.set(glCreateProgram());
    const GLuint name = program->_data->names.add(std::move(owned)).value();
    bindLocations(name, options.attributeLocations);
    if (!link(name, {&vertex, &fragment})) {
        error = QStringLiteral("Linking: %1").arg(programLog(name));
        return nullptr;
    }
    program->_data->linked = LinkedProgram::of(name, options.streams);
    gl->group()->addLinkedProgram(name, program->_data->linked);
    program->_data->group = gl->group();
    program->_data->name = name;
    return program;
}

unsigned int ProgramAccess::nameIn(const ContextGL& gl, const Program& program) {
    const GLName* name = program._data->names.find(*gl.group());
    return name ? name->value() : 0;
}

const std::shared_ptr<const LinkedProgram>& ProgramAccess::linked(const Program& program) {
    return program._data->linked;
}

bool Program::bind() {
    const unsigned int current = name();
    if (current == 0) {
        _data->bindings.push({});
        return false;
    }
    _data->bindings.push({findCurrentContext()->serial(), currentName(GL_CURRENT_PROGRAM), 0});
    glUseProgram(current);
    return true;
}

void Program::unbind() {
    const SavedBinding binding = _data->bindings.pop();
    const ContextGL* gl = findKnownContext();
    if (gl && gl->serial() == binding.context)
        rebindProgram(binding.previous);
}

unsigned int Program::name() const {
    return _data->names.inCurrentContext();
}

void Program::setLabel(const QString& label) {
    _data->label = label;
    if (const unsigned int current = name())
        labelObject(GL_PROGRAM, current, encodedLabel(label));
}

bool Program::setUniform(const char* name, int value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value);
}

bool Program::setUniform(const char* name, float value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, {value, 0, 0, 0}, 1);
}

bool Program::setUniform(const char* name, const QVector2D& value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value, 2);
}

bool Program::setUniform(const char* name, const QVector3D& value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value, 3);
}

bool Program::setUniform(const char* name, const QVector4D& value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value, 4);
}

bool Program::setUniform(const char* name, const QColor& value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value);
}

bool Program::setUniform(const char* name, const QMatrix4x4& value) {
    const unsigned int current = this->name();
    return current != 0 && _data->uniforms.set(current, _data->label, name, value);
}

int Program::uniformLocation(const char* name) const {
    const unsigned int current = this->name();
    return current != 0 ? glGetUniformLocation(current, name) : -1;
}

} // namespace Atelier::Vel

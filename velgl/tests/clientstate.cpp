#include <epoxy/gl.h>

#include "clientstate.h"

#include <iterator>

namespace Atelier::Vel::Testing {

namespace {

constexpr int kCapturedUnits = 8;
constexpr int kCapturedBindings = 4;
constexpr int kCapturedAttributes = 4;
constexpr GLuint kCapturedOutputs = 8;

struct NamedQuery {
    const char* name;
    GLenum query;
};

constexpr NamedQuery kIntegers[] = {
    {"array buffer", GL_ARRAY_BUFFER_BINDING},
    {"indirect buffer", GL_DRAW_INDIRECT_BUFFER_BINDING},
    {"dispatch buffer", GL_DISPATCH_INDIRECT_BUFFER_BINDING},
    {"storage buffer", GL_SHADER_STORAGE_BUFFER_BINDING},
    {"uniform buffer", GL_UNIFORM_BUFFER_BINDING},
    {"copy read buffer", GL_COPY_READ_BUFFER_BINDING},
    {"copy write buffer", GL_COPY_WRITE_BUFFER_BINDING},
    {"pack buffer", GL_PIXEL_PACK_BUFFER_BINDING},
    {"unpack buffer", GL_PIXEL_UNPACK_BUFFER_BINDING},
    {"atomic buffer", GL_ATOMIC_COUNTER_BUFFER_BINDING},
    {"texture buffer", GL_TEXTURE_BUFFER},
    {"transform feedback buffer", GL_TRANSFORM_FEEDBACK_BUFFER_BINDING},
    {"vertex array", GL_VERTEX_ARRAY_BINDING},
    {"program", GL_CURRENT_PROGRAM},
    {"pipeline", GL_PROGRAM_PIPELINE_BINDING},
    {"active texture", GL_ACTIVE_TEXTURE},
    {"draw framebuffer", GL_DRAW_FRAMEBUFFER_BINDING},
    {"read framebuffer", GL_READ_FRAMEBUFFER_BINDING},
    {"renderbuffer", GL_RENDERBUFFER_BINDING},
    {"primitive restart", GL_PRIMITIVE_RESTART},
    {"primitive restart at the fixed index", GL_PRIMITIVE_RESTART_FIXED_INDEX},
    {"primitive restart index", GL_PRIMITIVE_RESTART_INDEX},
    {"depth test", GL_DEPTH_TEST},
    {"cull face", GL_CULL_FACE},
    {"blend", GL_BLEND},
    {"stencil test", GL_STENCIL_TEST},
    {"logical operation", GL_COLOR_LOGIC_OP},
    {"multisampling", GL_MULTISAMPLE},
    {"rasterizer discard", GL_RASTERIZER_DISCARD},
    {"depth function", GL_DEPTH_FUNC},
    {"depth mask", GL_DEPTH_WRITEMASK},
    {"culled faces", GL_CULL_FACE_MODE},
    {"clamped reading", GL_CLAMP_READ_COLOR},
    {"unpack alignment", GL_UNPACK_ALIGNMENT},
    {"unpack row length", GL_UNPACK_ROW_LENGTH},
    {"unpack image height", GL_UNPACK_IMAGE_HEIGHT},
    {"unpack skip rows", GL_UNPACK_SKIP_ROWS},
    {"unpack skip pixels", GL_UNPACK_SKIP_PIXELS},
    {"unpack skip images", GL_UNPACK_SKIP_IMAGES},
    {"unpack swap bytes", GL_UNPACK_SWAP_BYTES},
    {"unpack lsb first", GL_UNPACK_LSB_FIRST},
    {"pack alignment", GL_PACK_ALIGNMENT},
    {"pack row length", GL_PACK_ROW_LENGTH},
    {"pack image height", GL_PACK_IMAGE_HEIGHT},
    {"pack skip rows", GL_PACK_SKIP_ROWS},
    {"pack skip pixels", GL_PACK_SKIP_PIXELS},
    {"pack skip images", GL_PACK_SKIP_IMAGES},
    {"pack swap bytes", GL_PACK_SWAP_BYTES},
    {"pack lsb first", GL_PACK_LSB_FIRST},
};

GLuint clientProgram() {
    const GLchar* vertex = "#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n";
    const GLuint shader = glCreateShader(GL_VERTEX_SHADER);
    glShaderSource(shader, 1, &vertex, nullptr);
    glCompileShader(shader);
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDeleteShader(shader);
    return program;
}

} // namespace

ClientState ClientState::captured() {
    ClientState state;
    state.addIntegers();
    state.addVertexArray();
    state.addTextureUnits();
    state.addStorageBindings();
    state.addDebugReceiver();
    state.addViewports();
    state.addOutputs();
    return state;
}

void ClientState::addIntegers() {
    for (const NamedQuery& query : kIntegers) {
        GLint value = 0;
        glGetIntegerv(query.query, &value);
        _values.push_back({query.name, value});
    }
}

void ClientState::addVertexArray() {
    GLint elements = 0;
    glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &elements);
    _values.push_back({"element buffer", elements});
    for (GLuint i = 0; i < kCapturedAttributes; ++i) {
        GLint isEnabled = 0;
        GLint buffer = 0;
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &isEnabled);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &buffer);
        _values.push_back({"attribute enabled " + std::to_string(i), isEnabled});
        _values.push_back({"attribute buffer " + std::to_string(i), buffer});
    }
}

void ClientState::addTextureUnits() {
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int unit = 0; unit < kCapturedUnits; ++unit) {
        glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        for (const GLenum query :
             {GL_TEXTURE_BINDING_1D, GL_TEXTURE_BINDING_2D, GL_TEXTURE_BINDING_3D,
              GL_TEXTURE_BINDING_1D_ARRAY, GL_TEXTURE_BINDING_2D_ARRAY, GL_TEXTURE_BINDING_RECTANGLE,
              GL_TEXTURE_BINDING_CUBE_MAP, GL_TEXTURE_BINDING_CUBE_MAP_ARRAY, GL_SAMPLER_BINDING}) {
            GLint name = 0;
            glGetIntegerv(query, &name);
            _values.push_back({"unit " + std::to_string(unit) + " " + std::to_string(query), name});
        }
    }
    glActiveTexture(GLenum(active));
}

void ClientState::addStorageBindings() {
    for (GLuint point = 0; point < kCapturedBindings; ++point) {
        GLint buffer = 0;
        GLint64 start = 0;
        GLint64 size = 0;
        glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, point, &buffer);
        glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_START, point, &start);
        glGetInteger64i_v(GL_SHADER_STORAGE_BUFFER_SIZE, point, &size);
        const std::string name = "storage binding " + std::to_string(point);
        _values.push_back({name, buffer});
        _values.push_back({name + " start", start});
        _values.push_back({name + " size", size});
    }
}

void ClientState::addDebugReceiver() {
    void* callback = nullptr;
    glGetPointerv(GL_DEBUG_CALLBACK_FUNCTION, &callback);
    _values.push_back({"debug callback", static_cast<qint64>(reinterpret_cast<quintptr>(callback))});
}

void ClientState::addViewports() {
    for (GLuint index = 0; index < 2; ++index) {
        const std::string name = "viewport " + std::to_string(index) + " ";
        GLfloat box[4] = {};
        glGetFloati_v(GL_VIEWPORT, index, box);
        for (const GLfloat value : box)
            _values.push_back({name, static_cast<qint64>(value * 16)});
        _values.push_back({name + "scissor test", glIsEnabledi(GL_SCISSOR_TEST, index)});
    }
    GLint modes[2] = {};
    glGetIntegerv(GL_POLYGON_MODE, modes);
    _values.push_back({"polygon mode", modes[0]});
}

void ClientState::addOutputs() {
    for (GLuint output = 0; output < kCapturedOutputs; ++output) {
        const std::string name = "output " + std::to_string(output) + " ";
        _values.push_back({name + "blend", glIsEnabledi(GL_BLEND, output)});
        GLboolean mask[4] = {};
        glGetBooleani_v(GL_COLOR_WRITEMASK, output, mask);
        for (const GLboolean channel : mask)
            _values.push_back({name + "mask", channel});
        for (const GLenum query : {GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA,
                                   GL_BLEND_EQUATION_RGB, GL_BLEND_EQUATION_ALPHA}) {
            GLint value = 0;
            glGetIntegeri_v(query, output, &value);
            _values.push_back({name + std::to_string(query), value});
        }
    }
}

std::string ClientState::difference(const ClientState& before, const ClientState& after) {
    std::string text;
    for (std::size_t i = 0; i < before._values.size(); ++i)
        if (!(before._values[i] == after._values[i]))
            text += before._values[i].name + ": " + std::to_string(before._values[i].value) + " -> " +
                    std::to_string(after._values[i].value) + "\n";
    return text;
}

std::vector<std::string> ClientState::changes(const ClientState& before, const ClientState& after) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < before._values.size(); ++i)
        if (!(before._values[i] == after._values[i]))
            names.push_back(before._values[i].name);
    return names;
}

void PrintTo(const ClientState& state, std::ostream* out) {
    *out << state._values.size() << " values";
}

BusyClient::BusyClient() {
    glGenBuffers(kBufferCount, _buffers);
    bindBuffers();
    bindTextures();
    setPixelStore(7, 1, 2, 8);
    setVertexArray();
    setPrimitiveRestart(7, true);
    useProgram();
}

BusyClient::~BusyClient() {
    setPixelStore(0, 0, 4, 4);
    setPrimitiveRestart(0, false);
    glUseProgram(0);
    glDeleteProgram(_program);
    glDeleteVertexArrays(1, &_vertexArray);
    glDeleteBuffers(kBufferCount, _buffers);
    glDeleteTextures(kUnitCount, _textures);
    glDeleteTextures(kUnitCount, _cubes);
    glDeleteSamplers(kUnitCount, _samplers);
}

void BusyClient::bindBuffers() {
    constexpr GLenum kTargets[] = {
        GL_ARRAY_BUFFER,      GL_DRAW_INDIRECT_BUFFER,     GL_DISPATCH_INDIRECT_BUFFER,
        GL_UNIFORM_BUFFER,    GL_COPY_READ_BUFFER,         GL_COPY_WRITE_BUFFER,
        GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER,      GL_ATOMIC_COUNTER_BUFFER,
        GL_TEXTURE_BUFFER,    GL_TRANSFORM_FEEDBACK_BUFFER};
    static_assert(std::size(kTargets) + 2 == kBufferCount, "one for storage and one for elements");
    int next = 0;
    for (const GLenum target : kTargets) {
        glBindBuffer(target, _buffers[next]);
        glBufferData(target, 4096, nullptr, GL_STATIC_DRAW);
        ++next;
    }
    const GLuint storage = _buffers[next];
    glBindBuffer(GL_SHADER_STORAGE_BUFFER, storage);
    glBufferData(GL_SHADER_STORAGE_BUFFER, 4096, nullptr, GL_STATIC_DRAW);
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 0, storage);
    glBindBufferRange(GL_SHADER_STORAGE_BUFFER, 1, storage, 1024, 512);
    glBindBuffer(GL_SHADER_STORAGE_BUFFER, _buffers[0]);
}

void BusyClient::bindTextures() {
    glGenTextures(kUnitCount, _textures);
    glGenTextures(kUnitCount, _cubes);
    glGenSamplers(kUnitCount, _samplers);
    for (GLuint unit = 0; unit < kUnitCount; ++unit) {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, _textures[unit]);
        glBindTexture(GL_TEXTURE_CUBE_MAP, _cubes[unit]);
        glBindSampler(unit, _samplers[unit]);
    }
    glActiveTexture(GL_TEXTURE0 + 3);
}

void BusyClient::setPixelStore(int rows, int flag, int unpackAlignment, int packAlignment) {
    for (const GLenum name :
         {GL_UNPACK_ROW_LENGTH, GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
          GL_UNPACK_SKIP_IMAGES, GL_PACK_ROW_LENGTH, GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS,
          GL_PACK_SKIP_PIXELS, GL_PACK_SKIP_IMAGES})
        glPixelStorei(name, rows);
    for (const GLenum name :
         {GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST, GL_PACK_SWAP_BYTES, GL_PACK_LSB_FIRST})
        glPixelStorei(name, flag);
    glPixelStorei(GL_UNPACK_ALIGNMENT, unpackAlignment);
    glPixelStorei(GL_PACK_ALIGNMENT, packAlignment);
}

void BusyClient::setVertexArray() {
    glGenVertexArrays(1, &_vertexArray);
    glBindVertexArray(_vertexArray);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, _buffers[kBufferCount - 1]);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(1, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
}

void BusyClient::setPrimitiveRestart(unsigned int index, bool isEnabled) {
    glPrimitiveRestartIndex(index);
    for (const GLenum capability : {GL_PRIMITIVE_RESTART, GL_PRIMITIVE_RESTART_FIXED_INDEX})
        isEnabled ? glEnable(capability) : glDisable(capability);
}

void BusyClient::useProgram() {
    _program = clientProgram();
    glUseProgram(_program);
}

// Values that VelGL does not set itself, so that a call that does not put them back is found.
BusyPainter::BusyPainter() {
    for (const GLenum capability : {GL_DEPTH_TEST, GL_CULL_FACE, GL_BLEND, GL_STENCIL_TEST, GL_SCISSOR_TEST,
                                    GL_COLOR_LOGIC_OP, GL_RASTERIZER_DISCARD})
        glEnable(capability);
    glDisable(GL_MULTISAMPLE);
    glDepthFunc(GL_NOTEQUAL);
    glDepthMask(GL_FALSE);
    glCullFace(GL_FRONT_AND_BACK);
    glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
    glClampColor(GL_CLAMP_READ_COLOR, GL_TRUE);
    glColorMaski(1, GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE);
    glBlendFuncSeparatei(1, GL_DST_COLOR, GL_CONSTANT_COLOR, GL_DST_ALPHA, GL_CONSTANT_ALPHA);
    glBlendEquationSeparatei(1, GL_MIN, GL_MAX);
    glViewportIndexedf(0, 1.5F, 2, 3.25F, 4);
    glScissor(0, 0, 1, 1);
    glGenFramebuffers(2, _framebuffers);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, _framebuffers[0]);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, _framebuffers[1]);
    glGenRenderbuffers(1, &_renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffer);
}

BusyPainter::~BusyPainter() {
    for (const GLenum capability : {GL_DEPTH_TEST, GL_CULL_FACE, GL_BLEND, GL_STENCIL_TEST, GL_SCISSOR_TEST,
                                    GL_COLOR_LOGIC_OP, GL_RASTERIZER_DISCARD})
        glDisable(capability);
    glEnable(GL_MULTISAMPLE);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glCullFace(GL_BACK);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glClampColor(GL_CLAMP_READ_COLOR, GL_FIXED_ONLY);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glBlendFunc(GL_ONE, GL_ZERO);
    glBlendEquation(GL_FUNC_ADD);
    glViewport(0, 0, 0, 0);
    glDeleteFramebuffers(2, _framebuffers);
    glDeleteRenderbuffers(1, &_renderbuffer);
}

} // namespace Atelier::Vel::Testing

#include "glhooks.h"

#include <EGL/egl.h>

namespace Atelier::Vel::Testing {

namespace {

DrawHook* drawHook = nullptr;
const std::function<void()>* beforeTransfer = nullptr;
NameCount* nameCount = nullptr;
std::vector<UploadHook::Part>* uploadedParts = nullptr;
int* wholeUploadCount = nullptr;
int* stateCallCount = nullptr;
int* labelQueryCount = nullptr;

// The pointers of libepoxy cannot be used: one that was not called yet replaces itself in its first call, and
// with it the hook.
template<typename Function>
Function realFunction(const char* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

} // namespace

DrawHook::DrawHook(std::function<void()> beforeDraw)
    : _beforeDraw(std::move(beforeDraw)), _before(glMultiDrawElementsIndirect) {
    drawHook = this;
    glMultiDrawElementsIndirect = draw;
}

DrawHook::~DrawHook() {
    glMultiDrawElementsIndirect = _before;
    drawHook = nullptr;
}

void DrawHook::draw(GLenum mode, GLenum type, const void* indirect, GLsizei count, GLsizei stride) {
    static const auto real = realFunction<PFNGLMULTIDRAWELEMENTSINDIRECTPROC>("glMultiDrawElementsIndirect");
    drawHook->_calls.push_back({mode, type, reinterpret_cast<quintptr>(indirect), count, stride});
    if (drawHook->_beforeDraw)
        drawHook->_beforeDraw();
    real(mode, type, indirect, count, stride);
}

PixelHook::PixelHook(std::function<void()> transfer)
    : _beforeTransfer(std::move(transfer)), _texImage2D(glTexImage2D), _getTexImage(glGetTexImage) {
    beforeTransfer = &_beforeTransfer;
    glTexImage2D = [](GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height,
                      GLint border, GLenum format, GLenum type, const void* pixels) {
        static const auto real = realFunction<PFNGLTEXIMAGE2DPROC>("glTexImage2D");
        (*beforeTransfer)();
        real(target, level, internalFormat, width, height, border, format, type, pixels);
    };
    glGetTexImage = [](GLenum target, GLint level, GLenum format, GLenum type, void* pixels) {
        static const auto real = realFunction<PFNGLGETTEXIMAGEPROC>("glGetTexImage");
        (*beforeTransfer)();
        real(target, level, format, type, pixels);
    };
}

PixelHook::~PixelHook() {
    glTexImage2D = _texImage2D;
    glGetTexImage = _getTexImage;
    beforeTransfer = nullptr;
}

namespace {

constexpr char kBindBuffer[] = "glBindBuffer";
constexpr char kGetIntegerv[] = "glGetIntegerv";
constexpr char kGetBufferSize[] = "glGetBufferParameteri64v";
constexpr char kGetNamedBufferSize[] = "glGetNamedBufferParameteri64v";
constexpr char kGetBufferSubData[] = "glGetBufferSubData";
constexpr char kGetNamedBufferSubData[] = "glGetNamedBufferSubData";

constexpr char kGetBooleanv[] = "glGetBooleanv";

template<const char* kFunction, typename... Arguments>
void APIENTRY countStateCall(Arguments... arguments) {
    static const auto real = realFunction<void(APIENTRY*)(Arguments...)>(kFunction);
    ++*stateCallCount;
    real(arguments...);
}

GLboolean APIENTRY countIsEnabled(GLenum capability) {
    static const auto real = realFunction<PFNGLISENABLEDPROC>("glIsEnabled");
    ++*stateCallCount;
    return real(capability);
}

} // namespace

// The function pointers that libepoxy holds.
struct StateCalls::Functions {
    PFNGLBINDBUFFERPROC bindBuffer = glBindBuffer;
    PFNGLGETINTEGERVPROC getIntegerv = glGetIntegerv;
    PFNGLGETBOOLEANVPROC getBooleanv = glGetBooleanv;
    PFNGLISENABLEDPROC isEnabled = glIsEnabled;
    PFNGLGETBUFFERPARAMETERI64VPROC getBufferSize = glGetBufferParameteri64v;
    PFNGLGETNAMEDBUFFERPARAMETERI64VPROC getNamedBufferSize = glGetNamedBufferParameteri64v;
    PFNGLGETBUFFERSUBDATAPROC getBufferSubData = glGetBufferSubData;
    PFNGLGETNAMEDBUFFERSUBDATAPROC getNamedBufferSubData = glGetNamedBufferSubData;
};

void StateCalls::use(const Functions& functions) {
    glBindBuffer = functions.bindBuffer;
    glGetIntegerv = functions.getIntegerv;
    glGetBooleanv = functions.getBooleanv;
    glIsEnabled = functions.isEnabled;
    glGetBufferParameteri64v = functions.getBufferSize;
    glGetNamedBufferParameteri64v = functions.getNamedBufferSize;
    glGetBufferSubData = functions.getBufferSubData;
    glGetNamedBufferSubData = functions.getNamedBufferSubData;
}

StateCalls::StateCalls() : _before(std::make_unique<Functions>()) {
    stateCallCount = &_count;
    Functions counting;
    counting.bindBuffer = countStateCall<kBindBuffer>;
    counting.getIntegerv = countStateCall<kGetIntegerv>;
    counting.getBooleanv = countStateCall<kGetBooleanv>;
    counting.isEnabled = countIsEnabled;
    counting.getBufferSize = countStateCall<kGetBufferSize>;
    counting.getNamedBufferSize = countStateCall<kGetNamedBufferSize>;
    counting.getBufferSubData = countStateCall<kGetBufferSubData>;
    counting.getNamedBufferSubData = countStateCall<kGetNamedBufferSubData>;
    use(counting);
}

StateCalls::~StateCalls() {
    use(*_before);
    stateCallCount = nullptr;
}

namespace {

void APIENTRY noteNamedPart(GLuint buffer, GLintptr offset, GLsizeiptr size, const void* data) {
    static const auto real = realFunction<PFNGLNAMEDBUFFERSUBDATAPROC>("glNamedBufferSubData");
    uploadedParts->push_back({buffer, offset, size});
    real(buffer, offset, size, data);
}

void APIENTRY notePart(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
    static const auto real = realFunction<PFNGLBUFFERSUBDATAPROC>("glBufferSubData");
    GLint buffer = 0;
    if (target == GL_COPY_WRITE_BUFFER)
        glGetIntegerv(GL_COPY_WRITE_BUFFER_BINDING, &buffer);
    uploadedParts->push_back({static_cast<GLuint>(buffer), offset, size});
    real(target, offset, size, data);
}

void APIENTRY countNamedUpload(GLuint buffer, GLsizeiptr size, const void* data, GLenum usage) {
    static const auto real = realFunction<PFNGLNAMEDBUFFERDATAPROC>("glNamedBufferData");
    ++*wholeUploadCount;
    real(buffer, size, data, usage);
}

void APIENTRY countUpload(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
    static const auto real = realFunction<PFNGLBUFFERDATAPROC>("glBufferData");
    ++*wholeUploadCount;
    real(target, size, data, usage);
}

} // namespace

struct UploadHook::Functions {
    PFNGLNAMEDBUFFERSUBDATAPROC namedPart = glNamedBufferSubData;
    PFNGLBUFFERSUBDATAPROC part = glBufferSubData;
    PFNGLNAMEDBUFFERDATAPROC namedWhole = glNamedBufferData;
    PFNGLBUFFERDATAPROC whole = glBufferData;
};

void UploadHook::use(const Functions& functions) {
    glNamedBufferSubData = functions.namedPart;
    glBufferSubData = functions.part;
    glNamedBufferData = functions.namedWhole;
    glBufferData = functions.whole;
}

UploadHook::UploadHook() : _before(std::make_unique<Functions>()) {
    uploadedParts = &_parts;
    wholeUploadCount = &_wholeCount;
    use({noteNamedPart, notePart, countNamedUpload, countUpload});
}

UploadHook::~UploadHook() {
    use(*_before);
    uploadedParts = nullptr;
    wholeUploadCount = nullptr;
}

qint64 UploadHook::partBytes() const {
    qint64 bytes = 0;
    for (const Part& part : _parts)
        bytes += part.size;
    return bytes;
}

void UploadHook::restart() {
    _parts.clear();
    _wholeCount = 0;
}

LabelQueries::LabelQueries() : _before(glGetObjectLabel) {
    labelQueryCount = &_count;
    glGetObjectLabel = [](GLenum kind, GLuint name, GLsizei size, GLsizei* length, GLchar* label) {
        static const auto real = realFunction<PFNGLGETOBJECTLABELPROC>("glGetObjectLabel");
        ++*labelQueryCount;
        real(kind, name, size, length, label);
    };
}

LabelQueries::~LabelQueries() {
    glGetObjectLabel = _before;
    labelQueryCount = nullptr;
}

namespace {

using GenNames = void(APIENTRY*)(GLsizei count, GLuint* names);
using DeleteNames = void(APIENTRY*)(GLsizei count, const GLuint* names);

constexpr char kBuffer[] = "buffer";
constexpr char kVertexArray[] = "vertex array";
constexpr char kTexture[] = "texture";
constexpr char kFramebuffer[] = "framebuffer";
constexpr char kRenderbuffer[] = "renderbuffer";
constexpr char kShader[] = "shader";
constexpr char kProgram[] = "program";

constexpr char kGenBuffers[] = "glGenBuffers";
constexpr char kCreateBuffers[] = "glCreateBuffers";
constexpr char kDeleteBuffers[] = "glDeleteBuffers";
constexpr char kGenVertexArrays[] = "glGenVertexArrays";
constexpr char kDeleteVertexArrays[] = "glDeleteVertexArrays";
constexpr char kGenTextures[] = "glGenTextures";
constexpr char kDeleteTextures[] = "glDeleteTextures";
constexpr char kGenFramebuffers[] = "glGenFramebuffers";
constexpr char kDeleteFramebuffers[] = "glDeleteFramebuffers";
constexpr char kGenRenderbuffers[] = "glGenRenderbuffers";
constexpr char kDeleteRenderbuffers[] = "glDeleteRenderbuffers";
constexpr char kDeleteShader[] = "glDeleteShader";
constexpr char kDeleteProgram[] = "glDeleteProgram";

template<const char* kKind, const char* kFunction>
void APIENTRY countMade(GLsizei count, GLuint* names) {
    static const auto real = realFunction<GenNames>(kFunction);
    real(count, names);
    nameCount->note(kKind, count, names, 1);
}

template<const char* kKind, const char* kFunction>
void APIENTRY countDeleted(GLsizei count, const GLuint* names) {
    static const auto real = realFunction<DeleteNames>(kFunction);
    nameCount->note(kKind, count, names, -1);
    real(count, names);
}

template<const char* kKind, const char* kFunction>
void APIENTRY countOneDeleted(GLuint name) {
    static const auto real = realFunction<PFNGLDELETESHADERPROC>(kFunction);
    nameCount->note(kKind, 1, &name, -1);
    real(name);
}

GLuint APIENTRY countShader(GLenum stage) {
    static const auto real = realFunction<PFNGLCREATESHADERPROC>("glCreateShader");
    const GLuint name = real(stage);
    nameCount->note(kShader, 1, &name, 1);
    return name;
}

GLuint APIENTRY countProgram() {
    static const auto real = realFunction<PFNGLCREATEPROGRAMPROC>("glCreateProgram");
    const GLuint name = real();
    nameCount->note(kProgram, 1, &name, 1);
    return name;
}

} // namespace

// The function pointers that libepoxy holds.
struct NameCount::Functions {
    PFNGLGENBUFFERSPROC genBuffers = glGenBuffers;
    PFNGLCREATEBUFFERSPROC createBuffers = glCreateBuffers;
    PFNGLDELETEBUFFERSPROC deleteBuffers = glDeleteBuffers;
    PFNGLGENVERTEXARRAYSPROC genVertexArrays = glGenVertexArrays;
    PFNGLDELETEVERTEXARRAYSPROC deleteVertexArrays = glDeleteVertexArrays;
    PFNGLGENTEXTURESPROC genTextures = glGenTextures;
    PFNGLDELETETEXTURESPROC deleteTextures = glDeleteTextures;
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = glGenFramebuffers;
    PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = glDeleteFramebuffers;
    PFNGLGENRENDERBUFFERSPROC genRenderbuffers = glGenRenderbuffers;
    PFNGLDELETERENDERBUFFERSPROC deleteRenderbuffers = glDeleteRenderbuffers;
    PFNGLCREATESHADERPROC createShader = glCreateShader;
    PFNGLDELETESHADERPROC deleteShader = glDeleteShader;
    PFNGLCREATEPROGRAMPROC createProgram = glCreateProgram;
    PFNGLDELETEPROGRAMPROC deleteProgram = glDeleteProgram;
};

void NameCount::use(const Functions& functions) {
    glGenBuffers = functions.genBuffers;
    glCreateBuffers = functions.createBuffers;
    glDeleteBuffers = functions.deleteBuffers;
    glGenVertexArrays = functions.genVertexArrays;
    glDeleteVertexArrays = functions.deleteVertexArrays;
    glGenTextures = functions.genTextures;
    glDeleteTextures = functions.deleteTextures;
    glGenFramebuffers = functions.genFramebuffers;
    glDeleteFramebuffers = functions.deleteFramebuffers;
    glGenRenderbuffers = functions.genRenderbuffers;
    glDeleteRenderbuffers = functions.deleteRenderbuffers;
    glCreateShader = functions.createShader;
    glDeleteShader = functions.deleteShader;
    glCreateProgram = functions.createProgram;
    glDeleteProgram = functions.deleteProgram;
}

NameCount::NameCount() : _before(std::make_unique<Functions>()) {
    nameCount = this;
    Functions counting;
    counting.genBuffers = countMade<kBuffer, kGenBuffers>;
    counting.createBuffers = countMade<kBuffer, kCreateBuffers>;
    counting.deleteBuffers = countDeleted<kBuffer, kDeleteBuffers>;
    counting.genVertexArrays = countMade<kVertexArray, kGenVertexArrays>;
    counting.deleteVertexArrays = countDeleted<kVertexArray, kDeleteVertexArrays>;
    counting.genTextures = countMade<kTexture, kGenTextures>;
    counting.deleteTextures = countDeleted<kTexture, kDeleteTextures>;
    counting.genFramebuffers = countMade<kFramebuffer, kGenFramebuffers>;
    counting.deleteFramebuffers = countDeleted<kFramebuffer, kDeleteFramebuffers>;
    counting.genRenderbuffers = countMade<kRenderbuffer, kGenRenderbuffers>;
    counting.deleteRenderbuffers = countDeleted<kRenderbuffer, kDeleteRenderbuffers>;
    counting.createShader = countShader;
    counting.deleteShader = countOneDeleted<kShader, kDeleteShader>;
    counting.createProgram = countProgram;
    counting.deleteProgram = countOneDeleted<kProgram, kDeleteProgram>;
    use(counting);
}

NameCount::~NameCount() {
    use(*_before);
    nameCount = nullptr;
}

void NameCount::note(const char* kind, GLsizei count, const GLuint* names, int change) {
    for (GLsizei i = 0; i < count; ++i)
        _live[{QString::fromLatin1(kind), names[i]}] += change;
    if (change > 0)
        _made += count;
}

QStringList NameCount::imbalance() const {
    QStringList names;
    for (const auto& [name, count] : _live) {
        const QString text = QStringLiteral("%1 %2").arg(name.first).arg(name.second);
        for (int i = 0; i < count; ++i)
            names << text;
        if (count < 0)
            names << text + QStringLiteral(" deleted too often");
    }
    return names;
}

} // namespace Atelier::Vel::Testing

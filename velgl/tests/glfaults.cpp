#include "glfaults.h"

#include <algorithm>
#include <utility>

namespace Atelier::Vel::Testing {

// The pointers of libepoxy to the functions that can be made to fail.
struct FaultyDriver::Functions {
    PFNGLGETERRORPROC getError = glGetError;
    PFNGLCREATEBUFFERSPROC createBuffers = glCreateBuffers;
    PFNGLGENBUFFERSPROC genBuffers = glGenBuffers;
    PFNGLNAMEDBUFFERDATAPROC namedBufferData = glNamedBufferData;
    PFNGLBUFFERDATAPROC bufferData = glBufferData;
    PFNGLGENVERTEXARRAYSPROC genVertexArrays = glGenVertexArrays;
    PFNGLGENTEXTURESPROC genTextures = glGenTextures;
    PFNGLTEXIMAGE2DPROC texImage2D = glTexImage2D;
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = glGenFramebuffers;
    PFNGLTEXSTORAGE2DPROC texStorage2D = glTexStorage2D;
    PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC renderbufferStorage = glRenderbufferStorageMultisample;
    PFNGLMULTIDRAWELEMENTSINDIRECTPROC multiDraw = glMultiDrawElementsIndirect;
    PFNGLCREATESHADERPROC createShader = glCreateShader;
    PFNGLCREATEPROGRAMPROC createProgram = glCreateProgram;
};

namespace {

GLenum pendingError = GL_NO_ERROR;
PFNGLGETERRORPROC realGetError = nullptr;
PFNGLTEXIMAGE2DPROC realTexImage2D = nullptr;
std::vector<GLenum> listedErrors;

void APIENTRY noNames(GLsizei count, GLuint* names) {
    std::fill_n(names, count, 0U);
    pendingError = GL_OUT_OF_MEMORY;
}

void APIENTRY texImageOfOneTexel(GLenum target, GLint level, GLint internalFormat, GLsizei width,
                                 GLsizei height, GLint border, GLenum format, GLenum type,
                                 const void* pixels) {
    if (width > 1 || height > 1)
        pendingError = GL_OUT_OF_MEMORY;
    else
        realTexImage2D(target, level, internalFormat, width, height, border, format, type, pixels);
}

// Takes the place of any function without a result.
template<typename... Arguments>
void outOfMemory(Arguments... /*ignored*/) {
    pendingError = GL_OUT_OF_MEMORY;
}

} // namespace

FaultyDriver::Functions FaultyDriver::real() {
    static const Functions functions;
    return functions;
}

void FaultyDriver::use(const Functions& functions) {
    glGetError = functions.getError;
    glCreateBuffers = functions.createBuffers;
    glGenBuffers = functions.genBuffers;
    glNamedBufferData = functions.namedBufferData;
    glBufferData = functions.bufferData;
    glGenVertexArrays = functions.genVertexArrays;
    glGenTextures = functions.genTextures;
    glTexImage2D = functions.texImage2D;
    glGenFramebuffers = functions.genFramebuffers;
    glTexStorage2D = functions.texStorage2D;
    glRenderbufferStorageMultisample = functions.renderbufferStorage;
    glMultiDrawElementsIndirect = functions.multiDraw;
    glCreateShader = functions.createShader;
    glCreateProgram = functions.createProgram;
}

FaultyDriver::FaultyDriver(GLFault fault) {
    glGetError(); // libepoxy resolves a function in its first call
    Functions functions = real();
    realGetError = glGetError;
    realTexImage2D = functions.texImage2D;
    functions.getError = [] {
        return pendingError != GL_NO_ERROR ? std::exchange(pendingError, GLenum(GL_NO_ERROR))
                                           : realGetError();
    };
    switch (fault) {
    case GLFault::NoBufferNames:
        functions.createBuffers = noNames;
        functions.genBuffers = noNames;
        break;
    case GLFault::NoBufferNamesAndNoError:
        functions.createBuffers = [](GLsizei count, GLuint* names) { std::fill_n(names, count, 0U); };
        functions.genBuffers = functions.createBuffers;
        break;
    case GLFault::NoBufferMemory:
        functions.namedBufferData = outOfMemory;
        functions.bufferData = outOfMemory;
        break;
    case GLFault::NoVertexArrays:
        functions.genVertexArrays = noNames;
        break;
    case GLFault::NoTextureNames:
        functions.genTextures = noNames;
        break;
    case GLFault::NoTextureMemory:
        functions.texImage2D = outOfMemory;
        break;
    case GLFault::NoMemoryForLargeTextures:
        functions.texImage2D = texImageOfOneTexel;
        break;
    case GLFault::NoMemoryForDrawing:
        functions.multiDraw = outOfMemory;
        break;
    case GLFault::NoFramebuffers:
        functions.genFramebuffers = noNames;
        break;
    case GLFault::NoFramebufferMemory:
        functions.texStorage2D = outOfMemory;
        functions.renderbufferStorage = outOfMemory;
        break;
    case GLFault::NoShaders:
        functions.createShader = [](GLenum) { return GLuint(0); };
        break;
    case GLFault::NoPrograms:
        functions.createProgram = [] { return GLuint(0); };
        break;
    case GLFault::EndlessErrors:
        functions.getError = [] { return GLenum(GL_CONTEXT_LOST); };
        break;
    }
    use(functions);
}

FaultyDriver::FaultyDriver(const std::vector<GLenum>& errors) {
    glGetError(); // libepoxy resolves a function in its first call
    listedErrors = errors;
    Functions functions = real();
    functions.getError = [] {
        if (listedErrors.empty())
            return GLenum(GL_NO_ERROR);
        const GLenum error = listedErrors.front();
        listedErrors.erase(listedErrors.begin());
        return error;
    };
    use(functions);
}

FaultyDriver::~FaultyDriver() {
    use(real());
    pendingError = GL_NO_ERROR;
}

} // namespace Atelier::Vel::Testing

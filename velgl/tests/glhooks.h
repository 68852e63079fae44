#pragma once

#include <epoxy/gl.h>

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QStringList>

// Functions of OpenGL that tests look into. Each class needs a current context, and one object of it may live
// at a time, without a FaultyDriver.
namespace Atelier::Vel::Testing {

/// The arguments of a glMultiDrawElementsIndirect.
struct DrawCall {
    GLenum mode = 0;
    GLenum type = 0;
    quintptr offset = 0; ///< of the first command in the indirect buffer, in bytes
    int count = 0;
    int stride = 0;
};

/// Records the draws that are made while it lives.
class DrawHook {
public:
    /// `beforeDraw` looks at the state that a draw finds.
    explicit DrawHook(std::function<void()> beforeDraw = {});
    ~DrawHook();
    DrawHook(const DrawHook&) = delete;
    DrawHook& operator=(const DrawHook&) = delete;

    const std::vector<DrawCall>& calls() const { return _calls; }

private:
    static void APIENTRY draw(GLenum mode, GLenum type, const void* indirect, GLsizei count, GLsizei stride);

    std::function<void()> _beforeDraw;
    std::vector<DrawCall> _calls;
    PFNGLMULTIDRAWELEMENTSINDIRECTPROC _before;
};

/// Calls a function ahead of each transfer of pixels from and to textures while it lives.
class PixelHook {
public:
    explicit PixelHook(std::function<void()> beforeTransfer);
    ~PixelHook();
    PixelHook(const PixelHook&) = delete;
    PixelHook& operator=(const PixelHook&) = delete;

private:
    std::function<void()> _beforeTransfer;
    PFNGLTEXIMAGE2DPROC _texImage2D;
    PFNGLGETTEXIMAGEPROC _getTexImage;
};

/// Counts the names that are made and deleted while it lives, of buffers, vertex arrays, textures, shaders
/// and programs. Contexts have to share objects or to be made outside of its life.
class NameCount {
public:
    NameCount();
    ~NameCount();
    NameCount(const NameCount&) = delete;
    NameCount& operator=(const NameCount&) = delete;

    /// How many names were made.
    int made() const { return _made; }
    /// Those that were made and not deleted, as in "buffer 3", and those that were deleted without having
    /// been made, or twice, as in "buffer 3 deleted too often".
    QStringList imbalance() const;

    /// Counts names of a kind up (`change` is 1) or down (-1).
    void note(const char* kind, GLsizei count, const GLuint* names, int change);

private:
    struct Functions;
    static void use(const Functions& functions);

    std::unique_ptr<Functions> _before;
    std::map<std::pair<QString, GLuint>, int> _live;
    int _made = 0;
};

} // namespace Atelier::Vel::Testing

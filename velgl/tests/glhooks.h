#pragma once

#include <epoxy/gl.h>

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QStringList>

// Classes that intercept functions of OpenGL.
// Requires, for each of them: a current context. At most one object of each class lives at a time, and no
// FaultyDriver with it.
namespace Atelier::Vel::Testing {

/// The arguments of one call of glMultiDrawElementsIndirect.
struct DrawCall {
    GLenum mode = 0;
    GLenum type = 0;
    quintptr offset = 0; ///< of the first command in the indirect buffer, in bytes
    int count = 0;
    int stride = 0;
};

/// Records the draw calls in its lifetime.
class DrawHook {
public:
    /// `beforeDraw` is called before each draw, with the state that the draw will use.
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

/// Calls a function before each transfer of pixels from and to textures in its lifetime.
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

/// Counts the calls in its lifetime that query the state, bind buffers, or read their sizes or content. VelGL
/// needs such calls to save a state and to read a buffer back.
class StateCalls {
public:
    StateCalls();
    ~StateCalls();
    StateCalls(const StateCalls&) = delete;
    StateCalls& operator=(const StateCalls&) = delete;

    int count() const { return _count; }

private:
    struct Functions;
    static void use(const Functions& functions);

    std::unique_ptr<Functions> _before;
    int _count = 0;
};

/// Records the uploads into buffers in its lifetime.
class UploadHook {
public:
    /// A part of a buffer that was uploaded.
    struct Part {
        GLuint buffer = 0;
        qint64 offset = 0;
        qint64 size = 0;

        friend bool operator==(const Part& a, const Part& b) {
            return a.buffer == b.buffer && a.offset == b.offset && a.size == b.size;
        }
    };

    UploadHook();
    ~UploadHook();
    UploadHook(const UploadHook&) = delete;
    UploadHook& operator=(const UploadHook&) = delete;

    /// Returns: the uploads of parts, in order.
    const std::vector<Part>& parts() const { return _parts; }
    /// Returns: the number of bytes of all parts.
    qint64 partBytes() const;
    /// Returns: the number of uploads of whole buffers.
    int wholeCount() const { return _wholeCount; }
    void restart();

private:
    struct Functions;
    static void use(const Functions& functions);

    std::unique_ptr<Functions> _before;
    std::vector<Part> _parts;
    int _wholeCount = 0;
};

/// Counts the queries of labels in its lifetime: VelGL asks a context of another library for one to learn
/// which context it is.
class LabelQueries {
public:
    LabelQueries();
    ~LabelQueries();
    LabelQueries(const LabelQueries&) = delete;
    LabelQueries& operator=(const LabelQueries&) = delete;

    int count() const { return _count; }

private:
    PFNGLGETOBJECTLABELPROC _before;
    int _count = 0;
};

/// Counts the GL names of buffers, vertex arrays, textures, shaders and programs that are made and deleted in
/// its lifetime.
/// Requires: contexts that do not share objects are made before it.
class NameCount {
public:
    NameCount();
    ~NameCount();
    NameCount(const NameCount&) = delete;
    NameCount& operator=(const NameCount&) = delete;

    /// Returns: the number of names that were made.
    int made() const { return _made; }
    /// Returns: the names that were made and not deleted, for example "buffer 3", and those that were deleted
    /// more often than made, for example "buffer 3 deleted too often".
    QStringList imbalance() const;

    /// Records that names of a kind were made (`change` is 1) or deleted (-1).
    void note(const char* kind, GLsizei count, const GLuint* names, int change);

private:
    struct Functions;
    static void use(const Functions& functions);

    std::unique_ptr<Functions> _before;
    std::map<std::pair<QString, GLuint>, int> _live;
    int _made = 0;
};

} // namespace Atelier::Vel::Testing

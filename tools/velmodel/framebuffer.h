#pragma once

#include <vector>

#include <epoxy/gl.h>

#include <QtCore/QSize>

namespace Atelier::Vel::Tool {

/// An OpenGL framebuffer that owns its colour textures and an optional depth buffer.
class Framebuffer {
public:
    struct Format {
        QSize size;
        int samples = 0;             ///< 0 for textures without multisampling
        std::vector<GLenum> colours; ///< sized internal formats
        bool hasDepth = false;
    };

    explicit Framebuffer(const Format& format);
    ~Framebuffer();
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    bool isComplete() const;
    QSize size() const { return _size; }
    /// Makes it the target of draws and reads, and sets the viewport to its size.
    void bind() const;
    GLuint colour(int index) const { return _colours[static_cast<std::size_t>(index)]; }
    /// Copies all colours into `target`, averaging the samples.
    void resolveInto(const Framebuffer& target) const;

private:
    QSize _size;
    GLuint _name = 0;
    GLuint _depth = 0;
    std::vector<GLuint> _colours;
};

} // namespace Atelier::Vel::Tool

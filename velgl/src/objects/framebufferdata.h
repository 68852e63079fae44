#pragma once

#include "state/scopedbinding.h"

#include <velgl/framebuffer.h>

#include "context/contextgl.h"
#include "objects/glnames.h"
#include "objects/objectrecord.h"
#include "state/bindingstack.h"

namespace Atelier::Vel {

/// The OpenGL side of a colour format.
struct ColorFormat {
    GLenum internalFormat = GL_RGBA8;
    GLenum type = GL_UNSIGNED_BYTE; ///< GL_FLOAT, GL_INT or GL_UNSIGNED_INT; GL_UNSIGNED_BYTE for 0 to 1
    int channels = 4;

    static const ColorFormat& of(Framebuffer::Color color);
    bool isInteger() const { return type == GL_INT || type == GL_UNSIGNED_INT; }
    /// The format in which its channels are transferred.
    GLenum transferFormat() const;
};

/// Returns: the attachment point of a colour.
GLenum colorAttachment(int color);

/// What a bind() of a framebuffer replaced.
struct SavedTarget {
    quint64 context = 0; ///< 0 for a bind() that failed
    GLuint drawn = 0;
    GLuint read = 0;
    QVector4D viewport;

    friend bool operator==(const SavedTarget& a, const SavedTarget& b) {
        return a.context == b.context && a.drawn == b.drawn && a.read == b.read && a.viewport == b.viewport;
    }
};

struct Framebuffer::Data {
    /// The GL framebuffer in one context, and what was last set in it.
    struct ContextFramebuffer {
        GLName name;
        int revision = -1;
    };

    Options options;
    int samples = 0;
    std::shared_ptr<ShareGroup> group;
    std::vector<GLName> colors; // textures; renderbuffers if multisampled
    GLName depth;               // a renderbuffer
    GLNameTable<ContextFramebuffer> framebuffers;
    std::vector<GLenum> drawn; // the attachment of each output, or GL_NONE
    int revision = 0;          // incremented with every change of `drawn` or the label
    SavedStack<SavedTarget> bindings;
    ObjectRecord record{"Framebuffer", GL_FRAMEBUFFER};

    /// Makes the colours and the depths. Returns: whether OpenGL gave names for them.
    bool makeStorage(const ContextGL& gl);
    /// Returns: the framebuffer in the current context `gl`, which is made if need be; 0 when the context
    /// does not know its colours, and when OpenGL cannot make it.
    GLuint nameIn(const ContextGL& gl);
    GLuint nameInCurrentContext();
    bool hasColor(int color) const { return color >= 0 && color < options.colors.size(); }
    const ColorFormat& format(int color) const { return ColorFormat::of(options.colors[color]); }

    /// Clears one colour; one of integers to 0.
    /// Requires: the framebuffer is bound for drawing.
    void clearBound(int color, const QVector4D& value) const;
    /// Copies one colour into one of `target`, or all depths. The sizes are the same.
    /// Requires: this framebuffer is bound for reading, `target` for drawing, and the scissor test is off.
    void copyColorInto(int color, const Data& target, int targetColor) const;
    void copyDepths() const;

private:
    /// Has draws and copies write one colour, as output 0.
    static void drawOnly(int color);
    /// Has them write what setDrawnColors() says.
    void drawAsSet() const;
    GLName makeColor(const ContextGL& gl, GLenum format) const;
    GLName makeRenderbuffer(const ContextGL& gl, GLenum format) const;
    GLuint make(const ContextGL& gl);
};

/// Gives VelGL access to the private part of a framebuffer.
struct FramebufferAccess {
    using Data = Framebuffer::Data;
    static Data& data(const Framebuffer& framebuffer) { return *framebuffer._data; }
};

/// Returns: why a framebuffer has no name in the current context, for people.
QString unknownFramebufferError();

} // namespace Atelier::Vel

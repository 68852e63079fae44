#pragma once

#include <functional>
#include <memory>

#include <QtCore/QObject>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// One OpenGL texture. The first bind makes the GL texture; it has no image then. Its owner fills it while it
/// is bound, through glEntryPoints() or OpenGL itself.
///
/// A texture can be used in all contexts that share with the one in which it was made. One with a refill
/// function, see setRefill(), works in any context: each group of sharing contexts gets a GL texture of its
/// own. For other textures bind() fails in another group, with one warning; when no context of theirs is
/// left, the next bind makes a GL texture without an image, which its owner can fill again.
///
/// Threads: the destructor may run on any thread, with or without a context; all other functions are called
/// on the thread of the current context.
class VELGL_EXPORT Texture : public QObject, public Bindable {
    Q_OBJECT
public:
    /// Describes a texture; makes no OpenGL call and allocates no image. `target` is a GL texture target such
    /// as GL_TEXTURE_2D, `internalFormat` a GL internal format. Width and height are in texels; `depth` is 0
    /// for a two-dimensional texture. `parent` may be null; else it deletes the texture.
    Texture(unsigned int target, int internalFormat, int width, int height, int depth, QObject* parent);
    /// Deletes the GL texture at once if a context of its group is current, and otherwise with the next use
    /// of VelGL in such a context.
    ~Texture() override;
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    /// Makes a read-only texture of one texel, GL_TEXTURE_2D, GL_RGBA8, with nearest filters. Its label is
    /// the colour as "#AARRGGBB". Needs no context: the first bind in each group of contexts fills it.
    static std::unique_ptr<Texture> ofColor(const QColor& color);

    /// Fills the bound texture `texture` through glEntryPoints() or OpenGL itself, with the size and the
    /// format that it has. Returns: whether the texture has its content now.
    using Refill = std::function<bool(Texture& texture)>;

    /// Sets the function that fills the texture in each group of contexts in which it has no GL texture yet:
    /// the next bind there makes one and calls the function. An empty function for none. When the function
    /// returns false, and when OpenGL has no memory for the image, the texture is white there, after one
    /// warning. The unpack settings of the client, and what was bound to the active texture unit, are
    /// restored afterwards; other state, and the current context, are the function's to restore. What it
    /// throws passes through bind(), with nothing bound. Draws that found the texture unusable try it again.
    void setRefill(Refill refill);

    /// The values that the constructor was given. They describe what the owner stores; OpenGL is not asked.
    unsigned int target() const;
    int internalFormat() const;
    int width() const;
    int height() const;
    int depth() const;

    /// Declares the content final, for good. Without a refill function, a read-only texture whose contexts
    /// are gone is not made again, because nothing would fill it. For the same reason one that has no GL
    /// texture yet is not made before setRefill() is called: a loader can return a texture whose content
    /// comes later, and it is drawn white until then, without a warning.
    void setReadOnly();
    /// Returns: whether setReadOnly() was called.
    bool isReadOnly() const;

    /// Binds the texture to its target on the texture unit that is active.
    /// Returns: false, besides the cases of Bindable::bind(), when the target is unknown (buffer and
    /// multisample textures are), and when the texture is read-only, has no GL texture and no refill
    /// function.
    bool bind() override;
    /// Puts back the binding of the unit that was active at the matching bind(). The active unit stays.
    void unbind() override;

    /// Returns: the GL name; 0 when there is none that the current context knows.
    unsigned int name() const;
    /// Sets the label under which messages of the driver and warnings name this texture. OpenGL gets the
    /// first 255 bytes of it in UTF-8. Needs no context: a GL texture that is made later gets the label then.
    void setLabel(const QString& label);
    /// Returns: the label; null before the first setLabel().
    QString label() const;
    /// Asks OpenGL whether level 0 has an image. The binding is unchanged afterwards.
    /// Returns: false when it has none, for example because there was no memory for it; also when the target
    /// is not GL_TEXTURE_2D and when the current context does not know the texture.
    bool hasContent() const;
    /// Reads mipmap level `level` back from OpenGL. Bindings and pixel store settings are unchanged
    /// afterwards.
    /// Returns: the image in Format_RGBA8888, the texture's first row first; a null image when there is no
    /// such level, when the target is not GL_TEXTURE_2D, and when the current context does not know the
    /// texture.
    /// Cost: waits until the GPU has finished with the texture, then copies the level. For tests and tools.
    QImage readBack(int level = 0) const;

private:
    friend struct TextureAccess;

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

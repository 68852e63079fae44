#pragma once

#include <memory>

#include <QtCore/QObject>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// One OpenGL texture. Its GL name is made on first bind; its owner fills it through the GL entry points.
class VELGL_EXPORT Texture : public QObject, public Bindable {
    Q_OBJECT
public:
    /// `target` is a GL texture target, `internalFormat` a GL internal format; width and height are in texels
    /// and `depth` is 0 for a two-dimensional texture.
    Texture(unsigned int target, int internalFormat, int width, int height, int depth, QObject* parent);
    ~Texture() override;
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    /// A texture of one texel of that colour. It fills itself on first bind, in every context anew.
    static std::unique_ptr<Texture> ofColor(const QColor& color);

    unsigned int target() const;
    int internalFormat() const;
    int width() const;
    int height() const;
    int depth() const;

    /// Marks the content as final.
    void setReadOnly();
    bool isReadOnly() const;

    bool bind() override;
    void unbind() override;

    /// The GL name; 0 while there is none that the current context knows.
    unsigned int name() const;
    /// The label under which debug messages name this object.
    void setLabel(const QString& label);
    QString label() const;
    /// Whether the GL holds an image for this two-dimensional texture: false where there was no memory for
    /// it, and without a context.
    bool hasContent() const;
    /// Level `level` as the GL has it, 8 bits per channel RGBA, the texture's first row first; null without a
    /// context.
    QImage readBack(int level = 0) const;

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

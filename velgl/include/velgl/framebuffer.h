#pragma once

#include <memory>

#include <QtCore/QPoint>
#include <QtCore/QRect>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QColor>
#include <QtGui/QImage>
#include <QtGui/QVector4D>

#include <velgl/bindable.h>

namespace Atelier::Vel {

class Program;

/// A picture off screen: colours and depths that are drawn into and read back, with or without multisampling.
///
/// Pixels are counted from the upper left in all calls that read, as in a QImage. OpenGL itself counts rows
/// from the lower edge: what is drawn to the top of the viewport is the first row here.
///
/// A framebuffer can be used in all contexts that share with the one in which it was made; elsewhere, and
/// when those contexts are gone, its functions fail. OpenGL does not share framebuffers, so each context gets
/// a GL framebuffer of its own, with the first use there; its colours and depths are shared.
///
/// No call changes the client's state, except bind(). Errors are texts for people, and are written only on
/// failure.
/// Threads: the destructor may run on any thread; all other functions are called on the thread of the current
/// context.
class VELGL_EXPORT Framebuffer : public Bindable {
public:
    /// What a colour stores for each pixel. RGBA8 stores numbers from 0 to 1 with 8 bits; F are floats, I
    /// signed and UI unsigned integers, of the given number of bits.
    enum class Color { RGBA8, R16F, RGBA16F, R32F, RGBA32F, R32I, RGBA32I, R32UI, RGBA32UI };
    enum class Depth { None, Float32 };

    struct Options {
        QSize size; ///< in pixels
        /// Samples for each pixel; 0 for none. The driver's maximum if that is less; see samples().
        int samples = 0;
        QVector<Color> colors = {Color::RGBA8}; ///< at most 8; a fragment shader's output i writes colour i
        Depth depth = Depth::Float32;
    };

    /// A colour of another framebuffer that a program reads, see paint().
    struct Input {
        const Framebuffer* framebuffer = nullptr;
        int color = 0;
    };

    /// Makes a framebuffer in the current context. Its content is undefined until clear().
    /// Returns: null when there is no context, when the options are not possible there, and when OpenGL has
    /// no memory for it. `error` then names the cause; else it is unchanged.
    static std::unique_ptr<Framebuffer> create(const Options& options, QString& error);
    /// Deletes the GL objects at once if a context that knows them is current, and otherwise with the next
    /// use of VelGL in such a context.
    ~Framebuffer() override;
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// Returns: the options that it was made with.
    const Options& options() const;
    QSize size() const;
    /// Returns: the samples of each pixel that the driver was asked for; 0 without multisampling. A driver
    /// may use more.
    int samples() const;
    /// Sets the label under which messages of the driver name this object. OpenGL gets the first 255 bytes of
    /// it in UTF-8. Each context gets it with its next use there.
    void setLabel(const QString& label);

    /// Makes it the target of draws and reads, and sets the first viewport to all of it.
    /// Returns: false when the current context does not know it; nothing changes then.
    bool bind() override;
    /// Puts back the framebuffers and the viewport that the matching bind() replaced.
    void unbind() override;

    /// Sets the colours that draws write, for all contexts; all of them at first. What a fragment shader
    /// writes to output i goes to colour i if `colors` contains i, and is dropped otherwise. Numbers of
    /// colours that do not exist have no effect. clear() and the other calls are not affected.
    void setDrawnColors(const QVector<int>& colors);

    /// Sets all colours to `color`, integers to 0, and all depths to 1, the farthest.
    /// Returns: false when the current context does not know the framebuffer.
    bool clear(const QColor& color = Qt::transparent);
    /// Sets one colour to a value; a colour with one channel takes x.
    /// Returns: false when there is no such colour, when it holds integers, and when the current context does
    /// not know the framebuffer.
    bool clearColor(int color, const QVector4D& value);

    /// Copies all colours into `target`, and the depths if both have them. The samples of a pixel are
    /// averaged; of integers and depths, OpenGL chooses one.
    /// Requires: `target` has the same size and the same colours, and no multisampling.
    /// Returns: false, and the cause in `error`, when it cannot.
    bool resolveInto(Framebuffer& target, QString& error) const;

    /// Draws one triangle that covers all pixels, with `program` and without blending, culling and depth
    /// test. The samplers of `inputs` are texture units 0, 1 and so on: give their numbers to
    /// Program::setUniform(), or declare the samplers with `layout(binding = ...)`. Inputs have no
    /// multisampling; see resolveInto(). The vertex shader is coveringVertexShader() or one like it.
    /// Returns: false, and the cause in `error`, when it cannot.
    bool paint(const Program& program, const QVector<Input>& inputs, QString& error);
    /// Returns: the source of a vertex shader, which sets gl_Position only.
    static QByteArray coveringVertexShader();

    /// Reads a colour that does not hold integers, in the rectangle `area` or, if that is null, in all
    /// pixels. Values are cut to 0 to 1. Missing channels are 0, alpha is 1.
    /// Returns: an image in Format_RGBA8888; a null image, and the cause in `error`, when that is impossible.
    /// Cost: waits until the GPU has drawn. This and the other reading functions resolve a multisampled
    /// framebuffer into one that is made for this call; to read in each frame, resolve into one that you
    /// keep.
    QImage toImage(QString& error, int color = 0, const QRect& area = {}) const;
    /// The same, into a part of an existing image.
    /// Requires: `image` is of Format_RGBA8888 and contains the rectangle of size() at `topLeft`.
    /// Returns: false, and the cause in `error`, when it cannot.
    bool readInto(QImage& image, QPoint topLeft, QString& error, int color = 0) const;
    /// Reads a colour that does not hold integers, without cutting its values. `area` is that of toImage().
    /// Returns: the values row by row, one or four for each pixel, as the colour has channels. Empty, and the
    /// cause in `error`, when that is impossible.
    QVector<float> readFloats(QString& error, int color = 0, const QRect& area = {}) const;
    /// The same for a colour of signed integers.
    QVector<qint32> readIntegers(QString& error, int color = 0, const QRect& area = {}) const;
    /// The same for a colour of unsigned integers.
    QVector<quint32> readUnsignedIntegers(QString& error, int color = 0, const QRect& area = {}) const;
    /// Reads depths, from 0 at the near plane to 1 at the far plane.
    /// Returns: one value for each pixel of `area`, or of all if that is null. Empty, and the cause in
    /// `error`, when that is impossible.
    QVector<float> readDepths(QString& error, const QRect& area = {}) const;

    /// Returns: the GL name of the framebuffer in the current context; 0 when that does not know it.
    unsigned int name() const;
    /// Returns: the GL name of the two-dimensional texture that holds a colour, with nearest filters; 0 when
    /// there is no such colour, when it is multisampled, and when the current context does not know it.
    unsigned int colorTexture(int color) const;

private:
    friend struct FramebufferAccess;

    Framebuffer();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

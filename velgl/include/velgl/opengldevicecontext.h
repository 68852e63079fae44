#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class BufferObject;
class VertexArrayObject;

/// An OpenGL context, as VelGL knows it. There is one object for each native context, whoever made that: Qt,
/// GLFW, SDL, EGL or createHeadless(). VelGL needs desktop OpenGL 4.3 or later, core or compatibility
/// profile.
///
/// The factories and makeCurrent() are virtual: a client or a test can derive a class and put an object of it
/// in place with setCurrent().
///
/// Threads: an OpenGL context is current on one thread at a time, and its functions are called there. Threads
/// with contexts of their own may use VelGL at the same time, also with contexts that share, as long as no
/// two use the same object; current(), setCurrent(), forget() and createHeadless() may be called on any
/// thread.
class VELGL_EXPORT OpenGLDeviceContext {
public:
    /// How to make a context without a window.
    struct HeadlessOptions {
        QString device; ///< part of an EGL device's name or its DRM file; empty takes the first that works
        bool debug = false; ///< asks the driver for a debug context, which reports within the call at fault
        /// Shares buffers, textures and programs with this context, on whose EGL display the new one is made;
        /// null for none. `device` is ignored then.
        QSharedPointer<OpenGLDeviceContext> shareWith;
        bool directStateAccess = true; ///< false: VelGL works as if the driver did not have it
        bool multiBind = true;         ///< false: VelGL works as if the driver did not have it
        bool drawParameters = true;    ///< false: VelGL works as if the driver did not have them
    };

    /// A headless context is released and destroyed, with its GL objects unless another context shares them.
    /// A context that somebody else made stays.
    virtual ~OpenGLDeviceContext();
    OpenGLDeviceContext(const OpenGLDeviceContext&) = delete;
    OpenGLDeviceContext& operator=(const OpenGLDeviceContext&) = delete;

    /// Finds the context of the calling thread: the object given to setCurrent() if there is one, else the
    /// object of the native context that is current. The first call for a native context sends the messages
    /// of the driver to the logging category "velgl" if they have no other receiver. Where neither Qt nor
    /// VelGL made the context, that call also makes a small labelled vertex array, by which VelGL recognises
    /// the context, and a buffer, by which it recognises those that share with it.
    /// Returns: the same object for the same native context. Null when none is current, and when it is older
    /// than OpenGL 4.3 or is OpenGL ES; one warning then says what was found and what is needed.
    /// Cost: a search among the known contexts; for one that neither Qt nor VelGL made two queries of the
    /// driver, see forget().
    static QSharedPointer<OpenGLDeviceContext> current();
    /// Makes current() return `context` on the calling thread, whatever native context is current there; null
    /// ends that. OpenGL is not called. The thread keeps a reference to the object until then.
    static void setCurrent(QSharedPointer<OpenGLDeviceContext> context);

    /// Tells VelGL that the current context of the calling thread is about to be destroyed: VelGL deletes the
    /// names that are queued for it and knows it no more. This is for contexts of GLFW, SDL, EGL or GLX;
    /// those of Qt and of createHeadless() are known to end.
    ///
    /// Without this call, a later context with the same handle is recognised by a small labelled object that
    /// VelGL puts into each such context, at two queries of the driver for each operation and each
    /// GPUModel::draw(). The first call, also one without a current context, is a promise to call this for
    /// each such context: from then on the driver is not asked.
    static void forget();

    /// Makes a core-profile context without a window, through EGL: on the devices whose description contains
    /// `options.device`, or on any device and Mesa's surfaceless platform if that is empty; the first that
    /// works. The new context has the latest version that the driver offers. What was current on the thread
    /// stays current.
    /// Returns: null when none works; `error` then lists what was tried and why it failed, else it is
    /// unchanged. A build with VELGL_HEADLESS=OFF always returns null, with the error "VelGL was built
    /// without headless contexts". Cost: opens EGL devices until one works, so make contexts outside of
    /// frames.
    static QSharedPointer<OpenGLDeviceContext> createHeadless(const HeadlessOptions& options, QString& error);

    /// Makes a headless context current on the calling thread and deletes the GL names that were queued for
    /// it.
    /// Returns: false when EGL refuses. An object of another kind is not made current: the result says
    /// whether its native context is current, or, for an object without one, whether current() returns it.
    virtual bool makeCurrent();
    /// Releases a headless context if it is current on the calling thread. Does nothing for other kinds.
    virtual void doneCurrent();

    /// Makes a buffer; its GL buffer is made on first use.
    virtual QSharedPointer<BufferObject> createBufferObject();
    /// Makes a vertex array; its GL objects are made on first use.
    virtual QSharedPointer<VertexArrayObject> createVertexArrayObject();

    /// Returns: the OpenGL version times ten, 45 for OpenGL 4.5; 0 for an object without a native context and
    /// when the native context is known to be gone.
    int version() const;
    /// Returns: vendor, renderer and version in the words of the driver, for people; empty where version() is
    /// 0.
    QString description() const;

protected:
    /// Makes an object without a native context, for derived classes.
    OpenGLDeviceContext();

private:
    friend struct ContextAccess;
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

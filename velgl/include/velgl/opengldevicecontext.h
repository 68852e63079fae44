#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class BufferObject;
class VertexArrayObject;

/// The OpenGL context that the calling thread draws with. The factories are virtual: a client, or a test, can
/// derive and stand in its own objects with setCurrent().
class VELGL_EXPORT OpenGLDeviceContext {
public:
    /// How to make a context without a window.
    struct HeadlessOptions {
        QString device; ///< part of an EGL device's name or its DRM file; empty takes the first that works
        bool debug = false; ///< ask the driver for a debug context
        /// Shares buffers, textures and programs with this context, on whose device the new one is made.
        QSharedPointer<OpenGLDeviceContext> shareWith;
        bool directStateAccess = true; ///< false: work as with drivers that do not have it
        bool drawParameters = true;    ///< false: work as with drivers that do not have them
    };

    virtual ~OpenGLDeviceContext();
    OpenGLDeviceContext(const OpenGLDeviceContext&) = delete;
    OpenGLDeviceContext& operator=(const OpenGLDeviceContext&) = delete;

    /// The context of the calling thread: the object given to setCurrent(), else one for whatever native
    /// context is current (made by Qt, GLFW, SDL, EGL alike), always the same object for the same native
    /// context. Null when there is none, or when it is older than OpenGL 4.3: a warning then names both
    /// versions, once.
    static QSharedPointer<OpenGLDeviceContext> current();
    /// Puts `context` in place for the calling thread; null goes back to what is natively current.
    static void setCurrent(QSharedPointer<OpenGLDeviceContext> context);

    /// Makes a core-profile context through EGL: the named device, else the first device that works, else the
    /// surfaceless platform. It is not made current.
    /// Returns: null, and what was tried in `error`, when none works.
    static QSharedPointer<OpenGLDeviceContext> createHeadless(const HeadlessOptions& options, QString& error);

    /// Makes a headless context current on the calling thread. Contexts found by current() belong to others:
    /// for them this returns whether they are current.
    virtual bool makeCurrent();
    /// Releases a headless context from the calling thread.
    virtual void doneCurrent();

    virtual QSharedPointer<BufferObject> createBufferObject();
    virtual QSharedPointer<VertexArrayObject> createVertexArrayObject();

    /// Version times ten, 45 for OpenGL 4.5; 0 for an object that stands in for a context.
    int version() const;
    /// Vendor, renderer and version as the driver words them, for people.
    QString description() const;

protected:
    OpenGLDeviceContext();

private:
    friend struct ContextAccess;
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

#pragma once

#include <QtGui/QImage>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLWindow>
#include <QtWidgets/QOpenGLWidget>

#include <gtest/gtest.h>

#include "support/eventloop.h"
#include "windows/liveobjects.h"
#include "windows/modelpainter.h"

namespace Atelier::Vel::Testing {

/// How a canvas deletes its program when its context ends. Qt reports that to it and to VelGL in the order in
/// which they connected to the signal.
enum class Cleanup {
    BeforeVelGL,   ///< VelGL still knows the context
    AfterVelGL,    ///< VelGL has forgotten the context
    UseAfterVelGL, ///< likewise, but the program is bound before it is deleted
};

/// A QOpenGLWidget or QOpenGLWindow that shows a model. It makes a program in each context that it gets, and
/// deletes the program when the context ends.
template<typename Surface>
class Canvas : public Surface {
public:
    using Surface::Surface;
    ~Canvas() override {
        QObject::disconnect(_endOfContext);
        if (this->context() != nullptr)
            within([this] { _painter.end(); });
    }

    /// Requires: no frame was drawn.
    void setCleanup(Cleanup cleanup) { _cleanup = cleanup; }
    /// Sets the model that the next frames show; it is not owned, and may be null.
    void showModel(GPUModel* model) { _painter.model = model; }
    /// The program of the current context of this canvas.
    Program* program() const { return _painter.program(); }

    /// The number of contexts that this canvas has had.
    int contextCount() const { return _contexts; }
    int frameCount() const { return _frames; }

    /// Waits until the screen shows a new frame. A missing frame fails the test.
    void waitForFrame() {
        const int before = _frames;
        this->update();
        EXPECT_TRUE(waitUntil([&] { return _frames > before; })) << "no frame was drawn";
    }
    /// Waits for a new frame and returns its pixels.
    QImage picture() {
        _picture = {};
        _takesPicture = true;
        waitForFrame();
        _takesPicture = false;
        return _picture;
    }
    LiveObjects liveObjects() {
        return within([] { return LiveObjects::count(); });
    }

    /// Returns the result of `work` with the context of this canvas current. Requires: a frame was drawn.
    template<typename Work>
    auto within(const Work& work) {
        this->makeCurrent();
        struct Release {
            ~Release() { canvas->doneCurrent(); }
            Canvas* canvas;
        } const release{this};
        return work();
    }

protected:
    void initializeGL() override {
        ++_contexts;
        if (_cleanup == Cleanup::BeforeVelGL)
            watchContext();
        _painter.begin();
        if (_cleanup != Cleanup::BeforeVelGL)
            watchContext();
    }
    void paintGL() override {
        _painter.paint();
        if (_takesPicture)
            _picture = ModelPainter::pixels(this->size());
        ++_frames;
    }

private:
    void watchContext() {
        _endOfContext = QObject::connect(this->context(), &QOpenGLContext::aboutToBeDestroyed, [this] {
            within([this] {
                if (_cleanup == Cleanup::UseAfterVelGL)
                    _painter.bindProgram();
                _painter.end();
            });
        });
    }

    ModelPainter _painter;
    Cleanup _cleanup = Cleanup::BeforeVelGL;
    QMetaObject::Connection _endOfContext;
    int _contexts = 0;
    int _frames = 0;
    bool _takesPicture = false;
    QImage _picture;
};

using WidgetCanvas = Canvas<QOpenGLWidget>;
using WindowCanvas = Canvas<QOpenGLWindow>;

} // namespace Atelier::Vel::Testing

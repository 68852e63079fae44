#pragma once

#include <memory>

#include <QtGui/QImage>

namespace Atelier::Vel {
class GPUModel;
class Program;
} // namespace Atelier::Vel

namespace Atelier::Vel::Testing {

/// Draws a model over black, with a program of its own for each context. Each function requires that the
/// context is current.
class ModelPainter {
public:
    ModelPainter();
    ~ModelPainter();

    /// Makes the program.
    void begin();
    /// Draws the model if there is one. A GL error fails the test.
    void paint();
    /// The pixels of a frame from the bottom left corner on, top row first.
    static QImage pixels(const QSize& size);
    /// Binds the program and restores the one before.
    void bindProgram();
    /// Deletes the program.
    void end();

    Program* program() const { return _program.get(); }
    GPUModel* model = nullptr;

private:
    std::unique_ptr<Program> _program;
};

} // namespace Atelier::Vel::Testing

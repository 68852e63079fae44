#pragma once

#include <memory>
#include <vector>

#include <QtWidgets/QOpenGLWidget>

#include <velgl/gpumodel.h>
#include <velgl/program.h>

/// Shows models side by side. They are loaded by the next frame, in which the context is current. Those that
/// cannot be loaded are reported, and their places stay empty until reload().
///
/// Requires Qt::AA_ShareOpenGLContexts. A widget that is docked elsewhere gets a new context. Since that
/// shares with the old one, the models and the program stay as they are.
class Canvas : public QOpenGLWidget {
public:
    using QOpenGLWidget::QOpenGLWidget;
    ~Canvas() override;

    void add(const QString& path);
    /// Reads the files of all models again, and their textures.
    void reload();

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    struct Shown {
        QString path;
        std::unique_ptr<Atelier::Vel::GPUModel> model;
        bool needsLoad = true;
    };

    static void load(Shown& shown);
    void draw(Atelier::Vel::GPUModel& model, const QRect& viewport);

    std::vector<Shown> _shown;
    std::unique_ptr<Atelier::Vel::Program> _program;
};

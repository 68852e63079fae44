#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "loadflags.h"
#include "modelpoints.h"
#include "modelsession.h"
#include "pictureoutput.h"
#include "renderer.h"
#include "renderoptions.h"
#include "texturefiles.h"

namespace Atelier::Vel::Tool {

namespace {

QVector<double> azimuths(const RenderOptions& options) {
    const int count = std::max(1, options.turntable);
    QVector<double> result;
    for (int frame = 0; frame < count; ++frame)
        result.append(options.camera.azimuth + 360.0 * frame / count);
    return result;
}

ExitCode fail(ExitCode exitCode, const QString& name, const QString& cause) {
    reportError(QStringLiteral("%1: %2").arg(name, cause));
    return exitCode;
}

ExitCode renderFrame(Renderer& renderer, GPUModel& model, const Scene& scene, const QString& file,
                     const QString& output) {
    QString error;
    const QImage picture = renderer.render(model, scene, error);
    if (picture.isNull())
        return fail(ExitCode::NoOpenGL, file, QStringLiteral("OpenGL cannot draw it: %1").arg(error));
    if (!renderer.hasDrawn())
        return fail(ExitCode::CannotLoad, file,
                    QStringLiteral("The picture would be empty: nothing of the model is in view"));
    error = writePicture(picture, output);
    if (!error.isNull())
        return fail(ExitCode::CannotWrite, output,
                    QStringLiteral("The picture cannot be written: %1").arg(error));
    qInfo("Wrote %s", qPrintable(output));
    return ExitCode::Done;
}

ExitCode renderAll(const RenderOptions& options, GPUModel& model) {
    QString error;
    const std::unique_ptr<Renderer> renderer = Renderer::create(error);
    if (!renderer)
        return fail(ExitCode::NoOpenGL, options.file, QStringLiteral("OpenGL cannot draw it: %1").arg(error));
    const QVector<Camera> cameras = framingCameras(model.bounds(), pointsInBounds(model), options.camera,
                                                   azimuths(options), options.resolution);
    for (int frame = 0; frame < cameras.size(); ++frame) {
        const Scene scene{cameras[frame], options.resolution, options.background, options.wireframe};
        const QString output =
            options.turntable > 0 ? framePath(options.output, frame, options.turntable) : options.output;
        const ExitCode exitCode = renderFrame(*renderer, model, scene, options.file, output);
        if (exitCode != ExitCode::Done)
            return exitCode;
    }
    return ExitCode::Done;
}

} // namespace

ExitCode runRender(const QStringList& arguments) {
    CommandParser parser(QStringLiteral("render"), QStringLiteral("Draws a picture of a model."));
    addRenderOptions(parser.options());
    addLoadOptions(parser.options());
    parser.options().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The OBJ file."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    QString error;
    const std::optional<RenderOptions> options = readRenderOptions(parser.options(), error);
    if (!options)
        return parser.wrongUsage(error);

    ModelSession session(readLoadOptions(parser.options()));
    if (!session.open())
        return ExitCode::NoOpenGL;
    const LoadedModel loaded = session.load(options->file);
    if (!loaded.model)
        return ExitCode::CannotLoad;
    installTextureLoader(loaded.files);
    if (loaded.report.triangles == 0 || !loaded.model->bounds().isValid)
        return fail(ExitCode::CannotLoad, options->file,
                    QStringLiteral("There is nothing to draw: the model has no triangles"));
    return renderAll(*options, *loaded.model);
}

} // namespace Atelier::Vel::Tool

#include <velgl/instancedatacollection.h>
#include <velmodel/textureloader.h>

#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "loadflags.h"
#include "modelpoints.h"
#include "modelsession.h"
#include "pictureoutput.h"
#include "renderer.h"
#include "renderoptions.h"

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

ExitCode write(const QImage& picture, const QString& output) {
    const QString error = writePicture(picture, output);
    if (!error.isNull())
        return fail(ExitCode::CannotWrite, output,
                    QStringLiteral("The picture cannot be written: %1").arg(error));
    qInfo("Wrote %s", qPrintable(output));
    return ExitCode::Done;
}

// All materials of a load have one plan.
QString materialPlan(const GPUModel& model) {
    return model.drawableCount() != 0 && model.materials(0) != nullptr ? model.materials(0)->name()
                                                                       : QString();
}

/// Writes the single picture or the frames of a turntable. Frames that show nothing of the model are written
/// only once another frame shows something, so that there is no file if all of them are empty.
class FrameWriter {
public:
    explicit FrameWriter(const RenderOptions& options) : _options(options) {}

    ExitCode add(const QImage& picture, bool showsModel) {
        ++_added;
        if (!showsModel && _written == 0) {
            _empty = picture; // they all look the same
            return ExitCode::Done;
        }
        while (_written < _added - 1)
            if (const ExitCode exitCode = write(_empty, nextOutput()); exitCode != ExitCode::Done)
                return exitCode;
        _empty = QImage();
        return write(picture, nextOutput());
    }

    ExitCode finish() const {
        if (_written > 0)
            return ExitCode::Done;
        const auto* const what = _options.turntable > 0 ? "Every picture" : "The picture";
        return fail(ExitCode::CannotLoad, _options.file,
                    QStringLiteral("%1 would be empty: nothing of the model is in view").arg(what));
    }

private:
    QString nextOutput() {
        const int frame = _written++;
        return _options.turntable > 0 ? framePath(_options.output, frame, _options.turntable)
                                      : _options.output;
    }

    const RenderOptions& _options;
    int _added = 0;
    int _written = 0;
    QImage _empty;
};

ExitCode renderAll(const RenderOptions& options, GPUModel& model, const ModelFiles& files) {
    QString error;
    const std::unique_ptr<Renderer> renderer = Renderer::create(error, materialPlan(model));
    if (!renderer)
        return fail(ExitCode::NoOpenGL, options.file, QStringLiteral("OpenGL cannot draw it: %1").arg(error));
    FrameWriter writer(options);
    const SurfacePasses passes = surfacePasses(model, files);
    for (const Camera& camera : framingCameras(model.bounds(), pointsInBounds(model), options.camera,
                                               azimuths(options), options.resolution)) {
        const Scene scene{camera, options.resolution, options.background, options.wireframe, passes};
        const QImage picture = renderer->render(model, scene, error);
        if (picture.isNull())
            return fail(ExitCode::NoOpenGL, options.file,
                        QStringLiteral("OpenGL cannot draw it: %1").arg(error));
        const ExitCode exitCode = writer.add(picture, renderer->hasDrawn());
        if (exitCode != ExitCode::Done)
            return exitCode;
    }
    return writer.finish();
}

} // namespace

ExitCode runRender(const QStringList& arguments) {
    CommandParser parser(QStringLiteral("render"), QStringLiteral("Draws a picture of a model."));
    addRenderOptions(parser.options());
    addLoadFlags(parser.options());
    parser.options().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The OBJ file."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    QString error;
    const std::optional<RenderOptions> options = readRenderOptions(parser.options(), error);
    if (!options)
        return parser.wrongUsage(error);

    ModelSession session(readLoadFlags(parser.options()));
    if (!session.open())
        return ExitCode::NoOpenGL;
    const LoadedModel loaded = session.load(options->file);
    if (!loaded.model)
        return ExitCode::CannotLoad;
    loaded.model->setTextureLoader(makeTextureLoader(loaded.files));
    if (!isDrawable(options->file, loaded))
        return ExitCode::CannotLoad;
    if (!loaded.model->bounds().isValid)
        return fail(ExitCode::CannotLoad, options->file,
                    QStringLiteral("There is nothing to draw: no position is finite"));
    return renderAll(*options, *loaded.model, loaded.files);
}

} // namespace Atelier::Vel::Tool

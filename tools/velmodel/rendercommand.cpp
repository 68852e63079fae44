#include <optional>

#include <velgl/instancedatacollection.h>
#include <velmodel/textureloader.h>

#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "darkpictures.h"
#include "loadflags.h"
#include "modelpoints.h"
#include "modelsession.h"
#include "parts.h"
#include "pictureoutput.h"
#include "progressbar.h"
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

/// Draws the frames and gives advice if the model is nearly black in most of what they show.
class FramePainter {
public:
    FramePainter(const RenderOptions& options, GPUModel& model, Renderer& renderer)
        : _options(options),
          _model(model),
          _renderer(renderer),
          _bar(ProgressBar::after(ProgressBar::kPatienceMilliseconds, options.output)) {}

    /// Returns: null, and the cause in `error`, if there is not enough memory.
    QImage paint(const Scene& scene, QString& error) {
        const int frame = _painted++;
        const auto progress = [&](int done, int total) {
            const int frames = std::max(1, _options.turntable);
            const QString work = done < total ? QStringLiteral("drawing") : QStringLiteral("writing");
            _bar.show(work, qint64(frame) * total + done, qint64(frames) * total);
        };
        QImage picture = _renderer.render(_model, scene, error, progress);
        _brightness += _renderer.brightness();
        if (!_scene || (_renderer.brightness().isDark() && !_hasDarkScene))
            _scene = scene;
        _hasDarkScene = _hasDarkScene || _renderer.brightness().isDark();
        return picture;
    }

    // Requires: a picture was painted.
    void reportDarkness() {
        const QString advice = darknessAdvice(_renderer, _model, *_scene, _brightness);
        if (!advice.isNull())
            reportWarning(QStringLiteral("%1: %2").arg(_options.file, advice));
    }

private:
    const RenderOptions& _options;
    GPUModel& _model;
    Renderer& _renderer;
    ProgressBar _bar;
    int _painted = 0;
    Brightness _brightness;
    std::optional<Scene> _scene; // the first that is dark, or else the first
    bool _hasDarkScene = false;
};

ExitCode cannotDraw(const RenderOptions& options, const QString& error) {
    return fail(ExitCode::NoOpenGL, options.file, QStringLiteral("OpenGL cannot draw it: %1").arg(error));
}

Scene sceneOf(const RenderOptions& options, const SurfacePasses& passes) {
    Scene scene;
    scene.size = options.resolution;
    scene.background = options.background;
    scene.wireframe = options.wireframe;
    scene.colours = options.colours;
    scene.exposure = options.exposure;
    scene.ambientOcclusion = options.ambientOcclusion;
    scene.passes = passes;
    return scene;
}

ExitCode renderAll(const RenderOptions& options, GPUModel& model, const ModelFiles& files) {
    QString error;
    const std::unique_ptr<Renderer> renderer = Renderer::create(error, materialPlan(model));
    if (!renderer)
        return cannotDraw(options, error);
    const DrawFilter parts = partFilter(model, options.parts, error);
    const ShownPoints shown = shownPoints(model, parts);
    if (error.isNull() && !shown.bounds.isValid)
        error = QStringLiteral("There is nothing to draw: no position is finite");
    if (!error.isNull())
        return fail(ExitCode::CannotLoad, options.file, error);
    FrameWriter writer(options);
    FramePainter painter(options, model, *renderer);
    Scene scene = sceneOf(options, surfacePasses(model, files, parts));
    for (const Camera& camera :
         framingCameras(shown.bounds, shown.points, options.camera, azimuths(options), options.resolution)) {
        scene.camera = camera;
        const QImage picture = painter.paint(scene, error);
        if (picture.isNull())
            return cannotDraw(options, error);
        const ExitCode exitCode = writer.add(picture, renderer->hasDrawn());
        if (exitCode != ExitCode::Done)
            return exitCode;
    }
    painter.reportDarkness();
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

    LoadFlags flags = readLoadFlags(parser.options());
    flags.options.splitObjects = !options->parts.isEmpty();
    ModelSession session(flags);
    if (!session.open())
        return ExitCode::NoOpenGL;
    const LoadedModel loaded = session.load(options->file);
    if (!loaded.model)
        return ExitCode::CannotLoad;
    loaded.model->setTextureLoader(makeTextureLoader(loaded.files));
    if (!isDrawable(options->file, loaded))
        return ExitCode::CannotLoad;
    return renderAll(*options, *loaded.model, loaded.files);
}

} // namespace Atelier::Vel::Tool

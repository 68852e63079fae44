#include <velmodel/objloader.h>

#include <memory>
#include <utility>

#include <QtCore/QFileInfo>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texturetoken.h>
#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>
#include <velmodel/textureloader.h>

#include "drawdata/progressmeter.h"
#include "files/textinput.h"
#include "import/mtl/materials.h"
#include "import/objimport.h"
#include "import/observedload.h"
#include "import/references/filecause.h"
#include "upload/instanceplans.h"
#include "upload/modelupload.h"

namespace Atelier::Vel {

namespace {

// Nothing reads these two. They keep their positions among the static objects.
[[maybe_unused]] const QString planarMark(QStringLiteral("[PLANAR]"));
[[maybe_unused]] const TextureToken spareToken;

const struct MaterialPlanRegistrar {
    MaterialPlanRegistrar() { registerObjMaterialPlan(); }
} materialPlanRegistrar;

QString cancellation(const QString& path) {
    return QStringLiteral("Loading OBJ file '%1' was cancelled").arg(path);
}

QString withoutOpenGL(const QString& path) {
    return QStringLiteral("OBJ file '%1' needs a current context of OpenGL 4.3 or later").arg(path);
}

QString nothingToDraw(const QString& path) {
    return QStringLiteral("OBJ file '%1' has nothing that can be drawn").arg(path);
}

// A context without a version has no native context: it only records calls.
bool canUpload(const OpenGLDeviceContext* context) {
    constexpr int kMinVersion = 43;
    return context != nullptr && (context->version() == 0 || context->version() >= kMinVersion);
}

std::unique_ptr<GPUModel> newModel(const QString& path) {
    auto model = std::make_unique<GPUModel>();
    model->setLabel(path);
    return model;
}

ModelFiles filesOf(const QString& path, const LoadOptions& options) {
    return options.files == LoadOptions::Files::Anywhere ? ModelFiles() : ModelFiles(QFileInfo(path).path());
}

/// A text of a model, and the source of the other files of the model.
struct ModelText {
    QString path;
    std::unique_ptr<TextInput> text; ///< null if there is none
    std::shared_ptr<ModelSource> source;
    bool isFile = false; ///< of the system
};

// A report of a load that fails before it reads anything.
void reportFailure(LoadReport* report, const QString& path, LoadDiagnostic::Code code,
                   const QString& message) {
    if (report == nullptr)
        return;
    DiagnosticLog log;
    log.add(code, {path}, QString(), [&] { return message; });
    *report = LoadReport();
    log.copyTo(*report);
}

void reportUnreadable(LoadReport* report, const ModelText& model) {
    if (report == nullptr)
        return;
    QString cause =
        model.isFile ? causeOfUnreadable(model.path) : QStringLiteral("the source cannot read it");
    cause[0] = cause[0].toUpper();
    reportFailure(report, model.path, LoadDiagnostic::Code::UnreadableFile, cause);
}

// The OBJ file itself may lie anywhere.
ModelText openFile(const QString& path, const LoadOptions& options) {
    return {path, TextInput::open(*ModelFiles().source(), path), filesOf(path, options).source(), true};
}

ModelText openFrom(const std::shared_ptr<ModelSource>& source, const QString& name) {
    return {name, source ? TextInput::open(*source, name) : nullptr, source};
}

/// Reads a model and calls `finish` with it. On failure, `error` contains the reason. Fills `report`, unless
/// an exception is thrown.
template<typename Finish>
void importText(const ModelText& model, QString& error, const LoadProgress& progress, LoadReport* report,
                const LoadOptions& options, RecordObserver* observer, const Finish& finish) {
    if (!model.text) {
        error = loadFailure(model.path);
        reportUnreadable(report, model);
        return;
    }
    ObjImport import(*model.text, model.path, *model.source, options,
                     report == nullptr ? DiagnosticLog::Use::Ignored : DiagnosticLog::Use::Kept, observer);
    ProgressMeter meter(progress);
    try {
        if (import.readText(meter, error))
            finish(import, meter);
    } catch (const Cancelled&) {
        error = cancellation(model.path);
        import.reportFailure(LoadDiagnostic::Code::Cancelled, QStringLiteral("The load was cancelled"));
    }
    if (report != nullptr)
        *report = import.report();
}

DrawData readDrawData(const ModelText& text, QString& error, const LoadOptions& options,
                      const LoadProgress& progress, LoadReport* report, RecordObserver* observer = nullptr) {
    DrawData data;
    importText(text, error, progress, report, options, observer,
               [&](ObjImport& import, ProgressMeter& meter) {
                   data = import.hasMesh() ? import.prepare(meter) : DrawData();
               });
    return data;
}

/// Loads the model that `open` returns, which is called if there is a context for it.
template<typename Open>
std::unique_ptr<GPUModel> loadModel(const QString& path, QString& error, const LoadOptions& options,
                                    const LoadProgress& progress, LoadReport* report, const Open& open) {
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (!canUpload(context.data())) {
        error = withoutOpenGL(path);
        reportFailure(report, path, LoadDiagnostic::Code::NoOpenGL,
                      QStringLiteral("No context of OpenGL 4.3 or later is current"));
        return nullptr;
    }
    std::unique_ptr<GPUModel> model;
    importText(
        open(), error, progress, report, options, nullptr, [&](ObjImport& import, ProgressMeter& meter) {
            DrawData data = import.hasMesh() ? import.prepare(meter) : DrawData();
            auto loaded = newModel(path);
            if (!data.isEmpty() && uploadTo(*context, std::move(data), *loaded, {makeIdentityInstance()})) {
                model = std::move(loaded);
                return;
            }
            error = nothingToDraw(path);
            import.reportFailure(LoadDiagnostic::Code::NothingToDraw,
                                 QStringLiteral("Nothing of the file can be drawn"));
        });
    return model;
}

} // namespace

GPUModel* loadModelFromOBJFile(const QString& path, QString& error) {
    return loadModelFromOBJFile(path, error, LoadProgress(), nullptr);
}

GPUModel* loadModelFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                               LoadReport* report) {
    const LoadOptions options;
    std::unique_ptr<GPUModel> model;
    importText(openFile(path, options), error, progress, report, options, nullptr,
               [&](ObjImport& import, ProgressMeter& meter) {
                   auto loaded = newModel(path);
                   const UploadOptions uploadOptions{makeIdentityInstance()};
                   const QSharedPointer<OpenGLDeviceContext> context =
                       import.hasMesh() ? OpenGLDeviceContext::current() : nullptr;
                   if (!context.isNull())
                       uploadTo(*context, import.prepare(meter), *loaded, uploadOptions);
                   model = std::move(loaded);
               });
    return model.release();
}

std::unique_ptr<GPUModel> loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadOptions& options, const LoadProgress& progress,
                                               LoadReport* report) {
    return loadModel(path, error, options, progress, report, [&] { return openFile(path, options); });
}

std::unique_ptr<GPUModel> loadModelFromOBJ(const std::shared_ptr<ModelSource>& source, const QString& name,
                                           QString& error, const LoadOptions& options,
                                           const LoadProgress& progress, LoadReport* report) {
    std::unique_ptr<GPUModel> model =
        loadModel(name, error, options, progress, report, [&] { return openFrom(source, name); });
    if (model)
        model->setTextureLoader(makeTextureLoader(source));
    return model;
}

DrawData readDrawDataFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                                 LoadReport* report, const LoadOptions& options) {
    return readDrawData(openFile(path, options), error, options, progress, report);
}

DrawData readObservedDrawData(const QString& path, QString& error, const LoadProgress& progress,
                              LoadReport& report, const LoadOptions& options, RecordObserver& observer) {
    return readDrawData(openFile(path, options), error, options, progress, &report, &observer);
}

DrawData readDrawDataFromOBJ(const std::shared_ptr<ModelSource>& source, const QString& name, QString& error,
                             const LoadOptions& options, const LoadProgress& progress, LoadReport* report) {
    return readDrawData(openFrom(source, name), error, options, progress, report);
}

void registerExtendedMaterials() {
    registerExtendedMaterialPlan();
}

InstanceData makeIdentityInstance() {
    constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    InstanceData instance(QStringLiteral("InstanceInfo"));
    instance.set(QStringLiteral("ModelMatrix"), kIdentity, sizeof kIdentity);
    // Intentional, although it is not a member of the plan.
    instance.set(QStringLiteral("PreviousModelMatrix"), kIdentity, sizeof kIdentity);
    instance.set(QStringLiteral("ModelNormalMatrix"), kIdentity, sizeof kIdentity);
    return instance;
}

} // namespace Atelier::Vel

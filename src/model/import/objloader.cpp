#include <velmodel/objloader.h>

#include <memory>
#include <utility>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texturetoken.h>
#include <velmodel/modelfiles.h>

#include "drawdata/preparation.h"
#include "drawdata/progressmeter.h"
#include "files/textfile.h"
#include "import/diagnosticlog.h"
#include "import/meshfeed.h"
#include "import/mtl/materials.h"
#include "import/obj/objreader.h"
#include "memory/scratchblock.h"
#include "mesh/mesh.h"
#include "upload/modelupload.h"

namespace Atelier::Vel {

namespace {

// Nothing reads these two. They keep their positions among the static objects.
[[maybe_unused]] const QString planarMark(QStringLiteral("[PLANAR]"));
[[maybe_unused]] const TextureToken spareToken;

const struct MaterialPlanRegistrar {
    MaterialPlanRegistrar() { registerObjMaterialPlan(); }
} materialPlanRegistrar;

QString loadFailure(const QString& path) {
    return QStringLiteral("Failed to load OBJ file '%1'").arg(path);
}

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
    constexpr int kLeastVersion = 43;
    return context != nullptr && (context->version() == 0 || context->version() >= kLeastVersion);
}

std::unique_ptr<GPUModel> newModel(const QString& path) {
    auto model = std::make_unique<GPUModel>();
    model->setLabel(path);
    return model;
}

ModelFiles filesOf(const QString& path, const LoadOptions& options) {
    return options.files == LoadOptions::Files::Anywhere ? ModelFiles() : ModelFiles(QFileInfo(path).path());
}

/// One import: reads the text of a file into a mesh and makes draw data from it.
class ObjImport {
public:
    ObjImport(QFile& file, const LoadOptions& options)
        : _path(file.fileName()),
          _fileSize(file.size()),
          _options(options),
          _libraries(filesOf(_path, options), _mesh.groups),
          _stream(&file),
          _reader(&_stream),
          _feed(_mesh) {
        _mesh.groups.create(QStringLiteral("<default>"), makeDefaultMaterialWithoutMaps(), -1, 0,
                            defaultWhiteMaps());
        _reader.setDirectory(QFileInfo(_path).dir().absolutePath());
    }

    /// Returns: false, with the reason in `error`, if a library cannot be read or the text has more data than
    /// a stream can hold. Throws Cancelled if `meter` does.
    bool readText(ProgressMeter& meter, QString& error);
    /// Whether the mesh is complete enough to make draw data from it.
    bool hasMesh() const;
    /// Requires: hasMesh(). Throws Cancelled if `meter` does. Consumes the mesh.
    DrawData prepare(ProgressMeter& meter);
    LoadReport report() const;

private:
    static QString positionAttribute() { return QStringLiteral("va_Vertex"); }
    bool takeRecord(QString& error);
    /// Returns: false, with the reason in `error`, if the library is needed and cannot be read.
    bool loadLibrary(const QString& library, QString& error);
    bool isTooLarge(QString& error) const;

    QString _path;
    qint64 _fileSize;
    const LoadOptions& _options;
    DiagnosticLog _diagnostics;
    ScratchReuse _memory;
    Mesh _mesh{Input::Consumed};
    MaterialLibraries _libraries;
    QTextStream _stream;
    ObjReader _reader;
    MeshFeed _feed;
    quint64 _droppedFaces = 0;
    PreparationStatistics _statistics;
};

bool ObjImport::readText(ProgressMeter& meter, QString& error) {
    meter.begin(LoadPhase::Reading, _fileSize);
    for (; _reader.hasNext(); _reader.next(_feed.run())) {
        if (isTooLarge(error))
            return false;
        meter.reach(_reader.bytesRead());
        if (!takeRecord(error))
            return false;
    }
    _feed.finish();
    if (isTooLarge(error))
        return false;
    meter.reach(_reader.bytesRead());
    return true;
}

bool ObjImport::isTooLarge(QString& error) const {
    if (_mesh.streams.refused().isEmpty())
        return false;
    error = loadFailure(_path);
    return true;
}

bool ObjImport::takeRecord(QString& error) {
    if (!_reader.read()) {
        _droppedFaces += _reader.kind() == ObjReader::Kind::Face ? 1 : 0;
    } else if (_reader.kind() == ObjReader::Kind::UseMaterial) {
        _feed.useMaterial(_reader.text());
    } else if (_reader.kind() == ObjReader::Kind::MaterialLibrary) {
        return loadLibrary(_reader.text(), error);
    } else {
        _feed.addRecord(_reader);
    }
    return true;
}

bool ObjImport::loadLibrary(const QString& library, QString& error) {
    _feed.flush();
    if (_libraries.load(library))
        return true;
    if (!_options.repairs.skipMissingLibraries) {
        error = QStringLiteral("Failed to load MTL file '%1'").arg(library);
        return false;
    }
    _diagnostics.add(DiagnosticLog::Code::MissingLibrary, _path, library, [&] {
        return QStringLiteral("The library '%1' cannot be read, and is left out").arg(library);
    });
    return true;
}

bool ObjImport::hasMesh() const {
    return _mesh.isComplete() && _mesh.attributes.contains(positionAttribute());
}

DrawData ObjImport::prepare(ProgressMeter& meter) {
    Preparation preparation(_mesh, 0, this);
    DrawData data = preparation.prepare(positionAttribute(), meter);
    _statistics = preparation.statistics();
    return data;
}

LoadReport ObjImport::report() const {
    LoadReport report;
    report.bytesRead = _fileSize;
    report.faces = _feed.faces();
    report.droppedFaces = _droppedFaces;
    report.facesWithoutGroup = _feed.facesWithoutGroup();
    report.statistics = _statistics;
    _diagnostics.copyTo(report);
    return report;
}

/// Reads a file and calls `finish` with it. On failure, `error` contains the reason.
template<typename Finish>
void importFile(const QString& path, QString& error, const LoadProgress& progress, LoadReport* report,
                const LoadOptions& options, const Finish& finish) {
    const std::unique_ptr<QFile> file = ModelFiles().open(path, QIODevice::ReadOnly | QIODevice::Text);
    if (!file) {
        error = loadFailure(path);
        return;
    }
    ObjImport import(*file, options);
    ProgressMeter meter(progress);
    try {
        if (!import.readText(meter, error))
            return;
        if (!isReadToTheEnd(*file)) {
            error = loadFailure(path);
            return;
        }
        finish(import, meter);
        if (report != nullptr)
            *report = import.report();
    } catch (const Cancelled&) {
        error = cancellation(path);
    }
}

} // namespace

GPUModel* loadModelFromOBJFile(const QString& path, QString& error) {
    return loadModelFromOBJFile(path, error, LoadProgress(), nullptr);
}

GPUModel* loadModelFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                               LoadReport* report) {
    std::unique_ptr<GPUModel> model;
    importFile(path, error, progress, report, LoadOptions(), [&](ObjImport& import, ProgressMeter& meter) {
        auto loaded = newModel(path);
        const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
        if (import.hasMesh() && !context.isNull())
            uploadTo(*context, import.prepare(meter), *loaded, {makeIdentityInstance()});
        model = std::move(loaded);
    });
    return model.release();
}

std::unique_ptr<GPUModel> loadModelFromOBJFile(const QString& path, QString& error,
                                               const LoadOptions& options, const LoadProgress& progress,
                                               LoadReport* report) {
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (!canUpload(context.data())) {
        error = withoutOpenGL(path);
        return nullptr;
    }
    std::unique_ptr<GPUModel> model;
    importFile(path, error, progress, report, options, [&](ObjImport& import, ProgressMeter& meter) {
        DrawData data = import.hasMesh() ? import.prepare(meter) : DrawData();
        auto loaded = newModel(path);
        if (!data.isEmpty() && uploadTo(*context, std::move(data), *loaded, {makeIdentityInstance()}))
            model = std::move(loaded);
        else
            error = nothingToDraw(path);
    });
    return model;
}

DrawData readDrawDataFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                                 LoadReport* report, const LoadOptions& options) {
    DrawData data;
    importFile(path, error, progress, report, options, [&](ObjImport& import, ProgressMeter& meter) {
        data = import.hasMesh() ? import.prepare(meter) : DrawData();
    });
    return data;
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

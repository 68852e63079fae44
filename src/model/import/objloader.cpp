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

ModelFiles filesOf(const QString& path, const LoadOptions& options) {
    return options.files == LoadOptions::Files::Anywhere ? ModelFiles() : ModelFiles(QFileInfo(path).path());
}

/// One import: reads the text of a file into a mesh and makes draw data from it.
class ObjImport {
public:
    /// `libraries` are the files that the text may refer to.
    ObjImport(QFile& file, ModelFiles libraries)
        : _path(file.fileName()),
          _fileSize(file.size()),
          _libraries(std::move(libraries), _mesh.groups),
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
    bool isTooLarge(QString& error) const;

    QString _path;
    qint64 _fileSize;
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
        _feed.flush();
        if (!_libraries.load(_reader.text())) {
            error = QStringLiteral("Failed to load MTL file '%1'").arg(_reader.text());
            return false;
        }
    } else {
        _feed.addRecord(_reader);
    }
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
    ObjImport import(*file, filesOf(path, options));
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
    return loadModelFromOBJFile(path, error, progress, report, LoadOptions());
}

GPUModel* loadModelFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                               LoadReport* report, const LoadOptions& options) {
    std::unique_ptr<GPUModel> model;
    importFile(path, error, progress, report, options, [&](ObjImport& import, ProgressMeter& meter) {
        auto loaded = std::make_unique<GPUModel>();
        loaded->setLabel(path);
        const UploadOptions uploadOptions{makeIdentityInstance()};
        if (import.hasMesh()) {
            const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
            if (!context.isNull())
                uploadTo(*context, import.prepare(meter), *loaded, uploadOptions);
        }
        model = std::move(loaded);
    });
    return model.release();
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

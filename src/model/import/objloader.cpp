#include <velmodel/objloader.h>

#include <functional>
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
#include "import/materials.h"
#include "import/meshfeed.h"
#include "import/objreader.h"
#include "import/textfile.h"
#include "mesh/mesh.h"
#include "scratchblock.h"
#include "upload/modelupload.h"

namespace Atelier::Vel {

namespace {

// Nothing reads these two; they keep their places among the statics.
[[maybe_unused]] const QString planarMark(QStringLiteral("[PLANAR]"));
[[maybe_unused]] const TextureToken spareToken;

const struct MaterialPlanRegistrar {
    MaterialPlanRegistrar() { registerObjMaterialPlan(); }
} materialPlanRegistrar;

constexpr unsigned int kStaticDraw = 0x88E4; // GL_STATIC_DRAW
constexpr unsigned int kTriangles = 4;       // GL_TRIANGLES

// Progress is told whenever this part of the file has been read.
constexpr qint64 kProgressSteps = 200;

/// Asks whether to go on with some work, not too often.
class ProgressMeter {
public:
    ProgressMeter(qint64 total, std::function<bool(qint64 done)> goesOn)
        : _goesOn(std::move(goesOn)), _step(total / kProgressSteps + 1) {}

    /// Returns: false when the work is to be given up.
    bool reached(qint64 done) {
        if (done < _nextReport)
            return true;
        _nextReport = done + _step;
        return _goesOn(done);
    }

private:
    std::function<bool(qint64 done)> _goesOn;
    qint64 _step;
    qint64 _nextReport = 0;
};

/// Thrown to give up an upload.
struct Cancelled {};

QString loadFailure(const QString& path) {
    return QStringLiteral("Failed to load OBJ file '%1'").arg(path);
}

QString cancellation(const QString& path) {
    return QStringLiteral("Loading OBJ file '%1' was cancelled").arg(path);
}

ModelFiles filesOf(const QString& path, const LoadOptions& options) {
    return options.files == LoadOptions::Files::Anywhere ? ModelFiles() : ModelFiles(QFileInfo(path).path());
}

/// One load: the text of a file on its way into a mesh and from there into draw data.
class ObjImport {
public:
    /// `libraries` are the files that the text may name.
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

    /// Returns: false, and why in `error`, when a library cannot be read, the text holds more than a
    /// stream can take, or `progress` cancels.
    bool readText(const LoadProgress& progress, QString& error);
    /// Whether there is anything to make draw data of.
    bool hasMesh() const;
    /// Requires: hasMesh(). Throws Cancelled when `progress` cancels. Consumes the mesh.
    DrawData prepare(const LoadProgress& progress);
    LoadReport report() const;

private:
    static QString positionAttribute() { return QStringLiteral("va_Vertex"); }
    bool takeRecord(QString& error);
    WorkMeter cutMeter(const LoadProgress& progress) const;
    bool goesOn(ProgressMeter& meter, QString& error) const;

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

bool ObjImport::readText(const LoadProgress& progress, QString& error) {
    ProgressMeter meter(_fileSize, [&](qint64 done) { return !progress || progress(done, _fileSize); });
    for (; _reader.hasNext(); _reader.next(_feed.run()))
        if (!goesOn(meter, error) || !takeRecord(error))
            return false;
    _feed.finish();
    return goesOn(meter, error);
}

bool ObjImport::goesOn(ProgressMeter& meter, QString& error) const {
    if (!_mesh.streams.refused().isEmpty()) {
        error = loadFailure(_path);
        return false;
    }
    if (!meter.reached(_reader.bytesRead())) {
        error = cancellation(_path);
        return false;
    }
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

DrawData ObjImport::prepare(const LoadProgress& progress) {
    Preparation preparation(_mesh, 0, this);
    DrawData data = preparation.prepare(positionAttribute(), cutMeter(progress));
    _statistics = preparation.statistics();
    return data;
}

WorkMeter ObjImport::cutMeter(const LoadProgress& progress) const {
    const auto meter =
        std::make_shared<ProgressMeter>(2 * static_cast<qint64>(_feed.corners()), [this, progress](qint64) {
            return !progress || progress(_fileSize, _fileSize);
        });
    qint64 corners = 0;
    return [meter, corners](int count) mutable {
        corners += count;
        if (!meter->reached(corners))
            throw Cancelled();
    };
}

LoadReport ObjImport::report() const {
    LoadReport report;
    report.bytesRead = _fileSize;
    report.faces = _feed.faces();
    report.droppedFaces = _droppedFaces;
    report.facesWithoutGroup = _feed.facesWithoutGroup();
    report.untriangulatedFaces = _statistics.untriangulatedFaces;
    report.substitutedCorners = _statistics.substitutedCorners;
    report.corners = _statistics.corners;
    report.vertices = _statistics.vertices;
    report.triangles = _statistics.triangles;
    return report;
}

/// Reads a file and calls `finish` with it. On failure, `error` says why.
template<typename Finish>
void importFile(const QString& path, QString& error, const LoadProgress& progress, LoadReport* report,
                const LoadOptions& options, const Finish& finish) {
    const std::unique_ptr<QFile> file = ModelFiles().open(path, QIODevice::ReadOnly | QIODevice::Text);
    if (!file) {
        error = loadFailure(path);
        return;
    }
    ObjImport import(*file, filesOf(path, options));
    if (!import.readText(progress, error))
        return;
    if (!isReadToTheEnd(*file)) {
        error = loadFailure(path);
        return;
    }
    try {
        finish(import);
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
    importFile(path, error, progress, report, options, [&](ObjImport& import) {
        auto loaded = std::make_unique<GPUModel>();
        const UploadOptions uploadOptions{makeIdentityInstance()};
        if (import.hasMesh()) {
            const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
            if (!context.isNull())
                uploadTo(*context, import.prepare(progress), *loaded, uploadOptions);
        }
        model = std::move(loaded);
    });
    return model.release();
}

DrawData readDrawDataFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                                 LoadReport* report, const LoadOptions& options) {
    DrawData data;
    importFile(path, error, progress, report, options,
               [&](ObjImport& import) { data = import.hasMesh() ? import.prepare(progress) : DrawData(); });
    return data;
}

InstanceData makeIdentityInstance() {
    constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    InstanceData instance(QStringLiteral("InstanceInfo"));
    instance.set(QStringLiteral("ModelMatrix"), kIdentity, sizeof kIdentity);
    // Intentional, although it is no member of the plan.
    instance.set(QStringLiteral("PreviousModelMatrix"), kIdentity, sizeof kIdentity);
    instance.set(QStringLiteral("ModelNormalMatrix"), kIdentity, sizeof kIdentity);
    return instance;
}

} // namespace Atelier::Vel

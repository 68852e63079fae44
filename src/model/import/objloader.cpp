#include <velmodel/objloader.h>

#include <functional>
#include <memory>
#include <utility>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <velgl/gpumodel.h>
#include <velgl/texturetoken.h>
#include <velmodel/modelbuilder.h>
#include <velmodel/modelfiles.h>

#include "import/builderfeed.h"
#include "import/materials.h"
#include "import/objreader.h"
#include "import/textfile.h"
#include "scratchblock.h"
#include "singleupload.h"

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

/// One load: the text of a file on its way into a builder and from there into a model.
class ObjImport {
public:
    /// `libraries` are the files that the text may name.
    ObjImport(QFile& file, ModelFiles libraries)
        : _path(file.fileName()),
          _fileSize(file.size()),
          _libraries(std::move(libraries), _builder),
          _stream(&file),
          _reader(&_stream),
          _feed(_builder) {
        SingleUpload::expect(_builder);
        const QString group = QStringLiteral("<default>");
        _builder.createMaterialGroup(group, makeDefaultMaterialWithoutMaps(), -1, 0);
        SingleUpload::setWhiteMaps(_builder, group, defaultWhiteMaps());
        _reader.setDirectory(QFileInfo(_path).dir().absolutePath());
    }

    /// Returns: false, and why in `error`, when a library cannot be read, the text holds more than a builder
    /// can take, or `progress` cancels.
    bool readText(const LoadProgress& progress, QString& error);
    /// These throw Cancelled when `progress` cancels.
    std::unique_ptr<GPUModel> upload(const LoadProgress& progress);
    DrawData prepare(const LoadProgress& progress);
    LoadReport report() const;

private:
    static QString positionAttribute() { return QStringLiteral("va_Vertex"); }
    bool takeRecord(QString& error);
    void meterCuts(const LoadProgress& progress);
    bool goesOn(ProgressMeter& meter, QString& error) const;

    QString _path;
    qint64 _fileSize;
    ScratchReuse _memory;
    ModelBuilder _builder;
    MaterialLibraries _libraries;
    QTextStream _stream;
    ObjReader _reader;
    BuilderFeed _feed;
    quint64 _droppedFaces = 0;
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
    if (!_builder.refusedStreams().isEmpty()) {
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

std::unique_ptr<GPUModel> ObjImport::upload(const LoadProgress& progress) {
    auto model = std::make_unique<GPUModel>();
    const InstanceData instance = makeIdentityInstance();
    meterCuts(progress);
    _builder.upload(model.get(), instance, positionAttribute(), QString(), kStaticDraw, kTriangles);
    return model;
}

DrawData ObjImport::prepare(const LoadProgress& progress) {
    meterCuts(progress);
    return _builder.prepare(positionAttribute());
}

void ObjImport::meterCuts(const LoadProgress& progress) {
    const auto meter =
        std::make_shared<ProgressMeter>(2 * static_cast<qint64>(_feed.corners()), [this, progress](qint64) {
            return !progress || progress(_fileSize, _fileSize);
        });
    qint64 corners = 0;
    SingleUpload::meterCuts(_builder, [meter, corners](int count) mutable {
        corners += count;
        if (!meter->reached(corners))
            throw Cancelled();
    });
}

LoadReport ObjImport::report() const {
    const ModelBuilder::Statistics& statistics = _builder.statistics();
    LoadReport report;
    report.bytesRead = _fileSize;
    report.faces = _feed.faces();
    report.droppedFaces = _droppedFaces;
    report.facesWithoutGroup = _feed.facesWithoutGroup();
    report.untriangulatedFaces = statistics.untriangulatedFaces;
    report.substitutedCorners = statistics.substitutedCorners;
    report.corners = statistics.corners;
    report.vertices = statistics.vertices;
    report.triangles = statistics.triangles;
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
    importFile(path, error, progress, report, options,
               [&](ObjImport& import) { model = import.upload(progress); });
    return model.release();
}

DrawData readDrawDataFromOBJFile(const QString& path, QString& error, const LoadProgress& progress,
                                 LoadReport* report, const LoadOptions& options) {
    DrawData data;
    importFile(path, error, progress, report, options,
               [&](ObjImport& import) { data = import.prepare(progress); });
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

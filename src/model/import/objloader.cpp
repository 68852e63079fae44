#include <velmodel/objloader.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texturetoken.h>
#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>
#include <velmodel/textureloader.h>

#include "drawdata/preparation.h"
#include "drawdata/progressmeter.h"
#include "files/textinput.h"
#include "import/attributenames.h"
#include "import/diagnostics/diagnosticlog.h"
#include "import/facegroups.h"
#include "import/meshfeed.h"
#include "import/missingnormals.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/materials.h"
#include "import/obj/objreader.h"
#include "import/references/filereferences.h"
#include "import/smoothinggroups.h"
#include "import/text/names.h"
#include "memory/scratchblock.h"
#include "mesh/mesh.h"
#include "mesh/unplacedfaces.h"
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

ObjKeywords keywordsOf(const LoadOptions& options) {
    return {options.normals.kind == NormalOptions::Kind::SmoothingGroups, options.splitObjects};
}

/// One import: reads the text of a file into a mesh and makes draw data from it.
class ObjImport {
public:
    /// The arguments must outlive the import.
    ObjImport(TextInput& text, const QString& path, ModelSource& source, const LoadOptions& options)
        : _text(text),
          _path(path),
          _fileSize(text.size()),
          _options(options),
          _references(source, path, options, _diagnostics),
          _materials(_mesh.groups, options, _diagnostics),
          _libraries(source, _references, options, _materials, _diagnostics),
          _groups(_mesh.groups, _materials, _path,
                  options.splitObjects ? FaceGroups::Parts::Split : FaceGroups::Parts::Joined),
          _stream(&text.device()),
          _reader(&_stream, LineSourceOptions::joining(options.repairs.joinContinuedLines), findWideParser(),
                  keywordsOf(options)),
          _feed(_mesh, _groups) {
        if (options.vertexColours)
            _feed.takeColours();
        if (completesNormals(options))
            _feed.alignNormals();
        _mesh.groups.create(QStringLiteral("<default>"), makeDefaultMaterialWithoutMaps(layoutOf(options)),
                            -1, 0, defaultWhiteMaps());
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
    using Code = LoadDiagnostic::Code;

    bool takeRecord(QString& error);
    /// Returns: false, with the reason in `error`, if the library is needed and cannot be read.
    bool loadLibrary(const QString& name, QString& error);
    QString libraryPath(const QString& name);
    bool leaveOut(const QString& path, QString& error);
    /// Loads the library that is named by the whole of `rest`, or else by each of its words.
    bool loadLibraries(const QString& rest, QString& error);
    void removeUnplacedFaces();
    qint64 bytesRead() const;
    bool isTooLarge(QString& error) const;
    void completeNormals(ProgressMeter& meter);

    const TextInput& _text;
    const QString& _path;
    qint64 _fileSize; ///< -1 for a sequential device
    const LoadOptions& _options;
    DiagnosticLog _diagnostics;
    ScratchReuse _memory;
    Mesh _mesh{Input::Consumed};
    FileReferences _references;
    MaterialDefinitions _materials;
    MaterialLibraries _libraries;
    FaceGroups _groups;
    QTextStream _stream;
    ObjReader _reader;
    MeshFeed _feed;
    SmoothingGroups _smoothingGroups;
    quint64 _droppedFaces = 0;
    quint64 _unplacedFaces = 0;
    PreparationStatistics _statistics;
};

bool ObjImport::readText(ProgressMeter& meter, QString& error) {
    meter.begin(LoadPhase::Reading, _fileSize);
    for (; _reader.hasNext(); _reader.next(_feed.run())) {
        if (isTooLarge(error))
            return false;
        meter.reach(bytesRead());
        if (!takeRecord(error))
            return false;
    }
    _feed.finish();
    meter.reach(bytesRead());
    if (_options.repairs.dropUnplacedFaces)
        removeUnplacedFaces();
    completeNormals(meter);
    return !isTooLarge(error);
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
        const bool needsRest = _options.repairs.matchNames;
        _feed.useMaterial({_reader.text(), needsRest ? _reader.rest() : QString()});
    } else if (_reader.kind() == ObjReader::Kind::Object) {
        _feed.useObject(_reader.text());
    } else if (_reader.kind() == ObjReader::Kind::Group) {
        _feed.useGroup(_reader.text());
    } else if (_reader.kind() == ObjReader::Kind::MaterialLibrary) {
        return _options.repairs.matchNames ? loadLibraries(_reader.rest(), error)
                                           : loadLibrary(_reader.text(), error);
    } else if (_reader.kind() == ObjReader::Kind::SmoothingGroup) {
        _smoothingGroups.begin(_feed.nextFace(), _reader.text());
    } else {
        _feed.addRecord(_reader);
    }
    return true;
}

qint64 ObjImport::bytesRead() const {
    return _fileSize < 0 ? _text.sequentialBytes() : _reader.bytesRead();
}

QString ObjImport::libraryPath(const QString& name) {
    return _references.find(Code::RelocatedLibrary, _path, name);
}

bool ObjImport::loadLibrary(const QString& name, QString& error) {
    _feed.flush();
    const QString path = libraryPath(name);
    return _libraries.load(path) || leaveOut(path, error);
}

// Leaves out a library that cannot be read, and reports it. Returns: false, with the error, if that is not
// repaired.
bool ObjImport::leaveOut(const QString& path, QString& error) {
    if (!_options.repairs.skipMissingLibraries) {
        error = QStringLiteral("Failed to load MTL file '%1'").arg(path);
        return false;
    }
    _diagnostics.add(Code::MissingLibrary, _path, path, [&] {
        return QStringLiteral("The library '%1' cannot be read, and is left out").arg(path);
    });
    return true;
}

bool ObjImport::loadLibraries(const QString& rest, QString& error) {
    const QStringList words = wordsOf(withoutComment(rest));
    if (words.size() < 2)
        return loadLibrary(words.value(0), error);
    _feed.flush();
    QStringList wholes = nameCandidates(rest);
    wholes.removeLast();
    for (const QString& whole : qAsConst(wholes)) {
        if (!_libraries.load(libraryPath(whole)))
            continue;
        _diagnostics.add(Code::MatchedName, _path, rest,
                         [&] { return QStringLiteral("'%1' is read as the name of one library").arg(rest); });
        return true;
    }
    QStringList missing;
    for (const QString& word : words)
        if (const QString path = libraryPath(word); !_libraries.load(path))
            missing.append(path);
    // If no word names a library, the line probably names one library.
    if (missing.size() == words.size() && _options.repairs.skipMissingLibraries)
        missing = QStringList(libraryPath(wholes.last()));
    return std::all_of(missing.cbegin(), missing.cend(),
                       [&](const QString& path) { return leaveOut(path, error); });
}

void ObjImport::removeUnplacedFaces() {
    const std::vector<quint32> removed = Vel::removeUnplacedFaces(_mesh, positionAttribute());
    const quint64 count = removed.size();
    if (count == 0)
        return;
    _smoothingGroups.remove(removed);
    _unplacedFaces = count;
    const auto describe = [&] {
        return count == 1
                   ? QStringLiteral("1 face has a corner without a position, and is dropped")
                   : QStringLiteral("%1 faces have a corner without a position, and are dropped").arg(count);
    };
    _diagnostics.add(Code::UnplacedFace, _path, QString(), describe, count);
}

void ObjImport::completeNormals(ProgressMeter& meter) {
    const quint64 completed = Vel::completeNormals(_mesh, _options, _smoothingGroups, meter);
    if (completed == 0 || !_options.repairs.generateMissingNormals)
        return;
    _diagnostics.add(Code::MissingNormals, _path, QString(), [&] {
        return completed == 1
                   ? QStringLiteral("1 corner has no normal, and gets a generated one")
                   : QStringLiteral("%1 corners have no normal, and get generated ones").arg(completed);
    });
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
    report.bytesRead = _fileSize < 0 ? bytesRead() : _fileSize;
    report.faces = _feed.faces() - _unplacedFaces;
    report.droppedFaces = _droppedFaces + _unplacedFaces;
    report.facesWithoutGroup = _feed.facesWithoutGroup();
    report.statistics = _statistics;
    _diagnostics.copyTo(report);
    return report;
}

/// A text of a model, and the source of the other files of the model.
struct ModelText {
    QString path;
    std::unique_ptr<TextInput> text; ///< null if there is none
    std::shared_ptr<ModelSource> source;
};

// The OBJ file itself may lie anywhere.
ModelText openFile(const QString& path, const LoadOptions& options) {
    return {path, TextInput::open(*ModelFiles().source(), path), filesOf(path, options).source()};
}

ModelText openFrom(const std::shared_ptr<ModelSource>& source, const QString& name) {
    return {name, source ? TextInput::open(*source, name) : nullptr, source};
}

/// Reads a model and calls `finish` with it. On failure, `error` contains the reason.
template<typename Finish>
void importText(const ModelText& model, QString& error, const LoadProgress& progress, LoadReport* report,
                const LoadOptions& options, const Finish& finish) {
    if (!model.text) {
        error = loadFailure(model.path);
        return;
    }
    ObjImport import(*model.text, model.path, *model.source, options);
    ProgressMeter meter(progress);
    try {
        if (!import.readText(meter, error))
            return;
        if (!model.text->isReadToTheEnd()) {
            error = loadFailure(model.path);
            return;
        }
        finish(import, meter);
        if (report != nullptr)
            *report = import.report();
    } catch (const Cancelled&) {
        error = cancellation(model.path);
    }
}

DrawData readDrawData(const ModelText& text, QString& error, const LoadOptions& options,
                      const LoadProgress& progress, LoadReport* report) {
    DrawData data;
    importText(text, error, progress, report, options, [&](ObjImport& import, ProgressMeter& meter) {
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
        return nullptr;
    }
    std::unique_ptr<GPUModel> model;
    importText(open(), error, progress, report, options, [&](ObjImport& import, ProgressMeter& meter) {
        DrawData data = import.hasMesh() ? import.prepare(meter) : DrawData();
        auto loaded = newModel(path);
        if (!data.isEmpty() && uploadTo(*context, std::move(data), *loaded, {makeIdentityInstance()}))
            model = std::move(loaded);
        else
            error = nothingToDraw(path);
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
    importText(openFile(path, options), error, progress, report, options,
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

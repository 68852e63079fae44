// Loads an OBJ file and its library, both from one input, into a context that checks what is uploaded. Half
// of the loads are compared with the literal load. The others are confined to their folder, and half of these
// read colours, or split parts. The input is also examined, twice.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryDir>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/modelcheck.h>
#include <velmodel/objloader.h>

#include "checkingcontext.h"
#include "claim.h"
#include "filewriting.h"
#include "fuzzedoptions.h"
#include "literal/literalobjloader.h"
#include "modeldescription.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// The text of the library follows the marker.
const QByteArray kMarker = "\n%%mtl%%\n";

struct Loaded {
    std::unique_ptr<GPUModel> model;
    QString error;
};

void check(const Loaded& loaded, const LoadReport& report) {
    Fuzzing::require((loaded.model == nullptr) == !loaded.error.isEmpty(),
                     "a load gives a model or an error");
    if (loaded.model == nullptr)
        return;
    Fuzzing::require(Fuzzing::requireDrawable(*loaded.model) == 3 * report.statistics.triangles,
                     "the commands draw the triangle count of the report");
    loaded.model->bounds();
}

Loaded load(const QString& path) {
    Loaded loaded;
    LoadReport report;
    loaded.model.reset(loadModelFromOBJFile(path, loaded.error, LoadProgress(), &report));
    check(loaded, report);
    return loaded;
}

Loaded load(const QString& path, const LoadOptions& options) {
    Loaded loaded;
    LoadReport report;
    loaded.model = loadModelFromOBJFile(path, loaded.error, options, LoadProgress(), &report);
    check(loaded, report);
    for (auto count = report.diagnosticCounts.begin(); count != report.diagnosticCounts.end(); ++count)
        Fuzzing::require(*count != 0, "a code without observations is absent");
    Fuzzing::require(loaded.model == nullptr || report.statistics.triangles != 0,
                     "a model that is returned shows something");
    return loaded;
}

Loaded loadLiterally(const QString& path) {
    Loaded loaded;
    loaded.model.reset(Testing::literalLoadModel(path, loaded.error));
    return loaded;
}

bool hasSameBuffers(const DrawBuffers& a, const DrawBuffers& b) {
    const QVector<VertexArrayObject::Stream> streams = a.VAO()->streams();
    const QVector<VertexArrayObject::Stream> others = b.VAO()->streams();
    return a.indexBuffer()->readBack() == b.indexBuffer()->readBack() &&
           std::equal(streams.begin(), streams.end(), others.begin(), others.end(),
                      [](const VertexArrayObject::Stream& stream, const VertexArrayObject::Stream& other) {
                          return stream.name == other.name && stream.components == other.components &&
                                 stream.type == other.type &&
                                 stream.buffer->readBack() == other.buffer->readBack();
                      });
}

bool isSame(const Loaded& a, const Loaded& b) {
    if (a.model == nullptr || b.model == nullptr)
        return a.model == b.model && a.error == b.error;
    if (Testing::describe(*a.model) != Testing::describe(*b.model))
        return false;
    for (int i = 0; i < a.model->drawableCount(); ++i)
        if (!hasSameBuffers(*a.model->drawable(i), *b.model->drawable(i)))
            return false;
    return true;
}

bool isSame(const ModelCheck& a, const ModelCheck& b) {
    return a.counts == b.counts && a.notExamined == b.notExamined && a.triangles == b.triangles &&
           std::equal(a.findings.begin(), a.findings.end(), b.findings.begin(), b.findings.end(),
                      [](const CheckFinding& finding, const CheckFinding& other) {
                          return finding.code == other.code && finding.line == other.line &&
                                 finding.column == other.column && finding.text == other.text &&
                                 finding.message == other.message && finding.lineText == other.lineText;
                      });
}

ModelCheck examine(const QString& path) {
    CheckOptions options;
    options.files = LoadOptions::Files::InOwnFolder;
    ModelCheck check = checkOBJFile(path, options);
    for (const CheckFinding& finding : check.findings)
        Fuzzing::require(check.counts.value(finding.code) != 0 && finding.column >= 0 && finding.line >= 0,
                         "a finding is counted, and has a place");
    return check;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder;
    static const QString model = folder.filePath(QStringLiteral("model.obj"));
    static const QString library = folder.filePath(QStringLiteral("m.mtl"));
    const QByteArray input =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int marker = input.indexOf(kMarker);
    Fuzzing::writeFile(model, input.left(marker));
    Fuzzing::writeFile(library, marker < 0 ? QByteArray() : input.mid(marker + kMarker.size()));

    OpenGLDeviceContext::setCurrent(Fuzzing::makeCheckingContext());
    Fuzzing::require(isSame(load(model), loadLiterally(model)), "the model is that of the literal load");
    const LoadOptions options = Fuzzing::loadOptions(Fuzzing::optionBits(data, size));
    Fuzzing::require(isSame(load(model, options), load(model, options)), "a load gives the same model twice");
    Fuzzing::require(isSame(examine(model), examine(model)), "an examination finds the same twice");
    return 0;
}

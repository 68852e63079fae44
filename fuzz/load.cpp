// Whole loads of an OBJ file with its library, both from one input, into a context that checks what is
// uploaded.
#include <cstddef>
#include <cstdint>
#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryDir>

#include <velgl/opengldevicecontext.h>
#include <velmodel/objloader.h>

#include "checkingcontext.h"
#include "claim.h"
#include "filewriting.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// What comes behind it is the text of the library.
const QByteArray kMarker = "\n%%mtl%%\n";

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
    QString error;
    LoadReport report;
    LoadOptions options;
    if (size % 2 != 0)
        options.files = LoadOptions::Files::InOwnFolder;
    const std::unique_ptr<GPUModel> loaded(
        loadModelFromOBJFile(model, error, LoadProgress(), &report, options));
    Fuzzing::require((loaded == nullptr) == !error.isEmpty(), "a load gives a model or an error");
    if (loaded != nullptr) {
        Fuzzing::require(Fuzzing::requireDrawable(*loaded) == 3 * report.triangles,
                         "commands draw as many triangles as the report says");
        loaded->bounds();
    }
    return 0;
}

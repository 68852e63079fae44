#include "loadflags.h"

namespace Atelier::Vel::Tool {

namespace {

QString confined() {
    return QStringLiteral("confined");
}

QString exact() {
    return QStringLiteral("exact");
}

QString optimise() {
    return QStringLiteral("optimise");
}

// What people expect to see of a file.
LoadOptions forgivingOptions() {
    LoadOptions options = LoadOptions::forgiving();
    options.vertexColours = true;
    options.normals = NormalOptions::smooth();
    options.normals.outward = true;
    options.extendedMaterials = true;
    return options;
}

} // namespace

void addLoadFlags(QCommandLineParser& parser) {
    parser.addOption(
        {confined(), QStringLiteral("Read libraries and textures only from the model's folder.")});
    parser.addOption({exact(), QStringLiteral("Repair nothing, and read nothing beyond the defined load.")});
    if (DrawData::canOptimise())
        parser.addOption(
            {optimise(), QStringLiteral("Reorder triangles and vertices for the GPU's caches.")});
}

LoadFlags readLoadFlags(const QCommandLineParser& parser) {
    LoadFlags flags;
    if (!parser.isSet(exact())) {
        flags.options = forgivingOptions();
        registerExtendedMaterials(); // for what packs materials without an upload
    }
    if (parser.isSet(confined()))
        flags.options.files = LoadOptions::Files::InOwnFolder;
    flags.isOptimised = DrawData::canOptimise() && parser.isSet(optimise());
    return flags;
}

} // namespace Atelier::Vel::Tool

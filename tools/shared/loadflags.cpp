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

void addConfinedFlag(QCommandLineParser& parser) {
    parser.addOption(
        {confined(), QStringLiteral("Read libraries and textures only from the model's folder.")});
}

bool isConfined(const QCommandLineParser& parser) {
    return parser.isSet(confined());
}

void addLoadFlags(QCommandLineParser& parser) {
    addConfinedFlag(parser);
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
    if (isConfined(parser))
        flags.options.files = LoadOptions::Files::InOwnFolder;
    flags.isOptimised = DrawData::canOptimise() && parser.isSet(optimise());
    return flags;
}

} // namespace Atelier::Vel::Tool

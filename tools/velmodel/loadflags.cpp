#include "loadflags.h"

namespace Atelier::Vel::Tool {

namespace {

QString confined() {
    return QStringLiteral("confined");
}

QString optimise() {
    return QStringLiteral("optimise");
}

} // namespace

void addLoadFlags(QCommandLineParser& parser) {
    parser.addOption(
        {confined(), QStringLiteral("Read libraries and textures only from the model's folder.")});
    if (DrawData::canOptimise())
        parser.addOption(
            {optimise(), QStringLiteral("Reorder triangles and vertices for the GPU's caches.")});
}

LoadFlags readLoadFlags(const QCommandLineParser& parser) {
    LoadFlags flags;
    if (parser.isSet(confined()))
        flags.options.files = LoadOptions::Files::InOwnFolder;
    flags.isOptimised = DrawData::canOptimise() && parser.isSet(optimise());
    return flags;
}

} // namespace Atelier::Vel::Tool

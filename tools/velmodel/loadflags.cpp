#include "loadflags.h"

namespace Atelier::Vel::Tool {

namespace {

QString confined() {
    return QStringLiteral("confined");
}

} // namespace

void addLoadOptions(QCommandLineParser& parser) {
    parser.addOption(
        {confined(), QStringLiteral("Read no libraries and textures from outside of the model's folder.")});
}

LoadOptions readLoadOptions(const QCommandLineParser& parser) {
    LoadOptions options;
    if (parser.isSet(confined()))
        options.files = LoadOptions::Files::InOwnFolder;
    return options;
}

} // namespace Atelier::Vel::Tool

#include "modelsources.h"

namespace Atelier::Vel::Viewer {

QStringList sourcesOf(const QString& path, const LoadReport& report) {
    QStringList sources(path);
    for (const ReferencedFile& file : report.files)
        sources += QStringList(file.path) + file.tried;
    sources.replaceInStrings(QStringLiteral("\\"), QStringLiteral("/"));
    sources.removeDuplicates();
    return sources;
}

} // namespace Atelier::Vel::Viewer

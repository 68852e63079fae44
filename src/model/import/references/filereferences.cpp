#include "import/references/filereferences.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include "diagnostics.h"
#include "files/filesource.h"

namespace Atelier::Vel {

namespace {

QString folderOf(const QString& file) {
    return QFileInfo(file).dir().absolutePath();
}

// The path relative to `folder` if it is below it, as a file in that folder would name it.
QString seenFrom(const QString& folder, const QString& path) {
    return path.startsWith(folder + QLatin1Char('/')) ? path.mid(folder.size() + 1) : path;
}

const ModelFiles* filesOf(const ModelSource& source) {
    const auto* files = dynamic_cast<const FileSource*>(&source);
    return files != nullptr ? &files->files() : nullptr;
}

} // namespace

FileReferences::FileReferences(ModelSource& source, const QString& model, const LoadOptions& options,
                               DiagnosticLog& diagnostics)
    : _source(source), _files(filesOf(source)), _diagnostics(diagnostics) {
    if (_files == nullptr || !options.repairs.findFiles)
        return;
    _modelFolder = folderOf(model);
    _finder.emplace(*_files, options.searchPaths);
}

QString FileReferences::findFirst(DiagnosticLog::Code code, const QString& file, const QStringList& names) {
    const QString folder = _finder ? folderOf(file) : QString();
    const auto found = _finder ? _finder->find({folder, _modelFolder}, names) : std::nullopt;
    if (!found)
        return _source.resolve(file, names.last());
    if (!found->isAsNamed)
        _diagnostics.add(code, file, found->name, [&] {
            return QStringLiteral("'%1': no such file; '%2' is used")
                .arg(found->name, seenFrom(folder, found->path));
        });
    return found->path;
}

bool FileReferences::isAllowed(const QString& path) const {
    const bool isAllowed = _files == nullptr || _files->allows(path);
    if (!isAllowed)
        reportOutsideFile(path, _files->folder());
    return isAllowed;
}

} // namespace Atelier::Vel

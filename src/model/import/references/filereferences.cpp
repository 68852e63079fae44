#include "import/references/filereferences.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include "diagnostics.h"
#include "files/filesource.h"
#include "import/references/filecause.h"

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

FileReferences::Found FileReferences::findFirst(DiagnosticLog::Code code, const TextLine& line,
                                                const QStringList& names) {
    const QString folder = _finder ? folderOf(line.file) : QString();
    const auto found = _finder ? _finder->find({folder, _modelFolder}, names) : std::nullopt;
    if (!found)
        return {_source.resolve(line.file, names.last()), names.last(), _finder.has_value()};
    if (!found->isAsNamed)
        _diagnostics.add(code, line, found->name, [&] {
            return QStringLiteral("'%1': no such file; '%2' is used")
                .arg(found->name, seenFrom(folder, found->path));
        });
    return {found->path, found->name};
}

void FileReferences::list(ReferencedFile::Kind kind, const TextLine& line, const QStringList& names,
                          const QString& path, bool isMissing) {
    const bool isListed = _listed.size() >= LoadReport::kMaxFiles || _listedPaths.contains(path);
    if (!_diagnostics.isKept() || isListed)
        return;
    _listedPaths.insert(path);
    _listed.append({kind, path, isMissing ? triedPaths(line, names, path) : QStringList()});
    _searches += isMissing ? 1 : 0;
}

// Of many files that are missing, the paths would take much memory.
QStringList FileReferences::triedPaths(const TextLine& line, const QStringList& names,
                                       const QString& path) const {
    constexpr int kMaxSearches = 100;
    constexpr int kMaxPaths = 16;
    if (!_finder || _searches >= kMaxSearches)
        return {path};
    return _finder->candidates({folderOf(line.file), _modelFolder}, names).mid(0, kMaxPaths);
}

void FileReferences::warnOfOutside(const QString& path) const {
    reportOutsideFile(path, _files->folder());
}

QString FileReferences::causeOfUnreadable(const QString& path) const {
    if (!isAllowed(path))
        return QStringLiteral("lies outside of the model's folder");
    return _files != nullptr ? Vel::causeOfUnreadable(path) : QStringLiteral("the source cannot read it");
}

} // namespace Atelier::Vel

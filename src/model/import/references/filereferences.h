#pragma once

#include <optional>

#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velmodel/loadoptions.h>
#include <velmodel/loadreport.h>
#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>

#include "files/filefinder.h"
#include "import/diagnostics/diagnosticlog.h"

namespace Atelier::Vel {

/// The references of the files of a load to other files. Finds the files that are not where they are
/// expected, if that is to be repaired and they are files of the system.
class FileReferences {
public:
    /// `model` is the name of the OBJ file. `source` and `diagnostics` must outlive the object.
    FileReferences(ModelSource& source, const QString& model, const LoadOptions& options,
                   DiagnosticLog& diagnostics);

    /// What was found for a reference.
    struct Found {
        QString path;           ///< the name of the file for the source
        QString name;           ///< the one in the line
        bool isMissing = false; ///< it was looked for in vain
    };

    /// The file that `line` calls `name`. Reports with `code` if it was found elsewhere.
    /// Returns: its name for the source.
    QString find(DiagnosticLog::Code code, const TextLine& line, const QString& name) {
        return _finder ? findFirst(code, line, {name}).path : _source.resolve(line.file, name);
    }
    /// The same for the first of `names` that exists, as FileFinder::find() has it: beside the file of the
    /// line, beside the model, and in the search paths. The last of them if none exists or none is looked
    /// for.
    Found findFirst(DiagnosticLog::Code code, const TextLine& line, const QStringList& names);
    /// Adds the file that `line` calls by one of `names`, and that was found or is expected at `path`, to
    /// files(), unless nothing is observed.
    void list(ReferencedFile::Kind kind, const TextLine& line, const QStringList& names, const QString& path,
              bool isMissing);
    /// See LoadReport::files.
    const QVector<ReferencedFile>& files() const { return _listed; }
    /// Whether `path` may be read. Otherwise it lies outside of the model's folder.
    bool isAllowed(const QString& path) const { return _files == nullptr || _files->allows(path); }
    /// Warns that `path` is not read. Requires: it is not allowed.
    void warnOfOutside(const QString& path) const;
    /// Why `path` cannot be read: the end of a sentence, such as "no such file".
    QString causeOfUnreadable(const QString& path) const;

private:
    QStringList triedPaths(const TextLine& line, const QStringList& names, const QString& path) const;

    ModelSource& _source;
    const ModelFiles* _files; ///< null if the source is not one of files
    QString _modelFolder;
    DiagnosticLog& _diagnostics;
    std::optional<FileFinder> _finder; ///< absent if nothing is to be repaired
    QVector<ReferencedFile> _listed;
    QSet<QString> _listedPaths;
    int _searches = 0; ///< of listed files that are missing
};

} // namespace Atelier::Vel

#pragma once

#include <optional>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/loadoptions.h>
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
        QString path; ///< the name of the file for the source
        QString name; ///< the one in the line
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
    /// Whether `path` may be read. Otherwise it lies outside of the model's folder.
    bool isAllowed(const QString& path) const { return _files == nullptr || _files->allows(path); }
    /// Warns that `path` is not read. Requires: it is not allowed.
    void warnOfOutside(const QString& path) const;
    /// Why `path` cannot be read: the end of a sentence, such as "no such file".
    QString causeOfUnreadable(const QString& path) const;

private:
    ModelSource& _source;
    const ModelFiles* _files; ///< null if the source is not one of files
    QString _modelFolder;
    DiagnosticLog& _diagnostics;
    std::optional<FileFinder> _finder; ///< absent if nothing is to be repaired
};

} // namespace Atelier::Vel

#pragma once

#include <optional>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/loadoptions.h>
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

    /// The file that `file` calls `name`. Reports with `code` if it was found elsewhere.
    /// Returns: its name for the source.
    QString find(DiagnosticLog::Code code, const QString& file, const QString& name) {
        return _finder ? findFirst(code, file, {name}) : _source.resolve(file, name);
    }
    /// The same for the first of `names` that exists, as FileFinder::find() has it: beside `file`, beside the
    /// model, and in the search paths. The last of them if none exists or none is looked for.
    QString findFirst(DiagnosticLog::Code code, const QString& file, const QStringList& names);
    /// Whether `path` may be read. Otherwise it lies outside of the model's folder, which is warned of.
    bool isAllowed(const QString& path) const;

private:
    ModelSource& _source;
    const ModelFiles* _files; ///< null if the source is not one of files
    QString _modelFolder;
    DiagnosticLog& _diagnostics;
    std::optional<FileFinder> _finder; ///< absent if nothing is to be repaired
};

} // namespace Atelier::Vel

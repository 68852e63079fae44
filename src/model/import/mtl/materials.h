#pragma once

#include <set>

#include <QtCore/QSet>
#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/modelsource.h>

#include "files/fileversion.h"
#include "import/diagnostics/diagnosticlog.h"
#include "import/mtl/materialvalues.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

class FileReferences;
class MaterialDefinitions;
class TextInput;

/// makeDefaultMaterial() without its white maps, which are made when a GL context is available.
InstanceData makeDefaultMaterialWithoutMaps(MaterialLayout layout);
WhiteMaps defaultWhiteMaps();

/// The material libraries of one load.
class MaterialLibraries {
public:
    /// The arguments must outlive the libraries.
    MaterialLibraries(ModelSource& source, FileReferences& references, const LoadOptions& options,
                      MaterialDefinitions& definitions, DiagnosticLog& diagnostics)
        : _source(source),
          _references(references),
          _options(options),
          _definitions(definitions),
          _diagnostics(diagnostics) {}

    /// Reads the materials of an MTL file, in the order in which the file defines them. Those that are
    /// defined already are unchanged, so a file that was read before and has not changed since is not read
    /// again; nor is one without a version, by its name. A map outside of the allowed files is white, after a
    /// warning.
    /// Returns: false if the file is outside of the allowed files (after a warning), is not a regular file,
    /// or cannot be read.
    bool load(const QString& name);

private:
    bool read(TextInput& text, const QString& name);

    ModelSource& _source;
    FileReferences& _references;
    const LoadOptions& _options;
    MaterialDefinitions& _definitions;
    DiagnosticLog& _diagnostics;
    std::set<FileVersion> _read;
    QSet<QString> _readNames; ///< of libraries without a version
};

} // namespace Atelier::Vel

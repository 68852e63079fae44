#pragma once

#include <set>
#include <utility>

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/modelfiles.h>

#include "files/fileversion.h"
#include "import/diagnostics/diagnosticlog.h"
#include "import/mtl/materialvalues.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

class MaterialDefinitions;

/// makeDefaultMaterial() without its white maps, which are made when a GL context is available.
InstanceData makeDefaultMaterialWithoutMaps(MaterialLayout layout);
WhiteMaps defaultWhiteMaps();

/// The material libraries of one load.
class MaterialLibraries {
public:
    /// The references must outlive the libraries.
    MaterialLibraries(ModelFiles files, const LoadOptions& options, MaterialDefinitions& definitions,
                      DiagnosticLog& diagnostics)
        : _files(std::move(files)), _options(options), _definitions(definitions), _diagnostics(diagnostics) {}

    /// Reads the materials of an MTL file, in the order in which the file defines them. Those that are
    /// defined already are unchanged, so a file that was read before and has not changed since is not read
    /// again. A map outside of the allowed files is white, after a warning. Returns: false if the file is
    /// outside of the allowed files (after a warning), is not a regular file, or cannot be read.
    bool load(const QString& path);

private:
    ModelFiles _files;
    const LoadOptions& _options;
    MaterialDefinitions& _definitions;
    DiagnosticLog& _diagnostics;
    std::set<FileVersion> _read;
};

} // namespace Atelier::Vel

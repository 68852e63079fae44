#pragma once

#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velmodel/loadoptions.h>

#include "import/diagnostics/diagnosticlog.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/materialvalues.h"
#include "mesh/whitemaps.h"

namespace Atelier::Vel {

class FileReferences;
class MtlReader;

/// Collects the lines of one material at a time and defines each material.
class MaterialCollector {
public:
    /// The references must outlive the object. `path` is the name of the text for its source.
    MaterialCollector(QString path, MaterialDefinitions& definitions, FileReferences& references,
                      const LoadOptions& options, DiagnosticLog& diagnostics);

    void take(const MtlReader& line);
    /// Defines the current material.
    void finishMaterial();

private:
    void startMaterial(const MtlReader& line);
    void takeExtended(const MtlReader& line);
    void setModel(float number);
    void setPlacement(const MtlReader& line);
    QString findMap(const MtlReader& line);
    void setMap(const QString& name, const MtlReader& line);

    QString _path;
    MaterialDefinitions& _definitions;
    FileReferences& _references;
    const LoadRepairs& _repairs;
    DiagnosticLog& _diagnostics;
    MaterialLayout _layout;
    InstanceData _blank; ///< the initial state of every material, shared by unchanged ones
    bool _isBlank = false;
    bool _hasMaterial = false;
    MaterialName _name;
    InstanceData _material;
    bool _hasOpacity = false; ///< from a "d" line
    WhiteMaps _whiteMaps;
};

} // namespace Atelier::Vel

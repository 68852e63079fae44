#pragma once

#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <velmodel/drawdata.h>
#include <velmodel/loadoptions.h>
#include <velmodel/loadreport.h>

#include "drawdata/progressmeter.h"
#include "files/textinput.h"
#include "import/diagnostics/diagnosticlog.h"
#include "import/facegroups.h"
#include "import/indexfaults.h"
#include "import/librarylines.h"
#include "import/meshfeed.h"
#include "import/mtl/materialdefinitions.h"
#include "import/mtl/materials.h"
#include "import/obj/objreader.h"
#include "import/recordobserver.h"
#include "import/references/filereferences.h"
#include "import/smoothinggroups.h"
#include "memory/scratchblock.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

/// The error of a load that cannot read the OBJ file `path`.
QString loadFailure(const QString& path);

/// One import: reads the text of a file into a mesh and makes draw data from it.
class ObjImport {
public:
    /// The arguments must outlive the import. `observer` may be null.
    ObjImport(TextInput& text, const QString& path, ModelSource& source, const LoadOptions& options,
              DiagnosticLog::Use diagnostics, RecordObserver* observer = nullptr);

    /// Returns: false, with the reason in `error`, if the text or a library cannot be read or the text has
    /// more data than a stream can hold. Throws Cancelled if `meter` does.
    bool readText(ProgressMeter& meter, QString& error);
    /// Reports why the load fails.
    void reportFailure(LoadDiagnostic::Code code, const QString& message);
    /// Whether the mesh is complete enough to make draw data from it.
    bool hasMesh() const;
    /// Requires: hasMesh(). Throws Cancelled if `meter` does. Consumes the mesh.
    DrawData prepare(ProgressMeter& meter);
    LoadReport report() const;

private:
    using Code = LoadDiagnostic::Code;

    bool readRecords(ProgressMeter& meter, QString& error);
    void readNext();
    bool takeRecord(QString& error);
    void dropFace();
    /// Returns: false, with the reason in `error`, if a library is needed and cannot be read.
    bool loadLibraries(QString& error);
    void removeUnplacedFaces();
    void checkFaces(const IndexFaults& faults, ProgressMeter& meter);
    bool checkFacesByLine(ProgressMeter& meter);
    void reportWholeFile(const IndexFaults& faults);
    qint64 bytesRead() const;
    bool isTooLarge(QString& error);
    void completeNormals(ProgressMeter& meter);

    TextInput& _text;
    const QString& _path;
    qint64 _fileSize; ///< -1 for a sequential device
    const LoadOptions& _options;
    RecordObserver* _observer; ///< may be null
    DiagnosticLog _diagnostics;
    ScratchReuse _memory;
    Mesh _mesh{Input::Consumed};
    FileReferences _references;
    MaterialDefinitions _materials;
    MaterialLibraries _libraries;
    LibraryLines _libraryLines;
    FaceGroups _groups;
    QTextStream _stream;
    ObjReader _reader;
    MeshFeed _feed;
    SmoothingGroups _smoothingGroups;
    quint64 _droppedFaces = 0;
    quint64 _unplacedFaces = 0;
    quint64 _completedCorners = 0; ///< with a generated normal that the file should have
    PreparationStatistics _statistics;
};

} // namespace Atelier::Vel

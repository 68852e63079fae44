#pragma once

#include <functional>

#include <QtCore/QString>

#include <velmodel/loadoptions.h>

#include "import/diagnostics/diagnosticlog.h"
#include "import/obj/objreader.h"

namespace Atelier::Vel {

/// Reports the faces of an OBJ text with indices that do not exist, each with its line. It reads the text
/// once more, since the number of values is known at its end only.
class FaceCheck {
public:
    /// `counts` are the numbers of values in the whole text. `file` is its name. The references must outlive
    /// the check.
    FaceCheck(QString file, const ObjLineCounts& counts, const LoadRepairs& repairs, DiagnosticLog& log);

    /// Reads a text from its start. `poll`, which may throw, is called every 4 MiB.
    /// Cost: one pass over the text with the parser of plain lines.
    void read(
        ObjReader& reader, const std::function<void()>& poll = [] {});

private:
    using Code = LoadDiagnostic::Code;
    struct Fault {
        quint32 corner = 0; ///< the first one concerned
        quint32 count = 0;  ///< of corners
        void add(quint32 at);
    };
    struct Faults {
        Fault position;
        Fault normal;
        Fault texCoord;
        bool any() const { return position.count + normal.count + texCoord.count != 0; }
    };

    template<typename Corners>
    Faults examine(quint32 count, const Corners& corners) const;
    bool lacksNormal(quint32 index) const;
    void checkLine(const ObjReader& reader);
    void checkRun(const ObjReader& reader, const ObjRun& run);
    // `line()` returns the line of the face. It is called only if an observation is kept.
    template<typename Line>
    void report(const Faults& faults, const Line& line);
    template<typename Line, typename Describe>
    void add(Code code, const Fault& fault, const Line& line, const Describe& describe);

    QString _file;
    ObjLineCounts _counts;
    const LoadRepairs& _repairs;
    DiagnosticLog& _log;
};

/// A sentence about corners whose missing normals are generated.
QString describeMissingNormals(quint64 corners);

} // namespace Atelier::Vel

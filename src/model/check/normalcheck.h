#pragma once

#include <QtCore/QString>

#include "check/findinglog.h"
#include "check/sectionlines.h"

namespace Atelier::Vel {

/// Examines the lengths of the normals of a file.
class NormalCheck {
public:
    /// `log` must outlive the object.
    NormalCheck(QString file, FindingLog& log);

    /// Examines a normal of three floats.
    void examine(const float* normal, qint64 line);
    /// Examines the normals of a run.
    void examineAdded(const ObjRun& run, SectionLines lines);

private:
    QString _file;
    FindingLog& _log;
};

} // namespace Atelier::Vel

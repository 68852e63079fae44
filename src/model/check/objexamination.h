#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "check/faceexamination.h"
#include "check/findinglog.h"
#include "check/materialcheck.h"
#include "check/normalcheck.h"
#include "check/sectionlines.h"
#include "check/statements.h"
#include "check/vertexlines.h"
#include "import/obj/objreader.h"
#include "import/recordobserver.h"

namespace Atelier::Vel {

/// Examines the records of an OBJ text while they are read. The reader joins continued lines and numbers
/// them.
class ObjExamination : public RecordObserver {
public:
    /// The arguments must outlive the object.
    ObjExamination(const QString& path, const ModelFiles& files, const LoadOptions& options,
                   const FaceExamination::Options& faceOptions, FindingLog& log);

    ObjRun& run() override { return *_run; }
    void takeRun(const ObjReader& reader) override;
    void takeRecord(const ObjReader& reader, bool isRead) override;
    void finish() override;

    QStringList notExamined() const { return _notExamined; }

private:
    void takeFaces(SectionLines lines);
    void takeFace(const ObjReader& reader);

    QString _path;
    FindingLog& _log;
    std::unique_ptr<ObjRun> _run;
    ObjLineCounts _counts; ///< of the lines that were taken
    std::vector<quint32> _corners;
    StatementCheck _statements;
    NormalCheck _normals;
    VertexLines _vertexLines;
    std::optional<FaceExamination> _faces; ///< until finish(), because it takes much memory
    MaterialCheck _materials;
    QStringList _notExamined;
};

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velmodel/loaddiagnostic.h>
#include <velmodel/loadoptions.h>
#include <velmodel/loadprogress.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// What an examination can find. checkCodeName() returns the name of a code, which never changes.
enum class CheckCode {
    // The file as a whole.
    FileUnreadable,
    FileTooLarge,
    NothingToDraw,
    // Faces.
    FaceMalformed,
    FaceTooFewCorners,
    PositionOutOfRange,
    FaceNotCut,
    TexCoordOutOfRange,
    NormalOutOfRange,
    FaceCrossesItself,
    FaceDegenerate,
    FaceDuplicate,
    FaceOpposite,
    FaceNotPlanar,
    FaceRepeatsVertex,
    // Normals and attributes.
    NormalAgainstFace,
    NormalInFacePlane,
    NormalZero,
    NormalNotUnit,
    TexCoordsMissing,
    NormalsMissing,
    VertexUnused,
    // The text.
    CoordinateNotFinite,
    NumberMalformed,
    DecimalComma,
    NumberMissing,
    TextBehindNumbers,
    VertexWeight,
    VertexColour,
    KeywordUnknown,
    KeywordSkipped,
    LineTooLong,
    CarriageReturn,
    NullCharacter,
    ByteOrderMark,
    ForeignBlank,
    // Materials and textures.
    LibraryMissing,
    LibraryRelocated,
    MaterialUndefined,
    MaterialDefinedTwice,
    MaterialUnused,
    MaterialBlack,
    OpacityContradicts,
    NameMatched,
    MapOptions,
    TextureMissing,
    TextureRelocated,
    TextureUnreadable,
    TextureTooLarge,
    // The extent.
    FarFromOrigin,
    UnusualSize,
};

/// The name of a code: lower-case words with hyphens, such as "face-not-planar".
VELMODEL_EXPORT QString checkCodeName(CheckCode code);

/// One fault or oddity of a model.
struct CheckFinding {
    CheckCode code = CheckCode::FileUnreadable;
    /// Error: a face, a texture or everything is lost. Warning: what is shown probably differs from what was
    /// intended. Note: unusual, and understood.
    LoadDiagnostic::Severity severity = LoadDiagnostic::Severity::Note;
    QString file;
    qint64 line = 0; ///< from 1; 0 for the file as a whole. A continued line has the number of its first line
    int column = 0;  ///< from 1, in decoded characters; 0 for the line as a whole
    QString text;    ///< the text concerned, as it stands in the file
    QString message; ///< one sentence: the cause, and the repair or the consequence
    /// The line, without its end. A part of it, at most kLineTextSize characters, if the line is longer.
    QString lineText;
    int lineTextColumn = 0; ///< the column where `lineText` begins; 0 if the line is not known
    /// The positions of the corners of the face concerned; empty if the finding is not about a single face,
    /// or if it has more than kMaxOutline corners.
    QVector<QVector3D> outline;

    static constexpr int kLineTextSize = 200;
    static constexpr int kMaxOutline = 10'000;
};

/// The result of an examination.
struct ModelCheck {
    /// The maximum number of findings of each code.
    static constexpr int kMaxFindings = 10;

    /// The first findings of each code, the worst severity first, then in the order of the codes.
    QVector<CheckFinding> findings;
    /// The number of all findings of each code; codes without any are absent.
    QMap<CheckCode, quint64> counts;
    /// What was not examined, and why: one sentence each.
    QStringList notExamined;
    quint64 triangles = 0;    ///< that a forgiving load draws
    bool isLoadable = false;  ///< whether a forgiving load succeeds
    bool isCancelled = false; ///< the progress function has cancelled; nothing else is set

    /// Whether there is a finding of this severity or a worse one.
    VELMODEL_EXPORT bool hasAtLeast(LoadDiagnostic::Severity severity) const;
};

/// The options of an examination. The defaults are those of a load.
struct CheckOptions {
    LoadOptions::Files files = LoadOptions::Files::Anywhere;
    QStringList searchPaths;
};

/// Examines an OBJ file with its libraries and textures: what a forgiving load does with them, and where they
/// probably do not say what their author intended.
///
/// The records are examined while the file is loaded. The bytes are read once more, and again up to the last
/// finding, for the text of the lines; if a polygon cannot be cut, the records are examined a second time to
/// find it. Faces are compared by the numbers of their vertices.
/// Threads: any thread, without a context. Several threads may examine files at a time.
/// Cost:    less than twice the time of a load. During the load, the memory of the positions and the normals
///          once more, and 36 bytes a face, of at most 2,097,152 faces; an image of up to 64 MiB. Tables
///          beyond their limits are named in ModelCheck::notExamined.
/// Errors:  throws std::bad_alloc when memory runs out.
VELMODEL_EXPORT ModelCheck checkOBJFile(const QString& path, const CheckOptions& options = {},
                                        const LoadProgress& progress = {});

} // namespace Atelier::Vel

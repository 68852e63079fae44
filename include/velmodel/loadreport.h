#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

#include <velmodel/drawdata.h>
#include <velmodel/loaddiagnostic.h>

namespace Atelier::Vel {

/// A file that a model names.
struct ReferencedFile {
    enum class Kind { Library, Texture };

    Kind kind = Kind::Library;
    QString path; ///< where it is, or is expected: its name for the ModelSource
    /// The paths where it was looked for in vain, at most 16. Empty if it was found; textures are looked for
    /// only if LoadRepairs::findFiles is set.
    QStringList tried;
};

/// What a load counted and observed. The overloads that take a report fill it on success, on failure, and if
/// the load is cancelled; an exception leaves it unchanged. After a failure it has what was counted until
/// then, and a diagnostic of severity Error that says why. A load into a model without a current context only
/// reads the text: the statistics stay 0.
///
/// Cost: with a report, a load counts lines and looks for indices that do not exist. If there are any, it
///       reads the text once more, unless the device is sequential.
struct LoadReport {
    /// The maximum number of entries of a code in `diagnostics`.
    static constexpr int kMaxDiagnostics = 10;
    /// The maximum number of entries in `files`.
    static constexpr int kMaxFiles = 10'000;

    qint64 bytesRead = 0;             ///< size of the OBJ file when it was opened, or what was read of an
                                      ///< unknown one
    quint64 faces = 0;                ///< faces that were read, without the dropped ones
    quint64 droppedFaces = 0;         ///< faces dropped because a corner is not an integer, or, if that is
                                      ///< repaired, has no position
    quint64 facesWithoutGroup = 0;    ///< faces whose material was unknown when they were read
    PreparationStatistics statistics; ///< of merging and triangulating what was read
    /// The first observations of each code, in the order in which they were made.
    QVector<LoadDiagnostic> diagnostics;
    /// The number of all observations of each code; codes without any are absent. For a code of faces these
    /// are faces, except for UndrawnFace, which has one entry for each use of the material, and for a text
    /// that is read once: an entry without a line stands for the whole file.
    QMap<LoadDiagnostic::Code, quint64> diagnosticCounts;
    /// The libraries that the model names, and the textures that its materials name, each path once.
    QVector<ReferencedFile> files;
};

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QMap>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

#include <velmodel/drawdata.h>
#include <velmodel/loaddiagnostic.h>

namespace Atelier::Vel {

/// What a load counted. The overloads that take a report fill it on success.
/// A load into a model without a current context only reads the text: the statistics stay 0.
struct LoadReport {
    /// The most entries of a code in `diagnostics`.
    static constexpr int kMaxDiagnostics = 10;

    qint64 bytesRead = 0;             ///< size of the OBJ file when it was opened, or what was read of an
                                      ///< unknown one
    quint64 faces = 0;                ///< faces that were read, without the dropped ones
    quint64 droppedFaces = 0;         ///< faces dropped because a corner is not an integer, or, if that is
                                      ///< repaired, has no position
    quint64 facesWithoutGroup = 0;    ///< faces whose material was unknown when they were read
    PreparationStatistics statistics; ///< of merging and triangulating what was read
    /// The first observations of each code, in the order in which they were made.
    QVector<LoadDiagnostic> diagnostics;
    /// The number of all observations of each code; codes without any are absent.
    QMap<LoadDiagnostic::Code, quint64> diagnosticCounts;
};

} // namespace Atelier::Vel

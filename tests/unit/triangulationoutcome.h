#pragma once

#include <vector>

#include <QtCore/QVector>

#include <velmodel/triangulation.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/guardedarray.h"
#include "support/messagelog.h"

/// The results of the overloads of Triangulate3D for a polygon, of the library's and of the literal ones.
namespace Atelier::Vel::Testing {

struct TriangulationOutcome {
    QVector<unsigned int> own; ///< about the polygon's own normal
    QVector<unsigned int> given;
    QVector<unsigned short> shortOwn;
    QVector<unsigned short> shortGiven;
    std::vector<LoggedMessage> messages;

    friend bool operator==(const TriangulationOutcome& a, const TriangulationOutcome& b) {
        return a.own == b.own && a.given == b.given && a.shortOwn == b.shortOwn &&
               a.shortGiven == b.shortGiven && a.messages == b.messages;
    }
};

inline TriangulationOutcome libraryOutcome(const TestPolygon& p, MessageLog& log) {
    static GuardedScratch<int> cornerScratch;
    static GuardedScratch<float> positionScratch;
    const int* const corners = cornerScratch.place(p.corners);
    const float* const positions = positionScratch.place(p.positions);
    TriangulationOutcome outcome;
    log.clear();
    Triangulate3D(p.count(), corners, positions, outcome.own);
    Triangulate3D(p.normal, p.count(), corners, positions, outcome.given);
    Triangulate3D(p.count(), corners, positions, outcome.shortOwn);
    Triangulate3D(p.normal, p.count(), corners, positions, outcome.shortGiven);
    outcome.messages = log.messages();
    return outcome;
}

inline TriangulationOutcome literalOutcome(const TestPolygon& p, MessageLog& log) {
    TriangulationOutcome outcome;
    log.clear();
    Literal::triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.own);
    Literal::triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.given);
    Literal::triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.shortOwn);
    Literal::triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.shortGiven);
    outcome.messages = log.messages();
    return outcome;
}

} // namespace Atelier::Vel::Testing

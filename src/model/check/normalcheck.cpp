#include "check/normalcheck.h"

#include <cmath>
#include <utility>

namespace Atelier::Vel {

namespace {

// Programs write three digits or more of each component.
constexpr double kUnitTolerance = 0.02;

double squaredLength(const float* normal) {
    return double(normal[0]) * double(normal[0]) + double(normal[1]) * double(normal[1]) +
           double(normal[2]) * double(normal[2]);
}

bool isUnit(double squaredLength) {
    constexpr double kLow = (1 - kUnitTolerance) * (1 - kUnitTolerance);
    constexpr double kHigh = (1 + kUnitTolerance) * (1 + kUnitTolerance);
    return squaredLength >= kLow && squaredLength <= kHigh;
}

} // namespace

NormalCheck::NormalCheck(QString file, FindingLog& log) : _file(std::move(file)), _log(log) {}

void NormalCheck::examine(const float* normal, qint64 line) {
    const double squared = squaredLength(normal);
    if (isUnit(squared) || !std::isfinite(squared))
        return;
    if (squared == 0)
        return _log.add(CheckCode::NormalZero, {_file, line, 0}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("The normal is zero, and has no direction");
        });
    _log.add(CheckCode::NormalNotUnit, {_file, line, 0}, [squared](CheckFinding& finding) {
        finding.message =
            QStringLiteral("The normal has a length of %1 instead of 1").arg(std::sqrt(squared), 0, 'g', 3);
    });
}

void NormalCheck::examineAdded(const ObjRun& run, SectionLines lines) {
    size_t walked = 0;
    for (size_t i = 0; i < run.normals.size; i += 3) {
        if (isUnit(squaredLength(run.normals.items + i)))
            continue;
        for (; walked <= i; walked += 3)
            lines.toNormal();
        examine(run.normals.items + i, lines.line());
    }
}

} // namespace Atelier::Vel

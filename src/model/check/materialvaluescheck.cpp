#include "check/materialvaluescheck.h"

#include <algorithm>
#include <cmath>

namespace Atelier::Vel {

namespace {

using Kind = MtlReader::Kind;

// Programs write two digits or more.
constexpr float kSameOpacity = 0.01F;

bool isColour(Kind kind) {
    return kind == Kind::Ka || kind == Kind::Kd || kind == Kind::Ks || kind == Kind::Ke;
}

} // namespace

bool isMap(MtlReader::Kind kind) {
    return (kind >= Kind::MapKd && kind <= Kind::MapNs) || (kind >= Kind::MapKe && kind <= Kind::MapKn);
}

bool isNumeric(MtlReader::Kind kind) {
    return kind != Kind::NewMtl && kind < Kind::End && !isMap(kind);
}

void takeLine(CheckedMaterial& material, const MtlReader& line, const FindingPlace& place) {
    const float* const values = line.values();
    if (isColour(line.kind())) {
        // The ambient colour shows nothing by itself.
        const bool isVisible = line.kind() != Kind::Ka;
        const bool isBlack = values[0] == 0.0F && values[1] == 0.0F && values[2] == 0.0F;
        material.hasColour = material.hasColour || (isVisible && !isBlack);
    } else if (line.kind() == Kind::D) {
        material.opacity = *values;
    } else if (line.kind() == Kind::Tr) {
        material.transparency = *values;
        material.transparencyPlace = place;
    } else if (isMap(line.kind())) {
        material.hasMap = true;
    }
}

void examineMaterial(const CheckedMaterial& material, FindingLog& log) {
    if (!material.hasColour && !material.hasMap)
        log.add(CheckCode::MaterialBlack, material.place, [&material](CheckFinding& finding) {
            finding.text = material.name;
            finding.message =
                QStringLiteral("The material '%1' is black: it has no colour and no map").arg(material.name);
        });
    const bool contradicts = material.opacity && material.transparency &&
                             std::fabs(*material.opacity + *material.transparency - 1.0F) > kSameOpacity;
    if (!contradicts)
        return;
    log.add(CheckCode::OpacityContradicts, material.transparencyPlace, [&material](CheckFinding& finding) {
        finding.text = QStringLiteral("Tr %1").arg(double(*material.transparency));
        finding.message = QStringLiteral("Tr %1 contradicts d %2, which is used")
                              .arg(double(*material.transparency))
                              .arg(double(*material.opacity));
    });
}

} // namespace Atelier::Vel

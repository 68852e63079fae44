#pragma once

#include <optional>

#include <QtCore/QString>

#include "check/findinglog.h"
#include "import/mtl/mtlreader.h"

namespace Atelier::Vel {

/// The values of one material, as far as they contradict each other.
struct CheckedMaterial {
    QString name;
    FindingPlace place;     ///< of the line that begins it
    bool hasColour = false; ///< whether a colour is not black
    bool hasMap = false;
    std::optional<float> opacity;      ///< "d"
    std::optional<float> transparency; ///< "Tr"
    FindingPlace transparencyPlace;
};

/// Takes a line that the reader has read.
void takeLine(CheckedMaterial& material, const MtlReader& line, const FindingPlace& place);
/// Examines a material when all of its lines are known.
void examineMaterial(const CheckedMaterial& material, FindingLog& log);

bool isMap(MtlReader::Kind kind);
/// Whether a line has numbers.
bool isNumeric(MtlReader::Kind kind);

} // namespace Atelier::Vel

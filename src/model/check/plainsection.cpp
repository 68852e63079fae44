#include "check/plainsection.h"

#include <QtCore/QtGlobal>

#include "check/bytecounts.h"
#include "import/obj/objrun.h"

namespace Atelier::Vel {

bool hasOnlyOperands(std::string_view lines, const ObjRun& run) {
    const quint64 positions = run.positions.size / 3;
    const quint64 normals = run.normals.size / 3;
    const quint64 texCoords = run.texCoords.size / 2;
    const quint64 faces = run.cornerCounts.size;
    // Up to the last line feed, which nothing of the text follows.
    const WordCounts counts = wordCountsOf(lines.data(), lines.data() + lines.size() - 1);
    // With the keyword of each line, except the first.
    const quint64 positionWords = 4 + static_cast<quint64>(run.colourComponents);
    const quint64 words =
        positionWords * positions + 4 * normals + 3 * texCoords + faces + run.positionIndices.size - 1;
    // The third texture coordinate is an ordinary operand.
    const bool hasWords = counts.words == words || counts.words == words + texCoords;
    return hasWords && !counts.hasOthers && counts.letters == positions + 2 * normals + 2 * texCoords + faces;
}

} // namespace Atelier::Vel

#include <velmodel/loadoptions.h>

namespace Atelier::Vel {

LoadOptions LoadOptions::forgiving() {
    LoadOptions options;
    LoadRepairs& repairs = options.repairs;
    repairs.skipMissingLibraries = true;
    repairs.defineMaterials = true;
    repairs.matchNames = true;
    repairs.parseMapOptions = true;
    repairs.joinContinuedLines = true;
    repairs.findFiles = true;
    repairs.dropUnplacedFaces = true;
    repairs.generateMissingNormals = true;
    return options;
}

} // namespace Atelier::Vel

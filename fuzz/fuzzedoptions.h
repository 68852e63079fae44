#pragma once

#include <cstddef>
#include <cstdint>

#include <velmodel/loadoptions.h>

namespace Atelier::Vel::Fuzzing {

/// The bits that select options: the last bytes of an input, which are a part of its text, too.
inline unsigned int optionBits(const std::uint8_t* data, std::size_t size) {
    unsigned int bits = 0;
    for (std::size_t i = size < 4 ? 0 : size - 4; i < size; ++i)
        bits = bits * 31 + data[i];
    return bits;
}

/// The options of a load for these bits. 0 gives the default options.
inline LoadOptions loadOptions(unsigned int bits) {
    const auto take = [&bits] {
        const bool isSet = bits % 2 != 0;
        bits /= 2;
        return isSet;
    };
    LoadOptions options;
    if (take())
        options.files = LoadOptions::Files::InOwnFolder;
    LoadRepairs& repairs = options.repairs;
    for (bool* const repair :
         {&repairs.skipMissingLibraries, &repairs.defineMaterials, &repairs.matchNames,
          &repairs.parseMapOptions, &repairs.joinContinuedLines, &repairs.findFiles,
          &repairs.dropUnplacedFaces, &repairs.generateMissingNormals, &options.vertexColours,
          &options.splitObjects, &options.extendedMaterials, &options.normals.outward})
        *repair = take();
    options.normals.kind = static_cast<NormalOptions::Kind>(bits % 4);
    options.normals.creaseAngle = static_cast<float>(bits / 4 % 200);
    return options;
}

} // namespace Atelier::Vel::Fuzzing

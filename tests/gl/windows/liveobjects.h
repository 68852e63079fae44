#pragma once

#include <ostream>

namespace Atelier::Vel::Testing {

/// The numbers of GL objects in a context. Buffers, textures and programs are those of all sharing contexts.
struct LiveObjects {
    int buffers = 0;
    int textures = 0;
    int programs = 0;
    int vertexArrays = 0;

    /// Counts the objects of the current context.
    static LiveObjects count();

    friend bool operator==(const LiveObjects& a, const LiveObjects& b) {
        return a.buffers == b.buffers && a.textures == b.textures && a.programs == b.programs &&
               a.vertexArrays == b.vertexArrays;
    }
    friend void PrintTo(const LiveObjects& live, std::ostream* out) {
        *out << live.buffers << " buffers, " << live.textures << " textures, " << live.programs
             << " programs, " << live.vertexArrays << " vertex arrays";
    }
};

} // namespace Atelier::Vel::Testing

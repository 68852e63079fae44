#include "geometry/merging/valuegathering.h"

#include <cstring>

#include "geometry/merging/valuebytes.h"

namespace Atelier::Vel {

void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count, unsigned char* out,
                  const WorkMeter& meter) {
    withStride(attribute.stride, [&](auto value) {
        const quint64 stride = value.stride();
        const auto cornerAt = [corners](quint32 i) { return corners == nullptr ? i : corners[i]; };
        forValues(attribute, stride, count, cornerAt, meter, [=](quint32 i, const unsigned char* bytes) {
            std::memcpy(out + i * stride, bytes, stride);
        });
    });
}

} // namespace Atelier::Vel

#pragma once

#include <epoxy/gl.h>

#include <string>
#include <vector>

#include <velgl/drawoptions.h>

#include "glhooks.h"
#include "texturedfixture.h"

namespace Atelier::Vel::Testing {

constexpr DrawOrder kOrders[] = {DrawOrder::AsGiven, DrawOrder::ByTextures};

/// Returns: bits of zeros and ones, such as "0110".
inline QBitArray bits(const std::string& text) {
    QBitArray result(int(text.size()));
    for (int i = 0; i < result.size(); ++i)
        result.setBit(i, text[std::size_t(i)] == '1');
    return result;
}

/// Returns: a filter of one text of zeros and ones for each drawable.
inline DrawFilter filterOf(std::initializer_list<std::string> texts) {
    QVector<QBitArray> masks;
    for (const std::string& text : texts)
        masks << bits(text);
    return DrawFilter(masks);
}

inline DrawOptions drawing(const DrawFilter& filter, DrawOrder order = DrawOrder::AsGiven) {
    DrawOptions options;
    options.filter = filter;
    options.order = order;
    return options;
}

/// A test of draws of a part of the commands.
class FilterFixture : public TexturedFixture {
protected:
    /// Returns: the numbers of commands of the multi-draws.
    std::vector<int> drawCounts(GPUModel& model, int cells, const DrawOptions& options) const {
        const DrawHook hook;
        drawnWith(model, cells, options);
        std::vector<int> counts;
        for (const DrawCall& call : hook.calls())
            counts.push_back(call.count);
        return counts;
    }
};

} // namespace Atelier::Vel::Testing

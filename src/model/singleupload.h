#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "drawdata/facecutter.h"
#include "modelbuilderdata.h"

namespace Atelier::Vel {

/// For builders that upload once and are thrown away then.
struct SingleUpload {
    /// Lets the builder drop what it was given as soon as the upload has made its own data of it, which
    /// nearly halves the peak of memory of a large mesh. Nothing but that upload may be asked of it
    /// afterwards, and its faces have to be added with addFaces().
    static void expect(ModelBuilder& builder) {
        builder._data->_keepsInput = false;
        builder._data->_listsCorners = false;
        builder._data->_uniformFaces = std::make_unique<UniformFaces>();
    }

    /// Has corners counted while faces are cut, those of large polygons twice. What the meter throws
    /// gives up the upload; the builder can only be destroyed then.
    static void meterCuts(ModelBuilder& builder, WorkMeter meter) {
        builder._data->_cutMeter = std::move(meter);
    }

    /// Adds `count` faces from number `first` on to a group. Returns: false when there is no such group.
    static bool addFaces(ModelBuilder& builder, const QString& group, quint32 first, quint32 count) {
        return builder._data->addFaceRun(group, first, count);
    }

    /// Makes maps of a group's material plain white.
    static void setWhiteMaps(ModelBuilder& builder, const QString& group, const WhiteMaps& maps) {
        const auto found = builder._data->_materialGroups.find(group);
        if (found != builder._data->_materialGroups.end())
            found->whiteMaps = maps;
    }

    using CornerList = ModelBuilder::Data::CornerList;
    /// Adds the indices of `count` corners to all attributes at once, which spares their lists: one of
    /// `listCount` for each of them, the positions' first, which is overwritten.
    /// Returns: false, and nothing is added, where the builder needs the lists: they have to be added one by
    /// one from then on.
    static bool addCorners(ModelBuilder& builder, const CornerList* lists, std::size_t listCount,
                           quint32 count) {
        return builder._data->addCorners(lists, listCount, count);
    }
};

} // namespace Atelier::Vel

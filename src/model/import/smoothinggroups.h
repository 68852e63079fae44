#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include <QtCore/QString>

namespace Atelier::Vel {

/// The smoothing groups of faces, as the "s" lines of a file give them.
class SmoothingGroups {
public:
    /// The faces from number `face` on belong to the group that `text` names: an integer, "on" for 1, and
    /// "off" or any other text for 0. Requires: `face` is not below that of an earlier call.
    void begin(quint64 face, const QString& text) {
        const auto group = text == QLatin1String("on") ? 1 : static_cast<quint32>(text.toInt());
        if (group != (_begins.empty() ? 0 : _begins.back().second))
            _begins.emplace_back(face, group);
    }

    /// The `removed` faces, ascending numbers, no longer count.
    void remove(const std::vector<quint32>& removed) {
        for (auto& [face, group] : _begins)
            face -= static_cast<quint64>(std::lower_bound(removed.begin(), removed.end(), face) -
                                         removed.begin());
    }

    /// The group of each face; 0 for those before the first "s" line.
    std::vector<quint32> ofFaces(quint64 faceCount) const {
        std::vector<quint32> groups(faceCount);
        for (std::size_t i = 0; i < _begins.size(); ++i) {
            const quint64 end = i + 1 < _begins.size() ? _begins[i + 1].first : faceCount;
            std::fill(at(groups, _begins[i].first), at(groups, end), _begins[i].second);
        }
        return groups;
    }

private:
    static std::vector<quint32>::iterator at(std::vector<quint32>& groups, quint64 face) {
        return groups.begin() + static_cast<std::ptrdiff_t>(std::min<quint64>(face, groups.size()));
    }

    std::vector<std::pair<quint64, quint32>> _begins; ///< first face and group; a group differs from the last
};

} // namespace Atelier::Vel

#pragma once

#include <vector>

#include "context/contextgl.h"
#include "drawing/modeltextures.h"

namespace Atelier::Vel {

class InstanceDataCollection;
class InstanceDataPlan;

/// Commands that lie side by side in an indirect buffer and whose materials have the same textures.
struct TextureRun {
    int first = 0; ///< place in the buffer
    int count = 0;
    int set = 0; ///< of TextureSets
};

/// The distinct sets of textures that the materials of a drawable have, in the order of the sets' first
/// commands, and the GL names of their textures in the context that drew last.
class TextureSets {
public:
    /// Finds the sets of the first `commandCount` materials, unless that is known.
    void update(const InstanceDataCollection* materials, int commandCount);
    /// Finds the GL names for the current context `gl`, unless they are known. Loads and makes textures.
    void updateNames(const ContextGL& gl, ModelTextures& textures);

    int commandCount() const { return _commandCount; }
    /// The number of textures in a set.
    int unitCount() const { return _unitCount; }
    int setCount() const { return static_cast<int>(_sets.size()); }
    /// The commands as they were given.
    const std::vector<TextureRun>& runs() const { return _runs; }
    /// A number that changes with the sets.
    quint64 revision() const { return _revision; }

    /// The names of the textures of a set, by unit.
    const unsigned int* names(int set) const {
        return _names.data() + static_cast<std::size_t>(set) * static_cast<std::size_t>(_unitCount);
    }
    /// One bit for each unit on which a set has a texture.
    int presence(int set) const { return _sets[static_cast<std::size_t>(set)].presence; }

private:
    struct Set {
        std::vector<ModelTexture> textures;
        int presence = 0;
    };
    /// Of what the names were found for. All members grow, or have other values in other groups.
    struct Key {
        quint64 group = 0;
        quint64 textures = 0; ///< TextureAccess::revision()
        quint64 model = 0;    ///< revision of the model's loader
        quint64 manager = 0;  ///< revision of the manager's loader

        bool operator==(const Key& other) const {
            return group == other.group && textures == other.textures && model == other.model &&
                   manager == other.manager;
        }
    };

    bool _isKnown = false;
    quint64 _revision = 0;
    const InstanceDataPlan* _plan = nullptr;
    int _commandCount = 0;
    quint64 _itemRevision = 0; ///< CollectionAccess::textureRevision()
    int _unitCount = 0;
    std::vector<Set> _sets;
    std::vector<TextureRun> _runs;
    std::vector<unsigned int> _names;
    Key _key;
};

} // namespace Atelier::Vel

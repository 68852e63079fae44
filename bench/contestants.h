#pragma once

#include <cstdint>
#include <memory>

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

/// What a contestant made of a file. The object keeps the draw data alive; freeing it is not part of a load.
struct Loaded {
    virtual ~Loaded() = default;

    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0; ///< of every buffer and command, 0 where it was not asked for
};

/// Someone who turns an OBJ file into indexed, triangulated, merged streams, grouped by material, with
/// normals.
class Contestant {
public:
    virtual ~Contestant() = default;
    /// For the table.
    virtual QString name() const = 0;
    /// What has to be there before a load and is not part of it; called once in the measuring process.
    virtual void prepare() {}
    /// Returns: null when the file could not be loaded.
    virtual std::unique_ptr<Loaded> load(const QString& path) = 0;
};

/// loadModelFromOBJFile with a context that accepts uploads and keeps nothing.
std::unique_ptr<Contestant> makeVelModel();
/// The same, and a checksum of everything that was uploaded: slower, for checking only.
std::unique_ptr<Contestant> makeCheckedVelModel();
/// loadModelFromOBJFile with a real headless context.
std::unique_ptr<Contestant> makeVelModelWithGL();
/// tinyobjloader, then meshoptimizer's remap of one vertex per corner as its manual has it.
std::unique_ptr<Contestant> makeTinyobj();
/// assimp with Triangulate, JoinIdenticalVertices and GenSmoothNormals.
std::unique_ptr<Contestant> makeAssimp();

} // namespace Atelier::Vel::Bench

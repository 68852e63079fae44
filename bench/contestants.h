#pragma once

#include <cstdint>
#include <memory>

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

/// The result of a load. The object keeps the draw data alive, since freeing it is not part of a load.
struct Loaded {
    virtual ~Loaded() = default;

    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0; ///< of every buffer and command, 0 if it was not requested
};

/// A program that turns an OBJ file into indexed, triangulated, merged streams, grouped by material, with
/// normals.
class Contestant {
public:
    virtual ~Contestant() = default;
    /// The name in the table.
    virtual QString name() const = 0;
    /// Work before a load that is not part of it; called once in the measuring process.
    virtual void prepare() {}
    /// Returns: null if the file could not be loaded.
    virtual std::unique_ptr<Loaded> load(const QString& path) = 0;
};

/// loadModelFromOBJFile with a context that accepts uploads and keeps nothing.
std::unique_ptr<Contestant> makeVelModel();
/// The same, with a checksum of everything that was uploaded. Slower; used for checks only.
std::unique_ptr<Contestant> makeCheckedVelModel();
/// loadModelFromOBJFile with a real headless context.
std::unique_ptr<Contestant> makeVelModelWithGL();
/// tinyobjloader, then meshoptimizer's remap of one vertex per corner, as its manual describes it.
std::unique_ptr<Contestant> makeTinyobj();
/// assimp with Triangulate, JoinIdenticalVertices and GenSmoothNormals.
std::unique_ptr<Contestant> makeAssimp();

} // namespace Atelier::Vel::Bench

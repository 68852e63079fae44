#include "contestants.h"

#include <vector>

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

namespace Atelier::Vel::Bench {

namespace {

/// The importer owns the vertex streams, one mesh per material. Each of its faces has a heap block of
/// indices; they are copied into one array for the GPU.
struct AssimpModel : Loaded {
    Assimp::Importer importer;
    std::vector<unsigned int> indices;
};

void appendIndices(AssimpModel& model, const aiMesh& mesh) {
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face) {
        const aiFace& corners = mesh.mFaces[face];
        if (corners.mNumIndices == 3)
            model.indices.insert(model.indices.end(), corners.mIndices, corners.mIndices + 3);
    }
}

std::size_t indexCount(const aiScene& scene) {
    std::size_t count = 0;
    for (unsigned int mesh = 0; mesh < scene.mNumMeshes; ++mesh)
        count += std::size_t(scene.mMeshes[mesh]->mNumFaces) * 3;
    return count;
}

class AssimpContestant : public Contestant {
public:
    QString name() const override { return QStringLiteral("assimp"); }
    std::unique_ptr<Loaded> load(const QString& path) override {
        auto model = std::make_unique<AssimpModel>();
        const aiScene* scene = model->importer.ReadFile(
            path.toStdString(),
            aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_GenSmoothNormals);
        if (!scene)
            return nullptr;
        model->indices.reserve(indexCount(*scene));
        for (unsigned int mesh = 0; mesh < scene->mNumMeshes; ++mesh) {
            appendIndices(*model, *scene->mMeshes[mesh]);
            model->vertices += scene->mMeshes[mesh]->mNumVertices;
        }
        model->triangles = model->indices.size() / 3;
        return model;
    }
};

} // namespace

std::unique_ptr<Contestant> makeAssimp() {
    return std::make_unique<AssimpContestant>();
}

} // namespace Atelier::Vel::Bench

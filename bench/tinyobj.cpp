#include "contestants.h"

#include <cmath>
#include <vector>

#include <meshoptimizer.h>
#include <tiny_obj_loader.h>

namespace Atelier::Vel::Bench {

namespace {

struct TinyobjModel : Loaded {
    std::vector<float> vertexData;     ///< interleaved: position, normal, texture coordinate
    std::vector<unsigned int> indices; ///< material by material
};

/// The interleaved layout. Attributes that the file lacks are left out, except normals, which are computed.
struct Layout {
    std::size_t normal = 0;
    std::size_t texCoord = 0;
    std::size_t floats = 0;
    bool hasNormals = false;
    bool hasTexCoords = false;
};

Layout layoutOf(const tinyobj::attrib_t& attributes) {
    Layout layout;
    layout.hasNormals = !attributes.normals.empty();
    layout.hasTexCoords = !attributes.texcoords.empty();
    layout.normal = 3;
    layout.texCoord = layout.hasNormals ? 6 : 3;
    layout.floats = layout.texCoord + (layout.hasTexCoords ? 2 : 0);
    return layout;
}

void copyValue(float* target, const std::vector<float>& values, int index, std::size_t components) {
    if (index < 0)
        return;
    for (std::size_t component = 0; component < components; ++component)
        target[component] = values[std::size_t(index) * components + component];
}

std::vector<float> expand(const tinyobj::ObjReader& reader, const Layout& layout, std::size_t corners) {
    const auto& attributes = reader.GetAttrib();
    std::vector<float> vertices(corners * layout.floats);
    float* vertex = vertices.data();
    for (const auto& shape : reader.GetShapes()) {
        for (const auto& index : shape.mesh.indices) {
            copyValue(vertex, attributes.vertices, index.vertex_index, 3);
            if (layout.hasNormals)
                copyValue(vertex + layout.normal, attributes.normals, index.normal_index, 3);
            if (layout.hasTexCoords)
                copyValue(vertex + layout.texCoord, attributes.texcoords, index.texcoord_index, 2);
            vertex += layout.floats;
        }
    }
    return vertices;
}

std::size_t cornerCount(const tinyobj::ObjReader& reader) {
    std::size_t corners = 0;
    for (const auto& shape : reader.GetShapes())
        corners += shape.mesh.indices.size();
    return corners;
}

/// Returns: the merged vertex of each corner.
std::vector<unsigned int> merge(TinyobjModel& model, const std::vector<float>& expanded, std::size_t stride,
                                std::size_t corners) {
    std::vector<unsigned int> remap(corners);
    model.vertices = meshopt_generateVertexRemap(remap.data(), nullptr, corners, expanded.data(), corners,
                                                 stride * sizeof(float));
    model.vertexData.resize(model.vertices * stride);
    meshopt_remapVertexBuffer(model.vertexData.data(), expanded.data(), corners, stride * sizeof(float),
                              remap.data());
    return remap;
}

/// Cuts all faces into fans, sorted by material with a counting sort. The reader does not cut them: its own
/// cutting is slower and fails for some polygons.
void cutAndGroup(TinyobjModel& model, const tinyobj::ObjReader& reader,
                 const std::vector<unsigned int>& corners) {
    std::vector<std::size_t> next(reader.GetMaterials().size() + 2, 0);
    for (const auto& shape : reader.GetShapes())
        for (std::size_t face = 0; face < shape.mesh.material_ids.size(); ++face)
            next[std::size_t(shape.mesh.material_ids[face]) + 2] +=
                (std::size_t(shape.mesh.num_face_vertices[face]) - 2) * 3;
    for (std::size_t material = 1; material < next.size(); ++material)
        next[material] += next[material - 1];
    model.indices.resize(next.back());
    const unsigned int* corner = corners.data();
    for (const auto& shape : reader.GetShapes()) {
        for (std::size_t face = 0; face < shape.mesh.material_ids.size(); ++face) {
            const unsigned int count = shape.mesh.num_face_vertices[face];
            std::size_t& target = next[std::size_t(shape.mesh.material_ids[face]) + 1];
            for (unsigned int step = 2; step < count; ++step) {
                model.indices[target++] = corner[0];
                model.indices[target++] = corner[step - 1];
                model.indices[target++] = corner[step];
            }
            corner += count;
        }
    }
}

void addFaceNormal(std::vector<float>& normals, const std::vector<float>& data, std::size_t stride,
                   const unsigned int* triangle) {
    const float* a = &data[triangle[0] * stride];
    const float* b = &data[triangle[1] * stride];
    const float* c = &data[triangle[2] * stride];
    const float ux = b[0] - a[0];
    const float uy = b[1] - a[1];
    const float uz = b[2] - a[2];
    const float vx = c[0] - a[0];
    const float vy = c[1] - a[1];
    const float vz = c[2] - a[2];
    for (int corner = 0; corner < 3; ++corner) {
        float* normal = &normals[std::size_t(triangle[corner]) * 3];
        normal[0] += uy * vz - uz * vy;
        normal[1] += uz * vx - ux * vz;
        normal[2] += ux * vy - uy * vx;
    }
}

std::vector<float> smoothNormals(const TinyobjModel& model, std::size_t stride) {
    std::vector<float> normals(model.vertices * 3);
    for (std::size_t index = 0; index < model.indices.size(); index += 3)
        addFaceNormal(normals, model.vertexData, stride, &model.indices[index]);
    for (std::size_t vertex = 0; vertex < normals.size(); vertex += 3) {
        float* normal = &normals[vertex];
        const float length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
        for (int axis = 0; axis < 3 && length > 0; ++axis)
            normal[axis] /= length;
    }
    return normals;
}

struct TinyobjModelWithNormals : TinyobjModel {
    std::vector<float> normals;
};

class Tinyobj : public Contestant {
public:
    QString name() const override { return QStringLiteral("tinyobj+meshopt"); }
    std::unique_ptr<Loaded> load(const QString& path) override {
        tinyobj::ObjReaderConfig config;
        config.triangulate = false;
        config.vertex_color = false;
        tinyobj::ObjReader reader;
        if (!reader.ParseFromFile(path.toStdString(), config))
            return nullptr;
        auto model = std::make_unique<TinyobjModelWithNormals>();
        const std::size_t corners = cornerCount(reader);
        const Layout layout = layoutOf(reader.GetAttrib());
        cutAndGroup(*model, reader, merge(*model, expand(reader, layout, corners), layout.floats, corners));
        if (!layout.hasNormals)
            model->normals = smoothNormals(*model, layout.floats);
        model->triangles = model->indices.size() / 3;
        return model;
    }
};

} // namespace

std::unique_ptr<Contestant> makeTinyobj() {
    return std::make_unique<Tinyobj>();
}

} // namespace Atelier::Vel::Bench

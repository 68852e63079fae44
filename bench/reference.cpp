#include "reference.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <QtCore/QFileInfo>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/drawelementsindirectcommand.h>
#include <velmodel/triangulation.h>

#include "layoutsum.h"

namespace Atelier::Vel::Bench {

namespace {

constexpr unsigned int kFloatType = 0x1406;
constexpr std::size_t kShortIndexLimit = 0xFFFF;

struct Attribute {
    explicit Attribute(int componentCount) : components(componentCount) {}

    int components;
    std::vector<float> values;
    std::vector<std::uint32_t> cornerIndices;
    std::vector<float> merged;
};

struct Group {
    std::string name;
    std::vector<std::uint32_t> faces;
    DrawElementsIndirectCommand command;
};

struct PlainModel {
    Attribute position{3};
    Attribute normal{3};
    Attribute texCoord{2};
    std::vector<std::uint32_t> faceStarts{0};
    std::vector<Group> groups{{"<default>", {}, {}}};
    std::size_t currentGroup = 0;
    std::vector<std::uint32_t> corners; ///< merged vertex of each corner
    std::vector<unsigned int> triangles;

    std::array<Attribute*, 3> attributes() { return {&position, &normal, &texCoord}; }
    std::size_t vertices() const { return position.merged.size() / 3; }
};

void readValues(Attribute& attribute, const char* text) {
    for (int component = 0; component < attribute.components; ++component) {
        char* end = nullptr;
        // Decimal to double to float, rounded twice, as in Qt.
        attribute.values.push_back(float(std::strtod(text, &end)));
        text = end;
    }
}

void readFace(PlainModel& model, const char* text) {
    const std::array<Attribute*, 3> written{&model.position, &model.texCoord, &model.normal};
    std::uint32_t corners = 0;
    while (*text == ' ') {
        char* end = nullptr;
        for (std::size_t part = 0; part < written.size(); ++part) {
            written[part]->cornerIndices.push_back(std::uint32_t(std::strtoul(text + 1, &end, 10) - 1));
            text = end;
            if (*text != '/')
                break;
        }
        ++corners;
    }
    model.groups[model.currentGroup].faces.push_back(std::uint32_t(model.faceStarts.size() - 1));
    model.faceStarts.push_back(model.faceStarts.back() + corners);
}

void readMaterialNames(PlainModel& model, const QString& path) {
    std::ifstream library(path.toStdString());
    for (std::string line; std::getline(library, line);)
        if (line.rfind("newmtl ", 0) == 0)
            model.groups.push_back({line.substr(7), {}, {}});
}

PlainModel readText(const QString& path) {
    PlainModel model;
    std::unordered_map<std::string, std::size_t> groupNumbers;
    std::ifstream file(path.toStdString());
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("v ", 0) == 0) {
            readValues(model.position, line.c_str() + 2);
        } else if (line.rfind("vn ", 0) == 0) {
            readValues(model.normal, line.c_str() + 3);
        } else if (line.rfind("vt ", 0) == 0) {
            readValues(model.texCoord, line.c_str() + 3);
        } else if (line.rfind("f ", 0) == 0) {
            readFace(model, line.c_str() + 1);
        } else if (line.rfind("mtllib ", 0) == 0) {
            readMaterialNames(model, QFileInfo(path).path() + QLatin1Char('/') +
                                         QString::fromStdString(line.substr(7)));
            for (std::size_t group = 0; group < model.groups.size(); ++group)
                groupNumbers[model.groups[group].name] = group;
        } else if (line.rfind("usemtl ", 0) == 0) {
            model.currentGroup = groupNumbers.at(line.substr(7));
        }
    }
    return model;
}

void mergeVertices(PlainModel& model) {
    std::unordered_map<std::string, std::uint32_t> known;
    for (std::size_t corner = 0; corner < model.faceStarts.back(); ++corner) {
        std::string key;
        for (const Attribute* attribute : model.attributes()) {
            if (attribute->values.empty())
                continue;
            const std::size_t stride = std::size_t(attribute->components) * sizeof(float);
            const float* value = &attribute->values[std::size_t(attribute->cornerIndices[corner]) *
                                                    std::size_t(attribute->components)];
            key.append(reinterpret_cast<const char*>(value), stride);
        }
        const auto [entry, isNew] = known.try_emplace(std::move(key), std::uint32_t(known.size()));
        model.corners.push_back(entry->second);
        if (!isNew)
            continue;
        const char* bytes = entry->first.data();
        for (Attribute* attribute : model.attributes()) {
            if (attribute->values.empty())
                continue;
            for (int component = 0; component < attribute->components; ++component, bytes += sizeof(float)) {
                float value = 0;
                std::memcpy(&value, bytes, sizeof value);
                attribute->merged.push_back(value);
            }
        }
    }
}

void cutFaces(PlainModel& model) {
    QVector<unsigned int> cut;
    for (auto& group : model.groups) {
        group.command.firstIndex = std::uint32_t(model.triangles.size());
        group.command.instanceCount = 1;
        for (const auto face : group.faces) {
            const auto start = model.faceStarts[face];
            cut.resize(0);
            Triangulate3D(int(model.faceStarts[face + 1] - start),
                          reinterpret_cast<const int*>(&model.corners[start]), model.position.merged.data(),
                          cut);
            model.triangles.insert(model.triangles.end(), cut.begin(), cut.end());
        }
        group.command.count = std::uint32_t(model.triangles.size()) - group.command.firstIndex;
    }
}

QVector3D positionOf(const PlainModel& model, unsigned int vertex) {
    const float* position = &model.position.merged[std::size_t(vertex) * 3];
    return {position[0], position[1], position[2]};
}

void makeNormals(PlainModel& model) {
    std::vector<QVector3D> normals(model.vertices());
    for (std::size_t index = 0; index < model.triangles.size(); index += 3) {
        const unsigned int* triangle = &model.triangles[index];
        const QVector3D origin = positionOf(model, triangle[0]);
        const QVector3D faceNormal =
            QVector3D::crossProduct((positionOf(model, triangle[2]) - origin).normalized(),
                                    (positionOf(model, triangle[1]) - origin).normalized());
        for (int corner = 0; corner < 3; ++corner)
            normals[triangle[corner]] += faceNormal;
    }
    for (auto& normal : normals) {
        normal.normalize();
        for (int axis = 0; axis < 3; ++axis)
            model.normal.merged.push_back(normal[axis]);
    }
}

std::uint64_t checksumOfIndices(const PlainModel& model) {
    if (model.vertices() >= kShortIndexLimit)
        return indexChecksum(model.triangles.data(), int(model.triangles.size()));
    const std::vector<unsigned short> shortened(model.triangles.begin(), model.triangles.end());
    return indexChecksum(shortened.data(), int(shortened.size()));
}

std::uint64_t checksumOf(const PlainModel& model) {
    Checksum sum;
    sum.add(checksumOfIndices(model));
    const std::map<QString, const Attribute*> byName{
        {"va_Normal", &model.normal}, {"va_TexCoord", &model.texCoord}, {"va_Vertex", &model.position}};
    for (const auto& [name, attribute] : byName) {
        if (attribute->merged.empty())
            continue;
        sum.add(name);
        sum.add(
            layoutChecksum(streamChecksum(attribute->merged.data(), attribute->merged.size() * sizeof(float)),
                           attribute->components, kFloatType));
    }
    for (const auto& group : model.groups) {
        if (group.faces.empty())
            continue;
        sum.add(QString::fromStdString(group.name));
        sum.add(&group.command, sizeof group.command);
    }
    return sum.value();
}

} // namespace

Expectation loadPlainly(const QString& path) {
    PlainModel model = readText(path);
    mergeVertices(model);
    cutFaces(model);
    if (model.normal.values.empty())
        makeNormals(model);
    return {model.corners.size(), model.vertices(), model.triangles.size() / 3, checksumOf(model)};
}

Expectation expectationOf(const QString& path) {
    const std::string kept = (path + QStringLiteral(".expected")).toStdString();
    Expectation expected;
    std::ifstream in(kept);
    if (in >> expected.corners >> expected.vertices >> expected.triangles >> expected.checksum)
        return expected;
    expected = loadPlainly(path);
    std::ofstream out(kept);
    out << expected.corners << ' ' << expected.vertices << ' ' << expected.triangles << ' '
        << expected.checksum << '\n';
    return expected;
}

} // namespace Atelier::Vel::Bench

#include "quadmodel.h"

#include <gtest/gtest.h>

#include <velgl/instancedata.h>
#include <velgl/texturemanager.h>
#include <velmodel/modelbuilder.h>

namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kTriangles = 4;

QVector3D vector(const Triple& a) {
    return {float(a.x), float(a.y), float(a.z)};
}

void setColour(InstanceData& material, const char* name, const Triple& colour) {
    const float values[] = {float(colour.x), float(colour.y), float(colour.z)};
    material.set(QLatin1String(name), values, sizeof values);
}

void setNumber(InstanceData& material, const char* name, double number) {
    const auto value = float(number);
    material.set(QLatin1String(name), &value, sizeof value);
}

void setMap(InstanceData& material, const char* name, const QColor& colour) {
    material.setTexture(QLatin1String(name), TextureManager::Instance().colorTexture(colour));
}

InstanceData materialOf(const Fragment& look) {
    InstanceData material(QStringLiteral("OBJMaterial"));
    setColour(material, "Kd", look.diffuse);
    setColour(material, "Ks", look.specular);
    setColour(material, "Ke", look.emission);
    setNumber(material, "Ns", look.exponent);
    setNumber(material, "d", look.opacity);
    if (look.hasMap)
        setMap(material, "map_Kd", look.map);
    if (look.hasEmissionMap)
        setMap(material, "map_Ke", look.emissionMap);
    if (look.specularMap != QColor(Qt::white))
        setMap(material, "map_Ks", look.specularMap);
    if (look.exponentMap != 1)
        setMap(material, "map_Ns", QColor::fromRgbF(look.exponentMap, 0, 0));
    return material;
}

InstanceData instanceOf(const Placement& placement) {
    InstanceData instance(QStringLiteral("InstanceInfo"));
    instance.set(QStringLiteral("ModelMatrix"), placement.model.constData(), 16 * sizeof(float));
    instance.set(QStringLiteral("ModelNormalMatrix"), placement.normals.constData(), 16 * sizeof(float));
    return instance;
}

// View space back to the model's own.
class Origin {
public:
    explicit Origin(const Placement& placement)
        : _camera(placement.camera),
          _unview(placement.camera.view.inverted()),
          _unplace(placement.model.inverted()),
          _unplaceNormals(placement.normals.inverted()) {}

    QVector3D point(const QVector3D& seen) const {
        return _unplace.map(_unview.map(seen) / _camera.scale + _camera.centre);
    }
    QVector3D normal(const QVector3D& seen) const {
        return _unplaceNormals.mapVector(_unview.mapVector(seen));
    }

private:
    const Tool::Camera& _camera;
    QMatrix4x4 _unview;
    QMatrix4x4 _unplace;
    QMatrix4x4 _unplaceNormals;
};

std::vector<QVector3D> cornersOf(const Quad& quad) {
    const QVector3D plane = vector(quad.look.flatNormal).normalized();
    const QVector3D aside = std::abs(plane.x()) < 0.8F ? QVector3D(1, 0, 0) : QVector3D(0, 1, 0);
    const QVector3D v = QVector3D::crossProduct(plane, aside).normalized() * float(quad.halfSide);
    const QVector3D u = QVector3D::crossProduct(v, plane).normalized() * float(quad.halfSide);
    const QVector3D middle = vector(quad.look.position);
    return {middle - u - v, middle + u - v, middle + u + v, middle - u + v};
}

void add(ModelBuilder& builder, const QString& attribute, const QVector3D& value) {
    const float values[] = {value.x(), value.y(), value.z()};
    builder.addValuesToVertexAttribute(attribute, 3, values, kFloat);
}

} // namespace

std::unique_ptr<GPUModel> quadModel(const std::vector<Quad>& quads, const Placement& placement) {
    const QString positions = QStringLiteral("va_Vertex");
    const QString normals = QStringLiteral("va_Normal");
    ModelBuilder builder;
    builder.createVertexAttribute(positions, 3, kFloat, 0, 0);
    builder.createVertexAttribute(normals, 3, kFloat, 0, 0);
    const Origin origin(placement);
    for (unsigned int number = 0; number < quads.size(); ++number) {
        const Quad& quad = quads[number];
        for (const QVector3D& corner : cornersOf(quad))
            add(builder, positions, origin.point(corner));
        add(builder, normals, origin.normal(vector(quad.look.normal)));
        const unsigned int corners[] = {4 * number, 4 * number + 1, 4 * number + 2, 4 * number + 3};
        const unsigned int sameNormal[] = {number, number, number, number};
        builder.addIndicesToVertexAttribute(positions, 4, corners);
        builder.addIndicesToVertexAttribute(normals, 4, sameNormal);
        constexpr unsigned int kCorners = 4;
        builder.addVertexCountsToFaces(1, &kCorners);
        const QString group = QStringLiteral("quad %1").arg(number);
        builder.createMaterialGroup(group, materialOf(quad.look), int(number), 0);
        builder.addFacesToMaterialGroup(group, 1, &number, QString());
    }
    auto model = std::make_unique<GPUModel>();
    builder.upload(model.get(), instanceOf(placement), positions, QString(), kStaticDraw, kTriangles);
    EXPECT_EQ(model->drawableCount(), 1);
    return model;
}

double windowDepth(const QMatrix4x4& projection, const Triple& point) {
    const QVector4D clip = projection * QVector4D(vector(point), 1);
    return 0.5 * double(clip.z()) / double(clip.w()) + 0.5;
}

} // namespace Atelier::Vel::Testing

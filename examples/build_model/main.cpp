// Makes a pyramid in code, uploads it as two draw commands without a display, and prints what the model
// holds.
#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/modelbuilder.h>

using namespace Atelier::Vel;

namespace {

constexpr unsigned int kFloat = 0x1406;      // GL_FLOAT
constexpr unsigned int kStaticDraw = 0x88E4; // GL_STATIC_DRAW
constexpr unsigned int kTriangles = 4;       // GL_TRIANGLES

InstanceData colour(float red, float green, float blue) {
    const float diffuse[] = {red, green, blue};
    InstanceData material("OBJMaterial");
    material.set("Kd", diffuse, sizeof(diffuse));
    return material;
}

void describePyramid(ModelBuilder& builder) {
    const float positions[] = {-1, 0, -1, 1, 0, -1, 1, 0, 1, -1, 0, 1, 0, 1.5F, 0};
    const unsigned int cornersPerFace[] = {4, 3, 3, 3, 3};
    const unsigned int corners[] = {0, 1, 2, 3, 1, 0, 4, 2, 1, 4, 3, 2, 4, 0, 3, 4};
    const unsigned int base[] = {0};
    const unsigned int sides[] = {1, 2, 3, 4};

    builder.createVertexAttribute("va_Vertex", 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", 15, positions, kFloat);
    builder.addIndicesToVertexAttribute("va_Vertex", 16, corners);
    builder.addVertexCountsToFaces(5, cornersPerFace);
    builder.createMaterialGroup("stone", colour(0.5F, 0.5F, 0.5F), -1, 0);
    builder.createMaterialGroup("sand", colour(0.9F, 0.8F, 0.5F), -1, 0);
    builder.addFacesToMaterialGroup("stone", 1, base, "pyramid");
    builder.addFacesToMaterialGroup("sand", 4, sides, "pyramid");
    builder.generateNormals("va_Normal");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent()) {
        qCritical() << error;
        return 1;
    }

    ModelBuilder builder;
    describePyramid(builder);
    GPUModel model;
    builder.upload(&model, InstanceData("InstanceInfo"), "va_Vertex", QString(), kStaticDraw, kTriangles);

    const GPUModel::Bounds bounds = model.bounds();
    qInfo("%s, %s: height %g", qPrintable(model.materialName(0, 0)), qPrintable(model.materialName(0, 1)),
          double(bounds.maximum.y() - bounds.minimum.y()));
    return bounds.isValid ? 0 : 1;
}

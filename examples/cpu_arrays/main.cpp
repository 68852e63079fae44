// Makes a prism in code and prints its draw data without OpenGL: vertices, triangles, commands.
#include <QtCore/QDebug>

#include <velmodel/drawdata.h>
#include <velmodel/modelbuilder.h>

using namespace Atelier::Vel;

namespace {

constexpr unsigned int kFloat = 0x1406; // GL_FLOAT

void describePrism(ModelBuilder& builder) {
    const float positions[] = {0, 0, 0, 2, 0, 0, 1, 0, 1, 0, 3, 0, 2, 3, 0, 1, 3, 1};
    const unsigned int cornersPerFace[] = {3, 3, 4, 4, 4};
    const unsigned int corners[] = {0, 2, 1, 3, 4, 5, 0, 1, 4, 3, 1, 2, 5, 4, 2, 0, 3, 5};
    const unsigned int ends[] = {0, 1};
    const unsigned int sides[] = {2, 3, 4};

    builder.createVertexAttribute("va_Vertex", 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", 18, positions, kFloat);
    builder.addIndicesToVertexAttribute("va_Vertex", 18, corners);
    builder.addVertexCountsToFaces(5, cornersPerFace);
    builder.createMaterialGroup("ends", InstanceData(), -1, 0);
    builder.createMaterialGroup("sides", InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup("ends", 2, ends, "prism");
    builder.addFacesToMaterialGroup("sides", 3, sides, "prism");
    builder.generateNormals("va_Normal");
}

void printVertices(const DrawData& data) {
    for (const DrawData::Attribute& attribute : data.attributes()) {
        const auto* value = static_cast<const float*>(attribute.data);
        qInfo("%s:", qPrintable(attribute.name));
        for (quint64 vertex = 0; vertex < attribute.vertexCount; ++vertex, value += attribute.components)
            qInfo("  %g %g %g", double(value[0]), double(value[1]), double(value[2]));
    }
}

void printCommand(const DrawData& data, int drawable, int command) {
    const DrawElementsIndirectCommand& drawn = data.command(drawable, command);
    const DrawData::Box box = data.commandBox(drawable, command);
    qInfo("%s, %g high:", qPrintable(data.group(drawable, command).name),
          double(box.maximum.y() - box.minimum.y()));
    const quint32* corner = data.indices().data + drawn.firstIndex;
    for (quint32 i = 0; i < drawn.count; i += 3, corner += 3)
        qInfo("  %u %u %u", corner[0], corner[1], corner[2]);
}

} // namespace

int main() {
    ModelBuilder builder;
    describePrism(builder);
    const DrawData data = builder.prepare("va_Vertex");
    if (data.isNull())
        return 1;
    printVertices(data);
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command)
            printCommand(data, drawable, command);
    return 0;
}

#pragma once

#include <memory>

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QVector3D>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedata.h>

namespace Atelier::Vel {
class BufferObject;
class DrawBuffers;
class InstanceDataCollection;
class Program;
} // namespace Atelier::Vel

namespace Atelier::Vel::Testing {

/// Registers the plans "TestMaterial" (a float, a colour, two textures "first" and "second") and
/// "TestInstance" (a matrix "placement").
void registerTestPlans();

/// Returns: a material with that colour and no textures.
InstanceData coloredMaterial(const QColor& color);
/// Returns: an instance that moves the triangles of its command by `offset`.
InstanceData movedInstance(const QVector3D& offset);

/// Returns: a buffer with the bytes of the elements, uploaded in the current context.
template<typename Element>
QSharedPointer<BufferObject> bufferOf(const QVector<Element>& elements);
QSharedPointer<BufferObject> bufferOfBytes(const void* data, int count, int elementSize);

template<typename Element>
QSharedPointer<BufferObject> bufferOf(const QVector<Element>& elements) {
    return bufferOfBytes(elements.constData(), elements.size(), int(sizeof(Element)));
}

/// Returns: a row of `cells` right triangles side by side, each in its own cell of a picture that is `cells`
/// wide: three vertices and three indices per triangle, one command per triangle, 16-bit indices. Attribute
/// "va_Vertex".
DrawBuffers* triangleRow(int cells);

/// Returns: a command that draws triangle `cell` of a row.
DrawElementsIndirectCommand cellCommand(int cell);

extern const char* const kSceneVertexShader;
extern const char* const kSceneFragmentShader;
/// Returns: a program of these two shaders. It moves vertices by the "placement" of their instance and paints
/// with the "color" of their material, multiplied by the textures of the material.
std::unique_ptr<Program> sceneProgram();

/// Returns: a program that paints the number of the command: red is 10 for the first command, 20 for the
/// second.
std::unique_ptr<Program> commandProgram();

/// Returns: the colour of the first triangle of a model of rows, drawn with a program of its own.
/// Requires: a current context.
QColor rowColor(GPUModel& model);

/// Adds one drawable: a row with one command, material and instance per triangle.
void addRow(GPUModel& model, const QList<QColor>& colors);

} // namespace Atelier::Vel::Testing

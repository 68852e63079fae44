#include "mixedmodel.h"

#include <numeric>

#include <QtCore/QSharedPointer>
#include <QtGui/QColor>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kLines = 1;
constexpr unsigned int kTriangles = 4;
constexpr int kVertices = 12;

template<typename Element>
QSharedPointer<BufferObject> bufferOf(const std::vector<Element>& elements) {
    const auto buffer = OpenGLDeviceContext::current()->createBufferObject();
    buffer->uploadArbitraryData(elements.data(), int(elements.size()), kStaticDraw, sizeof(Element));
    return buffer;
}

QSharedPointer<VertexArrayObject> vertices() {
    std::vector<float> positions(3 * kVertices);
    std::iota(positions.begin(), positions.end(), -4.0F);
    std::vector<unsigned char> weights(4 * kVertices);
    std::iota(weights.begin(), weights.end(), 100);
    const auto array = OpenGLDeviceContext::current()->createVertexArrayObject();
    array->registerBO(QStringLiteral("va_Vertex"), bufferOf(positions), 3, kFloat);
    array->registerBO(QStringLiteral("aa_Weight"), bufferOf(weights), 4, kUnsignedByte);
    return array;
}

InstanceData metal() {
    constexpr float kOpacity = 0.25F;
    InstanceData material(QStringLiteral("OBJMaterial"));
    material.set(QStringLiteral("d"), &kOpacity, sizeof kOpacity);
    material.setTexture(QStringLiteral("map_Kd"), QStringLiteral("/maps/metal.png"));
    return material;
}

InstanceData paint() {
    InstanceData material(QStringLiteral("OBJMaterial"));
    material.setTexture(QStringLiteral("map_Ks"), TextureManager::Instance().colorTexture(Qt::white));
    return material;
}

InstanceData placement() {
    constexpr float kTag[] = {0.5F, -2};
    InstanceData instance(QStringLiteral("InstanceInfo"));
    instance.set(QStringLiteral("tag"), kTag, sizeof kTag);
    return instance;
}

} // namespace

std::unique_ptr<GPUModel> mixedModel() {
    std::vector<unsigned short> indices(kVertices);
    std::iota(indices.begin(), indices.end(), quint16(0));
    const auto indexBuffer = bufferOf(indices);
    const auto array = vertices();
    const auto drawable = [&](unsigned int primitive, const QVector<DrawElementsIndirectCommand>& commands) {
        auto buffers = std::make_unique<DrawBuffers>();
        buffers->setVAO(array);
        buffers->setIndexedDraw(indexBuffer, kVertices, kUnsignedShort);
        buffers->setVertexCount(kVertices);
        buffers->setPrimitiveType(primitive);
        buffers->setDrawElementsIndirectCommands(commands.constData(), commands.size());
        return buffers.release();
    };
    auto model = std::make_unique<GPUModel>();
    model->add(drawable(kTriangles, {{3, 1, 0, 5, 7}, {6, 2, 3, 1, 4}, {0, 8, 9, 10, 11}}), 1,
               new InstanceDataCollection(QStringLiteral("OBJMaterial"), {metal(), paint()}), nullptr, 7);
    model->add(drawable(kLines, {{2, 3, 9, 1, 0}}), 1, nullptr,
               new InstanceDataCollection(QStringLiteral("InstanceInfo"), {placement()}), quint64(1) << 40);
    model->addMaterialName(0, 0, QStringLiteral("metal"));
    model->addMaterialName(0, 1, QStringLiteral("paint"));
    model->addObjectName(0, 1, QStringLiteral("door"));
    model->addObjectName(1, 0, QStringLiteral("wire"));
    return model;
}

} // namespace Atelier::Vel::Testing

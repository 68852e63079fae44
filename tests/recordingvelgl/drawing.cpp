#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>

#include <vector>

#include <velgl/vertexarrayobject.h>

#include "callrecord.h"

namespace Atelier::Vel {

using Testing::CallRecord;
using Testing::hexadecimal;
using Testing::quoted;
using Testing::recordCall;

struct DrawBuffers::Data {
    QSharedPointer<VertexArrayObject> vao;
    QSharedPointer<BufferObject> indices;
};

DrawBuffers::DrawBuffers(QObject* parent) : QObject(parent), _data(std::make_unique<Data>()) {
    const QString name = CallRecord::instance().number(this, QStringLiteral("drawable"));
    CallRecord::instance().add(
        QStringLiteral("new %1, %2")
            .arg(name, parent ? QStringLiteral("with a parent") : QStringLiteral("without parent")));
}

DrawBuffers::~DrawBuffers() {
    CallRecord::instance().forget(this);
}

void DrawBuffers::setVAO(QSharedPointer<VertexArrayObject> vao) {
    recordCall(this, QStringLiteral("setVAO ") + CallRecord::instance().nameOf(vao.data()));
    _data->vao = std::move(vao);
}

QSharedPointer<VertexArrayObject> DrawBuffers::VAO() const {
    recordCall(this, QStringLiteral("VAO"));
    return _data->vao;
}

void DrawBuffers::setIndexedDraw(QSharedPointer<BufferObject> indices, int count, unsigned int type) {
    recordCall(this, QStringLiteral("setIndexedDraw %1, %2, type %3")
                         .arg(CallRecord::instance().nameOf(indices.data()))
                         .arg(count)
                         .arg(hexadecimal(type)));
    _data->indices = std::move(indices);
}

void DrawBuffers::setVertexCount(unsigned int count) {
    recordCall(this, QStringLiteral("setVertexCount %1").arg(count));
}

void DrawBuffers::setPrimitiveType(unsigned int type) {
    recordCall(this, QStringLiteral("setPrimitiveType %1").arg(hexadecimal(type)));
}

void DrawBuffers::setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count) {
    QString text = QStringLiteral("setDrawElementsIndirectCommands");
    for (int i = 0; i < count; ++i)
        text += QStringLiteral(" (%1 %2 %3 %4 %5)")
                    .arg(commands[i].count)
                    .arg(commands[i].instanceCount)
                    .arg(commands[i].firstIndex)
                    .arg(commands[i].baseVertex)
                    .arg(commands[i].baseInstance);
    recordCall(this, text);
}

struct GPUModel::Data {
    std::vector<std::unique_ptr<DrawBuffers>> drawables;
    std::vector<std::unique_ptr<InstanceDataCollection>> collections;
    Refill refill;
};

GPUModel::GPUModel() : _data(std::make_unique<Data>()) {
    CallRecord::instance().add(QStringLiteral("new ") +
                               CallRecord::instance().number(this, QStringLiteral("model")));
}

GPUModel::~GPUModel() {
    CallRecord::instance().forget(this);
}

// The numbers of drawables do not begin at 0, which detects a caller that counts by itself.
int GPUModel::add(DrawBuffers* buffers, int instanceCount, InstanceDataCollection* materials,
                  InstanceDataCollection* instances, const quint64& key) {
    constexpr int kFirstNumber = 10;
    const CallRecord& record = CallRecord::instance();
    const int number = kFirstNumber + static_cast<int>(_data->drawables.size());
    _data->drawables.emplace_back(buffers);
    _data->collections.emplace_back(materials);
    _data->collections.emplace_back(instances);
    recordCall(this, QStringLiteral("add %1, instance count %2, materials %3, instances %4, key %5 -> %6")
                         .arg(record.nameOf(buffers))
                         .arg(instanceCount)
                         .arg(record.nameOf(materials), record.nameOf(instances))
                         .arg(key)
                         .arg(number));
    return number;
}

void GPUModel::setLabel(const QString& label) {
    recordCall(this, QStringLiteral("setLabel ") + quoted(label.section(QLatin1Char('/'), -1)));
}

void GPUModel::setTextureLoader(TextureLoader /*loader*/) {
    recordCall(this, QStringLiteral("setTextureLoader"));
}

void GPUModel::setRefill(Refill refill) {
    recordCall(this, refill ? QStringLiteral("setRefill") : QStringLiteral("setRefill null"));
    _data->refill = std::move(refill);
}

void GPUModel::setCommandBounds(int drawable, const QVector<Bounds>& bounds) {
    recordCall(this, QStringLiteral("setCommandBounds %1 %2").arg(drawable).arg(bounds.size()));
}

GPUModel::Refill GPUModel::refill() const {
    return _data->refill;
}

void GPUModel::addMaterialName(int drawable, int command, const QString& name) {
    recordCall(this,
               QStringLiteral("addMaterialName %1, %2, %3").arg(drawable).arg(command).arg(quoted(name)));
}

void GPUModel::addObjectName(int drawable, int command, const QString& name) {
    recordCall(this, QStringLiteral("addObjectName %1, %2, %3").arg(drawable).arg(command).arg(quoted(name)));
}

} // namespace Atelier::Vel

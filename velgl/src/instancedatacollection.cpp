#include "scopedbinding.h"

#include <velgl/instancedatacollection.h>

#include <algorithm>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "bufferoperations.h"
#include "glerrors.h"

namespace Atelier::Vel {

struct InstanceDataCollection::Data {
    GLNames storage;
    int itemCount = 0; // in the storage, items that only fill it up included
    RefusalReport report{"Storage"};
};

InstanceDataCollection::InstanceDataCollection(const QString& name, const QList<InstanceData>& items)
    : _name(name), _items(items), _data(std::make_unique<Data>()) {}

InstanceDataCollection::~InstanceDataCollection() = default;

const InstanceDataPlan* InstanceDataCollection::plan() const {
    return InstanceDataRegistry::Instance().plan(_name);
}

QByteArray InstanceDataCollection::packed() const {
    const InstanceDataPlan* known = plan();
    return known ? known->pack(_items) : QByteArray();
}

bool InstanceDataCollection::bindStorage(unsigned int bindingPoint, int itemCount) {
    const unsigned int name = storage(itemCount);
    if (name == 0)
        return false;
    // Binding to an indexed point binds to the target as well.
    const GLuint previous = currentName(GL_SHADER_STORAGE_BUFFER_BINDING);
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, bindingPoint, name);
    rebindBuffer(GL_SHADER_STORAGE_BUFFER, previous);
    return true;
}

QByteArray InstanceDataCollection::readBack() {
    if (storage(0) == 0)
        return {};
    const ContextGL* gl = ContextGL::current();
    return readBuffer(*gl, *_data->storage.find(*gl->group()));
}

unsigned int InstanceDataCollection::storage(int itemCount) {
    const ContextGL* gl = ContextGL::current();
    if (!gl)
        return 0;
    const GLName* name = _data->storage.find(*gl->group());
    if (name && itemCount <= _data->itemCount)
        return name->value();
    const InstanceDataPlan* known = plan();
    if (!known || known->stride() == 0)
        return 0;
    const int missing = std::max(itemCount - _items.size(), 0);
    const QByteArray content = known->pack(_items) + QByteArray(missing * known->stride(), '\0');
    if (content.isEmpty())
        return 0;
    GLName made = name ? GLName() : makeBuffer(*gl, _name);
    const GLName& target = name ? *name : made;
    if (!target.isAlive() || !fillBuffer(*gl, target, content.constData(), content.size(), GL_STATIC_DRAW)) {
        _data->report.refuse("filled", _name);
        _data->itemCount = 0;
        return 0;
    }
    if (!name)
        name = &_data->storage.add(std::move(made));
    _data->report.itWorks();
    _data->itemCount = _items.size() + missing;
    return name->value();
}

} // namespace Atelier::Vel

#include "state/scopedbinding.h"

#include <velgl/instancedatacollection.h>

#include <algorithm>
#include <atomic>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "objects/bufferoperations.h"
#include "objects/glnames.h"

namespace Atelier::Vel {

struct InstanceDataCollection::Data {
    // The buffer in one group of contexts.
    struct Storage {
        GLName name;
        int itemCount = 0; // in the buffer, with added items of zeros; 0 until it is filled
    };

    std::atomic<const InstanceDataPlan*> plan{nullptr}; // null until one is registered
    GLNameTable<Storage> storages;
    FailureReport report{"Storage"};

    Storage& in(const ContextGL& gl);
};

// Returns: the storage of the context's group. Its name is not alive before the first upload.
InstanceDataCollection::Data::Storage& InstanceDataCollection::Data::in(const ContextGL& gl) {
    Storage* storage = storages.find(*gl.group());
    return storage ? *storage : storages.add({});
}

InstanceDataCollection::InstanceDataCollection(const QString& name, const QList<InstanceData>& items)
    : _name(name), _items(items), _data(std::make_unique<Data>()) {}

InstanceDataCollection::~InstanceDataCollection() = default;

// A plan stays registered, and another one of its name is left out.
const InstanceDataPlan* InstanceDataCollection::plan() const {
    if (const InstanceDataPlan* known = _data->plan)
        return known;
    const InstanceDataPlan* found = InstanceDataRegistry::Instance().plan(_name);
    _data->plan = found;
    return found;
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
    const ContextGL* gl = enterCurrentContext();
    return readBuffer(*gl, _data->in(*gl).name);
}

unsigned int InstanceDataCollection::storage(int itemCount) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl)
        return 0;
    Data::Storage& storage = _data->in(*gl);
    if (storage.itemCount > 0 && itemCount <= storage.itemCount)
        return storage.name.value();
    const InstanceDataPlan* known = plan();
    if (!known || known->stride() == 0)
        return 0;
    const int missing = std::max(itemCount - _items.size(), 0);
    const QByteArray content = known->pack(_items) + QByteArray(missing * known->stride(), '\0');
    if (content.isEmpty())
        return 0;
    if (!storage.name.isAlive())
        storage.name = makeBuffer(*gl, _name);
    storage.itemCount = 0;
    if (!storage.name.isAlive() ||
        !fillBuffer(*gl, storage.name, content.constData(), content.size(), GL_STATIC_DRAW)) {
        _data->report.failed("filled", _name);
        return 0;
    }
    _data->report.succeeded();
    storage.itemCount = _items.size() + missing;
    return storage.name.value();
}

} // namespace Atelier::Vel

#include "state/scopedbinding.h"

#include <velgl/instancedatacollection.h>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include <QtCore/QSet>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "context/log.h"
#include "instances/collectionaccess.h"
#include "instances/itempacking.h"
#include "objects/bufferoperations.h"
#include "objects/changedbytes.h"
#include "objects/glnames.h"

namespace Atelier::Vel {

namespace {

// Returns: whether both items have the same textures, as far as `plan` has them.
bool haveSameTextures(const InstanceData& a, const InstanceData& b, const InstanceDataPlan& plan) {
    const QStringList members = plan.textureNames();
    return std::all_of(members.cbegin(), members.cend(), [&](const QString& member) {
        return a.hasTexture(member) == b.hasTexture(member) &&
               a.texturePath(member) == b.texturePath(member) && a.texture(member) == b.texture(member);
    });
}

// Replaces `bytes` by the packed items `first` to `end - 1`, without warnings.
void pack(const InstanceDataPlan& plan, const QList<InstanceData>& items, int first, int end,
          std::vector<char>& bytes) {
    const int stride = plan.stride();
    bytes.assign(std::size_t(end - first) * std::size_t(stride), 0);
    for (int i = first; i < end; ++i)
        packItem(plan, items[i], bytes.data() + qint64(i - first) * stride,
                 [](const InstanceDataPlan::Member&) {});
}

// Returns: the range in which both differ; an empty one if they are equal.
ByteRange difference(const std::vector<char>& a, const std::vector<char>& b) {
    const auto first = std::mismatch(a.cbegin(), a.cend(), b.cbegin()).first;
    if (first == a.cend())
        return {};
    const auto behindLast = std::mismatch(a.crbegin(), a.crend(), b.crbegin()).first.base();
    return {first - a.cbegin(), behindLast - a.cbegin()};
}

} // namespace

struct InstanceDataCollection::Data {
    // The buffer in one group of contexts.
    struct Storage {
        GLName name;
        int itemCount = 0;    // in the buffer, with added items of zeros; 0 until it is filled
        ChangedBytes changed; // bytes of items that were replaced after it was filled
    };

    std::atomic<const InstanceDataPlan*> plan{nullptr}; // null until one is registered
    GLNameTable<Storage> storages;
    FailureReport report{"Storage"};
    quint64 revision = 1;
    quint64 textureRevision = 1;
    QSet<QString> reportedMembers; // with a value of another size
    bool isIndexReported = false;
    bool isSizeReported = false;
    std::vector<char> scratch; // keeps its memory from frame to frame
    std::vector<char> otherScratch;

    Storage& in(const ContextGL& gl);
    bool isFilled();
    void addChange(qint64 offset, const ByteRange& range);
    void reportWrongSizes(const InstanceDataPlan& known, const InstanceData& item);
    void uploadChanges(const ContextGL& gl, const QList<InstanceData>& items, Storage& storage);
};

// Returns: the storage of the context's group. Its name is not alive before the first upload.
InstanceDataCollection::Data::Storage& InstanceDataCollection::Data::in(const ContextGL& gl) {
    Storage* storage = storages.find(*gl.group());
    return storage ? *storage : storages.add({});
}

bool InstanceDataCollection::Data::isFilled() {
    bool isFilled = false;
    storages.forEach([&](const Storage& storage) { isFilled = isFilled || storage.itemCount > 0; });
    return isFilled;
}

void InstanceDataCollection::Data::reportWrongSizes(const InstanceDataPlan& known, const InstanceData& item) {
    std::vector<char> unused(std::size_t(known.stride()));
    packItem(known, item, unused.data(), [&](const InstanceDataPlan::Member& member) {
        if (!reportedMembers.contains(member.name))
            warnOfWrongSize(known, member, item);
        reportedMembers.insert(member.name);
    });
}

void InstanceDataCollection::Data::uploadChanges(const ContextGL& gl, const QList<InstanceData>& items,
                                                 Storage& storage) {
    const InstanceDataPlan& known = *plan;
    const int stride = known.stride();
    for (const ByteRange& range : storage.changed.joined()) {
        const auto first = static_cast<int>(range.begin / stride);
        const auto last = static_cast<int>((range.end - 1) / stride);
        pack(known, items, first, last + 1, scratch);
        writeBuffer(gl, storage.name, range.begin, scratch.data() + (range.begin - qint64(first) * stride),
                    range.end - range.begin);
    }
    storage.changed.clear();
}

quint64 CollectionAccess::revision(const InstanceDataCollection& collection) {
    return collection._data->revision;
}

quint64 CollectionAccess::textureRevision(const InstanceDataCollection& collection) {
    return collection._data->textureRevision;
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

bool InstanceDataCollection::set(int index, const InstanceData& item) {
    if (index < 0 || index >= _items.size()) {
        if (!std::exchange(_data->isIndexReported, true))
            qCWarning(velglLog, "Collection '%s' has %d items and no item %d to be set", qPrintable(_name),
                      _items.size(), index);
        return false;
    }
    InstanceData replacement = item; // it may be an item of this list
    InstanceData& known = _items[index];
    noteChange(index, known, replacement);
    std::swap(known, replacement);
    return true;
}

// Called before the change: if memory runs out, the buffers still have what the items are.
void InstanceDataCollection::noteChange(int index, const InstanceData& before, const InstanceData& after) {
    Data& data = *_data;
    const InstanceDataPlan* known = plan();
    if (known && known->stride() > 0 && data.isFilled()) {
        data.reportWrongSizes(*known, after);
        pack(*known, {before}, 0, 1, data.scratch);
        pack(*known, {after}, 0, 1, data.otherScratch);
        data.addChange(qint64(index) * known->stride(), difference(data.scratch, data.otherScratch));
    }
    ++data.revision;
    if (!known || !haveSameTextures(before, after, *known))
        ++data.textureRevision;
}

void InstanceDataCollection::Data::addChange(qint64 offset, const ByteRange& range) {
    if (range.begin == range.end)
        return;
    storages.forEach([&](Storage& storage) {
        if (storage.itemCount > 0)
            storage.changed.add({offset + range.begin, offset + range.end});
    });
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

unsigned int InstanceDataCollection::storage(qint64 itemCount) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl)
        return 0;
    Data::Storage& storage = _data->in(*gl);
    if (storage.itemCount > 0 && itemCount <= storage.itemCount) {
        _data->uploadChanges(*gl, _items, storage);
        return storage.name.value();
    }
    const InstanceDataPlan* known = plan();
    if (!known || known->stride() == 0)
        return 0;
    const qint64 count = std::max<qint64>(itemCount, _items.size());
    if (count > kMaxReadBackSize / known->stride()) {
        if (!std::exchange(_data->isSizeReported, true))
            qCWarning(velglLog, "%lld items of '%s' are too many for one buffer", count, qPrintable(_name));
        return 0;
    }
    const auto size = static_cast<int>(count * known->stride());
    if (size == 0)
        return 0;
    if (!storage.name.isAlive())
        storage.name = makeBuffer(*gl, _name);
    storage.itemCount = 0;
    storage.changed.clear();
    const QByteArray content = known->pack(_items).leftJustified(size, '\0');
    if (!storage.name.isAlive() ||
        !fillBuffer(*gl, storage.name, content.constData(), content.size(), GL_STATIC_DRAW)) {
        _data->report.failed("filled", _name);
        return 0;
    }
    _data->report.succeeded();
    storage.itemCount = static_cast<int>(count);
    return storage.name.value();
}

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceDataPlan;

/// The materials, or the instances, of a drawable. Item i of the materials belongs to command i, and so does
/// item i of the instances if the drawable has one instance. Of n instances, instance i of command c has item
/// c * n + i, see GPUModel::add(). The plan of the collection's name packs the items into one storage buffer
/// for each group of sharing contexts.
///
/// The number of items does not change; each item may be replaced between two draws. The plan must be
/// registered before the collection is drawn first, see InstanceDataRegistry.
/// Threads: functions that need a context are called on its thread. The destructor may run on any; see
/// Bindable.
class VELGL_EXPORT InstanceDataCollection {
public:
    /// `name` is that of the plan; the names of the items do not count. Makes no OpenGL call.
    InstanceDataCollection(const QString& name, const QList<InstanceData>& items);
    /// Deletes the buffers, each at once or with the next use of VelGL in a context of its group.
    ~InstanceDataCollection();
    InstanceDataCollection(const InstanceDataCollection&) = delete;
    InstanceDataCollection& operator=(const InstanceDataCollection&) = delete;

    /// Returns: the name of the plan.
    const QString& name() const { return _name; }
    /// Returns: the items, by command.
    const QList<InstanceData>& items() const { return _items; }

    /// Replaces item `index`. Each group of contexts gets the bytes that differ with its next draw or
    /// bindStorage(), also after it was lost and filled again. An item may have any name; see
    /// InstanceDataPlan::pack() for values that do not fit the plan. A warning names each member with such
    /// values once.
    /// Returns: false, with nothing changed, if there is no such item; a warning names the collection the
    /// first time.
    /// Requires: the thread of the context that draws, or no draw yet. Makes no OpenGL call.
    /// Cost: packs the item before and after the change. The upload is one call for each range of bytes that
    /// differ; of more than 16 ranges, those with at most 256 bytes between them are uploaded together. An
    /// item with other textures has the textures of all commands compared again with the next draw.
    bool set(int index, const InstanceData& item);

    /// Returns: the items as their plan packs them, see InstanceDataPlan::pack(); empty when no plan of this
    /// name is registered. Needs no context.
    /// Cost: packs all items in each call.
    QByteArray packed() const;
    /// Returns: the registered plan of this collection's name; null when there is none.
    const InstanceDataPlan* plan() const;
    /// Binds the packed items to the shader storage binding point `bindingPoint` and leaves them bound there;
    /// the general binding of GL_SHADER_STORAGE_BUFFER stays as it was. When there are fewer items than
    /// `itemCount`, items of zeros follow them in the buffer, so that a shader may read `itemCount` items.
    /// Requires: a current context.
    /// Returns: false, with nothing bound, when there is no context, when no plan is registered or it has no
    /// value members, and when there are no items and `itemCount` is 0. Also when the driver cannot store the
    /// items: a warning names the collection then, once until it succeeds. Also, after one warning, when the
    /// items are more than a QByteArray holds (about 2 GiB).
    /// Cost: packs and uploads the items with the first call in each group of contexts, and again when the
    /// buffer there holds fewer than `itemCount`; else a few OpenGL calls, and the upload of what set() has
    /// changed.
    bool bindStorage(unsigned int bindingPoint, int itemCount = 0);
    /// Reads the storage buffer back from OpenGL; uploads the items first if bindStorage() has not done so.
    /// No binding changes.
    /// Returns: the bytes, with the items of zeros that bindStorage() added; empty where bindStorage() would
    /// return false.
    /// Cost: waits until the GPU has finished with the buffer, then copies it. For tests and tools.
    QByteArray readBack();

private:
    friend struct CollectionAccess;

    // The GL name of the storage buffer in the current context; 0 when there is none.
    unsigned int storage(qint64 itemCount);
    void noteChange(int index, const InstanceData& before, const InstanceData& after);

    struct Data;
    QString _name;
    QList<InstanceData> _items;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <velgl/instancedata.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceDataPlan;

/// The instance data of a drawable's commands, packed by the plan of the collection's name into a storage
/// buffer.
class VELGL_EXPORT InstanceDataCollection {
public:
    InstanceDataCollection(const QString& name, const QList<InstanceData>& items);
    ~InstanceDataCollection();
    InstanceDataCollection(const InstanceDataCollection&) = delete;
    InstanceDataCollection& operator=(const InstanceDataCollection&) = delete;

    const QString& name() const { return _name; }
    const QList<InstanceData>& items() const { return _items; }

    /// The items as their plan packs them; empty when no plan of this name is registered.
    QByteArray packed() const;
    /// The registered plan of this collection's name; null when there is none.
    const InstanceDataPlan* plan() const;
    /// Binds the packed items to a shader storage binding point, and leaves them there; uploads them on first
    /// use. Items are made up with zeros to `itemCount`, so that a shader may read that many.
    /// Returns: false when there is nothing to bind or no context.
    bool bindStorage(unsigned int bindingPoint, int itemCount = 0);
    /// The storage buffer's content as the GL has it; uploads it first when that has not happened yet.
    QByteArray readBack();

private:
    // The GL name of the storage buffer in the current context; 0 when there is none.
    unsigned int storage(int itemCount);

    struct Data;
    QString _name;
    QList<InstanceData> _items;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

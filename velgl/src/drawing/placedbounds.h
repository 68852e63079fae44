#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/gpumodel.h>

namespace Atelier::Vel {

class DrawBuffers;
class InstanceDataCollection;
class InstanceDataPlan;

/// The boxes of a drawable's commands, as the client gave them, and the box around them in the places where
/// the commands are drawn.
class GivenBoxes {
public:
    /// Boxes that are no boxes become invalid.
    void set(const QVector<GPUModel::Bounds>& boxes);
    /// Returns: the box of a command; an invalid one if there is none.
    GPUModel::Bounds of(int command) const { return _boxes.value(command); }

    /// Returns: the box around the commands that are shown, each transformed by the value `matrixMember` of
    /// its instances. It is kept until the commands, the boxes or the instances change.
    GPUModel::Bounds placed(const DrawBuffers& buffers, const InstanceDataCollection* instances,
                            const QString& matrixMember);

private:
    /// What `_placed` was computed from.
    struct Key {
        QString matrixMember;
        const InstanceDataPlan* plan = nullptr;
        quint64 commands = 0;   ///< DrawBuffersAccess::commandRevision()
        quint64 visibility = 0; ///< DrawCommands::visibilityRevision()
        quint64 instances = 0;  ///< CollectionAccess::revision()
        quint64 boxes = 0;

        bool operator==(const Key& other) const {
            return matrixMember == other.matrixMember && plan == other.plan && commands == other.commands &&
                   visibility == other.visibility && instances == other.instances && boxes == other.boxes;
        }
    };

    QVector<GPUModel::Bounds> _boxes;
    quint64 _revision = 1; ///< of the boxes
    Key _key;
    GPUModel::Bounds _placed;
};

} // namespace Atelier::Vel

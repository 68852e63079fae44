#pragma once

#include <functional>
#include <memory>

#include <QtCore/QBitArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class GPUModel;

/// Which commands of a model are drawn: the opaque ones, those that the user has not hidden, the drawables of
/// one key. A draw gets it with DrawOptions::filter.
///
/// A value that never changes: to draw other commands, make another filter. Copies are cheap and are the same
/// filter for a model, which keeps a list of the commands that pass for each filter that it has drawn with.
/// The lists of filters without copies left are freed when the model makes its next list.
/// Threads: several threads may use copies. The constructors need no context.
class VELGL_EXPORT DrawFilter {
public:
    /// Returns: whether the command of that number passes.
    using Condition = std::function<bool(int drawable, int command)>;

    /// What a material lets through.
    enum class Opacity { Opaque, Transparent };

    /// Passes all commands.
    DrawFilter();
    /// Passes the commands whose bit is set: bit c of mask d stands for command c of drawable d. A command
    /// without a bit passes, so that what is added to a model is drawn; a bit without a command does not
    /// count.
    explicit DrawFilter(const QVector<QBitArray>& masks);
    /// Passes the commands that fulfil `condition`, and those that are added to the model later. The
    /// condition may combine further filters, and ask for GPUModel::key().
    /// Requires: `condition` is not empty.
    /// Cost: calls `condition` once for each command that the model has now, in order, and never again.
    DrawFilter(const GPUModel& model, const Condition& condition);

    /// Passes the drawables that were added with `key`, and those that are added to the model later.
    static DrawFilter ofKey(const GPUModel& model, quint64 key);
    /// Passes the commands whose materials are opaque, or those whose materials are transparent, and those
    /// that are added to the model later. A material is transparent if its value `member`, a float, is below
    /// 1; materials of VelModel have the value "d". One without such a value is opaque. Textures are not
    /// looked at. Make both filters again after InstanceDataCollection::set() has changed such a value.
    static DrawFilter ofOpacity(const GPUModel& model, Opacity opacity,
                                const QString& member = QStringLiteral("d"));

    /// Returns: whether this is a filter of the constructor without arguments, or a copy of one.
    bool passesAll() const { return !_data; }
    /// Returns: whether a command of that number passes. The command need not exist.
    bool passes(int drawable, int command) const;

private:
    friend struct DrawFilterAccess;

    struct Data;
    std::shared_ptr<const Data> _data; // null if all commands pass
};

} // namespace Atelier::Vel

#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QStringList>

#include <velmodel/modeldatastream.h>

#include "geometry/merging/tuplemerging.h"

namespace Atelier::Vel {

/// The corners of a mesh merged by their value numbers as they come: one list of them in place of one for
/// each attribute, made while their numbers are in the nearest caches.
class MergedCorners {
public:
    /// For attributes of these names, of which the first one's values have the fewest tuples each; `list`
    /// takes the tuple of each corner.
    MergedCorners(QStringList attributes, QSharedPointer<ModelDataStream> list);

    /// Adds `count` corners. `numbers` has a list for each attribute; the first is overwritten. The first
    /// attribute has `values` values by now.
    /// Returns: false, with nothing done, where a corner has no value in the first attribute yet, or where
    /// merging does not pay.
    bool add(quint32* const* numbers, quint32 count, quint64 values);

    /// Whether the list refused corners.
    bool isRefused() const { return _isRefused; }
    const QSharedPointer<ModelDataStream>& list() const { return _list; }
    const QStringList& attributes() const { return _attributes; }
    /// Hands out the value numbers of all corners in one of the attributes, part by part.
    void unmerge(int attribute, const std::function<void(const quint32* numbers, quint64 count)>& take) const;
    /// The tuples of the list, with the attributes in the order of their names. Ends this object's use.
    TupleMerging take(const std::vector<QString>& names, const std::vector<CornerAttribute>& attributes);

private:
    QStringList _attributes;
    QSharedPointer<ModelDataStream> _list;
    std::unique_ptr<IndexTupleTable> _tuples;
    bool _isRefused = false;
};

} // namespace Atelier::Vel

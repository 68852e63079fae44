#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QStringList>

#include <velmodel/modeldatastream.h>

#include "geometry/merging/tuplemerging.h"

namespace Atelier::Vel {

/// The corners of a mesh, merged by their value numbers as they arrive. One list replaces the lists of all
/// attributes. It is made while the value numbers are in the nearest caches.
class MergedCorners {
public:
    /// `attributes` are the names of the attributes. The values of the first attribute should have the fewest
    /// tuples per value. `list` receives the tuple of each corner.
    MergedCorners(QStringList attributes, QSharedPointer<ModelDataStream> list);

    /// Adds `count` corners. `numbers` has one list per attribute; the first list is overwritten. `values` is
    /// the current number of values of the first attribute.
    /// Returns: false, without any change, if a corner has no value in the first attribute yet or if merging
    /// is not worthwhile.
    bool add(quint32* const* numbers, quint32 count, quint64 values);

    /// Whether the list refused corners.
    bool isRefused() const { return _isRefused; }
    const QSharedPointer<ModelDataStream>& list() const { return _list; }
    const QStringList& attributes() const { return _attributes; }
    /// Whether the value numbers of all corners in one of the attributes are below `limit`.
    bool areNumbersBelow(const QString& attribute, quint32 limit) const;
    /// Calls `take` with the value numbers of all corners in one attribute, block by block.
    void unmerge(int attribute, const std::function<void(const quint32* numbers, quint64 count)>& take) const;
    /// The tuples of the list. `listOwners` has the name of one of attributes() for each of `attributes`: the
    /// one whose value numbers it uses. This object must not be used afterwards.
    TupleMerging take(const std::vector<QString>& listOwners, const std::vector<CornerAttribute>& attributes);

private:
    QStringList _attributes;
    QSharedPointer<ModelDataStream> _list;
    std::unique_ptr<IndexTupleTable> _tuples;
    bool _isRefused = false;
};

} // namespace Atelier::Vel

#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include <QtCore/QHash>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/modeldatastream.h>

#include "mesh/cornerlist.h"
#include "mesh/input.h"
#include "mesh/streamsource.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

class MergedCorners;

/// kValues and kIndices hold the input; kGPUValues and kGPUIndices are made from them. All attributes share
/// one GPU index list.
enum StreamSlot { kValues, kIndices, kGPUValues, kGPUIndices, kStreamSlots };

/// The streams of one vertex attribute.
struct VertexAttribute {
    std::array<QSharedPointer<ModelDataStream>, kStreamSlots> streams;
    qint32 components;
    /// The number of corners at the end of the input that have no value and are not in the index list. Many
    /// faces have no index for an attribute, and a corner beyond the end of the list has no value either.
    quint64 omitted = 0;
    /// The attribute whose index list this one shares; null if it has its own.
    QString listOwner;

    /// The number of complete values in a stream; 0 if there is no stream.
    quint64 valueCount(StreamSlot slot) const;
};

/// The values of the vertex attributes, and the number of the value that each corner uses.
class AttributeStore {
public:
    /// `streams` must outlive the store.
    AttributeStore(StreamSource& streams, Input input);
    ~AttributeStore();

    void clear();
    bool isEmpty() const { return _records.isEmpty(); }
    bool contains(const QString& name) const { return _records.contains(name); }
    /// Whether every attribute that has a value stream has at least one value and one index.
    bool isComplete() const;

    /// `type` is a GL scalar type; the counts are initial sizes in elements. Replaces an attribute of the
    /// same name.
    void create(const QString& name, int components, unsigned int type, quint64 valueCount,
                quint64 indexCount);
    /// The same without values, for an attribute that uses the index list of `listOwner`: its value k belongs
    /// to value k of the owner. Corners are added to the owner only.
    /// Requires: the owner exists, has its own list, and is not created again.
    void createAlongside(const QString& name, int components, unsigned int type, const QString& listOwner);
    /// Does nothing if there is no such attribute or if it has another type.
    void addValues(const QString& name, quint64 count, const void* values, unsigned int type);
    /// Does nothing if there is no such attribute.
    void addIndices(const QString& name, quint64 count, const unsigned int* indices);
    /// Adds the indices of `count` corners to several attributes: one list per attribute, the positions
    /// first. The lists may be overwritten. If the input is consumed and no other function has added indices,
    /// corners are merged into one list as they arrive, as long as that saves work.
    /// Requires: the attributes exist and are those of the previous call.
    void addCorners(const CornerList* lists, std::size_t listCount, quint32 count);

    /// The next `count` corners have no value in an attribute that exists.
    void omitCorners(const QString& name, quint64 count) { _records[name].omitted += count; }
    /// Whether each of `cornerCount` corners has an index below `limit` in an attribute that exists.
    /// Cost: one pass over the tuples if corners were merged as they arrived, otherwise over the corners.
    bool areIndicesBelow(const QString& name, quint32 cornerCount, quint32 limit) const;
    /// The index list of an attribute that exists, with an entry for each of `cornerCount` corners: kNoIndex
    /// for those without an index. Corners that were merged as they arrived are listed again by attribute.
    /// Empty if the stream refuses the list.
    WordView listCorners(const QString& name, quint32 cornerCount);

    /// The attributes by name. A reference from operator[] is valid until an attribute is added.
    QHash<QString, VertexAttribute>& records() { return _records; }
    VertexAttribute& operator[](const QString& name) { return _records[name]; }
    /// Sorted, because the order of a hash differs between processes.
    QStringList names() const;

    /// The corners that were merged as they arrived; null if each attribute has its own list.
    const MergedCorners* mergedCorners() const { return _merged.get(); }
    std::unique_ptr<MergedCorners> takeMergedCorners();
    /// An index list of `cornerCount` entries that may be overwritten; null if there is none.
    QSharedPointer<ModelDataStream> disposableList(quint32 cornerCount) const;

    // These functions release memory early. They do nothing if the input is kept.
    void releaseValues(VertexAttribute& record) const;
    void releaseIndices(VertexAttribute& record) const;
    void releaseAll();

private:
    bool merge(const CornerList* lists, std::size_t listCount, quint32 count);
    /// Moves the merged corners to the lists of the attributes. All later corners are added to those lists.
    void unmerge();
    void append(const QString& name, VertexAttribute& record, quint64 count,
                const unsigned int* indices) const;
    void listOmitted(const QString& name, VertexAttribute& record) const;
    void addOrOmit(const CornerList& list, quint32 count);
    bool hasIndices(const VertexAttribute& record) const;

    StreamSource& _streams;
    Input _input;
    QHash<QString, VertexAttribute> _records;
    bool _mergesCorners;
    std::unique_ptr<MergedCorners> _merged; ///< replaces the attributes' lists
};

} // namespace Atelier::Vel

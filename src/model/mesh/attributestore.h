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

namespace Atelier::Vel {

class MergedCorners;

/// Values and indices are the input; the GPU's are made from them, and one index list serves all attributes.
enum StreamSlot { kValues, kIndices, kGPUValues, kGPUIndices, kStreamSlots };

struct VertexAttribute {
    std::array<QSharedPointer<ModelDataStream>, kStreamSlots> streams;
    qint32 components;
    /// Corners without a value at the end of the input that are not in the index list: many faces give none
    /// for an attribute, and the end of a list means the same.
    quint64 omitted = 0;

    /// The whole values of a stream; 0 without one.
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
    /// Whether every attribute that has a stream of values has values and indices.
    bool isComplete() const;

    /// `type` is a GL scalar type; the counts are initial sizes in elements. Drops what the name held.
    void create(const QString& name, int components, unsigned int type, quint64 valueCount,
                quint64 indexCount);
    /// Does nothing when there is no such attribute or it is of another type.
    void addValues(const QString& name, quint64 count, const void* values, unsigned int type);
    /// Does nothing when there is no such attribute.
    void addIndices(const QString& name, quint64 count, const unsigned int* indices);
    /// Adds the indices of `count` corners to some attributes: one list for each, the positions' first. The
    /// lists may be overwritten. Where the input is consumed and nothing else has added indices, corners are
    /// merged as they come, in one list, as long as that saves work.
    /// Requires: the attributes exist, and are those of the call before.
    void addCorners(const CornerList* lists, std::size_t listCount, quint32 count);

    /// The attributes by name. A reference from operator[] is valid until an attribute is added.
    QHash<QString, VertexAttribute>& records() { return _records; }
    VertexAttribute& operator[](const QString& name) { return _records[name]; }
    /// Sorted: the order of a hash differs from process to process.
    QStringList names() const;

    /// The corners that were merged as they came; null where each attribute has its list.
    const MergedCorners* mergedCorners() const { return _merged.get(); }
    std::unique_ptr<MergedCorners> takeMergedCorners();
    /// An index list of `cornerCount` entries that may be overwritten; null when there is none.
    QSharedPointer<ModelDataStream> disposableList(quint32 cornerCount) const;

    // The memory that is given back early. These do nothing where the input is kept.
    void releaseValues(VertexAttribute& record) const;
    void releaseIndices(VertexAttribute& record) const;
    void releaseAll();

private:
    bool merge(const CornerList* lists, std::size_t listCount, quint32 count);
    /// Puts merged corners into the list of each attribute; from then on, all corners are listed there.
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
    std::unique_ptr<MergedCorners> _merged; ///< in place of the attributes' lists
};

} // namespace Atelier::Vel

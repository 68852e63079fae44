#pragma once

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// Makes the streams of a mesh and records which data they refused.
class StreamSource {
public:
    /// A null allocator stands for a ModelDataArrayAllocator.
    explicit StreamSource(QSharedPointer<ModelDataStreamAllocator> allocator);

    const QSharedPointer<ModelDataStreamAllocator>& allocator() const { return _allocator; }
    /// A stream of exactly `count` elements; null if the allocator returns none.
    QSharedPointer<ModelDataStream> make(unsigned int type, quint64 count) const;
    /// Warns that data for `purpose` was refused, once for each purpose.
    void refuse(const QString& purpose);
    /// The purposes of refused data, in the order of their first refusal.
    const QStringList& refused() const { return _refused; }
    void forgetRefused() { _refused.clear(); }

private:
    QSharedPointer<ModelDataStreamAllocator> _allocator;
    QStringList _refused;
};

/// Appends elements of `elementSize` bytes. Does nothing if `stream` is null.
/// Returns: false if the stream refused them.
bool appendIfThere(ModelDataStream* stream, quint64 count, const void* data, quint64 elementSize);
/// The same for 32-bit words.
bool appendWords(ModelDataStream* stream, quint64 count, const unsigned int* words);

/// The name of an attribute in messages.
QString describeAttribute(const QString& name);

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// Makes the streams of a mesh and keeps the list of what they refused.
class StreamSource {
public:
    /// Null stands for a ModelDataArrayAllocator.
    explicit StreamSource(QSharedPointer<ModelDataStreamAllocator> allocator);

    const QSharedPointer<ModelDataStreamAllocator>& allocator() const { return _allocator; }
    /// A stream of exactly `count` elements; null when the allocator gives none.
    QSharedPointer<ModelDataStream> make(unsigned int type, quint64 count) const;
    /// Warns that data for `purpose` was refused, once for each purpose.
    void refuse(const QString& purpose);
    /// The purposes, in the order of their first refusal.
    const QStringList& refused() const { return _refused; }
    void forgetRefused() { _refused.clear(); }

private:
    QSharedPointer<ModelDataStreamAllocator> _allocator;
    QStringList _refused;
};

/// Appends elements of `elementSize` bytes. Returns: false when the stream did not take them. A null stream
/// takes nothing and refuses nothing.
bool appendIfThere(ModelDataStream* stream, quint64 count, const void* data, quint64 elementSize);
/// The same for 32-bit words.
bool appendWords(ModelDataStream* stream, quint64 count, const unsigned int* words);

/// How messages name an attribute.
QString describeAttribute(const QString& name);

} // namespace Atelier::Vel

#include "mesh/streamsource.h"

#include <memory>
#include <utility>

#include <velgl/sharedpointer.h>
#include <velmodel/modeldataarray.h>

#include "diagnostics.h"
#include "streams/streamrequest.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

StreamSource::StreamSource(QSharedPointer<ModelDataStreamAllocator> allocator)
    : _allocator(std::move(allocator)) {
    if (_allocator.isNull())
        _allocator = shared<ModelDataStreamAllocator>(std::make_unique<ModelDataArrayAllocator>());
}

QSharedPointer<ModelDataStream> StreamSource::make(unsigned int type, quint64 count) const {
    return requestStream(*_allocator, type, count);
}

void StreamSource::refuse(const QString& purpose) {
    if (_refused.contains(purpose))
        return;
    _refused.append(purpose);
    reportRefusedData(purpose);
}

bool appendIfThere(ModelDataStream* stream, quint64 count, const void* data, quint64 elementSize) {
    return stream == nullptr || count == 0 || appendTo(*stream, count, data, elementSize);
}

bool appendWords(ModelDataStream* stream, quint64 count, const unsigned int* words) {
    return appendIfThere(stream, count, words, sizeof *words);
}

QString describeAttribute(const QString& name) {
    return QStringLiteral("vertex attribute '%1'").arg(name);
}

} // namespace Atelier::Vel

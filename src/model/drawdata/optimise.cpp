#include "drawdata/optimise.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "diagnostics.h"
#include "drawdata/drawdatacontent.h"
#include "drawdata/meshorder.h"
#include "streams/streamrequest.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

using Stream = DrawDataContent::Stream;

constexpr quint64 kCornersPerTriangle = 3;

// Vertex numbers have 32 bits, and the largest one marks vertices without a number.
constexpr quint64 kMaxVertices = 0xFFFFFFFF;

bool hasWholeStreams(const DrawDataContent& content) {
    const auto holdsAllVertices = [&content](const Stream& stream) {
        const quint64 stride = stream.stride();
        return stride == 0 || stream.bytes / stride >= content.vertexCount;
    };
    return content.indices->size() == content.indexWords.count &&
           ModelDataStream::typeSize(content.indices->type()) == sizeof(quint32) &&
           std::all_of(content.attributes.begin(), content.attributes.end(), holdsAllVertices);
}

bool areIndicesInRange(const DrawDataContent& content) {
    const WordView& words = content.indexWords;
    return content.vertexCount <= kMaxVertices &&
           std::all_of(words.words, words.words + words.count,
                       [&content](quint32 index) { return index < content.vertexCount; });
}

bool isBaseVertexZero(const DrawDataContent& content) {
    for (const DrawDataContent::Drawable& drawable : content.drawables)
        for (const DrawElementsIndirectCommand& command : drawable.commands)
            if (command.baseVertex != 0)
                return false;
    return true;
}

/// The part of the index list that a command draws.
struct CommandRange {
    quint64 first = 0;
    quint64 end = 0;
    bool isShared = false; ///< with another command
};

void markShared(std::vector<CommandRange>& ranges) {
    std::vector<CommandRange*> sorted;
    for (CommandRange& range : ranges)
        if (range.first != range.end)
            sorted.push_back(&range);
    std::sort(sorted.begin(), sorted.end(),
              [](const CommandRange* a, const CommandRange* b) { return a->first < b->first; });
    CommandRange* farthest = nullptr; // the earlier range that ends last; overlaps if any earlier one does
    for (CommandRange* range : sorted) {
        if (farthest != nullptr && range->first < farthest->end)
            range->isShared = farthest->isShared = true;
        if (farthest == nullptr || range->end > farthest->end)
            farthest = range;
    }
}

/// The ranges of all commands, in the order of the commands.
std::vector<CommandRange> commandRanges(const DrawDataContent& content) {
    std::vector<CommandRange> ranges;
    for (const DrawDataContent::Drawable& drawable : content.drawables)
        for (const DrawElementsIndirectCommand& command : drawable.commands)
            ranges.push_back({command.firstIndex, quint64{command.firstIndex} + command.count});
    markShared(ranges);
    return ranges;
}

void orderTriangles(const DrawDataContent& content, const WordView& words, const WorkMeter& meter) {
    const Stream& position = content.attributes[static_cast<std::size_t>(content.position)];
    TriangleOrder order({position.data, static_cast<quint64>(position.components)}, content.vertexCount);
    for (const CommandRange& range : commandRanges(content)) {
        const quint64 count = range.end - range.first;
        if (!range.isShared && range.end <= words.count && count % kCornersPerTriangle == 0)
            order.reorder(words.words + range.first, count);
        if (meter)
            meter(static_cast<int>(std::min<quint64>(count, std::numeric_limits<int>::max())));
    }
}

/// A new stream with the type and size of `source`; null, after a warning, if no such stream is available.
QSharedPointer<ModelDataStream> requestLike(const ModelDataStream& source,
                                            ModelDataStreamAllocator& allocator, const QString& purpose) {
    QSharedPointer<ModelDataStream> stream = requestStream(allocator, source.type(), source.size());
    const bool isAlike = !stream.isNull() && stream->type() == source.type() &&
                         ByteView::of(stream.data()).count >= source.byteCount();
    if (isAlike)
        return stream;
    reportMissingStream(purpose);
    return {};
}

/// The index list with reordered triangles; null, after a warning, if no stream is available.
QSharedPointer<ModelDataStream> orderedIndices(const DrawDataContent& content, const WorkMeter& meter) {
    const WordView& source = content.indexWords;
    QSharedPointer<ModelDataStream> stream =
        requestLike(*content.indices, *content.allocator, QStringLiteral("the optimised triangle indices"));
    const WordView target = WordView::of(stream.data());
    if (target.count != 0) {
        std::copy(source.words, source.words + source.count, target.words);
        orderTriangles(content, target, meter);
    }
    return stream;
}

/// Copies the values of all vertices to their new places, and the bytes after them unchanged.
void moveVertices(const Stream& source, unsigned char* target, const std::vector<quint32>& places) {
    const quint64 stride = source.stride();
    const auto* const bytes = static_cast<const unsigned char*>(source.data);
    const quint64 end = places.size() * stride;
    for (std::size_t vertex = 0; vertex < places.size(); ++vertex)
        std::memcpy(target + places[vertex] * stride, bytes + vertex * stride, stride);
    if (source.bytes > end)
        std::memcpy(target + end, bytes + end, source.bytes - end);
}

/// Returns: false, after a warning, if no stream is available.
bool moveVertices(Stream& stream, ModelDataStreamAllocator& allocator, const std::vector<quint32>& places) {
    if (stream.stride() == 0 || stream.bytes == 0)
        return true;
    const QSharedPointer<ModelDataStream> moved = requestLike(
        *stream.values, allocator, QStringLiteral("the optimised vertex attribute '%1'").arg(stream.name));
    if (moved.isNull())
        return false;
    moveVertices(stream, ByteView::of(moved.data()).bytes, places);
    stream = Stream(stream.name, stream.components, moved);
    return true;
}

} // namespace

bool canOptimise() {
    return true;
}

std::shared_ptr<DrawDataContent> optimisedContent(const DrawDataContent& content, const WorkMeter& meter) {
    if (!content.hasFloatPositions() || !hasWholeStreams(content) || !areIndicesInRange(content) ||
        !isBaseVertexZero(content))
        return nullptr;
    auto result = std::make_shared<DrawDataContent>(content);
    result->indices = orderedIndices(content, meter);
    result->indexWords = WordView::of(result->indices.data());
    if (result->indices.isNull())
        return nullptr;
    const WordView& words = result->indexWords;
    const std::vector<quint32> places = fetchOrder(words.words, words.count, content.vertexCount);
    std::transform(words.words, words.words + words.count, words.words,
                   [&places](quint32 vertex) { return places[vertex]; });
    for (Stream& stream : result->attributes)
        if (!moveVertices(stream, *content.allocator, places))
            return nullptr;
    return result;
}

DrawData::VertexCacheStatistics cacheStatistics(const DrawDataContent& content) {
    if (!areIndicesInRange(content))
        return {};
    const WordView& words = content.indexWords;
    return cacheStatistics(words.words, words.count - words.count % kCornersPerTriangle, content.vertexCount);
}

} // namespace Atelier::Vel

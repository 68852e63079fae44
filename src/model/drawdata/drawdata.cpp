#include <velmodel/drawdata.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "drawdata/drawdatacontent.h"
#include "drawdata/optimise.h"
#include "drawdata/progressmeter.h"
#include "glconstants.h"

namespace Atelier::Vel {

namespace {

void include(DrawData::Box& box, const QVector3D& point) {
    for (int i = 0; i < 3; ++i)
        if (!std::isfinite(point[i]))
            return;
    if (!box.isValid)
        box = {point, point, true};
    for (int i = 0; i < 3; ++i) {
        box.minimum[i] = std::min(box.minimum[i], point[i]);
        box.maximum[i] = std::max(box.maximum[i], point[i]);
    }
}

} // namespace

DrawDataContent::Stream::Stream(QString streamName, int componentCount,
                                QSharedPointer<ModelDataStream> stream)
    : name(std::move(streamName)),
      components(componentCount),
      values(std::move(stream)),
      data(values->data(0)) {
    bytes = data == nullptr ? 0 : values->byteCount();
}

quint64 DrawDataContent::Stream::stride() const {
    return ModelDataStream::typeSize(values->type()) * static_cast<quint64>(std::max(components, 0));
}

QString DrawDataContent::Drawable::objectName(int command) const {
    const auto found =
        std::lower_bound(objectNames.begin(), objectNames.end(), command,
                         [](const ObjectName& named, int wanted) { return named.command < wanted; });
    return found != objectNames.end() && found->command == command ? found->name : QString();
}

bool DrawDataContent::hasFloatPositions() const {
    if (position < 0)
        return false;
    const Stream& stream = attributes[static_cast<std::size_t>(position)];
    return stream.values->type() == kGlFloat && stream.components >= 3;
}

DrawData::Box DrawDataContent::commandBox(const DrawElementsIndirectCommand& drawn) const {
    DrawData::Box box;
    if (!hasFloatPositions())
        return box;
    const Stream& positions = attributes[static_cast<std::size_t>(position)];
    const quint64 stride = positions.stride();
    const quint64 first = std::min<quint64>(drawn.firstIndex, indexWords.count);
    const quint64 end = std::min(first + drawn.count, indexWords.count);
    for (quint64 i = first; i < end; ++i) {
        const quint64 place = indexWords.words[i] * stride;
        if (place + 3 * sizeof(float) > positions.bytes)
            continue;
        float point[3];
        std::memcpy(point, static_cast<const char*>(positions.data) + place, sizeof point);
        include(box, {point[0], point[1], point[2]});
    }
    return box;
}

DrawData::DrawData() = default;
DrawData::DrawData(std::shared_ptr<DrawDataContent> content) : _content(std::move(content)) {}
DrawData::DrawData(const DrawData& other) = default;
DrawData::DrawData(DrawData&& other) noexcept = default;
DrawData& DrawData::operator=(const DrawData& other) = default;
DrawData& DrawData::operator=(DrawData&& other) noexcept = default;
DrawData::~DrawData() = default;

bool DrawData::isNull() const {
    return _content == nullptr;
}

bool DrawData::isEmpty() const {
    using Drawable = DrawDataContent::Drawable;
    const auto isDrawn = [](const DrawElementsIndirectCommand& command) { return command.count != 0; };
    return isNull() ||
           std::none_of(_content->drawables.begin(), _content->drawables.end(),
                        [&](const Drawable& drawable) {
                            return std::any_of(drawable.commands.begin(), drawable.commands.end(), isDrawn);
                        });
}

QVector<DrawData::Attribute> DrawData::attributes() const {
    QVector<Attribute> result;
    if (isNull())
        return result;
    for (const DrawDataContent::Stream& stream : _content->attributes) {
        const quint64 stride = stream.stride();
        result.append({stream.name, stream.components, stream.values->type(),
                       stride == 0 ? 0 : stream.bytes / stride, stream.bytes == 0 ? nullptr : stream.data,
                       stream.bytes});
    }
    return result;
}

DrawData::Indices DrawData::indices() const {
    return isNull() ? Indices() : Indices{_content->indexWords.words, _content->indexWords.count};
}

quint64 DrawData::vertexCount() const {
    return isNull() ? 0 : _content->vertexCount;
}

int DrawData::drawableCount() const {
    return isNull() ? 0 : static_cast<int>(_content->drawables.size());
}

quint64 DrawData::drawKey(int drawable) const {
    return _content->drawables[static_cast<std::size_t>(drawable)].key;
}

int DrawData::commandCount(int drawable) const {
    return _content->drawables[static_cast<std::size_t>(drawable)].commands.size();
}

const DrawElementsIndirectCommand& DrawData::command(int drawable, int command) const {
    return _content->drawables[static_cast<std::size_t>(drawable)].commands.at(command);
}

DrawData::Group DrawData::group(int drawable, int command) const {
    const DrawDataContent::Drawable& column = _content->drawables[static_cast<std::size_t>(drawable)];
    return {column.names.at(command), column.objectName(command), column.ids.at(command),
            column.materials.at(command)};
}

QStringList DrawData::texturePaths() const {
    QStringList paths;
    if (isNull())
        return paths;
    for (const DrawDataContent::Drawable& drawable : _content->drawables)
        for (const InstanceData& material : drawable.materials)
            for (const QString& name : material.textureNames())
                paths.append(material.texturePath(name));
    paths.removeAll(QString()); // of texture objects
    paths.removeDuplicates();
    return paths;
}

DrawData::Box DrawData::commandBox(int drawable, int command) const {
    return _content->commandBox(this->command(drawable, command));
}

bool DrawData::canOptimise() {
    return Vel::canOptimise();
}

DrawData DrawData::optimised(const LoadProgress& progress) const {
    if (isNull())
        return {};
    try {
        const auto indexCount = static_cast<qint64>(_content->indexWords.count);
        ProgressMeter meter(progress);
        meter.begin(LoadPhase::Optimising, indexCount);
        std::shared_ptr<DrawDataContent> content = optimisedContent(*_content, meter.meter(indexCount));
        return content == nullptr ? *this : DrawData(std::move(content));
    } catch (const Cancelled&) {
        return {};
    }
}

DrawData::VertexCacheStatistics DrawData::vertexCacheStatistics() const {
    return isNull() ? VertexCacheStatistics() : cacheStatistics(*_content);
}

} // namespace Atelier::Vel

#include "objrecords.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Atelier::Vel::Testing {

namespace {

void append(std::vector<quint32>& bits, const void* items, size_t count) {
    if (count == 0)
        return;
    bits.resize(bits.size() + count);
    std::memcpy(bits.data() + bits.size() - count, items, count * sizeof(quint32));
}

void append(Content& content, const Record& record) {
    switch (record.kind) {
    case ObjReader::Kind::Position:
        append(content.colours, record.colour.values, ObjColour::kSize);
        content.colourComponents = std::max(content.colourComponents, record.colour.components);
        return append(content.positions, record.values.data(), 3);
    case ObjReader::Kind::Normal:
        return append(content.normals, record.values.data(), 3);
    case ObjReader::Kind::TexCoord:
        return append(content.texCoords, record.values.data(), 2);
    case ObjReader::Kind::Face:
        content.dropped += record.ok ? 0 : 1;
        if (record.ok)
            content.cornerCounts.push_back(static_cast<quint32>(record.corners.size()));
        for (const auto& [position, texCoord, normal] : record.corners) {
            content.positionIndices.push_back(position);
            content.texCoordIndices.push_back(texCoord);
            content.normalIndices.push_back(normal);
        }
        return;
    default:
        content.switches.emplace_back(content.cornerCounts.size(), record.text);
    }
}

template<typename T, size_t N>
void take(FixedList<T, N>& list, std::vector<quint32>& bits) {
    append(bits, list.items, list.size);
    list.size = 0;
}

void forgetColours(Content& content) {
    content.colours.clear();
    content.colourComponents = 0;
}

} // namespace

std::array<quint32, 7> Record::valueBits() const {
    std::array<quint32, 7> bits;
    std::memcpy(bits.data(), values.data(), sizeof values);
    std::memcpy(bits.data() + values.size(), colour.values, sizeof colour.values);
    return bits;
}

Content contentOf(const std::vector<Record>& records, Colours colours) {
    Content content;
    for (const Record& record : records)
        append(content, record);
    if (colours == Colours::Ignored)
        forgetColours(content);
    return content;
}

void take(ObjRun& run, Content& content) {
    take(run.positions, content.positions);
    take(run.colours, content.colours);
    content.colourComponents = std::max(content.colourComponents, std::exchange(run.colourComponents, 0));
    take(run.normals, content.normals);
    take(run.texCoords, content.texCoords);
    take(run.cornerCounts, content.cornerCounts);
    take(run.positionIndices, content.positionIndices);
    take(run.normalIndices, content.normalIndices);
    take(run.texCoordIndices, content.texCoordIndices);
}

Content contentInRuns(ObjReader& reader, ObjRun& run) {
    Content content;
    for (; reader.hasNext(); reader.next(run)) {
        take(run, content);
        if (reader.kind() != ObjReader::Kind::None)
            append(content, takeRecord(reader));
    }
    take(run, content);
    if (!run.takesColours)
        forgetColours(content);
    return content;
}

} // namespace Atelier::Vel::Testing

#include <epoxy/gl.h>

#include "drawing/indirectbuffers.h"

#include "drawing/drawcommands.h"
#include "objects/bufferoperations.h"

namespace Atelier::Vel {

namespace {

constexpr qint64 kCommandSize = sizeof(DrawElementsIndirectCommand);

ByteRange instanceCountAt(int place) {
    const qint64 begin = place * kCommandSize + qint64(offsetof(DrawElementsIndirectCommand, instanceCount));
    return {begin, begin + qint64(sizeof(DrawElementsIndirectCommand::instanceCount))};
}

} // namespace

void IndirectBuffers::setNumbers(std::vector<int> numbers) {
    _numbers = std::move(numbers);
    _buffers.forEach([](Buffer& buffer) { buffer.isFilled = false; });
}

bool IndirectBuffers::isFilledIn(const ContextGL& gl) {
    const Buffer* buffer = _buffers.find(*gl.group());
    return buffer && buffer->isFilled;
}

unsigned int IndirectBuffers::update(const ContextGL& gl, const DrawCommands& commands,
                                     const QString& label) {
    Buffer* buffer = _buffers.find(*gl.group());
    if (!buffer) {
        GLName name = makeBuffer(gl, label);
        if (!name.isAlive())
            return 0;
        buffer = &_buffers.add({std::move(name), false, {}, 0, {}});
    }
    if (!buffer->isFilled)
        return fill(gl, commands, *buffer) ? buffer->name.value() : 0;
    if (buffer->visibilityRevision != commands.visibilityRevision())
        uploadChanges(gl, commands, *buffer);
    return buffer->name.value();
}

QByteArray IndirectBuffers::readBack(const ContextGL& gl) {
    return readBuffer(gl, _buffers.find(*gl.group())->name);
}

int IndirectBuffers::size(const DrawCommands& commands) const {
    return _numbers.empty() ? commands.count() : static_cast<int>(_numbers.size());
}

IndirectBuffers::Command IndirectBuffers::commandAt(int place, const DrawCommands& commands) const {
    const int number = numberAt(place);
    Command command = commands.drawn(number);
    if (!_numbers.empty())
        command.baseInstance = static_cast<std::uint32_t>(number);
    return command;
}

void IndirectBuffers::gather(const DrawCommands& commands, int first, int end) {
    _scratch.clear();
    for (int place = first; place < end; ++place)
        _scratch.push_back(commandAt(place, commands));
}

bool IndirectBuffers::fill(const ContextGL& gl, const DrawCommands& commands, Buffer& buffer) {
    const int count = size(commands);
    gather(commands, 0, count);
    if (!fillBuffer(gl, buffer.name, _scratch.data(), count * kCommandSize, GL_STATIC_DRAW))
        return false;
    buffer.hidden.clear();
    for (int place = 0; place < count; ++place)
        buffer.hidden.push_back(commands.isHidden(numberAt(place)));
    buffer.changed.clear();
    buffer.visibilityRevision = commands.visibilityRevision();
    buffer.isFilled = true;
    return true;
}

void IndirectBuffers::uploadChanges(const ContextGL& gl, const DrawCommands& commands, Buffer& buffer) {
    for (int place = 0; place < size(commands); ++place) {
        const bool isHidden = commands.isHidden(numberAt(place));
        if (buffer.hidden[std::size_t(place)] == isHidden)
            continue;
        buffer.changed.add(instanceCountAt(place));
        buffer.hidden[std::size_t(place)] = isHidden;
    }
    for (const ByteRange& range : buffer.changed.joined()) {
        const auto first = static_cast<int>(range.begin / kCommandSize);
        gather(commands, first, static_cast<int>((range.end - 1) / kCommandSize) + 1);
        const char* bytes = reinterpret_cast<const char*>(_scratch.data());
        writeBuffer(gl, buffer.name, range.begin, bytes + range.begin % kCommandSize,
                    range.end - range.begin);
    }
    buffer.changed.clear();
    buffer.visibilityRevision = commands.visibilityRevision();
}

} // namespace Atelier::Vel

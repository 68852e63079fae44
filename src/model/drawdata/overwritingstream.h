#pragma once

#include <utility>

#include <QtCore/QSharedPointer>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// Writes appended elements over the elements of another stream, starting at its first element. That stream
/// keeps its size, and appending beyond its end is refused.
class OverwritingStream final : public ModelDataStream {
public:
    explicit OverwritingStream(QSharedPointer<ModelDataStream> target) : _target(std::move(target)) {}

    unsigned int type() const override { return _target->type(); }
    void setType(unsigned int type) override { _target->setType(type); }
    quint64 size() const override { return _size; }
    void resize(quint64 count) override {
        if (count <= _target->size())
            _size = count;
    }
    void* data(quint64 first) override { return _target->data(first); }
    void setData(quint64 first, quint64 count, const void* src) override {
        _target->setData(first, count, src);
    }
    void append(quint64 count, const void* src) override {
        if (count > _target->size() - _size)
            return;
        setData(_size, count, src);
        _size += count;
    }

private:
    QSharedPointer<ModelDataStream> _target;
    quint64 _size = 0;
};

} // namespace Atelier::Vel

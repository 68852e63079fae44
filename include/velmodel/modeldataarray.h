#pragma once

#include <QtCore/QByteArray>

#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

/// A stream in memory: packed elements in native byte order, at most 2 147 483 647 bytes.
/// Copies share their bytes until one of them is written to.
class VELMODEL_EXPORT ModelDataArray : public ModelDataStream {
public:
    /// `type` defaults to GL_FLOAT. The elements are unspecified.
    explicit ModelDataArray(unsigned int type = 0x1406, quint64 count = 0);
    ModelDataArray(const ModelDataArray&) = default;
    ModelDataArray& operator=(const ModelDataArray&) = default;
    ~ModelDataArray() override;

    unsigned int type() const override;
    void setType(unsigned int type) override;
    bool isEmpty() const override;
    quint64 size() const override;
    void resize(quint64 count) override;
    quint64 byteCount() const override;
    void* data(quint64 first) override;
    void setData(quint64 first, quint64 count, const void* src) override;
    void append(quint64 count, const void* src) override;

private:
    quint32 _type;
    QByteArray _bytes;
};

/// Makes ModelDataArrays.
class VELMODEL_EXPORT ModelDataArrayAllocator : public ModelDataStreamAllocator {
public:
    ~ModelDataArrayAllocator() override;
    ModelDataStream* alloc(unsigned int type, quint64 count) override;
};

} // namespace Atelier::Vel

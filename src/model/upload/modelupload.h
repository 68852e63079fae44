#pragma once

#include <functional>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedata.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class BufferObject;
class GPUModel;
class InstanceDataCollection;
class OpenGLDeviceContext;

/// What of a material group is drawn.
struct DrawGroup {
    QString objectName;
    InstanceData material;
    qint32 id = 0;
};

/// What is the same for all drawables of an upload.
struct UploadOptions {
    InstanceData instanceData;
    QString groupIdMember; ///< null: the drawables get materials instead of ids
    unsigned int usage = 0;
    unsigned int primitiveType = 0;
};

/// Makes the GL objects of one upload: first the indices, then the attributes, then the drawables.
class ModelUpload {
public:
    ModelUpload(OpenGLDeviceContext& context, UploadOptions options);

    /// Uploads the triangle indices, as 16-bit numbers where `vertexCount` allows it.
    /// Returns: false, after a warning, when that cannot be done.
    bool addIndices(ModelDataStream& indices, quint64 vertexCount, ModelDataStreamAllocator& allocator);
    /// Returns: false, after a warning, when that cannot be done.
    bool addAttribute(const QString& name, ModelDataStream& values, int components);
    /// Adds one drawable to `model`; `names` are those of the material groups of `commands`, one by one, and
    /// `groupOf` is asked once for each of them.
    void addDrawable(GPUModel& model, quint64 drawKey, QVector<DrawElementsIndirectCommand> commands,
                     const QVector<QString>& names,
                     const std::function<DrawGroup(const QString& name)>& groupOf) const;

private:
    struct Attribute {
        QString name;
        QSharedPointer<BufferObject> buffer;
        int components = 0;
        unsigned int type = 0;
    };

    QSharedPointer<BufferObject> bindNewBuffer(unsigned int target) const;

    OpenGLDeviceContext& _context;
    UploadOptions _options;
    QSharedPointer<BufferObject> _indexBuffer;
    int _indexCount = 0;
    unsigned int _indexType = 0;
    quint64 _vertexCount = 0;
    std::vector<Attribute> _attributes;
};

} // namespace Atelier::Vel

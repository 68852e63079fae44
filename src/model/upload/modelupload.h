#pragma once

#include <vector>

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velmodel/drawdata.h>

#include "drawdata/drawdatacontent.h"

namespace Atelier::Vel {

class BufferObject;
class GPUModel;
class InstanceDataCollection;
class OpenGLDeviceContext;

/// Makes the GL objects of one upload: first the indices, then the attributes, then the drawables.
class ModelUpload {
public:
    ModelUpload(OpenGLDeviceContext& context, const UploadOptions& options);

    /// Uploads all of `content` and releases the uploaded parts.
    /// Returns: false, after a warning and with `model` unchanged, if the upload fails.
    bool add(DrawDataContent& content, GPUModel& model);
    /// Has `model` fill the buffers of this upload again from a copy of the draw data.
    /// Requires: add() has succeeded, with the same content.
    void keep(const DrawData& data, GPUModel& model) const;
    /// Returns: the numbers of the drawables that add() has added, in the order of the draw data.
    const QVector<int>& drawables() const { return _drawables; }

private:
    struct Attribute {
        QString name;
        QSharedPointer<BufferObject> buffer;
        int components = 0;
        unsigned int type = 0;
    };

    /// Returns: whether a list holds the instances of all commands; a warning if not.
    bool canCopy(const DrawDataContent& content) const;
    QSharedPointer<BufferObject> bindNewBuffer(unsigned int target) const;
    /// Uploads the triangle indices, as 16-bit numbers if the number of vertices allows it.
    /// Returns: false, after a warning, if the upload fails.
    bool addIndices(const DrawDataContent& content);
    /// Returns: false, after a warning, if the upload fails.
    bool addAttribute(const DrawDataContent::Stream& stream);
    QList<InstanceData> instancesOf(const QVector<qint32>& ids) const;
    /// Returns: its number in the model.
    int addDrawable(GPUModel& model, DrawDataContent::Drawable drawable) const;

    OpenGLDeviceContext& _context;
    const UploadOptions& _options;
    QList<InstanceData> _copies; ///< of each command: its instances
    QSharedPointer<BufferObject> _indexBuffer;
    int _indexCount = 0;
    unsigned int _indexType = 0;
    quint64 _vertexCount = 0;
    std::vector<Attribute> _attributes;
    QVector<int> _drawables;
};

/// Uploads draw data into a context. Returns: see upload().
bool uploadTo(OpenGLDeviceContext& context, DrawData data, GPUModel& model, const UploadOptions& options);

} // namespace Atelier::Vel

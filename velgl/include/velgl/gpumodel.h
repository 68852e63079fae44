#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtGui/QVector3D>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class DrawBuffers;
class InstanceDataCollection;

/// A model on the GPU: drawables with their material and instance collections and the names of their
/// commands.
class VELGL_EXPORT GPUModel {
public:
    /// An axis-aligned box; invalid when `minimum` exceeds `maximum` in some axis.
    struct Bounds {
        QVector3D minimum;
        QVector3D maximum;
        bool isValid = false;
    };

    GPUModel();
    ~GPUModel();
    GPUModel(const GPUModel&) = delete;
    GPUModel& operator=(const GPUModel&) = delete;

    /// Takes the drawable and its collections over; either collection may be null. `instanceCount` is the
    /// number of times that every command is drawn. `key` tells drawables apart for the caller. Returns: the
    /// drawable's index; -1 when `buffers` is null or added already.
    int add(DrawBuffers* buffers, int instanceCount, InstanceDataCollection* materials,
            InstanceDataCollection* instances, const quint64& key);
    void addMaterialName(int drawable, int command, const QString& name);
    void addObjectName(int drawable, int command, const QString& name);

    int drawableCount() const;
    DrawBuffers* drawable(int index) const;
    /// Null when the drawable has none.
    InstanceDataCollection* materials(int drawable) const;
    /// Null when the drawable has none.
    InstanceDataCollection* instances(int drawable) const;
    quint64 key(int drawable) const;
    /// Null when none was given or the numbers are out of range.
    QString materialName(int drawable, int command) const;
    QString objectName(int drawable, int command) const;

    /// The box around all finite positions that the commands draw, read back from the stream named
    /// `positionAttribute` once and kept.
    Bounds bounds(const QString& positionAttribute = QStringLiteral("va_Vertex"));

    /// Draws everything with the current program: one glMultiDrawElementsIndirect per drawable and per run of
    /// commands with the same textures. See docs/velgl.md for what a shader finds where.
    void draw();

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

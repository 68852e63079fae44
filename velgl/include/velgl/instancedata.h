#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class Texture;

/// A named bag of values and textures, laid out for the GPU by the InstanceDataPlan of the same name.
/// Copies are cheap: they share their content until one of them is changed.
class VELGL_EXPORT InstanceData {
public:
    explicit InstanceData(const QString& name = QString());

    const QString& name() const { return _name; }

    /// Stores a copy of `size` bytes under `member`, replacing an earlier value of that name.
    void set(const QString& member, const void* data, unsigned long long size);
    /// Stores a texture by path; it is loaded when it is first drawn.
    void setTexture(const QString& member, const QString& path);
    /// Stores a texture object, which must outlive every use of this data.
    void setTexture(const QString& member, Texture* texture);
    /// Drops all values and textures; the name stays.
    void clear();

    bool hasValue(const QString& member) const { return _values.contains(member); }
    /// The bytes stored under `member`; empty when there are none.
    QByteArray value(const QString& member) const { return _values.value(member); }
    /// Names of all values, sorted.
    QStringList valueNames() const { return _values.keys(); }

    bool hasTexture(const QString& member) const { return _textures.contains(member); }
    /// The path stored under `member`; null when there is none or a texture object is stored.
    QString texturePath(const QString& member) const { return _textures.value(member).path; }
    /// The texture object stored under `member`; null when there is none or a path is stored.
    Texture* texture(const QString& member) const { return _textures.value(member).object; }
    /// Names of all textures, sorted.
    QStringList textureNames() const { return _textures.keys(); }

private:
    struct TextureReference {
        QString path;
        Texture* object = nullptr;
    };

    QString _name;
    QMap<QString, QByteArray> _values;
    QMap<QString, TextureReference> _textures;
};

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QPointer>
#include <QtCore/QSharedData>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class Texture;

/// Named values and textures of one material or one instance. Values and textures have separate names. The
/// InstanceDataPlan that the collection of the data names decides which values reach the GPU, and where they
/// lie there; by convention the data has the name of that plan.
///
/// A plain value: copies share their content until one of them is changed, so a copy costs one counter.
/// Lookups are logarithmic in the number of members.
/// Threads: each thread may use copies of its own, at the same time as others; a texture object is not
/// deleted meanwhile. No context is needed.
class VELGL_EXPORT InstanceData {
public:
    /// Makes data without values and textures. `name` may be null.
    InstanceData(const QString& name = QString());

    /// Returns: the name that the constructor was given.
    QString name() const { return content().name; }

    /// Stores a copy of the `size` bytes at `data` under `member`, in place of an earlier value of that name.
    /// `data` may be null if `size` is 0. The type is the caller's business: the bytes are checked against
    /// the plan when the data is packed. More than about 1 GiB, or null for bytes, is refused with a warning;
    /// the earlier value stays then.
    void set(const QString& member, const void* data, unsigned long long size);
    /// Stores the path of a texture under `member`, in place of an earlier texture. TextureManager::texture()
    /// loads it when it is first drawn.
    void setTexture(const QString& member, const QString& path);
    /// Stores a texture object under `member`, in place of an earlier texture; null is allowed. The object is
    /// not owned. After it is deleted, the member still counts as a texture, which is drawn white.
    void setTexture(const QString& member, Texture* texture);
    /// Removes all values and textures; the name stays.
    void clear();

    /// Returns: whether a value is stored under `member`.
    bool hasValue(const QString& member) const { return content().values.contains(member); }
    /// Returns: the bytes stored under `member`; empty when there are none. They are not copied.
    QByteArray value(const QString& member) const { return content().values.value(member); }
    /// Returns: the names of all values, sorted.
    QStringList valueNames() const { return content().values.keys(); }

    /// Returns: whether a path or a texture object is stored under `member`.
    bool hasTexture(const QString& member) const { return content().textures.contains(member); }
    /// Returns: the path stored under `member`; null when there is none or a texture object is stored.
    QString texturePath(const QString& member) const { return content().textures.value(member).path; }
    /// Returns: the texture object stored under `member`; null when there is none, when a path is stored, and
    /// after the object was deleted.
    Texture* texture(const QString& member) const;
    /// Returns: the names of all textures, sorted.
    QStringList textureNames() const { return content().textures.keys(); }

private:
    struct TextureReference {
        QString path;
        QPointer<Texture> object;
    };

    struct Content : QSharedData {
        QString name;
        QMap<QString, QByteArray> values;
        QMap<QString, TextureReference> textures;
    };

    const Content& content() const;
    // The content to be changed: no other copy shares it.
    Content& ownContent();

    // Null without a name, values and textures. One pointer is all there is, so that a QList holds this class
    // in place: models have lists with an item for every command.
    QSharedDataPointer<Content> _content;
};

} // namespace Atelier::Vel

Q_DECLARE_TYPEINFO(Atelier::Vel::InstanceData, Q_MOVABLE_TYPE);

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QSharedData>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class Texture;

/// A named bag of values and textures, laid out for the GPU by the InstanceDataPlan of the same name.
/// Copies are cheap: they share their content until one of them is changed.
class VELGL_EXPORT InstanceData {
public:
    InstanceData(const QString& name = QString());

    QString name() const { return content().name; }

    /// Stores a copy of `size` bytes under `member`, replacing an earlier value of that name.
    void set(const QString& member, const void* data, unsigned long long size);
    /// Stores a texture by path; it is loaded when it is first drawn.
    void setTexture(const QString& member, const QString& path);
    /// Stores a texture object, which must outlive every use of this data.
    void setTexture(const QString& member, Texture* texture);
    /// Drops all values and textures; the name stays.
    void clear();

    bool hasValue(const QString& member) const { return content().values.contains(member); }
    /// The bytes stored under `member`; empty when there are none.
    QByteArray value(const QString& member) const { return content().values.value(member); }
    /// Names of all values, sorted.
    QStringList valueNames() const { return content().values.keys(); }

    bool hasTexture(const QString& member) const { return content().textures.contains(member); }
    /// The path stored under `member`; null when there is none or a texture object is stored.
    QString texturePath(const QString& member) const { return content().textures.value(member).path; }
    /// The texture object stored under `member`; null when there is none or a path is stored.
    Texture* texture(const QString& member) const { return content().textures.value(member).object; }
    /// Names of all textures, sorted.
    QStringList textureNames() const { return content().textures.keys(); }

private:
    struct TextureReference {
        QString path;
        Texture* object = nullptr;
    };

    struct Content : QSharedData {
        QString name;
        QMap<QString, QByteArray> values;
        QMap<QString, TextureReference> textures;
    };

    const Content& content() const;
    /// A content of its own, to be changed.
    Content& ownContent();

    // One pointer, so that lists hold it in place: there is one in them for every command that is drawn. Null
    // without a name and without content.
    QSharedDataPointer<Content> _content;
};

} // namespace Atelier::Vel

Q_DECLARE_TYPEINFO(Atelier::Vel::InstanceData, Q_MOVABLE_TYPE);

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceData;

/// The layout of one kind of instance data: named members in order, packed by the std430 rules.
class VELGL_EXPORT InstanceDataPlan {
public:
    /// Member types. The values are fixed: clients may store them.
    enum class DataType {
        Texture = 0, ///< bound beside the buffer, takes no room in it
        Int = 1,     ///< one signed 32-bit integer
        UInt = 2,    ///< one unsigned 32-bit integer
        Float = 13,  ///< one 32-bit float
        Vec2 = 14,   ///< two 32-bit floats
        Vec3 = 15,   ///< three 32-bit floats
        Vec4 = 16,   ///< four 32-bit floats
        Mat4 = 17,   ///< a 4x4 matrix of 32-bit floats, column by column
    };

    struct Member {
        DataType type = DataType::Float;
        QString name;
        int offset = 0; ///< bytes from the start of an item; -1 for a texture
    };

    InstanceDataPlan(const QString& name);

    const QString& name() const { return _name; }
    /// Appends a member; its offset follows from the members before it.
    void addMember(DataType type, const QString& name);
    const QVector<Member>& members() const { return _members; }

    /// The distance between two items of an array of them, in bytes; 0 when there are no value members.
    int stride() const;
    /// The bytes that a value of `type` takes; 0 for a texture.
    static int byteSize(DataType type);

    /// The names of the texture members, in order: their positions here are the numbers of their texture
    /// units.
    QStringList textureNames() const;

    /// The items packed one after the other, missing members zero. A value whose size differs from its
    /// member's is left out with a warning that names both sizes.
    QByteArray pack(const QList<InstanceData>& items) const;

    /// A GLSL struct named `structName` that matches pack(), so that a shader cannot disagree with the
    /// buffer; empty when there are no value members, since GLSL has no empty structs.
    QString glslStruct(const QString& structName) const;
    /// A member's name as GLSL text has it: characters that cannot stand in an identifier become '_'.
    static QString glslName(const QString& member);

private:
    QString _name;
    QVector<Member> _members;
    int _end = 0;       // of the last value member, in bytes
    int _alignment = 1; // of an item: the largest of its members
};

} // namespace Atelier::Vel

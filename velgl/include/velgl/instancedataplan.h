#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceData;

/// The layout of one kind of instance data in a storage buffer: named members in order, packed by the std430
/// rules of OpenGL. Texture members have no bytes there; each has a texture unit instead.
///
/// Build a plan completely before it is registered, since buffers and shaders are made from it afterwards.
/// Threads: reading is safe on several threads at once; addMember() is not. No context is needed.
class VELGL_EXPORT InstanceDataPlan {
public:
    /// Member types. The values are fixed: clients may store them.
    enum class DataType {
        Texture = 0, ///< bound to a texture unit; no bytes in the buffer
        Int = 1,     ///< one signed 32-bit integer
        UInt = 2,    ///< one unsigned 32-bit integer
        Float = 13,  ///< one 32-bit float
        Vec2 = 14,   ///< two 32-bit floats
        Vec3 = 15,   ///< three 32-bit floats
        Vec4 = 16,   ///< four 32-bit floats
        Mat4 = 17,   ///< a 4x4 matrix of 32-bit floats, column by column
    };

    /// One member and its place in an item.
    struct Member {
        DataType type = DataType::Float;
        QString name;
        int offset = 0; ///< bytes from the start of an item; -1 for a texture
    };

    /// The number of texture members that a plan can have: a uniform with one bit for each
    /// texture reports to shaders which of them a material has.
    static constexpr int kMaxTextures = 32;

    /// Makes a plan without members for the InstanceData and collections of that name.
    InstanceDataPlan(const QString& name);

    /// Returns: the name that the constructor was given.
    const QString& name() const { return _name; }
    /// Appends a member at the next offset that suits the alignment of its type. A second member of the same
    /// name, and a texture beyond kMaxTextures, is left out with a warning.
    void addMember(DataType type, const QString& name);
    /// Returns: the members in the order in which they were added.
    const QVector<Member>& members() const { return _members; }

    /// Returns: the distance from one item to the next in a buffer, in bytes: a multiple of the largest
    /// alignment among the members. 0 when there are no value members.
    int stride() const;
    /// Returns: the size of a value of `type` in bytes, without padding; 0 for a texture.
    static int byteSize(DataType type);

    /// Returns: the names of the texture members, in order, at most kMaxTextures. The position of a name is
    /// the number of its texture unit.
    QStringList textureNames() const;

    /// Packs the items one after the other. Members that an item lacks are zero, and so is padding. Values
    /// that the plan does not have are ignored. A value whose size differs from that of its member is left
    /// out, with a warning that names both sizes.
    /// Returns: stride() bytes per item; empty, after a warning, when that is more than a QByteArray holds
    /// (about 2 GiB).
    /// Cost: for each item, a lookup per member and a copy.
    QByteArray pack(const QList<InstanceData>& items) const;

    /// Returns: a GLSL struct named `structName` whose std430 layout is that of pack(); empty when there are
    /// no value members, since GLSL has no empty structs. Member names are written by glslName().
    QString glslStruct(const QString& structName) const;
    /// Makes a GLSL identifier of a member's name, for shaders of version 430 to 460. Characters other than
    /// ASCII letters, digits and '_' become '_'. A '_' is put in front of a name that is empty, begins with a
    /// digit, with "gl_" or with "GL_", or is a predefined macro such as "__LINE__". A '_' is appended to a
    /// keyword or reserved word of GLSL: "in" becomes "in_". Other names stay, with "__" too, which these
    /// versions accept and drivers may warn of. Names that differ may give the same identifier; a struct with
    /// both does not compile.
    static QString glslName(const QString& member);

private:
    QString _name;
    QVector<Member> _members;
    int _end = 0;       // of the last value member, in bytes
    int _alignment = 1; // of an item: the largest of its members
};

} // namespace Atelier::Vel

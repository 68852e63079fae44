#include <velgl/instancedataplan.h>

#include <algorithm>
#include <iterator>

#include "context/log.h"
#include "instances/glslwords.h"
#include "instances/itempacking.h"

namespace Atelier::Vel {

namespace {

using DataType = InstanceDataPlan::DataType;

// The std430 rules: a vector of three components is aligned like one of four, and the next scalar may use the
// fourth place.
int alignment(DataType type) {
    switch (type) {
    case DataType::Texture:
        return 1;
    case DataType::Vec2:
        return 8;
    case DataType::Vec3:
    case DataType::Vec4:
    case DataType::Mat4:
        return 16;
    case DataType::Int:
    case DataType::UInt:
    case DataType::Float:
        return 4;
    }
    return 4;
}

const char* glslType(DataType type) {
    switch (type) {
    case DataType::Texture:
        return "";
    case DataType::Int:
        return "int";
    case DataType::UInt:
        return "uint";
    case DataType::Float:
        return "float";
    case DataType::Vec2:
        return "vec2";
    case DataType::Vec3:
        return "vec3";
    case DataType::Vec4:
        return "vec4";
    case DataType::Mat4:
        return "mat4";
    }
    return "";
}

// The maximum size of a QByteArray, whose header counts against the range of int.
constexpr qint64 kMaxPackedSize = 0x7FFFFFC0;

int roundedUp(int value, int multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

// The characters of a literal lie in a library that may be unloaded, while the plan stays in the registry.
QString deepCopy(const QString& text) {
    return QString(text.constData(), text.size());
}

// Names of predefined macros, which the preprocessor would replace, and of built-in variables.
bool isReservedName(const QString& name) {
    if (name.startsWith(QLatin1String("gl_")) || name.startsWith(QLatin1String("GL_")))
        return true;
    const auto isName = [&](const char* macro) { return name == QLatin1String(macro); };
    constexpr const char* kMacros[] = {"__LINE__", "__FILE__", "__VERSION__"};
    return std::any_of(std::begin(kMacros), std::end(kMacros), isName);
}

} // namespace

void warnOfWrongSize(const InstanceDataPlan& plan, const InstanceDataPlan::Member& member,
                     const InstanceData& item) {
    qCWarning(velglLog, "Value '%s' has %d bytes, but its member of plan '%s' has %d; it is left out",
              qPrintable(member.name), item.value(member.name).size(), qPrintable(plan.name()),
              InstanceDataPlan::byteSize(member.type));
}

InstanceDataPlan::InstanceDataPlan(const QString& name) : _name(deepCopy(name)) {}

void InstanceDataPlan::addMember(DataType type, const QString& name) {
    const auto sameName = [&](const Member& member) { return member.name == name; };
    if (std::any_of(_members.cbegin(), _members.cend(), sameName)) {
        qCWarning(velglLog, "Plan '%s' has a member '%s' already; the second one is left out",
                  qPrintable(_name), qPrintable(name));
        return;
    }
    if (type == DataType::Texture && textureNames().size() == kMaxTextures) {
        qCWarning(velglLog, "Plan '%s' has %d textures already, which is the limit; texture '%s' is left out",
                  qPrintable(_name), kMaxTextures, qPrintable(name));
        return;
    }
    int offset = -1;
    if (type != DataType::Texture) {
        offset = roundedUp(_end, alignment(type));
        _end = offset + byteSize(type);
        _alignment = std::max(_alignment, alignment(type));
    }
    _members.append({type, deepCopy(name), offset});
}

int InstanceDataPlan::stride() const {
    return roundedUp(_end, _alignment);
}

int InstanceDataPlan::byteSize(DataType type) {
    switch (type) {
    case DataType::Texture:
        return 0;
    case DataType::Int:
    case DataType::UInt:
    case DataType::Float:
        return 4;
    case DataType::Vec2:
        return 8;
    case DataType::Vec3:
        return 12;
    case DataType::Vec4:
        return 16;
    case DataType::Mat4:
        return 64;
    }
    return 0;
}

QStringList InstanceDataPlan::textureNames() const {
    QStringList names;
    for (const Member& member : _members)
        if (member.type == DataType::Texture)
            names.append(member.name);
    return names;
}

QByteArray InstanceDataPlan::pack(const QList<InstanceData>& items) const {
    const qint64 size = qint64(items.size()) * stride();
    if (size > kMaxPackedSize) {
        qCWarning(velglLog, "%d items of plan '%s' are too many for one buffer", items.size(),
                  qPrintable(_name));
        return {};
    }
    QByteArray bytes(static_cast<int>(size), '\0');
    char* destination = bytes.data();
    for (const InstanceData& item : items) {
        packItem(*this, item, destination,
                 [&](const Member& member) { warnOfWrongSize(*this, member, item); });
        destination += stride();
    }
    return bytes;
}

QString InstanceDataPlan::glslStruct(const QString& structName) const {
    if (stride() == 0)
        return {};
    QString text = QStringLiteral("struct %1 {\n").arg(structName);
    for (const Member& member : _members)
        if (member.type != DataType::Texture)
            text += QStringLiteral("    %1 %2;\n")
                        .arg(QLatin1String(glslType(member.type)), glslName(member.name));
    return text + QStringLiteral("};\n");
}

QString InstanceDataPlan::glslName(const QString& member) {
    QString name = member;
    for (QChar& character : name)
        if (character.unicode() > 0x7F || !(character.isLetterOrNumber() || character == QLatin1Char('_')))
            character = QLatin1Char('_');
    if (name.isEmpty() || name[0].isDigit() || isReservedName(name))
        return QLatin1Char('_') + name;
    return isGlslWord(name) ? name + QLatin1Char('_') : name;
}

} // namespace Atelier::Vel

#pragma once

#include <string>
#include <vector>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector4D>

namespace Atelier::Vel {

/// Sets uniforms of one program by name. Each name is looked up once.
/// Requires, for all functions: a context that knows `program` is current, and that is the same program in
/// each call.
class Uniforms {
public:
    /// Each returns: false when the program has no such uniform, and when that does not take such a value. A
    /// warning that contains `label` says so once for each name.
    bool set(unsigned int program, const QString& label, const char* name, int value);
    /// Sets a float, or a vector of the first `count` components.
    bool set(unsigned int program, const QString& label, const char* name, const QVector4D& value, int count);
    bool set(unsigned int program, const QString& label, const char* name, const QColor& value);
    bool set(unsigned int program, const QString& label, const char* name, const QMatrix4x4& value);

private:
    struct Uniform {
        std::string name;
        int location = -1;     ///< -1 if the program does not use it
        unsigned int type = 0; ///< GL type, such as GL_FLOAT_VEC3
        bool isReported = false;
    };

    Uniform& find(unsigned int program, const char* name);
    /// Returns: `isSet`. Warns if that is false.
    static bool finish(bool isSet, const QString& label, Uniform& uniform);

    std::vector<Uniform> _uniforms; // a program has few
};

} // namespace Atelier::Vel

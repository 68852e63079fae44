#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector2D>
#include <QtGui/QVector3D>
#include <QtGui/QVector4D>

#include <velgl/bindable.h>

namespace Atelier::Vel {

struct ShaderPlans;

/// How a program is linked, and which streams its vertex shader reads.
struct ProgramOptions {
    /// Locations of vertex attributes, by their names in the shader, as glBindAttribLocation takes them. A
    /// location that the shader itself declares has precedence. Names that the shader does not have are
    /// ignored.
    QHash<QString, int> attributeLocations;
    /// The streams that the shader's attributes read, by the names of the attributes: an attribute
    /// "a_position" with the entry "va_Vertex" reads the stream "va_Vertex". An attribute without an entry
    /// reads the stream of its own name.
    QHash<QString, QString> streams;
};

/// A program of one vertex and one fragment shader. It is compiled once and can be used in all contexts that
/// share with the one in which it was made; elsewhere, and when those contexts are gone, bind() fails.
///
/// Threads: the destructor may run on any thread; all other functions are called on the thread of the current
/// context.
class VELGL_EXPORT Program : public Bindable {
public:
    /// Compiles both shaders and links them. Both sources are GLSL with their #version line; what GPUModel
    /// hands to a shader is declared by shaderInterface().
    /// Requires: a current context.
    /// Returns: null when there is no context, and when compiling or linking fails. `error` then names the
    /// step ("Vertex shader: ", "Fragment shader: ", "Linking: ") and holds the log of the driver; else it is
    /// unchanged.
    /// Cost: waits until the driver has compiled and linked, so do this before the first frame.
    static std::unique_ptr<Program> fromSource(const QByteArray& vertexShader,
                                               const QByteArray& fragmentShader, QString& error);
    /// The same with options.
    static std::unique_ptr<Program> fromSource(const QByteArray& vertexShader,
                                               const QByteArray& fragmentShader,
                                               const ProgramOptions& options, QString& error);
    /// Reads both shaders from files, and adds the declarations of shaderInterface() for `plans`. Each file
    /// begins with its #version line, which comments may precede. The declarations are inserted behind that
    /// line, and behind the #extension lines that follow it. A log of the driver counts the lines of the
    /// file, as source 0; the declarations are source 1.
    /// Returns: null, in addition to the cases of fromSource(), when a file cannot be read or has no #version
    /// line, and when a plan with a name is not registered. `error` then names the file, or the plan, and the
    /// cause: "Fragment shader 'glass.frag': 0:12(5): error: ...".
    static std::unique_ptr<Program> fromFiles(const QString& vertexFile, const QString& fragmentFile,
                                              const ShaderPlans& plans, QString& error);
    /// The same with options.
    static std::unique_ptr<Program> fromFiles(const QString& vertexFile, const QString& fragmentFile,
                                              const ShaderPlans& plans, const ProgramOptions& options,
                                              QString& error);
    /// Deletes the GL program at once if a context of its group is current, and otherwise with the next use
    /// of VelGL in such a context.
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Makes the program current, as glUseProgram does.
    /// Returns: false when the current context does not know the program; the current program stays then.
    bool bind() override;
    void unbind() override;

    /// Returns: the GL name; 0 when the current context does not know the program.
    unsigned int name() const;
    /// Sets the label under which messages of the driver and warnings name this program. OpenGL gets the
    /// first 255 bytes of it in UTF-8, if the current context knows the program.
    void setLabel(const QString& label);
    /// Asks OpenGL for the location of the uniform `name`, a null-terminated string. The program need not be
    /// bound.
    /// Returns: -1 when the program does not use such a uniform, and when the current context does not know
    /// the program.
    int uniformLocation(const char* name) const;

    /// Sets the uniform `name`, a null-terminated string, which may be an element such as "lights[2]". The
    /// program need not be current, and no other state changes.
    ///
    /// Integers are for GLSL's int, bool, uint (not below 0) and samplers, which take the number of a texture
    /// unit; floats for float; vectors for vec2, vec3 and vec4. Colours are for vec4 and, without alpha, for
    /// vec3; their components are those of QColor::toRgb(), from 0 to 1. Matrices are for mat4 and, with
    /// their upper left part, for mat3.
    /// Returns: false when the program does not use such a uniform, when that has another type, and when the
    /// current context does not know the program. The first two are reported once for each name.
    /// Cost: the first call for a name asks OpenGL for its location and type, further calls ask nothing.
    bool setUniform(const char* name, int value);
    bool setUniform(const char* name, float value);
    bool setUniform(const char* name, const QVector2D& value);
    bool setUniform(const char* name, const QVector3D& value);
    bool setUniform(const char* name, const QVector4D& value);
    bool setUniform(const char* name, const QColor& value);
    bool setUniform(const char* name, const QMatrix4x4& value);

private:
    friend struct ProgramAccess;

    Program();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/bindable.h>

namespace Atelier::Vel {

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
    /// Sets the label under which messages of the driver name this program. OpenGL gets the first 255 bytes
    /// of it in UTF-8. Does nothing when the current context does not know the program.
    void setLabel(const QString& label);
    /// Asks OpenGL for the location of the uniform `name`, a null-terminated string. The program need not be
    /// bound.
    /// Returns: -1 when the program does not use such a uniform, and when the current context does not know
    /// the program.
    int uniformLocation(const char* name) const;

private:
    friend struct ProgramAccess;

    Program();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

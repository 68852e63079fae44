#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velgl/bindable.h>

namespace Atelier::Vel {

/// A linked vertex and fragment shader.
class VELGL_EXPORT Program : public Bindable {
public:
    /// Compiles and links. Returns: null, and the stage with the driver's log in `error`, when that fails.
    static std::unique_ptr<Program> fromSource(const QByteArray& vertexShader,
                                               const QByteArray& fragmentShader, QString& error);
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    bool bind() override;
    void unbind() override;

    /// The GL name; 0 where the current context does not know the program.
    unsigned int name() const;
    /// The label under which debug messages name this object.
    void setLabel(const QString& label);
    /// The location of a uniform; -1 when the program has none of that name.
    int uniformLocation(const char* name) const;

private:
    Program();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QString>

#include "context/glerrors.h"

namespace Atelier::Vel {

/// What buffers, textures and vertex arrays have in common besides their GL names: the label under which
/// people know the object, and the warnings about it.
class ObjectRecord {
public:
    /// `kind` begins each warning, for example "Buffer"; a string literal. `identifier` is OpenGL's for that
    /// kind, such as GL_BUFFER.
    ObjectRecord(const char* kind, unsigned int identifier);

    const QString& label() const { return _label; }
    /// Logs the failure that waited for a label, if there is one.
    void setLabel(const QString& label);
    /// Gives the label to the GL object `name`.
    /// Requires: a context that knows the name is current.
    void applyLabel(unsigned int name) const noexcept;

    /// Warns once that OpenGL could not do `action` with the object, see FailureReport.
    void failed(const char* action) { _failures.failed(action, _label); }
    void succeeded() { _failures.succeeded(); }
    /// Warns, each time, that the object cannot be used in the current context.
    void warnOfForeignContext() const;

private:
    const char* _kind;
    unsigned int _identifier;
    QString _label;
    QByteArray _encodedLabel;
    FailureReport _failures;
};

} // namespace Atelier::Vel

#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Takes the errors that OpenGL has recorded for the natively current context.
/// Returns: their names, for example "GL_OUT_OF_MEMORY, GL_INVALID_VALUE"; empty when there are none.
QString takeErrors();

/// Warns when OpenGL cannot do what an object needs, for example "Buffer 'va_Normal' could not be filled
/// (GL_OUT_OF_MEMORY)". It warns once, and again only after a success. Many objects are filled before they
/// are labelled: the warning about an object without a label waits for the label.
class FailureReport {
public:
    /// `kind` begins the warning; a string literal.
    explicit FailureReport(const char* kind) : _kind(kind) {}

    /// Takes the errors of OpenGL as the reason. `action` completes "could not be ...".
    void failed(const char* action, const QString& label);
    void succeeded();
    /// Logs the warning that waits for a label, if there is one.
    void setLabel(const QString& label);

private:
    const char* _kind;
    QString _waiting; ///< the end of a warning that waits for its label
    bool _isFailed = false;
};

} // namespace Atelier::Vel

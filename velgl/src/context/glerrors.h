#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// Takes the errors that the natively current context has noted.
/// Returns: their names, as in "GL_OUT_OF_MEMORY, GL_INVALID_VALUE"; empty for none.
QString takeErrors();

/// Warns of what OpenGL refuses an object, as in "Buffer 'va_Normal' could not be filled (GL_OUT_OF_MEMORY)":
/// once, until it works again. Many objects are filled first and labelled then: without a label the warning
/// waits for one.
class RefusalReport {
public:
    /// `kind` begins the warning; a literal.
    explicit RefusalReport(const char* kind) : _kind(kind) {}

    /// Takes the errors.
    void refuse(const char* action, const QString& label);
    void setLabel(const QString& label);
    void itWorks();

private:
    const char* _kind;
    QString _waiting; ///< the end of a warning that waits for its label
    bool _isRefused = false;
};

} // namespace Atelier::Vel

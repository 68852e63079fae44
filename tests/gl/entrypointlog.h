#pragma once

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <velgl/glentrypoints.h>

namespace Atelier::Vel {

/// Records the calls through the entry points during its lifetime and passes them on to OpenGL.
class EntryPointLog {
public:
    EntryPointLog() : _real(glEntryPoints()) {
        current = this;
        glEntryPoints().pixelStorei = [](unsigned int name, int value) {
            note(QStringLiteral("pixelStorei %1 %2").arg(name, 0, 16).arg(value));
            current->_real.pixelStorei(name, value);
        };
        glEntryPoints().texParameteri = [](unsigned int target, unsigned int name, int value) {
            note(QStringLiteral("texParameteri %1 %2 %3")
                     .arg(target, 0, 16)
                     .arg(name, 0, 16)
                     .arg(value, 0, 16));
            current->_real.texParameteri(target, name, value);
        };
        glEntryPoints().texImage2D = [](unsigned int target, int level, int internalFormat, int width,
                                        int height, int border, unsigned int format, unsigned int type,
                                        const void* pixels) {
            note(QStringLiteral("texImage2D %1 %2 %3 %4 %5 %6 %7 %8")
                     .arg(target, 0, 16)
                     .arg(level)
                     .arg(internalFormat, 0, 16)
                     .arg(width)
                     .arg(height)
                     .arg(border)
                     .arg(format, 0, 16)
                     .arg(type, 0, 16));
            current->_real.texImage2D(target, level, internalFormat, width, height, border, format, type,
                                      pixels);
        };
        glEntryPoints().generateMipmap = [](unsigned int target) {
            note(QStringLiteral("generateMipmap %1").arg(target, 0, 16));
            current->_real.generateMipmap(target);
        };
        glEntryPoints().getIntegerv = [](unsigned int name, int* values) {
            current->_real.getIntegerv(name, values);
            *values = current->integers.value(name, *values);
        };
        glEntryPoints().getStringi = [](unsigned int name, unsigned int index) {
            return current->hidesExtensions ? reinterpret_cast<const unsigned char*>("GL_ARB_none")
                                            : current->_real.getStringi(name, index);
        };
    }
    ~EntryPointLog() { glEntryPoints() = _real; }
    EntryPointLog(const EntryPointLog&) = delete;
    EntryPointLog& operator=(const EntryPointLog&) = delete;

    QStringList calls;
    QHash<unsigned int, int> integers; ///< replace those of the driver, by their GL names
    bool hidesExtensions = false;

private:
    static void note(const QString& call) { current->calls.append(call); }

    static inline EntryPointLog* current = nullptr;
    GLEntryPoints _real;
};

} // namespace Atelier::Vel

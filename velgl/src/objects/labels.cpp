#include <epoxy/gl.h>

#include "objects/labels.h"

namespace Atelier::Vel {

QByteArray encodedLabel(const QString& label) {
    // GL_MAX_LABEL_LENGTH is at least 256, with the terminating zero.
    constexpr int kMaxLabelLength = 255;
    return label.toUtf8().left(kMaxLabelLength);
}

void labelObject(unsigned int kind, unsigned int name, const QByteArray& label) noexcept {
    glObjectLabel(kind, name, label.size(), label.constData());
}

} // namespace Atelier::Vel

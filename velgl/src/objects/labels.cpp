#include <epoxy/gl.h>

#include "objects/labels.h"

namespace Atelier::Vel {

void labelObject(unsigned int kind, unsigned int name, const QString& label) {
    // GL_MAX_LABEL_LENGTH is at least 256, with the terminating zero.
    constexpr int kMaxLabelLength = 255;
    const QByteArray text = label.toUtf8().left(kMaxLabelLength);
    glObjectLabel(kind, name, text.size(), text.constData());
}

} // namespace Atelier::Vel

#include <epoxy/gl.h>

#include "objects/labels.h"

namespace Atelier::Vel {

void labelObject(unsigned int kind, unsigned int name, const QString& label) {
    // Every driver takes labels of this length.
    constexpr int kMaxLabelLength = 255;
    const QByteArray text = label.toUtf8().left(kMaxLabelLength);
    glObjectLabel(kind, name, text.size(), text.constData());
}

} // namespace Atelier::Vel

#include "objects/objectrecord.h"

#include "context/log.h"
#include "objects/labels.h"

namespace Atelier::Vel {

ObjectRecord::ObjectRecord(const char* kind, unsigned int identifier)
    : _kind(kind), _identifier(identifier), _failures(kind) {}

void ObjectRecord::setLabel(const QString& label) {
    _encodedLabel = encodedLabel(label);
    _label = label;
    _failures.setLabel(label);
}

void ObjectRecord::applyLabel(unsigned int name) const noexcept {
    labelObject(_identifier, name, _encodedLabel);
}

void ObjectRecord::warnOfForeignContext() const {
    qCWarning(velglLog, "%s '%s' belongs to a context that does not share with the current one", _kind,
              qPrintable(_label));
}

} // namespace Atelier::Vel

#include "context/sharegroup.h"

namespace Atelier::Vel {

namespace {

quint64 nextSerial() {
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

ShareGroup::ShareGroup(Origin origin)
    : _serial(nextSerial()), _origin(origin), _isQts(origin == Origin::Qt) {
    if (origin != Origin::Qt)
        _mark.emplace(ContextMark::Of::Group);
}

void ShareGroup::removeContext() noexcept {
    if (--_contextCount == 0 && !_isQts && _origin != Origin::Other)
        close();
}

void ShareGroup::endQts() noexcept {
    _isQts = false;
    if (_contextCount == 0 && _origin != Origin::Other)
        close();
}

} // namespace Atelier::Vel

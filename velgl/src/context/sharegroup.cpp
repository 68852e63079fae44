#include "context/sharegroup.h"

namespace Atelier::Vel {

namespace {

quint64 nextSerial() {
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

ShareGroup::ShareGroup(Origin origin) : _serial(nextSerial()), _origin(origin), _isQts(origin == Origin::Qt) {
    if (origin != Origin::Qt)
        _mark.emplace(ContextMark::Of::Group);
}

std::shared_ptr<const LinkedProgram> ShareGroup::linkedProgram(unsigned int name) const {
    const std::lock_guard lock(_programMutex);
    const auto known = _programs.find(name);
    return known != _programs.end() ? known->second : nullptr;
}

void ShareGroup::addLinkedProgram(unsigned int name, std::shared_ptr<const LinkedProgram> linked) {
    const std::lock_guard lock(_programMutex);
    _programs[name] = std::move(linked);
}

void ShareGroup::removeLinkedProgram(unsigned int name) noexcept {
    const std::lock_guard lock(_programMutex);
    _programs.erase(name);
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

#include <velgl/autobinder.h>

namespace Atelier::Vel {

AutoBinder::AutoBinder(Bindable* bindable) : _bindable(bindable) {
    if (_bindable)
        _bindable->bind();
}

AutoBinder::~AutoBinder() {
    if (_bindable)
        _bindable->unbind();
}

} // namespace Atelier::Vel

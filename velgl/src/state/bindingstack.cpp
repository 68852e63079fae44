#include "state/bindingstack.h"

namespace Atelier::Vel {

void BindingStack::push(const SavedBinding& binding) {
    if (!_runs.empty() && _runs.back().binding == binding)
        ++_runs.back().count;
    else
        _runs.push_back({binding});
}

SavedBinding BindingStack::pop() {
    if (_runs.empty())
        return {};
    const SavedBinding binding = _runs.back().binding;
    if (--_runs.back().count == 0)
        _runs.pop_back();
    return binding;
}

} // namespace Atelier::Vel

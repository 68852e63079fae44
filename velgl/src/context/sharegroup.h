#pragma once

#include <QtCore/QByteArray>

#include "context/glnamespace.h"

namespace Atelier::Vel {

/// The names that a group of sharing contexts has in common. A labelled buffer tells the group from others:
/// no window system says for every context with whom it shares.
class ShareGroup : public GLNameSpace {
public:
    /// Requires: one of the new group's contexts is natively current.
    ShareGroup();

    /// Whether the context that is natively current belongs to this group.
    bool isCurrent() const;

private:
    unsigned int _tag = 0;
    QByteArray _label;
};

} // namespace Atelier::Vel

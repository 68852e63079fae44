#pragma once

#include <QtCore/QByteArray>

#include "context/glnamespace.h"

namespace Atelier::Vel {

/// The name space of a group of sharing contexts. A labelled buffer identifies the group, because not every
/// window system reports which contexts share.
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

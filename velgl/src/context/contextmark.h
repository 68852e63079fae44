#pragma once

#include <QtCore/QByteArray>

namespace Atelier::Vel {

/// A labelled GL object that identifies a context, or a group of sharing contexts, where the window system
/// has no answer: the handle of a context may be that of an earlier one, which is destroyed.
class ContextMark {
public:
    /// A buffer is shared, a vertex array is not.
    enum class Of { Context, Group };

    /// Makes the object in the natively current context.
    explicit ContextMark(Of of);

    /// Returns: whether the natively current context has the object.
    /// Cost: two queries of the driver at most. No memory is allocated.
    bool isCurrent() const noexcept;

private:
    unsigned int _identifier; // GL_BUFFER or GL_VERTEX_ARRAY
    unsigned int _name = 0;
    QByteArray _label;
};

} // namespace Atelier::Vel

#pragma once

#include <memory>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Testing {

/// A model of two drawables over twelve vertices. All numbers in a command differ, streams are not sorted,
/// and each drawable lacks something that the other has:
///   key 7:       triangles, three commands, two materials, no instances
///   key 1 << 40: lines, one command, no materials, one instance
/// Requires: a current context.
std::unique_ptr<GPUModel> mixedModel();

} // namespace Atelier::Vel::Testing

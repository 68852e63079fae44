#include "backgroundwork.h"

#include <atomic>

namespace Atelier::Vel::Viewer {

namespace {

std::atomic<int> running{0};

} // namespace

int RunningWork::count() {
    return running;
}

void RunningWork::begin() {
    ++running;
}

void RunningWork::end() {
    --running;
}

} // namespace Atelier::Vel::Viewer

#pragma once

#include <vector>

#include <epoxy/gl.h>

namespace Atelier::Vel::Testing {

/// Requests to a driver, and replacements of its answers, during the lifetime of a WatchedDriver.
struct DriverWatch {
    int framebuffersMade = 0;
    int framebuffersAlive = 0;
    int maxFramebuffersAlive = 0;
    std::vector<GLsizei> samples; ///< of each multisampled renderbuffer

    GLint sampleLimit = 0;          ///< in place of the driver's; 0 for none
    int checksUntilIncomplete = -1; ///< further checks of framebuffers until one fails; never when negative
};

/// Counts a program's requests to the driver and replaces its answers with those of another driver. Only one
/// may exist at a time. Requires: a current context.
class WatchedDriver {
public:
    WatchedDriver();
    ~WatchedDriver();
    WatchedDriver(const WatchedDriver&) = delete;
    WatchedDriver& operator=(const WatchedDriver&) = delete;

    DriverWatch& watch();

private:
    struct Functions;
    static Functions& real();
};

} // namespace Atelier::Vel::Testing

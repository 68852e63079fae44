#pragma once

#include <map>
#include <string>
#include <vector>

namespace Atelier::Vel::Testing {

/// Replaces, for its lifetime, all functions of OpenGL that the library VelGL imports by ones that count
/// their calls and do nothing, so that the work of a driver does not show. At most one object lives at a
/// time, and none of the classes of glhooks.h with it. Requires: a current context.
class GLCalls {
public:
    GLCalls();
    ~GLCalls();
    GLCalls(const GLCalls&) = delete;
    GLCalls& operator=(const GLCalls&) = delete;

    /// Forgets the calls so far.
    static void restart();
    /// The number of all calls.
    static int count();
    /// The number of calls of the function of that name, such as "glBindTexture".
    static int count(const std::string& name);
    /// The number of calls that ask OpenGL: names that begin with "glGet" or "glIs".
    static int queryCount();
    /// The calls of each function, for messages.
    static std::map<std::string, int> byName();

    /// The names of all functions that the library imports.
    static std::vector<std::string> importedNames();

private:
    std::vector<void*> _before;
};

} // namespace Atelier::Vel::Testing

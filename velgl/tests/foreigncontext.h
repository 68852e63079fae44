#pragma once

#include <memory>

namespace Atelier::Vel::Testing {

/// A context that is made through EGL alone, without VelGL, as another library would make it.
class ForeignContext {
public:
    enum class Api { OpenGL, OpenGLES };

    explicit ForeignContext(Api api = Api::OpenGL, const ForeignContext* shared = nullptr);
    ~ForeignContext();
    ForeignContext(const ForeignContext&) = delete;
    ForeignContext& operator=(const ForeignContext&) = delete;

    bool makeCurrent();
    /// The EGLContext.
    const void* handle() const { return _context; }
    static void doneCurrent();

private:
    void* _context = nullptr;
};

/// A context of OpenGL that shares with `shared`, which may be null, and is current.
std::unique_ptr<ForeignContext> makeForeignContext(const ForeignContext* shared = nullptr);

} // namespace Atelier::Vel::Testing

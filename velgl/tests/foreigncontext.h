#pragma once

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
    static void doneCurrent();

private:
    void* _context = nullptr;
};

} // namespace Atelier::Vel::Testing

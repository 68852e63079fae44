#pragma once

namespace Atelier::Vel::Testing {

/// An OpenGL context as another library would make it, without VelGL's help.
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

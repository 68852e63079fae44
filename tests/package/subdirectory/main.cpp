#include <dlfcn.h>

#include <QtCore/QVector>

#include <velgl/opengldevicecontext.h>
#include <velmodel/triangulation.h>

// Returns: whether VelGL is built without headless contexts and does not load EGL.
bool isWithoutEgl() {
    QString error;
    return !Atelier::Vel::OpenGLDeviceContext::createHeadless({}, error) &&
           error == QLatin1String("VelGL was built without headless contexts") &&
           !Atelier::Vel::OpenGLDeviceContext::current() && !dlopen("libEGL.so.1", RTLD_LAZY | RTLD_NOLOAD);
}

int main() {
    const int corners[] = {0, 1, 2};
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    QVector<unsigned int> triangles;
    Atelier::Vel::Triangulate3D(3, corners, positions, triangles);
    return triangles == QVector<unsigned int>{0, 1, 2} && isWithoutEgl() ? 0 : 1;
}

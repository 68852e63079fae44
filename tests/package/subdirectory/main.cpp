#include <QtCore/QVector>

#include <velmodel/triangulation.h>

int main() {
    const int corners[] = {0, 1, 2};
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    QVector<unsigned int> triangles;
    Atelier::Vel::Triangulate3D(3, corners, positions, triangles);
    return triangles == QVector<unsigned int>{0, 1, 2} ? 0 : 1;
}

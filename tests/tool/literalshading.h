#pragma once

#include <array>
#include <optional>
#include <vector>

#include <QtCore/QtGlobal>
#include <QtGui/QColor>

namespace Atelier::Vel::Testing {

/// Three numbers: a colour or a direction.
struct Triple {
    double x = 0;
    double y = 0;
    double z = 0;
};

/// What a fragment of a model knows: its material, the texels there, and the place in view space.
struct Fragment {
    Triple diffuse;         ///< Kd
    Triple specular;        ///< Ks
    double exponent = 0;    ///< Ns
    double opacity = 1;     ///< d
    bool hasMap = false;    ///< map_Kd
    QColor map = Qt::white; ///< the texel of map_Kd
    QColor specularMap = Qt::white;
    double exponentMap = 1; ///< the red of the texel
    Triple position;
    Triple normal;     ///< of any length
    Triple flatNormal; ///< of the triangle, of any length and sign
    double depth = 0;  ///< in the window, from 0 to 1
    bool isWireframe = false;
};

/// What is seen of a fragment by itself.
struct Shade {
    bool isOpaque = false;
    bool isVisible = false;
    Triple colour;     ///< linear light; premultiplied for glass
    double hidden = 1; ///< of what is behind, from 0 to 1
    double weight = 0; ///< of glass among other glass
};

/// How docs/velmodel.md says that surfaces are shaded, one formula at a time and in double precision: what
/// the shaders of the program are compared with.
Shade shaded(const Fragment& fragment);

/// A pixel from 0 to 255, not premultiplied and not rounded: red, green, blue, opacity.
using Pixel = std::array<double, 4>;

/// The pixel that `fragments` give over `background`; an invalid colour stands for none.
Pixel composed(const std::vector<Fragment>& fragments, const QColor& background);

} // namespace Atelier::Vel::Testing

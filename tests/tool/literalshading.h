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

/// The data of a fragment of a model: its material, its texels and its place in view space.
struct Fragment {
    Triple diffuse;              ///< Kd
    Triple specular;             ///< Ks
    Triple emission;             ///< Ke
    bool hasEmissionMap = false; ///< map_Ke
    QColor emissionMap = Qt::white;
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
    bool isLinear = false;   ///< whether the colours of the material are linear light
    double exposure = 0;     ///< in stops
    bool isParallel = false; ///< whether the eye is at an infinite distance
};

/// The appearance of a single fragment.
struct Shade {
    bool isOpaque = false;
    bool isVisible = false;
    Triple colour;     ///< linear light; premultiplied for glass
    double hidden = 1; ///< the share of the background that it hides, from 0 to 1
    double weight = 0; ///< of glass relative to other glass
};

/// The shading of surfaces as docs/velmodel.md defines it, formula by formula and in double precision. The
/// reference for the shaders of the program.
Shade shaded(const Fragment& fragment);

/// A pixel from 0 to 255, not premultiplied and not rounded: red, green, blue, opacity.
using Pixel = std::array<double, 4>;

/// The pixel that `fragments` give over `background`; an invalid colour means no background.
Pixel composed(const std::vector<Fragment>& fragments, const QColor& background);

} // namespace Atelier::Vel::Testing

#pragma once

namespace Atelier::Vel::Viewer {

/// What the view shows besides the surfaces.
enum class ViewFeature { Edges, Normals, Grid, Axes, Textures, AmbientOcclusion, Box };
constexpr int kViewFeatures = 7;

enum class Background { Palette, Light, Dark, Black };
constexpr int kBackgrounds = 4;

struct ViewOptions {
    bool features[kViewFeatures] = {false, false, true, true, true, false, false};
    Background background = Background::Palette;

    bool has(ViewFeature feature) const { return features[static_cast<int>(feature)]; }
    void set(ViewFeature feature, bool isShown) { features[static_cast<int>(feature)] = isShown; }
};

} // namespace Atelier::Vel::Viewer
